#include "mesh/decimator.h"

#include <algorithm>
#include <cassert>
#include <utility>

#include "mesh/common_faces.h"

namespace marrowfen {

// The vertex with the cheapest collapse is moved onto its neighbour, again and again, until few enough faces are left.
// The cost of a collapse depends on the faces of the vertex alone, so that only the neighbours of a vertex that is gone
// have to be looked at again.
//
// Lists keep the order in which entries came and left: it decides between equal costs. A vertex stands twice in the
// lists of a face that has it twice, and is then a neighbour of itself; its own collapse removes all of its faces.

namespace {

constexpr size_t kFewNeighbors = 8;        // so many more than a vertex has are marked for it rather than looked for
constexpr float kLoneVertexCost = -0.01F;  // below every collapse: a vertex without neighbours goes first

[[gnu::noinline]] std::span<const uint32_t> withoutGaps(const ListPool& lists, uint32_t list,
                                                        std::vector<uint32_t>& scratch) {
    scratch.clear();
    for (const uint32_t n : lists[list]) {
        if (n != ListPool::kGap) scratch.push_back(n);
    }
    assert(scratch.size() == lists.size(list));
    return scratch;
}

// The numbers of a list; scratch takes them where the list has gaps.
inline std::span<const uint32_t> numbersOf(const ListPool& lists, uint32_t list, std::vector<uint32_t>& scratch) {
    return lists.hasGaps(list) ? withoutGaps(lists, list, scratch) : lists[list];
}

std::vector<Site> sitesOf(const Mesh& mesh) {
    std::vector<Site> sites;
    sites.reserve(mesh.vertexes.size());
    for (const Point3& p : mesh.vertexes) sites.push_back({p});
    return sites;
}

}  // namespace

Decimator::Decimator(const Mesh& mesh)
    : primitives_(mesh.primitives),
      sites_(sitesOf(mesh)),
      faces_(sites_, mesh.primitives.size()),
      faceCount_(static_cast<int32_t>(mesh.primitives.size())),
      lists_(2 * mesh.vertexes.size()),
      states_(mesh.vertexes.size() + 1),
      costs_(mesh.vertexes.size()),
      finder_(sites_, faces_),
      fetchAhead_(sites_, faces_, lists_),
      hubBounds_(sites_, faces_, lists_),
      hubRuns_({sites_, faces_, lists_, states_, costs_}) {
    for (uint32_t f = 0; f < faces_.size(); ++f) {
        const uint32_t* v = &mesh.indices[primitives_[f].firstElement];
        addFace(f, {v[0], v[1], v[2]});
    }
    for (uint32_t v = 0; v < sites_.size(); ++v) touch(v, kNone, kNone);
}

void Decimator::addFace(uint32_t face, const Corners& corners) {
    assert(face < faces_.size());
    faces_.setCorners(face, corners);
    for (const uint32_t v : corners) lists_.append(facesOf(v), face);
    connectCorners(corners);
}

// Makes neighbours of the corners, for each corner in turn.
void Decimator::connectCorners(const Corners& c) {
    if (hasRepeats(c)) {
        hubRuns_.refuse();
        for (size_t i = 0; i < 3; ++i) {
            for (size_t j = 0; j < 3; ++j) {
                if (i != j && !lists_.contains(neighborsOf(c[i]), c[j])) lists_.append(neighborsOf(c[i]), c[j]);
            }
        }
        return;
    }
    const bool isNew01 = !areNeighbors(c[0], c[1]);
    const bool isNew02 = !areNeighbors(c[0], c[2]);
    const bool isNew12 = !areNeighbors(c[1], c[2]);
    if (isNew01) lists_.append(neighborsOf(c[0]), c[1]);
    if (isNew02) lists_.append(neighborsOf(c[0]), c[2]);
    if (isNew01) lists_.append(neighborsOf(c[1]), c[0]);
    if (isNew12) lists_.append(neighborsOf(c[1]), c[2]);
    if (isNew02) lists_.append(neighborsOf(c[2]), c[0]);
    if (isNew12) lists_.append(neighborsOf(c[2]), c[1]);
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
        lists_.append(neighborsOf(moved), missing[i]);
        lists_.append(neighborsOf(missing[i]), moved);
    }
}

void Decimator::markNeighbors(uint32_t vertex) {
    for (const uint32_t v : lists_[neighborsOf(vertex)]) {
        if (v != ListPool::kGap) states_[v].mark = isNeighbor_;
    }
}

// The same where the neighbours of the vertex are marked. Who joins them parts from the one that collapses.
void Decimator::connectMarked(const Corners& c, uint32_t from, uint32_t onto) {
    if (hasRepeats(c)) {
        connectCorners(c);
        for (const uint32_t corner : c) states_[corner].mark = std::max(states_[corner].mark, isNeighbor_);
        return;
    }
    const uint32_t at = findCorner(c, onto);
    for (const uint32_t corner : {c[at == 0], c[at == 2 ? 1 : 2]}) {
        if (states_[corner].mark >= isNeighbor_) continue;
        lists_.append(neighborsOf(onto), corner);
        lists_.replace(neighborsOf(corner), from, onto);
        states_[corner].mark = hasJoined_;
    }
}

// Neighbours are so mutually: the shorter list tells.
bool Decimator::areNeighbors(uint32_t a, uint32_t b) const {
    return lists_.size(neighborsOf(a)) < lists_.size(neighborsOf(b)) ? lists_.contains(neighborsOf(a), b)
                                                                     : lists_.contains(neighborsOf(b), a);
}

// A vertex shares every one of its faces with itself.
bool Decimator::shareFace(uint32_t a, uint32_t b) const {
    if (lists_.size(facesOf(b)) < lists_.size(facesOf(a))) std::swap(a, b);
    for (const uint32_t face : lists_[facesOf(a)]) {
        if (face != ListPool::kGap && hasCorner(faces_.corners(face), b)) return true;
    }
    return false;
}

void Decimator::partUnlessSharingFace(uint32_t a, uint32_t b) {
    if (shareFace(a, b)) return;
    lists_.remove(neighborsOf(a), b);
    lists_.remove(neighborsOf(b), a);
}

// The vertex's collapse may have changed, by one from a neighbour onto another vertex. A bound serves as long as others
// cost less: in flat regions, where collapses cost nothing, and at hubs most vertices never come up as the cheapest.
void Decimator::touch(uint32_t vertex, uint32_t from, uint32_t onto) {
    if (lists_.isEmpty(neighborsOf(vertex))) {
        states_[vertex].target = kNone;
        states_[vertex].isBound = false;
        costs_.set(vertex, kLoneVertexCost);
    } else if (hubBounds_.isHub(vertex)) {
        lists_.tidy(neighborsOf(vertex));
        lists_.tidy(facesOf(vertex));
        setBound(vertex, hubBounds_.boundOf(vertex));
    } else {
        hubBounds_.forget(vertex);
        if (states_[vertex].border != kNone && touchOnBorder(vertex, from, onto)) return;
        if (costs_.lowestCost() > 0) {
            findCollapse(vertex);
        } else {
            setBound(vertex, 0);
        }
    }
}

// On a border costs are lengths, so that a vertex has to be looked at again only where its target is gone, or may have
// gone to the end of its neighbours' order, as onto does, which may also be new. False where the vertex isn't known to
// be on a border or its cheapest collapse had better be found at once.
bool Decimator::touchOnBorder(uint32_t vertex, uint32_t from, uint32_t onto) {
    VertexState& state = states_[vertex];
    if (vertex == onto || from == onto) return false;
    if (countCommonFaces(faces_, lists_, vertex, state.border) != 1) return false;
    if (state.target == from || state.target == onto) {
        if (costs_.lowestCost() > 0) return false;
        state.isBound = true;
    }
    const float distance = length(sites_[onto].position - sites_[vertex].position);
    if (distance < costs_.costOf(vertex) && lists_.contains(neighborsOf(vertex), onto)) {
        state.target = onto;
        costs_.set(vertex, distance);
    }
    return true;
}

void Decimator::setBound(uint32_t vertex, float bound) {
    costs_.set(vertex, bound);
    states_[vertex].isBound = true;
}

void Decimator::findCollapse(uint32_t vertex) {
    VertexState& state = states_[vertex];
    const CollapseFinder::Collapse found =
        finder_.cheapest(vertex, numbersOf(lists_, neighborsOf(vertex), neighborScratch_),
                         numbersOf(lists_, facesOf(vertex), faceScratch_), state.target);
    state.target = found.target;
    state.border = found.border;
    state.isBound = false;
    costs_.set(vertex, found.cost);
    if (hubBounds_.isHub(vertex) && costs_.cheapest() != vertex) hubBounds_.watch(vertex, found);
}

// The first of the vertices whose collapse costs least. Of those with a bound only those are looked at that could be
// it.
uint32_t Decimator::findCheapest() {
    while (states_[costs_.cheapest()].isBound) findCollapse(costs_.cheapest());
    return costs_.cheapest();
}

void Decimator::collapse(uint32_t from, uint32_t onto) {
    assert(from != onto ||
           lists_.contains(neighborsOf(from), from));  // its own neighbour through a face that repeats it
    hubRuns_.collapsed(onto);
    costs_.set(from, CostTree::kNever);
    const uint32_t next = costs_.cheapest();  // unless it is one of those that this collapse makes cheaper
    fetchAhead_.fetchLists(next);
    isNeighbor_ += 2;
    hasJoined_ += 2;
    touched_.clear();
    for (const uint32_t v : lists_[neighborsOf(from)]) {
        if (v == ListPool::kGap || v == from) continue;
        touched_.push_back(v);
        lists_.fetch(facesOf(v));
    }
    moved_.clear();
    if (onto != kNone) {
        destroyCommonFaces(from, onto);
        moveFaces(from, onto);
    }
    destroyVertex(from, onto);
    if (costs_.lowestCost() > 0) {
        for (const uint32_t face : moved_) faces_.normal(face);  // together, as all are about to be asked for
        for (const uint32_t v : touched_) fetchAhead_.fetchFaces(v);
    }
    fetchAhead_.fetchNeighbors(next);
    for (const uint32_t face : moved_) hubBounds_.faceChanged(face);
    for (size_t i = 0; i < touched_.size(); ++i) {
        const uint32_t v = touched_[i];
        if (i == 1) fetchAhead_.fetchFurther(next);
        // In flat regions most already stand among those that may cost nothing, and still have neighbours.
        const VertexState& state = states_[v];
        if (state.mark == hasJoined_ && state.isBound && costs_.costOf(v) == 0 && costs_.lowestCost() <= 0) continue;
        touch(v, from, onto);
    }
}

// From the last to the first. A face that has the vertex twice leaves two gaps in the list.
void Decimator::destroyCommonFaces(uint32_t from, uint32_t onto) {
    for (size_t i = lists_[facesOf(from)].size(); i-- > 0;) {
        if (i >= lists_[facesOf(from)].size()) continue;
        const uint32_t face = lists_[facesOf(from)][i];
        if (face != ListPool::kGap && hasCorner(faces_.corners(face), onto)) destroyFace(face, from);
    }
}

// One of the faces of the vertex that collapses. Where that vertex still is a neighbour it is removed at the end.
void Decimator::destroyFace(uint32_t face, uint32_t from) {
    const Corners c = faces_.corners(face);
    assert(hasCorner(c, from) && !faces_.isGone(face));
    faces_.remove(face);
    --faceCount_;
    for (const uint32_t v : c) lists_.remove(facesOf(v), face);
    const uint32_t at = findCorner(c, from);
    const uint32_t a = c[(at + 1) % 3], b = c[(at + 2) % 3];
    if (a != from && b != from) partUnlessSharingFace(a, b);
}

// From the last to the first, one corner at a time.
void Decimator::moveFaces(uint32_t from, uint32_t onto) {
    const bool isOntoFew = lists_.size(neighborsOf(onto)) <= lists_.size(neighborsOf(from)) + kFewNeighbors;
    if (isOntoFew) markNeighbors(onto);
    while (!lists_.isEmpty(facesOf(from))) {
        const uint32_t face = lists_.last(facesOf(from));
        faces_.moveCorner(face, from, onto);
        const Corners& corners = faces_.corners(face);
        if (hasCorner(corners, from)) {
            lists_.remove(facesOf(from), face);
        } else {
            lists_.removeLast(facesOf(from));
        }
        lists_.append(facesOf(onto), face);
        if (isOntoFew) {
            connectMarked(corners, from, onto);
        } else {
            connectMoved(corners, onto);
        }
        moved_.push_back(face);
    }
}

// The vertex is known to those that were its neighbours and, for a while, to the one onto which it went.
void Decimator::destroyVertex(uint32_t vertex, uint32_t onto) {
    assert(lists_.isEmpty(facesOf(vertex)));
    for (const uint32_t v : touched_) {
        if (states_[v].mark != hasJoined_) lists_.remove(neighborsOf(v), vertex);
    }
    if (onto != kNone) lists_.remove(neighborsOf(onto), vertex);
    lists_.clear(neighborsOf(vertex));
    lists_.clear(facesOf(vertex));
    hubBounds_.forget(vertex);
    states_[vertex].isBound = false;
}

void Decimator::run(int32_t targetCount) {
    while (faceCount_ > targetCount) {
        const uint32_t cheapest = findCheapest();
        if (costs_.lowestCost() == CostTree::kNever) break;
        assert(cheapest < sites_.size() && !states_[cheapest].isBound);
        const uint32_t target = states_[cheapest].target;
        const auto surplus = static_cast<uint32_t>(std::min<int64_t>(int64_t{faceCount_} - targetCount, faceCount_));
        const uint32_t removed = hubRuns_.run(cheapest, target, surplus, hubBounds_);
        faceCount_ -= static_cast<int32_t>(removed);
        if (removed == 0) collapse(cheapest, target);
    }
}

MeshFaces Decimator::faces() const {
    MeshFaces left;
    for (uint32_t f = 0; f < faces_.size(); ++f) {
        if (faces_.isGone(f)) continue;
        const Corners& corners = faces_.corners(f);
        const auto first = static_cast<uint32_t>(left.indices.size());
        left.primitives.push_back({first, 3, primitives_[f].material, primitives_[f].sourcePoly});
        left.indices.insert(left.indices.end(), corners.begin(), corners.end());
    }
    assert(left.primitives.size() == static_cast<size_t>(faceCount_));
    return left;
}

}  // namespace marrowfen
