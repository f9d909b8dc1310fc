#include "mesh/hub_bounds.h"

#include <algorithm>
#include <cassert>

#include "mesh/common_faces.h"

namespace marrowfen {

void HubBounds::watch(uint32_t vertex, const CollapseFinder::Collapse& cheapest) {
    assert(isHub(vertex));
    if (boundOf_[vertex] == 0) {
        hubs_.emplace_back();
        boundOf_[vertex] = static_cast<uint32_t>(hubs_.size());
    }
    Hub& hub = hubs_[boundOf_[vertex] - 1];
    hub.bounds.clear();
    hub.border = cheapest.border;
    const std::span<const uint32_t> neighbors = lists_[neighborsOf(vertex)];
    if (hub.border == CollapseFinder::kNone) {
        const auto isLargeNeighbor = [&](uint32_t n) { return n != ListPool::kGap && isLarge(n); };
        if (std::any_of(neighbors.begin(), neighbors.end(), isLargeNeighbor)) {
            boundOf_[vertex] = 0;
            return;
        }
        pickWitnesses(vertex, hub);
    }
    for (const uint32_t neighbor : neighbors) {
        if (neighbor != ListPool::kGap) hub.bounds.push_back({boundOnto(vertex, neighbor, hub), neighbor});
    }
    std::make_heap(hub.bounds.begin(), hub.bounds.end(), isDearer);
}

// Faces that point in directions as different as can be: each is turned away most from those before it.
void HubBounds::pickWitnesses(uint32_t vertex, Hub& hub) {
    std::vector<uint32_t> faces;
    for (const uint32_t face : lists_[facesOf(vertex)]) {
        if (face != ListPool::kGap) faces.push_back(face);
    }
    std::vector<float> alignments(faces.size(), -std::numeric_limits<float>::infinity());
    size_t next = faces.size() - 1;
    for (size_t i = 0; i < kWitnesses; ++i) {
        hub.witnesses[i] = faces[next];
        hub.normals[i] = faces_.normal(faces[next]);
        size_t least = 0;
        for (size_t f = 0; f < faces.size(); ++f) {
            const float alignment = dot(faces_.normal(faces[f]), hub.normals[i]);
            if (alignment > alignments[f]) alignments[f] = alignment;
            if (alignments[f] < alignments[least]) least = f;
        }
        next = least;
    }
}

// What the witnesses say. Fewer faces than all make the alignment larger and so the cost smaller, never the other way.
float HubBounds::boundOnto(uint32_t vertex, uint32_t neighbor, const Hub& hub) {
    const float distance = length(sites_[neighbor].position - sites_[vertex].position);
    if (hub.border != CollapseFinder::kNone) return distance >= 0 ? distance : 0;
    if (isLarge(neighbor)) return 0;
    std::array<float, kWitnesses> alignments;
    alignments.fill(-std::numeric_limits<float>::infinity());
    for (const uint32_t face : lists_[facesOf(neighbor)]) {
        if (face == ListPool::kGap || !hasCorner(faces_.corners(face), vertex)) continue;
        for (size_t i = 0; i < kWitnesses; ++i) {
            const float alignment = dot(hub.normals[i], faces_.normal(face));
            if (alignment > alignments[i]) alignments[i] = alignment;
        }
    }
    const float bound = distance * curvatureOf(*std::min_element(alignments.begin(), alignments.end()));
    return bound >= 0 ? bound : 0;
}

void HubBounds::enterBounds(const Corners& corners) {
    for (const uint32_t vertex : corners) {
        if (boundOf_[vertex] == 0) continue;
        Hub& hub = hubs_[boundOf_[vertex] - 1];
        const bool isOwnNeighbor = countCorners(corners, vertex) > 1;
        for (const uint32_t neighbor : corners) {
            if (neighbor == vertex && !isOwnNeighbor) continue;
            hub.bounds.push_back({boundOnto(vertex, neighbor, hub), neighbor});
            std::push_heap(hub.bounds.begin(), hub.bounds.end(), isDearer);
        }
    }
}

// Whether what the bound rests on is still there.
bool HubBounds::holds(uint32_t vertex, const Hub& hub) {
    if (hub.border != CollapseFinder::kNone) {
        return !isLarge(hub.border) && countCommonFaces(faces_, lists_, vertex, hub.border) == 1;
    }
    for (size_t i = 0; i < kWitnesses; ++i) {
        if (!hasCorner(faces_.corners(hub.witnesses[i]), vertex)) return false;
        if (!(faces_.normal(hub.witnesses[i]) == hub.normals[i])) return false;
    }
    return true;
}

float HubBounds::boundOf(uint32_t vertex) {
    if (boundOf_[vertex] == 0) return 0;
    Hub& hub = hubs_[boundOf_[vertex] - 1];
    if (!holds(vertex, hub)) return 0;
    while (!hub.bounds.empty() && !lists_.contains(neighborsOf(hub.bounds.front().neighbor), vertex)) {
        std::pop_heap(hub.bounds.begin(), hub.bounds.end(), isDearer);
        hub.bounds.pop_back();
    }
    assert(!hub.bounds.empty());
    return hub.bounds.front().bound;
}

}  // namespace marrowfen
