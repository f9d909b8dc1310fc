#include <algorithm>
#include <limits>
#include <map>

#include "mesh/face_adjacency.h"
#include "mesh/face_queue.h"
#include "mesh/mesh.h"

namespace marrowfen {

// Greedy stripping: a strip grows from face to face across shared edges, preferring faces with few free neighbours,
// faces that need no swap and faces whose new vertex was emitted lately. Runs of faces of one material and polyhedron
// are stripped apart from each other.
//
// Two faces are adjacent when one has an edge of the other reversed, unless all three corners of the lower-numbered
// face are corners of the other. The work is near-linear in the number of faces; where an edge has m faces one way and
// n the other, m * n steps are added, but no memory.

namespace {

constexpr size_t kCacheSize = 16;             // emitted vertices that count as lately emitted
constexpr int32_t kStartScorePerCached = 16;  // worth of one such corner when a strip starts
constexpr float kNeighborWeight = 5;
constexpr float kNoSwapWeight = 3;
constexpr float kCachedWeight = 1;
constexpr float kNoFaceScore = -std::numeric_limits<float>::infinity();  // no face never wins over a face
constexpr size_t kHubValence = 32;  // a vertex with more faces gets a queue of them instead of a look at each
constexpr int32_t kNone = -1;

constexpr uint32_t kTriangleBits = Primitive::TypeMask | Primitive::Indexed;

std::string assertionText(int number) { return "Assertion failed when stripping (" + std::to_string(number) + ")"; }

// Numbers the vertices of one group of faces from 0 on, in the order of their first use.
class VertexNumbers {
public:
    explicit VertexNumbers(const std::vector<uint32_t>& indices) {
        const uint32_t highest = *std::max_element(indices.begin(), indices.end());
        if (highest / 8 > indices.size()) {  // far-off numbers: go by rank, so that the table follows the list's length
            ranks_ = indices;
            std::sort(ranks_.begin(), ranks_.end());
            ranks_.erase(std::unique(ranks_.begin(), ranks_.end()), ranks_.end());
        }
        numbers_.assign(ranks_.empty() ? size_t{highest} + 1 : ranks_.size(), kNone);
    }

    void startGroup() {
        for (const uint32_t vertex : vertices_) numbers_[slotOf(vertex)] = kNone;
        vertices_.clear();
    }

    uint32_t numberOf(uint32_t vertex) {
        int32_t& number = numbers_[slotOf(vertex)];
        if (number == kNone) {
            number = static_cast<int32_t>(vertices_.size());
            vertices_.push_back(vertex);
        }
        return static_cast<uint32_t>(number);
    }

    const std::vector<uint32_t>& vertices() const { return vertices_; }  // of the group, by number

private:
    size_t slotOf(uint32_t vertex) const {
        if (ranks_.empty()) return vertex;
        return static_cast<size_t>(std::lower_bound(ranks_.begin(), ranks_.end(), vertex) - ranks_.begin());
    }

    std::vector<uint32_t> ranks_;  // empty when vertices are table positions themselves
    std::vector<int32_t> numbers_;
    std::vector<uint32_t> vertices_;
};

// A face turned so that the vertex that it adds to the strip comes last: the shared edge is a-b.
struct Oriented {
    uint32_t a, b, added;
};

class Stripper {
public:
    // faces: corners numbered below vertexCount. kind: material and polyhedron of the group.
    Stripper(std::vector<Corners> faces, uint32_t vertexCount, const Primitive& kind)
        : faces_(std::move(faces)),
          adjacency_(faces_, vertexCount),
          neighborCount_(faces_.size()),
          used_(faces_.size()),
          lastEmitted_(vertexCount, kNone),
          material_(Primitive::Strip | Primitive::Indexed |
                    ((kind.material & Primitive::NoMaterial) != 0 ? Primitive::NoMaterial
                                                                  : kind.material & Primitive::MaterialMask)),
          sourcePoly_(kind.sourcePoly) {}

    void run();

    std::vector<Primitive> primitives;
    std::vector<uint32_t> indices;  // vertex numbers
    std::string error;

private:
    bool isAdjacent(uint32_t f, uint32_t g) const;
    void countNeighbors();
    bool startStrip();
    int32_t pickStartFace();
    int32_t bestScoredFace();
    bool extendStrip();
    bool orient(uint32_t face, Oriented& oriented);
    bool isLastEdge(const Oriented& oriented) const;
    float score(uint32_t face, const Oriented& oriented) const;
    bool joinFirstTriangle(const Oriented& oriented);
    void join(const Oriented& oriented);
    void takeFace(uint32_t face, int assertion);
    void checkNewestAreCornersOf(uint32_t face);
    void checkAllTaken();

    void emit(uint32_t vertex);
    bool isCached(uint32_t vertex) const { return lastEmitted_[vertex] >= oldestCached(); }
    int64_t oldestCached() const {
        return std::max<int64_t>(0, static_cast<int64_t>(indices.size()) - static_cast<int64_t>(kCacheSize));
    }
    void fail(const std::string& text) {
        if (error.empty()) error = text;
    }

    const std::vector<Corners> faces_;
    const FaceAdjacency adjacency_;
    std::vector<int32_t> neighborCount_;  // free faces adjacent to each face
    std::vector<uint8_t> used_;
    std::vector<int64_t> lastEmitted_;  // per vertex: its last position in indices
    std::vector<uint32_t> candidates_;  // faces that were passed over in this strip
    std::array<int32_t, 3> across_{};   // best free face across each edge of lastFace_
    uint32_t lastFace_ = 0;
    FaceQueue allFaces_;
    std::map<uint32_t, FaceQueue> hubFaces_;  // made when a hub is first looked at
    const uint32_t material_;
    const int32_t sourcePoly_;
};

bool Stripper::isAdjacent(uint32_t f, uint32_t g) const {
    if (f == g) return false;
    const Corners& lower = faces_[std::min(f, g)];
    const Corners& higher = faces_[std::max(f, g)];
    return !(hasCorner(higher, lower[0]) && hasCorner(higher, lower[1]) && hasCorner(higher, lower[2]));
}

// Number of edges of a face to look across: all three, but one where they are one and the same.
uint32_t distinctEdges(const Corners& face) { return face[0] == face[1] && face[1] == face[2] ? 1 : 3; }

void Stripper::countNeighbors() {
    for (uint32_t f = 0; f < faces_.size(); ++f) {
        for (uint32_t edge = 0; edge < distinctEdges(faces_[f]); ++edge) {
            for (const uint32_t g : adjacency_.across(f, edge)) neighborCount_[f] += isAdjacent(f, g) ? 1 : 0;
        }
    }
}

void Stripper::emit(uint32_t vertex) {
    lastEmitted_[vertex] = static_cast<int64_t>(indices.size());
    indices.push_back(vertex);
    ++primitives.back().numElements;
}

bool Stripper::startStrip() {
    const int32_t start = pickStartFace();
    if (start == kNone) return false;
    const auto face = static_cast<uint32_t>(start);
    for (const uint32_t v : faces_[face]) emit(v);
    checkNewestAreCornersOf(face);
    takeFace(face, 4);
    return true;
}

// The first free face that the last strip passed over, else the best one by score.
int32_t Stripper::pickStartFace() {
    const auto isFree = [&](uint32_t face) { return !used_[face]; };
    const auto found = std::find_if(candidates_.begin(), candidates_.end(), isFree);
    const int32_t start = found == candidates_.end() ? bestScoredFace() : static_cast<int32_t>(*found);
    candidates_.clear();
    return start;
}

// The free face with the highest score, 16 for each corner lately emitted and 1 for each free neighbour; the lowest
// among equals. Only faces at those vertices score more than their neighbours, so it is one of them or the one with the
// most neighbours. A hub's faces aren't all looked at: the best with no other such vertex is the one with the most
// neighbours, and one with another is found at that vertex or, if that is a hub too, on the edge between them.
int32_t Stripper::bestScoredFace() {
    int32_t best = kNone;
    int32_t bestScore = 0;
    const auto consider = [&](uint32_t face) {
        if (used_[face]) return;
        int32_t faceScore = neighborCount_[face];
        for (const uint32_t v : faces_[face]) faceScore += isCached(v) ? kStartScorePerCached : 0;
        if (best != kNone && (faceScore < bestScore || (faceScore == bestScore && static_cast<int32_t>(face) > best))) {
            return;
        }
        best = static_cast<int32_t>(face);
        bestScore = faceScore;
    };
    const auto considerBestOf = [&](FaceQueue& queue) {
        const int32_t face = queue.best(used_, neighborCount_);
        if (face != kNone) consider(static_cast<uint32_t>(face));
    };

    // Faces at the vertices lately emitted.
    std::vector<uint32_t> hubs;
    for (auto i = oldestCached(); i < std::ssize(indices); ++i) {
        const uint32_t v = indices[static_cast<size_t>(i)];
        if (lastEmitted_[v] != i) continue;  // comes again later
        const auto faces = adjacency_.around(v);
        if (faces.size() > kHubValence) {
            hubs.push_back(v);
        } else {
            for (const uint32_t face : faces) consider(face);
        }
    }
    for (const uint32_t hub : hubs) {
        auto [entry, isNew] = hubFaces_.try_emplace(hub);
        const auto faces = adjacency_.around(hub);
        if (isNew) entry->second = FaceQueue({faces.begin(), faces.end()}, neighborCount_);
        considerBestOf(entry->second);
        for (const uint32_t other : hubs) {
            if (other > hub) adjacency_.visitEdge(hub, other, consider);
        }
    }

    considerBestOf(allFaces_);
    return best;
}

// Chooses among the free faces across the edges of the last face and adds the choice to the strip.
bool Stripper::extendStrip() {
    // Once the strip is under way, only faces at the vertex emitted last can follow.
    std::array<int32_t, 3> next = across_;
    const bool afterFirst = primitives.back().numElements == 3;
    for (int32_t& face : next) {
        if (face != kNone && !afterFirst && !hasCorner(faces_[static_cast<size_t>(face)], indices.back())) face = kNone;
    }
    if (next == std::array{kNone, kNone, kNone}) return false;

    // The best score wins, the earlier edge among equals.
    std::array<Oriented, 3> oriented;
    std::array<float, 3> scores{kNoFaceScore, kNoFaceScore, kNoFaceScore};
    for (size_t i = 0; i < 3; ++i) {
        if (next[i] == kNone) continue;
        const auto face = static_cast<uint32_t>(next[i]);
        if (!orient(face, oriented[i])) return false;
        scores[i] = score(face, oriented[i]);
    }
    const auto choice = static_cast<size_t>(std::max_element(scores.begin(), scores.end()) - scores.begin());
    const auto chosen = static_cast<uint32_t>(next[choice]);

    // Emit it.
    if (!afterFirst) {
        join(oriented[choice]);
    } else if (!joinFirstTriangle(oriented[choice])) {
        return false;
    }
    checkNewestAreCornersOf(chosen);

    // A later strip may start at the others.
    for (const int32_t face : next) {
        if (face != kNone && face != next[choice]) candidates_.push_back(static_cast<uint32_t>(face));
    }
    takeFace(chosen, 7);
    return error.empty();
}

// False, with an error, unless exactly one corner of the face is not among the three vertices emitted last. A face with
// a corner twice can fail this.
bool Stripper::orient(uint32_t face, Oriented& oriented) {
    const Corners& p = faces_[face];
    const uint32_t* newest = &indices[indices.size() - 3];
    const Corners emitted{newest[0], newest[1], newest[2]};
    const bool isNew[3] = {!hasCorner(emitted, p[0]), !hasCorner(emitted, p[1]), !hasCorner(emitted, p[2])};
    if (isNew[0] + isNew[1] + isNew[2] != 1) {
        fail(assertionText(5));
        return false;
    }
    if (isNew[0]) oriented = {p[1], p[2], p[0]};
    if (isNew[1]) oriented = {p[2], p[0], p[1]};
    if (isNew[2]) oriented = {p[0], p[1], p[2]};
    return true;
}

bool Stripper::isLastEdge(const Oriented& oriented) const {
    const uint32_t newest = indices[indices.size() - 1];
    const uint32_t older = indices[indices.size() - 2];
    return (older == oriented.a && newest == oriented.b) || (older == oriented.b && newest == oriented.a);
}

float Stripper::score(uint32_t face, const Oriented& oriented) const {
    float score = -kNeighborWeight * static_cast<float>(neighborCount_[face]);
    if (primitives.back().numElements != 3 && isLastEdge(oriented)) score += kNoSwapWeight;
    if (isCached(oriented.added)) score += kCachedWeight;
    return score;
}

// Turns the first triangle until the shared edge comes last: [a b c] -> [b c a].
bool Stripper::joinFirstTriangle(const Oriented& oriented) {
    for (int turn = 0; turn < 3; ++turn) {
        if (isLastEdge(oriented)) {
            emit(oriented.added);
            return true;
        }
        std::rotate(indices.end() - 3, indices.end() - 2, indices.end());
        for (size_t i = indices.size() - 3; i < indices.size(); ++i) lastEmitted_[indices[i]] = static_cast<int64_t>(i);
    }
    fail("Assertion error while stripping: infinite loop");
    return false;
}

// Swaps when the shared edge isn't last, [.. x y z] -> [.. x y x z], and adds the new vertex.
void Stripper::join(const Oriented& oriented) {
    if (!isLastEdge(oriented)) {
        const uint32_t newest = indices.back();
        const uint32_t repeated = indices[indices.size() - 3];
        indices.pop_back();
        --primitives.back().numElements;
        emit(repeated);
        emit(newest);
    }
    emit(oriented.added);
}

// Marks the face used, tells its free neighbours, and finds the one across each edge that has the fewest free
// neighbours left, the lowest among equals.
void Stripper::takeFace(uint32_t face, int assertion) {
    used_[face] = 1;
    neighborCount_[face] = 0;
    lastFace_ = face;
    across_ = {kNone, kNone, kNone};
    for (uint32_t edge = 0; edge < distinctEdges(faces_[face]); ++edge) {
        int32_t fewest = std::numeric_limits<int32_t>::max();
        for (const uint32_t g : adjacency_.across(face, edge)) {
            if (used_[g] || !isAdjacent(face, g)) continue;
            const int32_t count = --neighborCount_[g];
            if (count < 0) fail(assertionText(assertion));
            if (count < fewest) {
                fewest = count;
                across_[edge] = static_cast<int32_t>(g);
            }
        }
    }
    if (distinctEdges(faces_[face]) == 1) across_[1] = across_[2] = across_[0];
}

void Stripper::checkNewestAreCornersOf(uint32_t face) {
    const uint32_t* newest = &indices[indices.size() - 3];
    for (int i = 0; i < 3; ++i) {
        if (!hasCorner({newest[0], newest[1], newest[2]}, faces_[face][i])) fail(assertionText(8 + i));
    }
}

void Stripper::checkAllTaken() {
    const auto isZero = [](int32_t count) { return count == 0; };
    if (std::find(used_.begin(), used_.end(), 0) != used_.end()) fail(assertionText(1));
    if (!std::all_of(neighborCount_.begin(), neighborCount_.end(), isZero)) fail(assertionText(2));
}

void Stripper::run() {
    countNeighbors();
    std::vector<uint32_t> all(faces_.size());
    for (uint32_t f = 0; f < all.size(); ++f) all[f] = f;
    allFaces_ = FaceQueue(std::move(all), neighborCount_);
    for (;;) {
        primitives.push_back({static_cast<uint32_t>(indices.size()), 0, material_, sourcePoly_});
        if (!startStrip()) break;
        while (extendStrip()) {
        }
        if (!error.empty()) return;
    }
    primitives.pop_back();
    checkAllTaken();
}

// Position after the run of faces of one material and polyhedron that starts at first.
size_t groupEnd(const std::vector<Primitive>& primitives, size_t first) {
    size_t end = first + 1;
    while (end < primitives.size() && primitives[end].material == primitives[first].material &&
           primitives[end].sourcePoly == primitives[first].sourcePoly) {
        ++end;
    }
    return end;
}

Corners cornersOf(const Primitive& face, const std::vector<uint32_t>& indices, VertexNumbers& numbers) {
    const uint32_t* v = &indices[face.firstElement];
    Corners corners;
    for (size_t i = 0; i < 3; ++i) corners[i] = numbers.numberOf(v[i]);
    return corners;
}

std::string refusal(const Mesh& mesh) {
    for (const Primitive& p : mesh.primitives) {
        if (p.material == Primitive::NegativeMaterial) {
            return "Negative material index found while stripping, cannot continue.";
        }
        if ((p.material & kTriangleBits) != Primitive::Indexed || p.numElements != 3) {
            return "Object must be made of triangles to strip.";
        }
        if (mesh.indices.size() < 3 || p.firstElement > mesh.indices.size() - 3) {
            return "A triangle to strip lies outside the index list.";
        }
    }
    return {};
}

}  // namespace

void Mesh::strip() {
    if (primitives.empty() || indices.empty()) return;
    if (const std::string text = refusal(*this); !text.empty()) {
        setError(text);
        return;
    }

    std::vector<Primitive> strips;
    std::vector<uint32_t> stripIndices;
    VertexNumbers numbers(indices);
    for (size_t first = 0, end = 0; first < primitives.size(); first = end) {
        // Strip the faces of one group.
        end = groupEnd(primitives, first);
        numbers.startGroup();
        std::vector<Corners> faces;
        faces.reserve(end - first);
        for (size_t f = first; f < end; ++f) faces.push_back(cornersOf(primitives[f], indices, numbers));
        const auto vertexCount = static_cast<uint32_t>(numbers.vertices().size());
        Stripper stripper(std::move(faces), vertexCount, primitives[first]);
        stripper.run();

        // A failed group leaves nothing, except where it is the whole mesh.
        setError(stripper.error);
        if (!stripper.error.empty() && end - first < primitives.size()) break;

        const auto firstIndex = static_cast<uint32_t>(stripIndices.size());
        for (Primitive strip : stripper.primitives) {
            strip.firstElement += firstIndex;
            strips.push_back(strip);
        }
        for (const uint32_t number : stripper.indices) stripIndices.push_back(numbers.vertices()[number]);
    }
    primitives = std::move(strips);
    indices = std::move(stripIndices);
}

}  // namespace marrowfen
