#pragma once

#include <cstdint>
#include <utility>

#include "mesh/face_table.h"
#include "mesh/list_pool.h"

namespace marrowfen {

// How many faces two vertices share, or more where a face has one of them twice. The shorter list tells.
inline uint32_t countCommonFaces(const FaceTable& faces, const ListPool& lists, uint32_t a, uint32_t b) {
    if (lists.size(facesOf(b)) < lists.size(facesOf(a))) std::swap(a, b);
    uint32_t count = 0;
    for (const uint32_t face : lists[facesOf(a)]) {
        if (face != ListPool::kGap) count += countCorners(faces.corners(face), b);
    }
    return count;
}

}  // namespace marrowfen
