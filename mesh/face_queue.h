#pragma once

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

#include "mesh/books.h"

namespace marrowfen {

// Finds the free face with the most free neighbours, the lowest face among equals. Counts only ever fall: the faces of
// the highest count become fewer until none is left, and are met in one pass from the first to the last.
class FaceQueue {
public:
    FaceQueue() = default;

    // faces ascend.
    explicit FaceQueue(std::vector<uint32_t> faces) : faces_(std::move(faces)) {
        assert(std::is_sorted(faces_.begin(), faces_.end()));
    }

    // -1 when no face is free.
    int32_t best(const StripFaces& all, const Books& books) {
        while (!faces_.empty()) {
            for (; position_ < faces_.size(); ++position_) {
                const uint32_t face = faces_[position_];
                assert(!all.isFree(face) || books.freeNeighbors(face) <= level_);
                if (all.isFree(face) && books.freeNeighbors(face) == level_) return static_cast<int32_t>(face);
            }
            startLevel(all, books);
        }
        return -1;
    }

private:
    void startLevel(const StripFaces& all, const Books& books) {
        level_ = 0;
        position_ = 0;
        std::erase_if(faces_, [&](uint32_t face) { return !all.isFree(face); });
        for (const uint32_t face : faces_) level_ = std::max(level_, books.freeNeighbors(face));
    }

    std::vector<uint32_t> faces_;
    int32_t level_ =
        std::numeric_limits<int32_t>::max();  // the highest count, of which those before position_ have less
    size_t position_ = 0;
};

}  // namespace marrowfen
