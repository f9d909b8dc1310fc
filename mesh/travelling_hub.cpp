#include "mesh/travelling_hub.h"

#include <algorithm>
#include <cassert>

#include "mesh/common_faces.h"

namespace marrowfen {

namespace {

constexpr uint32_t kFewSteps = 2;  // a journey of fewer costs more than it saves

}  // namespace

uint32_t TravellingHub::travel(uint32_t hub, uint32_t target, uint32_t mostSteps) {
    if (!patience_.isOver()) return 0;
    if (!begin(hub)) mostSteps = 0;
    while (steps_ < mostSteps && findPath(target)) {
        step(target);
        if (tables_.costs.cheapest() != place_ || !flat_.facesOneWay(tables_.sites[place_].position)) break;
        target = firstNeighbors_.front();
    }
    if (steps_ > 0) end();
    patience_.tell(steps_ >= kFewSteps);
    return steps_;
}

bool TravellingHub::begin(uint32_t hub) {
    spokes_.resize(tables_.sites.size());
    ++journey_;
    hub_ = place_ = hub;
    steps_ = 0;
    before_.clear();
    after_.clear();
    for (const uint32_t face : tables_.lists[facesOf(hub)]) {
        if (face != ListPool::kGap) after_.push_back(face);
    }
    if (!makeRing() || !makeFlat() || !flat_.facesOneWay(tables_.sites[hub].position)) return false;
    watched_.clear();
    for (const uint32_t vertex : triangleOf_) watch(vertex);
    return true;
}

// Links the hub's neighbours; false where they aren't one ring.
bool TravellingHub::makeRing() {
    for (const uint32_t face : after_) {
        const Corners& c = tables_.faces.corners(face);
        const uint32_t at = findCorner(c, hub_);
        const uint32_t a = c[(at + 1) % 3], b = c[(at + 2) % 3];
        if (isOnRing(a)) return false;
        spokes_[a] = {journey_, b, 0, face, 0, 0};
    }
    triangleOf_.clear();
    const Corners& c = tables_.faces.corners(after_.front());
    const uint32_t first = c[(findCorner(c, hub_) + 1) % 3];
    uint32_t vertex = first;
    do {
        const uint32_t next = spokes_[vertex].next;
        if (!isOnRing(next)) return false;
        spokes_[next].before = vertex;
        triangleOf_.push_back(vertex);
        vertex = next;
    } while (vertex != first && triangleOf_.size() < after_.size());
    return vertex == first && triangleOf_.size() == after_.size();
}

bool TravellingHub::makeFlat() {
    points_.assign(1, tables_.sites[hub_].position);
    for (const uint32_t vertex : triangleOf_) points_.push_back(tables_.sites[vertex].position);
    if (!flat_.begin(points_)) return false;
    const std::vector<uint32_t> ring = std::move(triangleOf_);
    triangleOf_.clear();
    for (const uint32_t vertex : ring) addTriangle(vertex);
    return true;
}

void TravellingHub::addTriangle(uint32_t spoke) {
    spokes_[spoke].triangle = static_cast<uint32_t>(triangleOf_.size());
    triangleOf_.push_back(spoke);
    flat_.add(tables_.sites[spoke].position, tables_.sites[spokes_[spoke].next].position);
}

void TravellingHub::removeTriangle(uint32_t spoke) {
    const uint32_t number = spokes_[spoke].triangle;
    flat_.remove(number);
    triangleOf_[number] = triangleOf_.back();
    spokes_[triangleOf_[number]].triangle = number;
    triangleOf_.pop_back();
}

// Puts the target's other faces in the order in which they take its place in the ring; false where the hub's faces
// wouldn't be a disc in the plane any more.
bool TravellingHub::findPath(uint32_t target) {
    const auto faces = tables_.lists[facesOf(target)], neighbors = tables_.lists[neighborsOf(target)];
    if (faces.size() > kMostFaces || faces.size() != neighbors.size() || faces.size() < 3) return false;
    if (tables_.lists.hasGaps(facesOf(target)) || tables_.lists.hasGaps(neighborsOf(target))) return false;
    path_.clear();
    for (const uint32_t face : faces) {
        const Corners& c = tables_.faces.corners(face);
        const uint32_t at = findCorner(c, target);
        if (!hasCorner(c, hub_)) path_.push_back({face, c[(at + 1) % 3], c[(at + 2) % 3]});
    }
    if (path_.size() + 2 != faces.size() || triangleOf_.size() + path_.size() < 5) return false;

    // As many neighbours as faces: none comes twice.
    uint32_t from = spokes_[target].before;
    for (size_t i = 0; i < path_.size(); ++i) {
        const auto rest = path_.begin() + static_cast<ptrdiff_t>(i);
        const auto next = std::find_if(rest, path_.end(), [&](const Wedge& w) { return w.a == from; });
        if (next == path_.end() || (i > 0 && !isBesideRing(from))) return false;
        std::swap(*rest, *next);
        from = path_[i].b;
    }
    return from == spokes_[target].next;
}

bool TravellingHub::isBesideRing(uint32_t vertex) const {
    return !isOnRing(vertex) && flat_.contains(tables_.sites[vertex].position);
}

// The hub collapses onto a vertex of its ring: onto v, in place of which the ring gets the path from a to b around it.
//
//     a - . - b        a - . - b
//      \  | /           \  | /     The two faces of the hub h with v go.
//       \ v      ->      \ h
//       / | \           /    \.
//      . -h- .         .      .
void TravellingHub::step(uint32_t target) {
    ++steps_;
    const Spoke own = spokes_[target];
    destroyFace(own.before, own.before);
    destroyFace(target, own.next);
    takeNeighbors(target);
    takePath(target);
    tables_.states[place_].isBound = false;
    tables_.costs.set(place_, CostTree::kNever);
    place_ = target;
    tables_.states[place_].isBound = true;
    tables_.costs.set(place_, 0);
}

// That after the spoke.
void TravellingHub::destroyFace(uint32_t spoke, uint32_t third) {
    const uint32_t face = spokes_[spoke].face;
    tables_.faces.remove(face);
    tables_.lists.remove(facesOf(third), face);
    removeTriangle(spoke);
}

// The hub keeps the neighbours of its new place in their order before those that it brings along. To those of them that
// were its neighbours before it is what the target was to them; in the lists of the others it goes to the end.
void TravellingHub::takeNeighbors(uint32_t target) {
    firstNeighbors_.clear();
    for (const uint32_t neighbor : tables_.lists[neighborsOf(target)]) {
        if (neighbor != hub_) firstNeighbors_.push_back(neighbor);
    }
    for (const uint32_t neighbor : firstNeighbors_) {
        if (isOnRing(neighbor)) tables_.lists.remove(neighborsOf(neighbor), hub_);
        tables_.lists.rename(neighborsOf(neighbor), target, hub_);
    }
    tables_.lists.clear(neighborsOf(target));
}

// The hub's faces come after those of the target, from the last to the first.
void TravellingHub::takePath(uint32_t target) {
    std::swap(before_, after_);
    const auto faces = tables_.lists[facesOf(target)];
    for (size_t i = faces.size(); i-- > 0;) {
        if (!tables_.faces.isGone(faces[i])) before_.push_back(faces[i]);
    }
    tables_.lists.clear(facesOf(target));
    spokes_[target].journey = 0;
    for (const Wedge& w : path_) {
        Spoke& spoke = spokes_[w.a];
        spoke.next = w.b;
        spoke.face = w.face;
        spoke.since = spokes_[w.b].since = steps_;
        spokes_[w.b].before = w.a;
        tables_.faces.moveCorner(w.face, target, hub_);
        addTriangle(w.a);
    }
    for (size_t i = 1; i < path_.size(); ++i) {
        spokes_[path_[i].a].journey = journey_;
        watch(path_[i].a);
    }
}

// A vertex that joins the ring. What is known of its collapse will only be a bound, and none where it isn't on a
// border. One that is stays so, and its cost above 0 while the hub is apart from it: the edge that shows it has one
// face, those of the hub and of its targets have two.
void TravellingHub::watch(uint32_t vertex) {
    tables_.states[vertex].isBound = true;
    if (tables_.costs.costOf(vertex) <= 0) return;
    if (isOnBorder(vertex)) {
        watched_.push_back(vertex);
    } else {
        tables_.costs.set(vertex, 0);
    }
}

bool TravellingHub::isOnBorder(uint32_t vertex) const {
    const uint32_t border = tables_.states[vertex].border;
    return border != CollapseFinder::kNone && border != hub_ &&
           countCommonFaces(tables_.faces, tables_.lists, vertex, border) == 1;
}

void TravellingHub::end() {
    star_.clear();
    for (size_t i = before_.size(); i-- > 0;) {
        if (!tables_.faces.isGone(before_[i])) star_.push_back(before_[i]);
    }
    for (const uint32_t face : after_) {
        if (!tables_.faces.isGone(face)) star_.push_back(face);
    }
    tables_.lists.clear(facesOf(hub_));
    for (const uint32_t face : star_) {
        tables_.faces.moveCorner(face, hub_, place_);
        tables_.lists.append(facesOf(place_), face);
    }
    for (const uint32_t vertex : watched_) {
        const float distance = length(tables_.sites[place_].position - tables_.sites[vertex].position);
        if (isOnRing(vertex) && distance < tables_.costs.costOf(vertex)) tables_.costs.set(vertex, distance);
    }
    endNeighbors();
}

// To the hub those come first that were neighbours of its place, then the others in the order of its faces.
void TravellingHub::endNeighbors() {
    tables_.lists.clear(neighborsOf(hub_));
    for (const uint32_t vertex : triangleOf_) {
        if (spokes_[vertex].since == steps_) {
            tables_.lists.rename(neighborsOf(vertex), hub_, place_);
        } else {
            tables_.lists.replace(neighborsOf(vertex), hub_, place_);
        }
    }
    const auto append = [&](uint32_t vertex) {
        if (!isOnRing(vertex)) return;
        spokes_[vertex].journey = 0;
        tables_.lists.append(neighborsOf(place_), vertex);
    };
    for (const uint32_t vertex : firstNeighbors_) append(vertex);
    for (const uint32_t face : star_) {
        for (const uint32_t vertex : tables_.faces.corners(face)) append(vertex);
    }
    assert(tables_.lists.size(neighborsOf(place_)) == triangleOf_.size());
}

}  // namespace marrowfen
