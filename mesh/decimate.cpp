#include <algorithm>
#include <cassert>
#include <string>
#include <utility>

#include "mesh/decimator.h"
#include "mesh/mesh.h"
#include "mesh/triangle_check.h"

namespace marrowfen {
namespace {

// The target wraps around in 32 bits for percentages that aren't sensible.
int32_t targetOf(size_t faceCount, int32_t percent) {
    return static_cast<int32_t>(static_cast<uint32_t>(faceCount) * static_cast<uint32_t>(percent) / 100);
}

bool namesVertices(const Mesh& mesh, const Primitive& p) {
    const uint32_t* v = &mesh.indices[p.firstElement];
    return std::max({v[0], v[1], v[2]}) < mesh.vertexes.size();
}

std::string whyNotDecimated(const Mesh& mesh) {
    for (const Primitive& p : mesh.primitives) {
        switch (checkTriangle(mesh, p)) {
            case TriangleFault::NegativeMaterial:
                return "Negative material index found while decimating, cannot continue";
            case TriangleFault::NoTriangle:
                return "Object must be made of triangles to decimate.";
            case TriangleFault::None:
                if (namesVertices(mesh, p)) continue;
                [[fallthrough]];
            case TriangleFault::OutsideIndices:
                return "A triangle to decimate lies outside the index or vertex list.";
        }
    }
    return {};
}

}  // namespace

// A vertex whose every collapse costs infinitely much or no number at all, because of its or its neighbours' positions,
// stays; more faces than asked for can be left then.
std::vector<MeshFaces> Mesh::decimated(std::span<const int32_t> percents) {
    std::vector<MeshFaces> levels(percents.size());
    if (primitives.empty() || indices.empty()) {
        for (MeshFaces& level : levels) level = {primitives, indices};
        return levels;
    }
    if (const std::string text = whyNotDecimated(*this); !text.empty()) {
        setError(text);
        return {};
    }

    // A lower level's collapses begin with those of the levels above it.
    const auto target = [&](size_t level) { return targetOf(primitives.size(), percents[level]); };
    std::vector<size_t> order(percents.size());
    for (size_t i = 0; i < order.size(); ++i) order[i] = i;
    std::sort(order.begin(), order.end(), [&](size_t a, size_t b) { return target(a) > target(b); });
    Decimator decimator(*this);
    for (const size_t level : order) {
        decimator.run(target(level));
        levels[level] = decimator.faces();
        assert(levels[level].indices.size() == 3 * levels[level].primitives.size());
    }
    return levels;
}

void Mesh::decimate(int32_t percent) {
    std::vector<MeshFaces> levels = decimated({&percent, 1});
    if (levels.empty()) return;
    primitives = std::move(levels[0].primitives);
    indices = std::move(levels[0].indices);
}

}  // namespace marrowfen
