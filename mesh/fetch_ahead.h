#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "mesh/face_table.h"
#include "mesh/list_pool.h"

namespace marrowfen {

// Loads what the next collapse asks for while the last one is still at work: in a large mesh the cheapest is mostly far
// away from it. Each step asks for what the one before has loaded, so that some work should lie between them.
class FetchAhead {
public:
    // The tables must outlive this and may change.
    FetchAhead(const std::vector<Site>& sites, const FaceTable& faces, const ListPool& lists)
        : sites_(sites), faces_(faces), lists_(lists) {}

    void fetchLists(uint32_t vertex) const {
        lists_.fetch(neighborsOf(vertex));
        __builtin_prefetch(&sites_[vertex]);
    }

    void fetchFaces(uint32_t vertex) const {
        forEachOfFew(facesOf(vertex), [&](uint32_t face) { faces_.fetch(face); });
    }

    void fetchNeighbors(uint32_t vertex) const {
        fetchFaces(vertex);
        forEachOfFew(neighborsOf(vertex), [&](uint32_t neighbor) { fetchLists(neighbor); });
    }

    void fetchFurther(uint32_t vertex) const {
        forEachOfFew(neighborsOf(vertex), [&](uint32_t neighbor) {
            fetchFaces(neighbor);
            forEachOfFew(neighborsOf(neighbor), [&](uint32_t other) { __builtin_prefetch(&sites_[other]); });
        });
    }

private:
    template <class Work>
    void forEachOfFew(uint32_t list, const Work& work) const {
        constexpr size_t kMost = 8;  // most lists have six numbers
        const std::span<const uint32_t> numbers = lists_[list];
        for (const uint32_t number : numbers.first(std::min(numbers.size(), kMost))) {
            if (number != ListPool::kGap) work(number);
        }
    }

    const std::vector<Site>& sites_;
    const FaceTable& faces_;
    const ListPool& lists_;
};

}  // namespace marrowfen
