#include "mesh/hub_runs.h"

namespace marrowfen {

uint32_t HubRuns::run(uint32_t vertex, uint32_t target, uint32_t surplus, HubBounds& bounds) {
    if (isRefused_ || target == CollapseFinder::kNone) return 0;
    if (tables_.costs.lowestCost() > 0) return turnPages(vertex, target, surplus, bounds);
    return travel(vertex, target, surplus, bounds);
}

// Not at a vertex's first collapse: most that cost nothing go no further.
uint32_t HubRuns::travel(uint32_t vertex, uint32_t target, uint32_t surplus, HubBounds& bounds) {
    if (vertex != lastOnto_ || tables_.lists.size(facesOf(vertex)) < TravellingHub::kFewestFaces) return 0;
    const uint32_t steps = travelling_.travel(vertex, target, (surplus + 1) / 2);
    if (steps == 0) return 0;
    lastOnto_ = travelling_.place();
    bounds.forget(lastOnto_);
    for (const uint32_t face : travelling_.moved()) bounds.faceChanged(face);
    return 2 * steps;
}

// The hub may be either end of the collapse.
uint32_t HubRuns::turnPages(uint32_t vertex, uint32_t target, uint32_t surplus, HubBounds& bounds) {
    const auto isLarge = [&](uint32_t v) { return tables_.lists.size(facesOf(v)) >= BookHub::kFewestFaces; };
    const uint32_t hub = isLarge(vertex) ? vertex : target;
    if (!isLarge(hub)) return 0;
    const uint32_t steps = book_.run(hub, surplus);
    if (steps == 0) return 0;
    bounds.forget(book_.place());
    bounds.forget(book_.spine());
    return steps;
}

}  // namespace marrowfen
