#pragma once

// Indexing by the signed 32-bit numbers that records, files and counts hold.

#include <cassert>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <iterator>

namespace marrowfen {

// Whether list[index] is there.
template <class List>
constexpr bool hasIndex(const List& list, std::integral auto index) {
    if constexpr (std::signed_integral<decltype(index)>) {
        if (index < 0) return false;
    }
    return static_cast<std::size_t>(index) < std::size(list);
}

// list[index], for an index that is known to be in range: what comes from a file or from the host is checked first.
template <class List>
constexpr decltype(auto) at(List&& list, std::integral auto index) {
    assert(hasIndex(list, index));
    return list[static_cast<std::size_t>(index)];
}

// The length of a list as the signed number that records and files hold.
template <class List>
constexpr int32_t count32(const List& list) {
    assert(std::size(list) <= INT32_MAX);
    return static_cast<std::int32_t>(std::size(list));
}

}  // namespace marrowfen
