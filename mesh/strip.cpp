#include <algorithm>
#include <cassert>

#include "mesh/mesh.h"
#include "mesh/stripper.h"
#include "mesh/triangle_check.h"

namespace marrowfen {

// Runs of faces of one material and polyhedron are stripped apart from each other.

namespace {

// Vertices as numbers below about eight times as many as there are indices: themselves, or their ranks where they are
// far apart, so that tables of them follow the list's length.
class VertexNumbers {
public:
    explicit VertexNumbers(const std::vector<uint32_t>& indices) {
        uint32_t highest = 0;
        for (const uint32_t v : indices) highest = std::max(highest, v);
        count_ = highest + 1;
        if (highest / 8 <= indices.size()) return;
        byRank_ = indices;
        std::sort(byRank_.begin(), byRank_.end());
        byRank_.erase(std::unique(byRank_.begin(), byRank_.end()), byRank_.end());
        count_ = static_cast<uint32_t>(byRank_.size());
    }

    uint32_t count() const { return count_; }

    uint32_t numberOf(uint32_t vertex) const {
        if (byRank_.empty()) return vertex;
        return static_cast<uint32_t>(std::lower_bound(byRank_.begin(), byRank_.end(), vertex) - byRank_.begin());
    }

    // Puts vertices for their numbers.
    void restore(std::vector<uint32_t>& numbers) const {
        if (byRank_.empty()) return;
        for (uint32_t& number : numbers) number = byRank_[number];
    }

private:
    uint32_t count_ = 0;
    std::vector<uint32_t> byRank_;
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

StripFaces facesOf(const Mesh& mesh, const VertexNumbers& numbers) {
    StripFaces faces(mesh.primitives.size());
    for (size_t f = 0; f < faces.size(); ++f) {
        const uint32_t* v = &mesh.indices[mesh.primitives[f].firstElement];
        faces[f].corners = {numbers.numberOf(v[0]), numbers.numberOf(v[1]), numbers.numberOf(v[2])};
    }
    return faces;
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

    const VertexNumbers numbers(indices);
    StripFaces faces = facesOf(*this, numbers);
    Stripper stripper(std::move(faces), numbers.count(), std::move(indices));
    for (size_t first = 0, end = 0; first < primitives.size(); first = end) {
        end = groupEnd(primitives, first);
        const size_t finished = stripper.strips.size();
        if (stripper.stripGroup(static_cast<uint32_t>(first), static_cast<uint32_t>(end), primitives[first])) continue;

        // A failed group leaves nothing, except where it is the whole mesh.
        setError(stripper.error);
        if (end - first < primitives.size()) stripper.dropStrips(finished);
        break;
    }
    primitives = std::move(stripper.strips);
    indices = stripper.takeIndices();
    numbers.restore(indices);
}

}  // namespace marrowfen
