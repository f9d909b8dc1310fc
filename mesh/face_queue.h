#pragma once

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

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

// Finds the free face with the most free neighbours, the lowest face among equals. Neighbour counts only ever fall, so
// a face whose count has fallen is left where it is until it is met as the best, and only then moved down.
class FaceQueue {
public:
    FaceQueue() = default;

    // faces ascend; counts are indexed by face.
    FaceQueue(std::vector<uint32_t> faces, const std::vector<int32_t>& counts) : faces_(std::move(faces)) {
        assert(std::is_sorted(faces_.begin(), faces_.end()));
        for (uint32_t i = 0; i < faces_.size(); ++i) insert(i, static_cast<size_t>(counts[faces_[i]]));
    }

    // -1 when no face is free.
    int32_t best(const std::vector<uint8_t>& used, const std::vector<int32_t>& counts) {
        while (!levels_.empty()) {
            const int64_t lowest = levels_.back().lowest();
            if (lowest < 0) {
                levels_.pop_back();
                continue;
            }
            const auto position = static_cast<uint32_t>(lowest);
            const uint32_t face = faces_[position];
            const auto count = static_cast<size_t>(counts[face]);
            if (!used[face] && count + 1 == levels_.size()) return static_cast<int32_t>(face);
            assert(used[face] || count + 1 < levels_.size());
            levels_.back().erase(position);
            if (!used[face]) insert(position, count);
        }
        return -1;
    }

private:
    void insert(uint32_t position, size_t count) {
        if (count >= levels_.size()) levels_.resize(count + 1);
        if (!levels_[count].hasRoom()) levels_[count] = LowestNumberSet(faces_.size());
        levels_[count].insert(position);
    }

    std::vector<uint32_t> faces_;
    std::vector<LowestNumberSet> levels_;  // positions in faces_ by neighbour count, which may have fallen since
};

}  // namespace marrowfen
