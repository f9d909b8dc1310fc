#pragma once

#include <algorithm>
#include <bit>
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

    void removeLast(uint32_t list) { --lists_[list].count; }
    void clear(uint32_t list) {
        release(lists_[list]);
        lists_[list] = {};
    }

private:
    static constexpr uint32_t kFirstCapacity = 8;  // most vertices have six faces and six neighbours

    struct List {
        size_t begin = 0;
        uint32_t count = 0;
        uint32_t capacity = 0;  // 0 or kFirstCapacity times a power of two
    };

    // Moves the list to a place with twice the room.
    void grow(List& entry) {
        const uint32_t capacity = std::max(kFirstCapacity, 2 * entry.capacity);
        const size_t begin = allocate(capacity);
        std::copy_n(numbers_.data() + entry.begin, entry.count, numbers_.data() + begin);
        release(entry);
        entry.begin = begin;
        entry.capacity = capacity;
    }

    size_t allocate(uint32_t capacity) {
        std::vector<size_t>& places = freePlaces_[std::bit_width(capacity)];
        const size_t begin = places.empty() ? numbers_.size() : places.back();
        if (places.empty()) {
            numbers_.resize(begin + capacity);
        } else {
            places.pop_back();
        }
        return begin;
    }

    void release(const List& entry) {
        if (entry.capacity != 0) freePlaces_[std::bit_width(entry.capacity)].push_back(entry.begin);
    }

    std::vector<List> lists_;
    std::vector<uint32_t> numbers_;
    std::vector<size_t> freePlaces_[33];  // by bit width of their capacity
};

}  // namespace marrowfen
