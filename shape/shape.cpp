#include "shape/shape.h"

#include <algorithm>

#include "ground/ascii.h"
#include "ground/at.h"

namespace marrowfen {

void Shape::setError(const std::string& text) {
    if (error_.empty()) error_ = text;
}

int32_t Shape::findOrAddName(const std::string& name) {
    const auto found = std::find_if(names.begin(), names.end(),
                                    [&](const std::string& entry) { return equalIgnoringCase(entry, name); });
    const auto index = static_cast<int32_t>(found - names.begin());
    if (found == names.end()) names.push_back(name);
    return index;
}

Shape::Pose Shape::nodeWorldTransform(int32_t node) const {
    assert(nodeDefRotations.size() == nodes.size() && nodeDefTranslations.size() == nodes.size());
    std::vector<int32_t> chain;
    for (int32_t n = node; n >= 0; n = at(nodes, n).parent) {
        assert(chain.size() < nodes.size());  // else the parents run in a circle
        chain.push_back(n);
    }

    Pose pose;
    for (auto n = chain.rbegin(); n != chain.rend(); ++n) {
        pose.translation = pose.translation + rotate(pose.rotation, at(nodeDefTranslations, *n));
        pose.rotation = at(nodeDefRotations, *n) * pose.rotation;
    }
    return pose;
}

namespace {

// Calls visit(mesh, pose of its object's node) for every mesh of every object.
template <class Visit>
void forEachPlacedMesh(const Shape& shape, Visit visit) {
    for (const Shape::Object& object : shape.objects) {
        const Shape::Pose pose = shape.nodeWorldTransform(object.node);
        for (int32_t i = 0; i < object.numMeshes; ++i) {
            visit(at(shape.meshes, object.firstMesh + i), pose);
        }
    }
}

}  // namespace

void Shape::computeBounds() {
    if (objects.empty()) return;
    bounds = emptyBox();
    forEachPlacedMesh(*this, [&](const Mesh& mesh, const Pose& pose) {
        widen(bounds, mesh.transformedBounds(pose.translation, pose.rotation));
    });
}

void Shape::computeCenter() { center = boxCenter(bounds); }

void Shape::computeRadius() {
    radius = 0;
    forEachPlacedMesh(*this, [&](const Mesh& mesh, const Pose& pose) {
        radius = std::max(radius, mesh.transformedRadius(pose.translation, pose.rotation, center));
    });
}

void Shape::computeTubeRadius() {
    tubeRadius = 0;
    forEachPlacedMesh(*this, [&](const Mesh& mesh, const Pose& pose) {
        tubeRadius = std::max(tubeRadius, mesh.transformedRadius2D(pose.translation, pose.rotation, center));
    });
}

void Shape::setSmallestSize(int32_t pixels) {
    pixels = std::max(pixels, 1);
    smallestSize = static_cast<float>(pixels);
    const auto smaller = std::find_if(detailLevels.begin(), detailLevels.end(),
                                      [&](const DetailLevel& level) { return level.size < smallestSize; });
    smallestDetailLevel = static_cast<int32_t>(smaller - detailLevels.begin());
}

}  // namespace marrowfen
