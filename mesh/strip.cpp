#include <algorithm>
#include <cassert>

#include "mesh/mesh.h"
#include "mesh/stripper.h"
#include "mesh/triangle_check.h"

namespace marrowfen {

// Runs of faces of one material and polyhedron are stripped apart from each other.

namespace {

constexpr int32_t kNone = -1;

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

std::string whyNotStripped(const Mesh& mesh) {
    for (const Primitive& p : mesh.primitives) {
        switch (checkTriangle(mesh, p)) {
            case TriangleFault::None:
                continue;
            case TriangleFault::NegativeMaterial:
                return "Negative material index found while stripping, cannot continue.";
            case TriangleFault::NoTriangle:
                return "Object must be made of triangles to strip.";
            case TriangleFault::OutsideIndices:
                return "A triangle to strip lies outside the index list.";
        }
    }
    return {};
}

}  // namespace

void Mesh::strip() {
    if (primitives.empty() || indices.empty()) return;
    if (const std::string text = whyNotStripped(*this); !text.empty()) {
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
        assert(0 < vertexCount && vertexCount <= 3 * faces.size());
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
