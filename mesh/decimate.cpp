#include <algorithm>
#include <string>
#include <utility>

#include "mesh/collapse_finder.h"
#include "mesh/cost_tree.h"
#include "mesh/list_pool.h"
#include "mesh/mesh.h"

namespace marrowfen {

// The vertex with the cheapest collapse is moved onto its neighbour, again and again, until few enough faces are left.
// The cost of a collapse depends on the faces of the vertex alone, so that only the neighbours of a vertex that is gone
// have to be looked at again.
//
// Lists keep the order in which entries came and left: it decides between equal costs. A vertex stands twice in the
// lists of a face that has it twice, and is then a neighbour of itself; its own collapse removes all of its faces.

namespace {

constexpr uint32_t kNowhere = CollapseFinder::kNone;
constexpr float kLoneVertexCost = -0.01F;  // below every collapse: a vertex without neighbours goes first

bool hasRepeats(const Corners& c) { return c[0] == c[1] || c[1] == c[2] || c[2] == c[0]; }

class Decimator {
public:
    explicit Decimator(const Mesh& mesh);

    // Collapses until no more than this many faces are left, or no vertex has a collapse of finite cost.
    void run(int32_t targetCount);

    void writeFaces(Mesh& mesh) const;

private:
    void addFace(uint32_t face);
    void connectCorners(const Corners& c);
    bool areNeighbors(uint32_t a, uint32_t b) const;
    bool shareFace(uint32_t a, uint32_t b) const;
    void partUnlessSharingFace(uint32_t a, uint32_t b);
    void updateNormal(uint32_t face);

    void touch(uint32_t vertex);
    void findCollapse(uint32_t vertex);
    uint32_t findCheapest();
    void collapse(uint32_t from, uint32_t onto);
    void destroyCommonFaces(uint32_t from, uint32_t onto);
    void moveFaces(uint32_t from, uint32_t onto);
    void destroyFace(uint32_t face, uint32_t from);
    void destroyVertex(uint32_t vertex, uint32_t onto);

    const std::vector<Point3>& positions_;
    const std::vector<Primitive> primitives_;  // per face, gone ones too: material and polyhedron
    std::vector<Corners> corners_;             // per face
    std::vector<Point3> normals_;              // per face; which way they point doesn't matter
    std::vector<uint8_t> faceIsGone_;
    std::vector<uint8_t> vertexIsGone_;
    std::vector<uint8_t> isTouched_;  // per vertex, for the padding of costs_ too
    int32_t faceCount_;
    ListPool neighbors_;             // per vertex: vertices that share a face with it, each once
    ListPool facesOf_;               // per vertex
    std::vector<uint32_t> targets_;  // per vertex: where its cheapest collapse goes, kNowhere for nowhere
    CostTree costs_;                 // per vertex
    CollapseFinder finder_;
    std::vector<uint32_t> touched_;  // neighbours of the vertex that collapses
};

Decimator::Decimator(const Mesh& mesh)
    : positions_(mesh.vertexes),
      primitives_(mesh.primitives),
      corners_(mesh.primitives.size()),
      normals_(mesh.primitives.size()),
      faceIsGone_(mesh.primitives.size()),
      vertexIsGone_(mesh.vertexes.size()),
      isTouched_(mesh.vertexes.size() + 1),
      faceCount_(static_cast<int32_t>(mesh.primitives.size())),
      neighbors_(mesh.vertexes.size()),
      facesOf_(mesh.vertexes.size()),
      targets_(mesh.vertexes.size(), kNowhere),
      costs_(mesh.vertexes.size()),
      finder_(positions_, corners_, normals_) {
    for (uint32_t f = 0; f < corners_.size(); ++f) {
        const uint32_t* v = &mesh.indices[primitives_[f].firstElement];
        corners_[f] = {v[0], v[1], v[2]};
        addFace(f);
    }
    for (uint32_t v = 0; v < positions_.size(); ++v) touch(v);
}

void Decimator::addFace(uint32_t face) {
    updateNormal(face);
    for (const uint32_t v : corners_[face]) facesOf_.append(v, face);
    connectCorners(corners_[face]);
}

void Decimator::updateNormal(uint32_t face) {
    const auto [a, b, c] = corners_[face];
    normals_[face] = normalized(cross(positions_[c] - positions_[b], positions_[b] - positions_[a]));
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

// Neighbours are so mutually: the shorter list tells.
bool Decimator::areNeighbors(uint32_t a, uint32_t b) const {
    return neighbors_[a].size() < neighbors_[b].size() ? neighbors_.contains(a, b) : neighbors_.contains(b, a);
}

// A vertex shares every one of its faces with itself.
bool Decimator::shareFace(uint32_t a, uint32_t b) const {
    if (facesOf_[b].size() < facesOf_[a].size()) std::swap(a, b);
    for (const uint32_t face : facesOf_[a]) {
        if (hasCorner(corners_[face], b)) return true;
    }
    return false;
}

void Decimator::partUnlessSharingFace(uint32_t a, uint32_t b) {
    if (shareFace(a, b)) return;
    neighbors_.remove(a, b);
    neighbors_.remove(b, a);
}

// The vertex's collapse may have changed. As long as others cost nothing it only counts as 0 too, the least that it can
// be: in flat regions most vertices never come up as the cheapest.
void Decimator::touch(uint32_t vertex) {
    if (neighbors_[vertex].empty()) {
        targets_[vertex] = kNowhere;
        costs_.set(vertex, kLoneVertexCost);
        isTouched_[vertex] = 0;
    } else if (costs_.lowestCost() > 0) {
        findCollapse(vertex);
    } else {
        costs_.set(vertex, 0);
        isTouched_[vertex] = 1;
    }
}

void Decimator::findCollapse(uint32_t vertex) {
    const auto [target, cost] = finder_.cheapest(vertex, neighbors_[vertex], facesOf_[vertex], targets_[vertex]);
    targets_[vertex] = target;
    costs_.set(vertex, cost);
    isTouched_[vertex] = 0;
}

// The first of the vertices whose collapse costs least. Of the touched ones only those are looked at that could be it.
uint32_t Decimator::findCheapest() {
    while (isTouched_[costs_.cheapest()]) findCollapse(costs_.cheapest());
    return costs_.cheapest();
}

void Decimator::collapse(uint32_t from, uint32_t onto) {
    touched_.assign(neighbors_[from].begin(), neighbors_[from].end());
    if (onto != kNowhere) {
        destroyCommonFaces(from, onto);
        moveFaces(from, onto);
    }
    destroyVertex(from, onto);
    for (const uint32_t v : touched_) {
        if (!vertexIsGone_[v]) touch(v);
    }
}

// From the last to the first. A face that has the vertex twice leaves two gaps in the list.
void Decimator::destroyCommonFaces(uint32_t from, uint32_t onto) {
    for (size_t i = facesOf_[from].size(); i-- > 0;) {
        if (i >= facesOf_[from].size()) continue;
        const uint32_t face = facesOf_[from][i];
        if (hasCorner(corners_[face], onto)) destroyFace(face, from);
    }
}

// One of the faces of the vertex that collapses. Where that vertex still is a neighbour it is removed at the end.
void Decimator::destroyFace(uint32_t face, uint32_t from) {
    faceIsGone_[face] = 1;
    --faceCount_;
    const Corners& c = corners_[face];
    for (const uint32_t v : c) facesOf_.remove(v, face);
    for (size_t i = 0; i < 3; ++i) {
        const uint32_t a = c[i], b = c[(i + 1) % 3];
        if (a != from && b != from) partUnlessSharingFace(a, b);
    }
}

// From the last to the first, one corner at a time.
void Decimator::moveFaces(uint32_t from, uint32_t onto) {
    while (!facesOf_[from].empty()) {
        const uint32_t face = facesOf_[from].back();
        Corners& corners = corners_[face];
        *std::find(corners.begin(), corners.end(), from) = onto;
        if (hasCorner(corners, from)) {
            facesOf_.remove(from, face);
        } else {
            facesOf_.removeLast(from);
        }
        facesOf_.append(onto, face);
        connectCorners(corners);
        updateNormal(face);
    }
}

// The vertex is known to those that were its neighbours and, for a while, to the one onto which it went.
void Decimator::destroyVertex(uint32_t vertex, uint32_t onto) {
    for (const uint32_t v : touched_) neighbors_.remove(v, vertex);
    if (onto != kNowhere) neighbors_.remove(onto, vertex);
    neighbors_.clear(vertex);
    vertexIsGone_[vertex] = 1;
    isTouched_[vertex] = 0;
    costs_.set(vertex, CostTree::kNever);
}

void Decimator::run(int32_t targetCount) {
    while (faceCount_ > targetCount) {
        const uint32_t cheapest = findCheapest();
        if (costs_.lowestCost() == CostTree::kNever) break;
        collapse(cheapest, targets_[cheapest]);
    }
}

void Decimator::writeFaces(Mesh& mesh) const {
    mesh.primitives.clear();
    mesh.indices.clear();
    for (size_t f = 0; f < corners_.size(); ++f) {
        if (faceIsGone_[f]) continue;
        const auto first = static_cast<uint32_t>(mesh.indices.size());
        mesh.primitives.push_back({first, 3, primitives_[f].material, primitives_[f].sourcePoly});
        mesh.indices.insert(mesh.indices.end(), corners_[f].begin(), corners_[f].end());
    }
}

// Whether the primitive's three elements are there and name vertices.
bool hasItsVertices(const Primitive& p, const Mesh& mesh) {
    if (mesh.indices.size() < 3 || p.firstElement > mesh.indices.size() - 3) return false;
    const uint32_t* v = &mesh.indices[p.firstElement];
    return std::max({v[0], v[1], v[2]}) < mesh.vertexes.size();
}

std::string whyNotDecimated(const Mesh& mesh) {
    for (const Primitive& p : mesh.primitives) {
        if (p.material == Primitive::NegativeMaterial) {
            return "Negative material index found while decimating, cannot continue";
        }
        if (!p.isIndexedTriangle()) {
            return "Object must be made of triangles to decimate.";
        }
        if (!hasItsVertices(p, mesh)) return "A triangle to decimate lies outside the index or vertex list.";
    }
    return {};
}

}  // namespace

// A vertex whose every collapse costs infinitely much or no number at all, because of its or its neighbours' positions,
// stays; more faces than asked for can be left then.
void Mesh::decimate(int32_t percent) {
    if (primitives.empty() || indices.empty()) return;
    if (const std::string text = whyNotDecimated(*this); !text.empty()) {
        setError(text);
        return;
    }
    // In unsigned arithmetic, which wraps around for percentages that aren't sensible.
    const uint32_t target = static_cast<uint32_t>(primitives.size()) * static_cast<uint32_t>(percent) / 100;
    Decimator decimator(*this);
    decimator.run(static_cast<int32_t>(target));
    decimator.writeFaces(*this);
}

}  // namespace marrowfen
