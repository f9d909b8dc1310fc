#include "mesh/mesh.h"

#include <algorithm>
#include <cassert>

#include "ground/at.h"

namespace marrowfen {

void Mesh::setError(const std::string& text) {
    if (error_.empty()) error_ = text;
}

void Mesh::setNumFrames(int32_t n) {
    assert(n > 0);
    numFrames = n;
    vertsPerFrame = count32(vertexes) / n;
}

void Mesh::computeBounds() {
    bounds = emptyBox();
    for (const Point3& v : vertexes) widen(bounds, v);
}

void Mesh::computeCenter() { center = boxCenter(bounds); }

void Mesh::computeRadius() { radius = transformedRadius({}, {}, center); }

Box Mesh::transformedBounds(const Point3& translation, const Quaternion& rotation) const {
    Box box = emptyBox();
    for (const Point3& v : vertexes) widen(box, marrowfen::rotate(rotation, v) + translation);
    return box;
}

float Mesh::transformedRadius(const Point3& translation, const Quaternion& rotation, const Point3& from) const {
    float largest = 0;
    for (const Point3& v : vertexes) {
        largest = std::max(largest, length(marrowfen::rotate(rotation, v) + translation - from));
    }
    return largest;
}

float Mesh::transformedRadius2D(const Point3& translation, const Quaternion& rotation, const Point3& from) const {
    float largest = 0;
    for (const Point3& v : vertexes) {
        const Point3 d = marrowfen::rotate(rotation, v) + translation - from;
        largest = std::max(largest, std::sqrt(d.x * d.x + d.y * d.y));
    }
    return largest;
}

int32_t Mesh::faceCount() const {
    int32_t faces = 0;
    for (const Primitive& p : primitives) {
        const auto elements = static_cast<int32_t>(p.numElements);
        faces += (p.material & Primitive::Strip) != 0 ? elements - 2 : elements / 3;
    }
    return faces;
}

void Mesh::translate(const Point3& offset) {
    for (Point3& v : vertexes) v = v + offset;
    computeBounds();
    computeCenter();
    computeRadius();
}

void Mesh::rotate(const Quaternion& rotation) {
    for (Point3& v : vertexes) v = marrowfen::rotate(rotation, v);
    computeBounds();
    computeCenter();
    computeRadius();
}

int32_t Mesh::boneSlot(int32_t node) {
    const auto found = std::find(nodeIndex.begin(), nodeIndex.end(), node);
    assert(nodeIndex.size() == initialTransforms.size());
    const auto slot = static_cast<int32_t>(found - nodeIndex.begin());
    if (found == nodeIndex.end()) {
        nodeIndex.push_back(node);
        initialTransforms.emplace_back();
    }
    return slot;
}

void Mesh::setInitialTransform(int32_t slot, const Point3& position, const Quaternion& rotation) {
    const Point3 t = marrowfen::rotate(inverse(rotation), -position);
    const auto [x, y, z, w] = rotation;
    at(initialTransforms, slot) = {{
        {1 - 2 * (y * y + z * z), 2 * (x * y - z * w), 2 * (x * z + y * w), t.x},
        {2 * (x * y + z * w), 1 - 2 * (x * x + z * z), 2 * (y * z - x * w), t.y},
        {2 * (x * z - y * w), 2 * (y * z + x * w), 1 - 2 * (x * x + y * y), t.z},
        {0, 0, 0, 1},
    }};
}

}  // namespace marrowfen
