#pragma once

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <limits>
#include <queue>
#include <utility>
#include <vector>

#include "mesh/books.h"

namespace marrowfen {

// Finds the free face with the most free neighbours, the lowest face among equals. Counts only ever fall: the faces of
// the highest count become fewer until none is left, and are met in one pass from the first to the last. Of copies only
// the one that stands for all is here, in a heap, where it goes down when it is met with fewer neighbours or used.
class FaceQueue {
public:
    FaceQueue() = default;

    // faces ascend. Those that wait are left out, and so is who isn't free.
    FaceQueue(const std::vector<uint32_t>& faces, const StripFaces& all, const FaceCopies& copies) {
        for (const uint32_t face : faces) {
            if (!all.isFree(face)) continue;
            if (copies.hasCopies(face)) {
                heap_.push({std::numeric_limits<int32_t>::max(), ~face});
            } else {
                faces_.push_back(face);
            }
        }
        assert(std::is_sorted(faces_.begin(), faces_.end()));
    }

    // -1 when no face is free.
    int32_t best(const StripFaces& all, const Books& books, const FaceCopies& copies) {
        const int32_t single = bestSingle(all, books);
        if (heap_.empty()) return single;
        const int32_t copy = bestCopy(all, books, copies);
        if (single < 0 || copy < 0) return std::max(single, copy);
        return entryOf(copy, books) < entryOf(single, books) ? single : copy;
    }

private:
    using Entry = std::pair<int32_t, uint32_t>;  // a count, and a face turned over: the larger the better

    static Entry entryOf(int32_t face, const Books& books) {
        return {books.freeNeighbors(static_cast<uint32_t>(face)), ~static_cast<uint32_t>(face)};
    }

    int32_t bestCopy(const StripFaces& all, const Books& books, const FaceCopies& copies) {
        while (!heap_.empty()) {
            const Entry top = heap_.top();
            auto face = static_cast<int32_t>(~top.second);
            if (!all.isFree(~top.second)) face = copies.standIn(~top.second);
            if (face >= 0 && entryOf(face, books) == top) return face;
            heap_.pop();
            if (face >= 0) heap_.push(entryOf(face, books));
        }
        return -1;
    }

    int32_t bestSingle(const StripFaces& all, const Books& books) {
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

    void startLevel(const StripFaces& all, const Books& books) {
        level_ = 0;
        position_ = 0;
        std::erase_if(faces_, [&](uint32_t face) { return !all.isFree(face); });
        for (const uint32_t face : faces_) level_ = std::max(level_, books.freeNeighbors(face));
    }

    std::priority_queue<Entry> heap_;
    std::vector<uint32_t> faces_;
    int32_t level_ =
        std::numeric_limits<int32_t>::max();  // the highest count, of which those before position_ have less
    size_t position_ = 0;
};

}  // namespace marrowfen
