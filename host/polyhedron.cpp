#include "host/polyhedron.h"

#include <cassert>
#include <cstring>
#include <limits>

#include "host/tsxapi.h"

namespace marrowfen {

namespace {

constexpr unsigned kPointBytes = 3 * sizeof(float);

template <class Value>
Value readAt(const char* record, size_t offset) {
    Value value;
    std::memcpy(&value, record + offset, sizeof value);
    return value;
}

Point3 pointAt(const float* points, int32_t number) {
    const float* p = points + static_cast<ptrdiff_t>(number) * 3;
    return {p[0], p[1], p[2]};
}

// Null where even the size can't be said.
float* allocatePoints(int32_t count) {
    if (static_cast<unsigned>(count) > std::numeric_limits<unsigned>::max() / kPointBytes) return nullptr;
    return static_cast<float*>(tsxMalloc(static_cast<unsigned>(count) * kPointBytes));
}

}  // namespace

PlacedVertices::PlacedVertices(const SceneNode& polyhedron, const std::string& name) {
    const int32_t count = polyhedron.vertexCount();
    HostTransform transform;
    tsxPolyhGetVxTxmx(polyhedron.handle(), transform.data());
    const float* vertices = tsxPolyhGetVxArray(polyhedron.handle());
    if (count == 0 || vertices == nullptr) return;

    block_ = allocatePoints(count);
    if (block_ == nullptr) {
        error_ =
            "The host has no memory for the " + std::to_string(count) + " vertices of the polyhedron " + name + ".";
        return;
    }
    count_ = count;
    tsxTransformVecs3f(count, block_, vertices, transform.data());
}

PlacedVertices::~PlacedVertices() {
    if (block_ != nullptr) tsxFree(block_);
}

Point3 PlacedVertices::operator[](int32_t vertex) const {
    assert(vertex >= 0 && vertex < count_);
    return pointAt(block_, vertex);
}

int16_t HostFace::cornerCount() const {
    if (record_ == nullptr || readAt<const char*>(record_, TsxFaceCorners) == nullptr) return 0;
    return readAt<int16_t>(record_, TsxFaceCornerCount);
}

HostFace::Corner HostFace::corner(int16_t number) const {
    assert(number >= 0 && number < cornerCount());
    const char* record = readAt<const char*>(record_, TsxFaceCorners) + static_cast<size_t>(number) * TsxCornerSize;
    return {readAt<int32_t>(record, TsxCornerVertex), readAt<int32_t>(record, TsxCornerUv)};
}

int16_t HostFace::material() const {
    return record_ == nullptr ? int16_t{0} : readAt<int16_t>(record_, TsxFaceMaterial);
}

std::vector<HostFace> facesOf(const SceneNode& polyhedron) {
    const int count = tsxPolyhGetNbrFaces(polyhedron.handle());
    void** records = tsxPolyhGetFaceptrArray(polyhedron.handle());
    std::vector<HostFace> faces;
    for (int f = 0; records != nullptr && f < count; ++f) faces.emplace_back(records[f]);
    return faces;
}

TriangulatedCopy::TriangulatedCopy(const SceneNode& polyhedron, const std::string& name)
    : node_(tsxMNodeGetTriangulatedPolyhedron(polyhedron.handle())) {
    if (!node_) {
        error_ = "The host can't triangulate the polyhedron " + name + ".";
        return;
    }
    TsxNode* copy = node_.handle();
    positions_.emplace(node_, name);
    error_ = positions_->error();

    uvCount_ = tsxPolyhGetNbrUV(copy);
    uvs_ = tsxPolyhGetUVArray(copy);
    faceCount_ = tsxPolyhGetNbrFaces(copy);
    faces_ = tsxPolyhGetFaceptrArray(copy);
    if (uvs_ == nullptr) uvCount_ = 0;
    if (faces_ == nullptr) faceCount_ = 0;
    normals_ = tsxPolyhGetVxNormalsArray(copy);
}

TriangulatedCopy::~TriangulatedCopy() {
    positions_.reset();
    if (node_) tsxSobjDelete(node_.handle());
}

Point3 TriangulatedCopy::normal(int32_t vertex) const {
    assert(vertex >= 0 && vertex < vertexCount());
    return normals_ == nullptr ? Point3{} : pointAt(normals_, vertex);
}

std::optional<Point2D> TriangulatedCopy::uv(int32_t number) const {
    if (number < 0 || number >= uvCount_) return std::nullopt;
    const float* uv = uvs_ + static_cast<ptrdiff_t>(number) * 2;
    return Point2D{uv[0], uv[1]};
}

}  // namespace marrowfen
