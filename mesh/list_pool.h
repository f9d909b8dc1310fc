#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

namespace marrowfen {

// Many short lists of numbers in one block of memory. Removing keeps the order of the rest.
class ListPool {
public:
    explicit ListPool(size_t listCount) : lists_(listCount) { numbers_.reserve(kFirstCapacity * listCount); }

    // Valid until the next append.
    std::span<const uint32_t> operator[](uint32_t list) const {
        return {numbers_.data() + lists_[list].begin, lists_[list].count};
    }

    bool contains(uint32_t list, uint32_t number) const {
        const auto numbers = (*this)[list];
        return std::find(numbers.begin(), numbers.end(), number) != numbers.end();
    }

    void append(uint32_t list, uint32_t number) {
        List& entry = lists_[list];
        if (entry.count == entry.capacity) grow(entry);
        numbers_[entry.begin + entry.count++] = number;
    }

    // The first occurrence; nothing happens without one.
    void remove(uint32_t list, uint32_t number) {
        List& entry = lists_[list];
        uint32_t* const begin = numbers_.data() + entry.begin;
        uint32_t* const end = begin + entry.count;
        uint32_t* const found = std::find(begin, end, number);
        if (found == end) return;
        std::copy(found + 1, end, found);
        --entry.count;
    }

    void clear(uint32_t list) { lists_[list].count = 0; }

private:
    static constexpr uint32_t kFirstCapacity = 8;  // most vertices have six faces and six neighbours

    struct List {
        size_t begin = 0;
        uint32_t count = 0;
        uint32_t capacity = 0;
    };

    // Moves the list to the block's end with twice the room.
    void grow(List& entry) {
        const size_t begin = numbers_.size();
        entry.capacity = std::max(kFirstCapacity, 2 * entry.capacity);
        numbers_.resize(begin + entry.capacity);
        std::copy_n(numbers_.begin() + static_cast<std::ptrdiff_t>(entry.begin), entry.count,
                    numbers_.begin() + static_cast<std::ptrdiff_t>(begin));
        entry.begin = begin;
    }

    std::vector<List> lists_;
    std::vector<uint32_t> numbers_;
};

}  // namespace marrowfen
