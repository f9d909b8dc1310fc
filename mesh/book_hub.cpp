#include "mesh/book_hub.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <limits>

namespace marrowfen {

// Distances are computed in 32-bit floats, each with an error below 2^-21 of it while squares of coordinates and of
// distances stay among the normal numbers, as kMostCoordinate and kLeastDistance see to. Bounds and ways are summed in
// 64-bit floats, each sum with an error below 2^-52 of it, of which a run of 2^16 steps gathers less than 2^-36 of the
// way. Both errors are covered by looking at all pages whose bounds are above the least distance by a 2^-12th of that
// and a 2^-30th of the way, or by less.

namespace {

constexpr float kMostCoordinate = 0x1p60F, kLeastDistance = 0x1p-50F;
constexpr uint32_t kMostSteps = 1U << 16;
constexpr uint32_t kFewestPages = 3;  // left
constexpr uint32_t kFewTurns = 16;    // a run of fewer costs more than it saves
constexpr double kDistanceSlack = 0x1p-12, kWaySlack = 0x1p-30;

bool isModerate(const Point3& p) {
    return std::abs(p.x) <= kMostCoordinate && std::abs(p.y) <= kMostCoordinate && std::abs(p.z) <= kMostCoordinate;
}

}  // namespace

uint32_t BookHub::run(uint32_t hub, uint32_t mostSteps) {
    if (!patience_.isOver()) return 0;
    if (!begin(hub)) {
        patience_.tell(false);
        return 0;
    }
    hideCosts();
    mostSteps = std::min({mostSteps, kMostSteps, static_cast<uint32_t>(pages_.size()) - kFewestPages});
    while (steps_ < mostSteps && findNearest()) turnPage();
    end();
    patience_.tell(steps_ >= kFewTurns);
    return steps_;
}

bool BookHub::begin(uint32_t hub) {
    hub_ = place_ = hub;
    position_ = tables_.sites[hub].position;
    steps_ = 0;
    way_ = 0;
    isReversed_ = false;
    pages_.clear();
    if (!findSpine() || !isModerate(position_) || !isModerate(tables_.sites[spine_].position)) return false;
    for (const uint32_t face : tables_.lists[facesOf(hub)]) {
        if (face != ListPool::kGap && !takePage(face)) return false;
    }
    firstLeft_ = 0;
    lastLeft_ = static_cast<uint32_t>(pages_.size()) - 1;
    return areNeighborsInOrder();
}

// What the first two faces have in common.
bool BookHub::findSpine() {
    const auto faces = tables_.lists[facesOf(hub_)];
    const auto isFace = [](uint32_t face) { return face != ListPool::kGap; };
    const auto first = std::find_if(faces.begin(), faces.end(), isFace);
    const auto second = std::find_if(first + 1, faces.end(), isFace);
    const Corners &a = tables_.faces.corners(*first), &b = tables_.faces.corners(*second);
    const auto isCommon = [&](uint32_t v) { return v != hub_ && hasCorner(b, v); };
    const auto found = std::find_if(a.begin(), a.end(), isCommon);
    if (found == a.end()) return false;
    spine_ = *found;
    return true;
}

bool BookHub::takePage(uint32_t face) {
    const Corners& c = tables_.faces.corners(face);
    if (!hasCorner(c, spine_)) return false;
    const uint32_t page = c[0] ^ c[1] ^ c[2] ^ hub_ ^ spine_;  // the third corner
    if (tables_.lists.size(facesOf(page)) != 1 || !isModerate(tables_.sites[page].position)) return false;
    pages_.push_back({page, face, tables_.sites[page].position});
    return true;
}

// Whether the hub's neighbours are the pages in the order of its faces, with the spine first or second.
bool BookHub::areNeighborsInOrder() const {
    const auto neighbors = tables_.lists[neighborsOf(hub_)];
    size_t page = 0;
    for (const uint32_t neighbor : neighbors) {
        if (neighbor == ListPool::kGap || neighbor == spine_) continue;
        if (page == pages_.size() || pages_[page++].vertex != neighbor) return false;
    }
    return page == pages_.size();
}

// Takes the hub and its pages out of the costs: what is left is what others cost.
void BookHub::hideCosts() {
    bounds_.clear();
    mostCost_ = length(tables_.sites[spine_].position - position_);
    for (uint32_t i = 0; i < pages_.size(); ++i) {
        tables_.costs.set(pages_[i].vertex, CostTree::kNever);
        mostCost_ = std::min(mostCost_, length(tables_.sites[spine_].position - pages_[i].position));
        keep(i, length(position_ - pages_[i].position));
    }
    tables_.costs.set(hub_, CostTree::kNever);
    mostCost_ = std::min(mostCost_, tables_.costs.lowestCost());
}

void BookHub::keep(uint32_t page, float distance) {
    bounds_.push_back({double{distance} * (1 - kDistanceSlack / 16) + way_, page});
    std::push_heap(bounds_.begin(), bounds_.end(), isDearer);
}

// False where another collapse may come before that of the nearest pages or of the hub onto one of them.
bool BookHub::findNearest() {
    looked_.clear();
    distance_ = std::numeric_limits<float>::infinity();
    while (!bounds_.empty()) {
        const auto [bound, page] = bounds_.front();
        if (bound - way_ > double{distance_} * (1 + kDistanceSlack) + way_ * kWaySlack) break;
        std::pop_heap(bounds_.begin(), bounds_.end(), isDearer);
        bounds_.pop_back();
        if (pages_[page].isGone) continue;
        looked_.emplace_back(page, length(position_ - pages_[page].position));
        distance_ = std::min(distance_, looked_.back().second);
    }
    nearest_.clear();
    for (const auto& [page, distance] : looked_) {
        if (distance == distance_) nearest_.push_back(page);
        keep(page, distance);
    }
    return distance_ >= kLeastDistance && distance_ < mostCost_;
}

// The lowest number goes first: a page onto the hub, or the hub onto the first page in its order.
void BookHub::turnPage() {
    ++steps_;
    const auto [first, last] = std::minmax_element(nearest_.begin(), nearest_.end());
    const uint32_t firstInOrder = isReversed_ ? *last : *first;
    const auto isLower = [&](uint32_t a, uint32_t b) { return pages_[a].vertex < pages_[b].vertex; };
    const uint32_t lowest = *std::min_element(nearest_.begin(), nearest_.end(), isLower);
    if (pages_[lowest].vertex < place_) {
        remove(lowest);
    } else {
        moveOnto(firstInOrder);
    }
}

// The page parts from the spine before it gets to know it again, through the first of the faces that come.
void BookHub::moveOnto(uint32_t page) {
    remove(page);
    tables_.states[place_].isBound = false;
    place_ = pages_[page].vertex;
    position_ = pages_[page].position;
    way_ += double{distance_} * (1 + kDistanceSlack / 16);
    isReversed_ = !isReversed_;
    const uint32_t first = isReversed_ ? lastLeft_ : firstLeft_;
    const Corners& c = tables_.faces.corners(pages_[first].face);
    const bool isBeforeSpine = findCorner(c, pages_[first].vertex) < findCorner(c, spine_);
    pageBeforeSpine_ = isBeforeSpine ? first : kNone;
}

// With its face.
void BookHub::remove(uint32_t page) {
    const auto [vertex, face, position, isGone] = pages_[page];
    pages_[page].isGone = true;
    tables_.faces.remove(face);
    tables_.lists.remove(facesOf(spine_), face);
    tables_.lists.remove(neighborsOf(spine_), vertex);
    tables_.lists.clear(facesOf(vertex));
    tables_.lists.clear(neighborsOf(vertex));
    tables_.states[vertex].isBound = false;
    while (pages_[firstLeft_].isGone) ++firstLeft_;
    while (pages_[lastLeft_].isGone) --lastLeft_;
}

void BookHub::end() {
    if (place_ == hub_) {
        for (const Page& page : pages_) {
            if (!page.isGone) continue;
            tables_.lists.remove(facesOf(hub_), page.face);
            tables_.lists.remove(neighborsOf(hub_), page.vertex);
        }
    } else {
        moveLists();
    }
    const Point3 spine = tables_.sites[spine_].position;
    const float width = length(spine - position_);
    float cheapest = width;
    for (const Page& page : pages_) {
        if (page.isGone) continue;
        const float distance = length(position_ - page.position);
        setBound(page.vertex, std::min(distance, length(spine - page.position)));
        cheapest = std::min(cheapest, distance);
    }
    setBound(place_, cheapest);
    setBound(spine_, std::min(width, tables_.costs.costOf(spine_)));
}

void BookHub::setBound(uint32_t vertex, float bound) {
    tables_.costs.set(vertex, bound);
    tables_.states[vertex].isBound = true;
}

// To all others the hub has come last.
void BookHub::moveLists() {
    tables_.lists.clear(facesOf(hub_));
    tables_.lists.clear(neighborsOf(hub_));
    tables_.lists.replace(neighborsOf(spine_), hub_, place_);
    if (isReversed_) std::reverse(pages_.begin(), pages_.end());
    if (pageBeforeSpine_ != kNone && isReversed_) {
        pageBeforeSpine_ = static_cast<uint32_t>(pages_.size()) - 1 - pageBeforeSpine_;
    }
    const bool isPageFirst = pageBeforeSpine_ != kNone && !pages_[pageBeforeSpine_].isGone;
    if (!isPageFirst) tables_.lists.append(neighborsOf(place_), spine_);
    for (uint32_t i = 0; i < pages_.size(); ++i) {
        if (pages_[i].isGone) continue;
        tables_.faces.moveCorner(pages_[i].face, hub_, place_);
        tables_.lists.append(facesOf(place_), pages_[i].face);
        tables_.lists.append(neighborsOf(place_), pages_[i].vertex);
        tables_.lists.replace(neighborsOf(pages_[i].vertex), hub_, place_);
        if (isPageFirst && i == pageBeforeSpine_) tables_.lists.append(neighborsOf(place_), spine_);
    }
}

}  // namespace marrowfen
