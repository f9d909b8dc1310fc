#pragma once

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "mesh/strip_faces.h"

namespace marrowfen {

// A set of small numbers that gives its lowest: one bit a number, and one bit a word of 64 of those.
class LowestNumberSet {
public:
    explicit LowestNumberSet(size_t capacity = 0) : words_(wordsFor(capacity)), summary_(wordsFor(words_.size())) {}

    bool hasRoom() const { return !words_.empty(); }

    void insert(uint32_t n) {
        assert(n / kBits < words_.size());
        words_[n / kBits] |= bit(n);
        summary_[n / kBits / kBits] |= bit(n / kBits);
    }

    void erase(uint32_t n) {
        assert((words_[n / kBits] & bit(n)) != 0);
        words_[n / kBits] &= ~bit(n);
        if (words_[n / kBits] == 0) summary_[n / kBits / kBits] &= ~bit(n / kBits);
    }

    // -1 for the empty set.
    int64_t lowest() const {
        for (size_t s = 0; s < summary_.size(); ++s) {
            if (summary_[s] == 0) continue;
            const size_t word = kBits * s + static_cast<size_t>(std::countr_zero(summary_[s]));
            assert(words_[word] != 0);
            return static_cast<int64_t>(kBits * word) + std::countr_zero(words_[word]);
        }
        return -1;
    }

private:
    static constexpr size_t kBits = 64;  // of a word

    static constexpr size_t wordsFor(size_t bits) { return (bits + kBits - 1) / kBits; }
    static constexpr uint64_t bit(size_t n) { return uint64_t{1} << n % kBits; }

    std::vector<uint64_t> words_;
    std::vector<uint64_t> summary_;
};

// Pages: faces that have an edge with many faces the same way round, and are adjacent to every face that has it the
// other way round, but for one twin at most. Those are counted once for all pages. The free pages are kept by their
// other neighbours, from which a free twin is taken off.
class BookSide {
public:
    BookSide() = default;

    // pages: half-edges, ascending. otherNeighbors: one per page.
    BookSide(std::vector<int32_t> pages, const std::vector<int32_t>& otherNeighbors) : pages_(std::move(pages)) {
        for (uint32_t i = 0; i < pages_.size(); ++i) insert(i, otherNeighbors[i]);
    }

    // The page's number of other neighbours changes.
    void move(uint32_t face, int32_t before, int32_t now) { insert(remove(face, before), now); }

    // Gives the page's position, with which insert() puts it back.
    uint32_t remove(uint32_t face, int32_t neighbors) {
        const auto page = std::lower_bound(pages_.begin(), pages_.end(), HalfEdge::of(face, 0));
        const auto position = static_cast<uint32_t>(page - pages_.begin());
        levels_[levelOf(neighbors)].erase(position);
        return position;
    }

    void insert(uint32_t position, int32_t neighbors) {
        const size_t level = levelOf(neighbors);
        if (level >= levels_.size()) levels_.resize(level + 1);
        if (!levels_[level].hasRoom()) levels_[level] = LowestNumberSet(pages_.size());
        levels_[level].insert(position);
    }

    // The free page with the fewest or the most other neighbours, the lowest among equals; kNone when none is free.
    int32_t withFewest() const { return firstOf(levels_.begin(), levels_.end()); }
    int32_t withMost() const { return firstOf(levels_.rbegin(), levels_.rend()); }

private:
    static size_t levelOf(int32_t neighbors) { return static_cast<size_t>(neighbors) + 1; }

    template <class Level>
    int32_t firstOf(Level level, Level end) const {
        for (; level != end; ++level) {
            const int64_t position = level->lowest();
            if (position >= 0) return pages_[static_cast<size_t>(position)];
        }
        return HalfEdge::kNone;
    }

    std::vector<int32_t> pages_;
    std::vector<LowestNumberSet> levels_;  // positions of free pages by number of other neighbours, from -1 on
};

}  // namespace marrowfen
