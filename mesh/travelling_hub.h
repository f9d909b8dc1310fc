#pragma once

#include <cstdint>
#include <vector>

#include "mesh/decimation_tables.h"
#include "mesh/flat_star.h"
#include "mesh/patience.h"

namespace marrowfen {

// In a flat region a vertex of many faces, a hub, collapses onto a neighbour, which thereby becomes the hub and goes
// on, for a whole row of a grid. Here the hub keeps its number for as long as it travels, so that only what the
// neighbour brings in and takes away has to be changed, and all else at the end of the journey: the lists are then as
// single collapses would have left them, entry by entry.
//
// A hub travels as long as these hold, and each costs little to know:
// - its faces are a disc: its neighbours are a ring, and each shares two faces with it, all of one winding;
// - all face the same way in a plane across an axis, so that its collapse costs nothing and goes onto its first
//   neighbour;
// - no other vertex comes before it.
class TravellingHub {
public:
    static constexpr size_t kFewestFaces = 8;

    // The tables must outlive this and may change while no hub travels.
    explicit TravellingHub(const DecimationTables& tables) : tables_(tables) {}

    // Collapses the hub, whose collapse onto its target costs nothing and comes first, and goes on for as long as is
    // known, but no more than so many times. Returns how many collapses those were; each has removed two faces. No
    // face has a corner twice.
    uint32_t travel(uint32_t hub, uint32_t target, uint32_t mostSteps);

    // After a journey.
    uint32_t place() const { return place_; }                     // the vertex that is the hub now
    const std::vector<uint32_t>& moved() const { return star_; }  // its faces

private:
    static constexpr size_t kMostFaces = 16;  // of a vertex onto which a hub travels

    // A neighbour of the hub.
    struct Spoke {
        uint32_t journey = 0;  // in which it was one last
        uint32_t next = 0, before = 0;
        uint32_t face = 0;      // with the next
        uint32_t triangle = 0;  // that face in flat_
        uint32_t since = 0;     // the step in which the hub's entry took its place in the neighbour's list
    };

    // A face of the vertex onto which the hub goes, from there.
    struct Wedge {
        uint32_t face, a, b;
    };

    bool isOnRing(uint32_t vertex) const { return spokes_[vertex].journey == journey_; }
    bool begin(uint32_t hub);
    bool makeRing();
    bool makeFlat();
    bool findPath(uint32_t target);
    bool isBesideRing(uint32_t vertex) const;
    void step(uint32_t target);
    void destroyFace(uint32_t spoke, uint32_t third);
    void takeNeighbors(uint32_t target);
    void takePath(uint32_t target);
    void addTriangle(uint32_t spoke);
    void removeTriangle(uint32_t spoke);
    void watch(uint32_t vertex);
    bool isOnBorder(uint32_t vertex) const;
    void end();
    void endNeighbors();

    const DecimationTables tables_;
    Patience patience_;

    // Of one journey. Until its end all lists and faces call the hub by its first number.
    uint32_t journey_ = 0;
    uint32_t hub_ = 0;    // this number
    uint32_t place_ = 0;  // the vertex where it is
    uint32_t steps_ = 0;
    std::vector<Spoke> spokes_;             // per vertex
    std::vector<uint32_t> before_, after_;  // its faces in the order of its list, gone ones too: first those of
                                            // before_ from the last to the first, then those of after_
    std::vector<uint32_t> firstNeighbors_;  // neighbours of that place, in order, before the hub came
    std::vector<uint32_t> watched_;  // neighbours whose collapses cost more than 0 as long as they're on a border
    std::vector<Wedge> path_;        // of the target, in the ring's order
    FlatStar flat_;
    std::vector<uint32_t> triangleOf_;  // per triangle of flat_: the spoke
    std::vector<uint32_t> star_;
    std::vector<Point3> points_;
};

}  // namespace marrowfen
