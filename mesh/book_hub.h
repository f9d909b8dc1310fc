#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "ground/math.h"
#include "mesh/decimation_tables.h"
#include "mesh/patience.h"

namespace marrowfen {

// A book: a vertex, the hub, all of whose faces are on one edge, to the spine, each with a page vertex that has no
// other face. Its pages collapse onto the hub, and the hub onto pages, which moves all other faces and changes the
// costs of all pages. Here the hub keeps its number meanwhile, and all that is said about pages is put right at the
// end: the lists are then as single collapses would have left them, entry by entry.
//
// Every page, the hub and the spine are on a border, so that costs are lengths. No page is as near to the spine as the
// nearest is to the hub, so that only distances to the hub count. When the hub moves they become less by the way that
// it goes, at most: a page's distance is computed again only when it might be the least.
class BookHub {
public:
    static constexpr size_t kFewestFaces = 64;

    // The tables must outlive this and may change between runs.
    explicit BookHub(const DecimationTables& tables) : tables_(tables) {}

    // Makes the collapses that come next as long as they are at this hub, but no more than so many. Returns how many;
    // each has removed a face. No face has a corner twice.
    uint32_t run(uint32_t hub, uint32_t mostSteps);

    // After a run.
    uint32_t place() const { return place_; }  // the vertex that is the hub now
    uint32_t spine() const { return spine_; }

private:
    static constexpr uint32_t kNone = CollapseFinder::kNone;

    struct Page {
        uint32_t vertex, face;
        Point3 position;
        bool isGone = false;
    };

    // The page's distance from the hub is at least this less the way of the hub.
    struct Bound {
        double bound;
        uint32_t page;
    };
    static bool isDearer(const Bound& a, const Bound& b) { return a.bound > b.bound; }

    bool begin(uint32_t hub);
    bool findSpine();
    bool takePage(uint32_t face);
    bool areNeighborsInOrder() const;
    void hideCosts();
    bool findNearest();
    void keep(uint32_t page, float distance);
    void turnPage();
    void moveOnto(uint32_t page);
    void remove(uint32_t page);
    void end();
    void moveLists();
    void setBound(uint32_t vertex, float bound);

    const DecimationTables tables_;
    Patience patience_;

    // Of one run. Until its end all lists and faces call the hub by its first number.
    uint32_t hub_ = 0;    // this number
    uint32_t place_ = 0;  // the vertex where it is
    uint32_t spine_ = 0;
    Point3 position_;          // of the hub
    std::vector<Page> pages_;  // in the order of the hub's first list
    uint32_t firstLeft_ = 0, lastLeft_ = 0;
    bool isReversed_ = false;       // each move of the hub turns the order of its faces round
    uint32_t pageBeforeSpine_ = 0;  // the one page, if any, that comes before the spine among the hub's neighbours
    float mostCost_ = 0;            // of other collapses the cheapest costs this
    double way_ = 0;                // of the hub, rounded up
    std::vector<Bound> bounds_;     // a heap, the lowest first
    std::vector<std::pair<uint32_t, float>> looked_;  // pages whose distances were computed in a step
    std::vector<uint32_t> nearest_;                   // pages, as near to the hub as each other
    float distance_ = 0;                              // of the nearest
    uint32_t steps_ = 0;
};

}  // namespace marrowfen
