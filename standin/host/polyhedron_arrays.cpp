#include "standin/host/polyhedron_arrays.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

#include "ground/at.h"
#include "host/tsxapi.h"

namespace marrowfen::standin {
namespace {

constexpr size_t kFaceRecord = 24;  // the host's own may be longer; nothing behind it is read

static_assert(TsxFaceCorners + sizeof(void*) <= TsxFaceMaterial);

// A material number that no polyhedron has.
constexpr int16_t kNoMaterial = -1;

using Vector = std::array<double, 3>;

Vector difference(const Vec3& a, const Vec3& b) {
    return {double{a[0]} - double{b[0]}, double{a[1]} - double{b[1]}, double{a[2]} - double{b[2]}};
}

Vector crossProduct(const Vector& a, const Vector& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

// In double, where the squares of any 32-bit coordinates neither overflow nor vanish.
Vector faceNormal(const Polyhedron& polyhedron, const Face& face) {
    const Vec3& p0 = at(polyhedron.vertices, face.corners[0].vertex);
    const Vec3& p1 = at(polyhedron.vertices, face.corners[1].vertex);
    const Vec3& p2 = at(polyhedron.vertices, face.corners[2].vertex);
    return crossProduct(difference(p1, p0), difference(p2, p0));
}

Vec3 unitVector(const Vector& v) {
    const double length = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
    if (length == 0) return {0, 0, 0};
    return {static_cast<float>(v[0] / length), static_cast<float>(v[1] / length), static_cast<float>(v[2] / length)};
}

template <size_t N>
std::vector<float> flattened(const std::vector<std::array<float, N>>& points) {
    std::vector<float> numbers;
    numbers.reserve(points.size() * N);
    for (const std::array<float, N>& point : points) numbers.insert(numbers.end(), point.begin(), point.end());
    return numbers;
}

// Writes face and corner records one after the other into memory that is large enough.
class RecordWriter {
public:
    RecordWriter(std::byte* faces, std::byte* corners) : face_(faces), corner_(corners) {}

    // Returns the record's address.
    void* beginFace(size_t cornerCount, int32_t material) {
        std::byte* record = face_;
        const bool fits =
            material >= std::numeric_limits<int16_t>::min() && material <= std::numeric_limits<int16_t>::max();
        put(record + TsxFaceCornerCount, static_cast<int16_t>(cornerCount));
        put(record + TsxFaceCorners, static_cast<void*>(corner_));
        put(record + TsxFaceMaterial, fits ? static_cast<int16_t>(material) : kNoMaterial);
        face_ += kFaceRecord;
        return record;
    }

    void addCorner(const Corner& corner) {
        put(corner_ + TsxCornerVertex, corner.vertex);
        put(corner_ + TsxCornerUv, corner.uv);
        corner_ += TsxCornerSize;
    }

private:
    std::byte* face_;
    std::byte* corner_;

    template <class T>
    static void put(std::byte* to, T value) {
        std::memcpy(to, &value, sizeof value);
    }
};

size_t triangleCount(const Face& face) { return face.corners.size() - 2; }

}  // namespace

std::vector<Vec3> computedNormals(const Polyhedron& polyhedron) {
    std::vector<Vector> sums(polyhedron.vertices.size(), Vector{0, 0, 0});
    std::vector<const Face*> lastFace(polyhedron.vertices.size(), nullptr);
    for (const Face& face : polyhedron.faces) {
        const Vector normal = faceNormal(polyhedron, face);
        for (const Corner& corner : face.corners) {
            const size_t vertex = static_cast<size_t>(corner.vertex);
            if (lastFace[vertex] == &face) continue;  // a face counts once, however often it uses the vertex
            lastFace[vertex] = &face;
            for (size_t axis = 0; axis < 3; ++axis) sums[vertex][axis] += normal[axis];
        }
    }

    std::vector<Vec3> normals;
    normals.reserve(sums.size());
    for (const Vector& sum : sums) normals.push_back(unitVector(sum));
    return normals;
}

PolyhedronArrays::PolyhedronArrays(const Polyhedron& polyhedron, FaceForm form)
    : vertexCount_(static_cast<int>(polyhedron.vertices.size())),
      uvCount_(static_cast<int>(polyhedron.uvs.size())),
      vertices_(flattened(polyhedron.vertices)),
      normals_(flattened(polyhedron.normals ? *polyhedron.normals : computedNormals(polyhedron))),
      uvs_(flattened(polyhedron.uvs)) {
    if (uvs_.empty()) uvs_.assign(2, 0);
    addFaces(polyhedron, form);
}

void PolyhedronArrays::addFaces(const Polyhedron& polyhedron, FaceForm form) {
    // The records point at one another, so all memory is taken first.
    size_t faceCount = 0;
    size_t cornerCount = 0;
    for (const Face& face : polyhedron.faces) {
        faceCount += form == FaceForm::Triangles ? triangleCount(face) : 1;
        cornerCount += form == FaceForm::Triangles ? 3 * triangleCount(face) : face.corners.size();
    }
    faceRecords_.resize(faceCount * kFaceRecord);
    cornerRecords_.resize(cornerCount * TsxCornerSize);
    faces_.reserve(faceCount);

    RecordWriter writer(faceRecords_.data(), cornerRecords_.data());
    for (const Face& face : polyhedron.faces) {
        if (form == FaceForm::AsWritten) {
            faces_.push_back(writer.beginFace(face.corners.size(), face.material));
            for (const Corner& corner : face.corners) writer.addCorner(corner);
            continue;
        }
        for (size_t i = 0; i < triangleCount(face); ++i) {
            faces_.push_back(writer.beginFace(3, face.material));
            writer.addCorner(face.corners[0]);
            writer.addCorner(face.corners[i + 1]);
            writer.addCorner(face.corners[i + 2]);
        }
    }
}

}  // namespace marrowfen::standin
