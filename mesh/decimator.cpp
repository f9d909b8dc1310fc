#include "mesh/decimator.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace marrowfen {

// The vertex with the cheapest collapse is moved onto its neighbour, again and again, until few enough faces are left.
// The cost of a collapse depends on the faces of the vertex alone, so that only the neighbours of a vertex that is gone
// have to be looked at again.
//
// Lists keep the order in which entries came and left: it decides between equal costs. A vertex stands twice in the
// lists of a face that has it twice, and is then a neighbour of itself; its own collapse removes all of its faces.

namespace {

constexpr float kLoneVertexCost = -0.01F;  // below every collapse: a vertex without neighbours goes first

// The numbers of a list; scratch takes them where the list has gaps.
std::span<const uint32_t> numbersOf(const ListPool& lists, uint32_t list, std::vector<uint32_t>& scratch) {
    const std::span<const uint32_t> numbers = lists[list];
    if (numbers.size() == lists.size(list)) return numbers;
    scratch.clear();
    std::copy_if(numbers.begin(), numbers.end(), std::back_inserter(scratch),
                 [](uint32_t n) { return n != ListPool::kGap; });
    assert(scratch.size() == lists.size(list));
    return scratch;
}

}  // namespace

Decimator::Decimator(const Mesh& mesh)
    : positions_(mesh.vertexes),
      primitives_(mesh.primitives),
      faces_(mesh.primitives.size()),
      vertexIsGone_(mesh.vertexes.size()),
      isBound_(mesh.vertexes.size() + 1),
      faceCount_(static_cast<int32_t>(mesh.primitives.size())),
      neighbors_(mesh.vertexes.size()),
      facesOf_(mesh.vertexes.size()),
      targets_(mesh.vertexes.size(), kNone),
      costs_(mesh.vertexes.size()),
      finder_(positions_, faces_),
      hubBounds_(positions_, faces_, neighbors_, facesOf_) {
    for (uint32_t f = 0; f < faces_.size(); ++f) {
        const uint32_t* v = &mesh.indices[primitives_[f].firstElement];
        faces_[f].corners = {v[0], v[1], v[2]};
        addFace(f);
    }
    for (uint32_t v = 0; v < positions_.size(); ++v) touch(v);
}

void Decimator::addFace(uint32_t face) {
    updateNormal(faces_[face]);
    for (const uint32_t v : faces_[face].corners) facesOf_.append(v, face);
    connectCorners(faces_[face].corners);
}

void Decimator::updateNormal(DecimationFace& face) const {
    const auto [a, b, c] = face.corners;
    face.normal = normalized(cross(positions_[c] - positions_[b], positions_[b] - positions_[a]));
}

// Makes neighbours of the corners, for each corner in turn.
void Decimator::connectCorners(const Corners& c) {
    if (hasRepeats(c)) {
        for (size_t i = 0; i < 3; ++i) {
            for (size_t j = 0; j < 3; ++j) {
                if (i != j && !neighbors_.contains(c[i], c[j])) neighbors_.append(c[i], c[j]);
            }
        }
        return;
    }
    const bool isNew01 = !areNeighbors(c[0], c[1]);
    const bool isNew02 = !areNeighbors(c[0], c[2]);
    const bool isNew12 = !areNeighbors(c[1], c[2]);
    if (isNew01) neighbors_.append(c[0], c[1]);
    if (isNew02) neighbors_.append(c[0], c[2]);
    if (isNew01) neighbors_.append(c[1], c[0]);
    if (isNew12) neighbors_.append(c[1], c[2]);
    if (isNew02) neighbors_.append(c[2], c[0]);
    if (isNew12) neighbors_.append(c[2], c[1]);
}

// The same where the other two corners are neighbours already.
void Decimator::connectMoved(const Corners& c, uint32_t moved) {
    if (hasRepeats(c)) {
        connectCorners(c);
        return;
    }
    uint32_t missing[2];
    size_t count = 0;
    for (const uint32_t corner : c) {
        if (corner != moved && !areNeighbors(moved, corner)) missing[count++] = corner;
    }
    for (size_t i = 0; i < count; ++i) {
        neighbors_.append(moved, missing[i]);
        neighbors_.append(missing[i], moved);
    }
}

// Neighbours are so mutually: the shorter list tells.
bool Decimator::areNeighbors(uint32_t a, uint32_t b) const {
    return neighbors_.size(a) < neighbors_.size(b) ? neighbors_.contains(a, b) : neighbors_.contains(b, a);
}

// A vertex shares every one of its faces with itself.
bool Decimator::shareFace(uint32_t a, uint32_t b) const {
    if (facesOf_.size(b) < facesOf_.size(a)) std::swap(a, b);
    for (const uint32_t face : facesOf_[a]) {
        if (face != ListPool::kGap && hasCorner(faces_[face].corners, b)) return true;
    }
    return false;
}

void Decimator::partUnlessSharingFace(uint32_t a, uint32_t b) {
    if (shareFace(a, b)) return;
    neighbors_.remove(a, b);
    neighbors_.remove(b, a);
}

// The vertex's collapse may have changed. A bound serves as long as others cost less: in flat regions, where collapses
// cost nothing, and at hubs most vertices never come up as the cheapest.
void Decimator::touch(uint32_t vertex) {
    if (neighbors_.isEmpty(vertex)) {
        targets_[vertex] = kNone;
        costs_.set(vertex, kLoneVertexCost);
        isBound_[vertex] = 0;
    } else if (hubBounds_.isHub(vertex)) {
        neighbors_.tidy(vertex);
        facesOf_.tidy(vertex);
        setBound(vertex, hubBounds_.boundOf(vertex));
    } else {
        hubBounds_.forget(vertex);
        if (costs_.lowestCost() > 0) {
            findCollapse(vertex);
        } else {
            setBound(vertex, 0);
        }
    }
}

void Decimator::setBound(uint32_t vertex, float bound) {
    costs_.set(vertex, bound);
    isBound_[vertex] = 1;
}

void Decimator::findCollapse(uint32_t vertex) {
    const CollapseFinder::Collapse found =
        finder_.cheapest(vertex, numbersOf(neighbors_, vertex, neighborScratch_),
                         numbersOf(facesOf_, vertex, faceScratch_), targets_[vertex]);
    targets_[vertex] = found.target;
    costs_.set(vertex, found.cost);
    isBound_[vertex] = 0;
    if (hubBounds_.isHub(vertex) && costs_.cheapest() != vertex) hubBounds_.watch(vertex, found);
}

// The first of the vertices whose collapse costs least. Of those with a bound only those are looked at that could be
// it.
uint32_t Decimator::findCheapest() {
    while (isBound_[costs_.cheapest()]) findCollapse(costs_.cheapest());
    return costs_.cheapest();
}

void Decimator::collapse(uint32_t from, uint32_t onto) {
    assert(!vertexIsGone_[from]);
    touched_.clear();
    for (const uint32_t v : neighbors_[from]) {
        if (v != ListPool::kGap) touched_.push_back(v);
    }
    moved_.clear();
    if (onto != kNone) {
        destroyCommonFaces(from, onto);
        moveFaces(from, onto);
    }
    destroyVertex(from, onto);
    for (const uint32_t face : moved_) hubBounds_.faceChanged(face);
    fetchTouchedFaces();
    for (const uint32_t v : touched_) {
        if (!vertexIsGone_[v]) touch(v);
    }
}

// Starts to load the faces of all touched vertices, which stand all over the memory.
void Decimator::fetchTouchedFaces() const {
    constexpr size_t kMost = 8;  // faces of a vertex; most have six
    for (const uint32_t v : touched_) {
        const std::span<const uint32_t> faces = facesOf_[v];
        for (const uint32_t face : faces.first(std::min(faces.size(), kMost))) {
            if (face != ListPool::kGap) __builtin_prefetch(&faces_[face]);
        }
    }
}

// From the last to the first. A face that has the vertex twice leaves two gaps in the list.
void Decimator::destroyCommonFaces(uint32_t from, uint32_t onto) {
    for (size_t i = facesOf_[from].size(); i-- > 0;) {
        if (i >= facesOf_[from].size()) continue;
        const uint32_t face = facesOf_[from][i];
        if (face != ListPool::kGap && hasCorner(faces_[face].corners, onto)) destroyFace(face, from);
    }
}

// One of the faces of the vertex that collapses. Where that vertex still is a neighbour it is removed at the end.
void Decimator::destroyFace(uint32_t face, uint32_t from) {
    const Corners c = faces_[face].corners;
    assert(hasCorner(c, from));
    faces_[face].corners = {kNone, kNone, kNone};
    --faceCount_;
    for (const uint32_t v : c) facesOf_.remove(v, face);
    for (size_t i = 0; i < 3; ++i) {
        const uint32_t a = c[i], b = c[(i + 1) % 3];
        if (a != from && b != from) partUnlessSharingFace(a, b);
    }
}

// From the last to the first, one corner at a time.
void Decimator::moveFaces(uint32_t from, uint32_t onto) {
    while (!facesOf_.isEmpty(from)) {
        const uint32_t number = facesOf_.last(from);
        DecimationFace& face = faces_[number];
        *std::find(face.corners.begin(), face.corners.end(), from) = onto;
        if (hasCorner(face.corners, from)) {
            facesOf_.remove(from, number);
        } else {
            facesOf_.removeLast(from);
        }
        facesOf_.append(onto, number);
        connectMoved(face.corners, onto);
        updateNormal(face);
        moved_.push_back(number);
    }
}

// The vertex is known to those that were its neighbours and, for a while, to the one onto which it went.
void Decimator::destroyVertex(uint32_t vertex, uint32_t onto) {
    for (const uint32_t v : touched_) neighbors_.remove(v, vertex);
    if (onto != kNone) neighbors_.remove(onto, vertex);
    neighbors_.clear(vertex);
    hubBounds_.forget(vertex);
    vertexIsGone_[vertex] = 1;
    isBound_[vertex] = 0;
    costs_.set(vertex, CostTree::kNever);
    assert(facesOf_.isEmpty(vertex));
}

void Decimator::run(int32_t targetCount) {
    while (faceCount_ > targetCount) {
        const uint32_t cheapest = findCheapest();
        if (costs_.lowestCost() == CostTree::kNever) break;
        collapse(cheapest, targets_[cheapest]);
    }
}

MeshFaces Decimator::faces() const {
    MeshFaces left;
    for (size_t f = 0; f < faces_.size(); ++f) {
        const Corners& corners = faces_[f].corners;
        if (corners[0] == kNone) continue;
        const auto first = static_cast<uint32_t>(left.indices.size());
        left.primitives.push_back({first, 3, primitives_[f].material, primitives_[f].sourcePoly});
        left.indices.insert(left.indices.end(), corners.begin(), corners.end());
    }
    assert(left.primitives.size() == static_cast<size_t>(faceCount_));
    return left;
}

}  // namespace marrowfen
