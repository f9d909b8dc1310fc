#pragma once

// The merging of corners as it is stated: a linear search through the corners so far.

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

namespace marrowfen::plain {

using Corner = std::pair<int32_t, int32_t>;  // vertex, texture coordinate

// The merged number of each corner.
inline std::vector<uint32_t> mergedCorners(const std::vector<Corner>& corners) {
    std::vector<Corner> keys;
    std::vector<uint32_t> numbers;
    for (const Corner& corner : corners) {
        const auto found = std::find(keys.begin(), keys.end(), corner);
        numbers.push_back(static_cast<uint32_t>(found - keys.begin()));
        if (found == keys.end()) keys.push_back(corner);
    }
    return numbers;
}

}  // namespace marrowfen::plain
