#pragma once

#include <cstdint>

#include "mesh/book_hub.h"
#include "mesh/hub_bounds.h"
#include "mesh/travelling_hub.h"

namespace marrowfen {

// Makes many collapses in a row at once where they come at one hub: it travels through a flat region, or is that of a
// book.
class HubRuns {
public:
    // The tables must outlive this and may change between runs.
    explicit HubRuns(const DecimationTables& tables) : tables_(tables), travelling_(tables), book_(tables) {}

    // To be called where a face has a corner twice: then no run is made.
    void refuse() { isRefused_ = true; }

    // To be called for each collapse that isn't made here.
    void collapsed(uint32_t onto) { lastOnto_ = onto; }

    // Collapses the vertex, the next in turn, onto its target, and goes on while the hub is known to be next and fewer
    // faces than the surplus are gone. Returns how many are, 0 where nothing is done.
    uint32_t run(uint32_t vertex, uint32_t target, uint32_t surplus, HubBounds& bounds);

private:
    uint32_t travel(uint32_t vertex, uint32_t target, uint32_t surplus, HubBounds& bounds);
    uint32_t turnPages(uint32_t vertex, uint32_t target, uint32_t surplus, HubBounds& bounds);

    const DecimationTables tables_;
    TravellingHub travelling_;
    BookHub book_;
    bool isRefused_ = false;
    uint32_t lastOnto_ = CollapseFinder::kNone;  // where the last collapse went
};

}  // namespace marrowfen
