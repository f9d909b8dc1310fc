#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <cstdint>
#include <new>
#include <span>
#include <unordered_map>
#include <vector>

namespace marrowfen {

// Memory that begins where a cache line does.
template <class T>
struct LineAllocator {
    using value_type = T;
    static constexpr std::align_val_t kLine{64};

    LineAllocator() = default;
    template <class U>
    LineAllocator(const LineAllocator<U>&) {}  // NOLINT: converts
    T* allocate(size_t n) { return static_cast<T*>(::operator new(n * sizeof(T), kLine)); }
    void deallocate(T* p, size_t) { ::operator delete(p, kLine); }
    bool operator==(const LineAllocator&) const { return true; }
};

// Many lists of numbers in one block of memory, most of them short. Removing keeps the order of the rest. In a long
// list a number is found through an index, and removing it leaves a gap until half of the list is gaps: no operation
// grows with the list's length. The first numbers of lists 2n and 2n + 1 share a cache line.
class ListPool {
public:
    static constexpr uint32_t kGap = UINT32_MAX;  // where a number of a long list was removed

    explicit ListPool(size_t listCount) : lists_(listCount) {
        numbers_.reserve(kFirstCapacity * (listCount + listCount / 4));
        numbers_.resize(kFirstCapacity * listCount, kGap);
        for (size_t i = 0; i < listCount; ++i) lists_[i].begin = static_cast<uint32_t>(kFirstCapacity * i);
    }

    // With the gaps, of which only long lists have any. Valid until the next append or remove.
    std::span<const uint32_t> operator[](uint32_t list) const {
        return {numbers_.data() + lists_[list].begin, lists_[list].end};
    }

    size_t size(uint32_t list) const { return lists_[list].end - lists_[list].gaps; }
    bool isEmpty(uint32_t list) const { return size(list) == 0; }
    bool hasGaps(uint32_t list) const { return lists_[list].gaps != 0; }
    // Starts to load a list where most begin: the entry that tells is still to be loaded itself.
    void fetch(uint32_t list) const {
        __builtin_prefetch(&lists_[list]);
        __builtin_prefetch(numbers_.data() + size_t{kFirstCapacity} * list);
    }

    bool contains(uint32_t list, uint32_t number) const {
        if (isLong(lists_[list])) return index_.contains(key(list, number));
        const auto numbers = (*this)[list];
        if (lists_[list].capacity > kFirstCapacity) {
            return std::find(numbers.begin(), numbers.end(), number) != numbers.end();
        }
        // All places, without branches that would be guessed wrong.
        bool isHere = false;
        for (size_t i = 0; i < kFirstCapacity; ++i) isHere |= numbers.data()[i] == number;
        return isHere;
    }

    uint32_t last(uint32_t list) const {
        assert(!isEmpty(list));
        return (*this)[list].back();
    }

    void append(uint32_t list, uint32_t number) {
        List& entry = lists_[list];
        if (entry.end == entry.capacity || isLong(entry)) makeRoom(list, number);
        numbers_[entry.begin + entry.end++] = number;
    }

    // The first occurrence; nothing happens without one.
    void remove(uint32_t list, uint32_t number) {
        List& entry = lists_[list];
        if (isLong(entry)) {
            removeFromLong(list, number);
            return;
        }
        uint32_t* const begin = numbers_.data() + entry.begin;
        if (entry.capacity == kFirstCapacity) {
            bool isPast = false;
            for (size_t i = 0; i + 1 < kFirstCapacity; ++i) {
                isPast |= begin[i] == number;
                begin[i] = begin[i + isPast];
            }
            isPast |= begin[kFirstCapacity - 1] == number;
            if (isPast) begin[--entry.end] = kGap;
            return;
        }
        uint32_t* const end = begin + entry.end;
        uint32_t* at = std::find(begin, end, number);
        if (at == end) return;
        for (; at + 1 != end; ++at) *at = at[1];
        --entry.end;
    }

    // Removes a number that is there and appends another one.
    void replace(uint32_t list, uint32_t number, uint32_t by) {
        List& entry = lists_[list];
        if (isLong(entry)) {
            removeFromLong(list, number);
            append(list, by);
            return;
        }
        uint32_t* const begin = numbers_.data() + entry.begin;
        uint32_t* const last = begin + entry.end - 1;
        if (entry.capacity == kFirstCapacity) {
            bool isPast = false;
            for (size_t i = 0; i + 1 < kFirstCapacity; ++i) {
                isPast |= begin[i] == number;
                begin[i] = begin[i + isPast];
            }
        } else {
            uint32_t* const at = std::find(begin, last, number);
            std::copy(at + 1, last + 1, at);
        }
        *last = by;
    }

    // Puts another number in the place of one that stands in the list once.
    void rename(uint32_t list, uint32_t number, uint32_t by) {
        const List& entry = lists_[list];
        uint32_t* const begin = numbers_.data() + entry.begin;
        if (isLong(entry)) {
            const auto found = index_.find(key(list, number));
            assert(found != index_.end() && found->second.count == 1);
            const uint32_t at = found->second.at;
            index_.erase(found);
            begin[at] = by;
            enter(list, by, at);
        } else {
            uint32_t* const at = std::find(begin, begin + entry.end, number);
            assert(at != begin + entry.end);
            *at = by;
        }
    }

    // For a number that stands in the list only once.
    void removeLast(uint32_t list) {
        List& entry = lists_[list];
        if (isLong(entry)) {
            removeFromLong(list, last(list));
        } else {
            numbers_[entry.begin + --entry.end] = kGap;
        }
    }

    void clear(uint32_t list) {
        List& entry = lists_[list];
        if (isLong(entry)) {
            for (const uint32_t number : (*this)[list]) index_.erase(key(list, number));
        }
        release(entry);
        entry = {kFirstCapacity * list};
        std::fill_n(numbers_.data() + entry.begin, kFirstCapacity, kGap);
    }

    // Takes the gaps out of a long list, when there are many.
    void tidy(uint32_t list) {
        List& entry = lists_[list];
        if (entry.gaps <= entry.end / 2) return;
        uint32_t* const begin = numbers_.data() + entry.begin;
        const uint32_t* const end = std::remove(begin, begin + entry.end, kGap);
        for (const uint32_t* n = begin; n != end; ++n) index_.erase(key(list, *n));
        entry.end = static_cast<uint32_t>(end - begin);
        entry.gaps = 0;
        enterAll(list);
    }

private:
    // Most vertices have six faces and six neighbours. The free places of such a list hold gaps.
    static constexpr uint32_t kFirstCapacity = 8;
    static constexpr uint32_t kShortCapacity = 2048;

    struct List {
        uint32_t begin = 0;
        uint32_t end = 0;                    // numbers and gaps
        uint32_t gaps = 0;                   // only in a long list, never at its end
        uint32_t capacity = kFirstCapacity;  // times a power of two; a list never becomes short again
    };

    // Where a number of a long list stands first, and how often.
    struct Place {
        uint32_t at = 0, count = 0;
    };

    static bool isLong(const List& entry) { return entry.capacity > kShortCapacity; }
    static uint64_t key(uint32_t list, uint32_t number) { return uint64_t{list} << 32 | number; }

    void enter(uint32_t list, uint32_t number, uint32_t at) {
        Place& place = index_.try_emplace(key(list, number), Place{at, 0}).first->second;
        ++place.count;
    }

    void enterAll(uint32_t list) {
        const auto numbers = (*this)[list];
        for (uint32_t at = 0; at < numbers.size(); ++at) {
            if (numbers[at] != kGap) enter(list, numbers[at], at);
        }
    }

    void removeFromLong(uint32_t list, uint32_t number) {
        const auto found = index_.find(key(list, number));
        if (found == index_.end()) return;
        List& entry = lists_[list];
        uint32_t* const numbers = numbers_.data() + entry.begin;
        uint32_t& at = found->second.at;
        assert(numbers[at] == number);
        numbers[at] = kGap;
        ++entry.gaps;
        if (--found->second.count == 0) {
            index_.erase(found);
        } else {
            at = static_cast<uint32_t>(std::find(numbers + at, numbers + entry.end, number) - numbers);
        }
        for (; entry.end > 0 && numbers[entry.end - 1] == kGap; --entry.end) --entry.gaps;
    }

    [[gnu::noinline]] void makeRoom(uint32_t list, uint32_t number) {
        const List& entry = lists_[list];
        if (entry.end == entry.capacity) grow(list);
        if (isLong(entry)) enter(list, number, entry.end);
    }

    // Moves the list to a place with twice the room.
    void grow(uint32_t list) {
        List& entry = lists_[list];
        const bool wasLong = isLong(entry);
        const uint32_t capacity = 2 * entry.capacity;
        const uint32_t begin = allocate(capacity);
        std::copy_n(numbers_.data() + entry.begin, entry.end, numbers_.data() + begin);
        release(entry);
        entry.begin = begin;
        entry.capacity = capacity;
        if (!wasLong && isLong(entry)) enterAll(list);
    }

    uint32_t allocate(uint32_t capacity) {
        std::vector<uint32_t>& places = freePlaces_[static_cast<size_t>(std::bit_width(capacity))];
        if (places.empty()) {
            const auto begin = static_cast<uint32_t>(numbers_.size());
            numbers_.resize(size_t{begin} + capacity);
            return begin;
        }
        const uint32_t begin = places.back();
        places.pop_back();
        return begin;
    }

    // The first place stays the list's own.
    void release(const List& entry) {
        if (entry.capacity == kFirstCapacity) return;
        freePlaces_[static_cast<size_t>(std::bit_width(entry.capacity))].push_back(entry.begin);
    }

    std::vector<List> lists_;
    std::vector<uint32_t, LineAllocator<uint32_t>> numbers_;
    std::array<std::vector<uint32_t>, 33> freePlaces_;  // by bit width of their capacity
    std::unordered_map<uint64_t, Place> index_;         // of the numbers in long lists
};

}  // namespace marrowfen
