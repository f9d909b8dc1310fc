#pragma once

// Polyhedra as the conversions read them. What the host has to get back goes back with these objects; an array that
// the host doesn't give counts as an empty one.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "ground/math.h"
#include "host/scene_node.h"

namespace marrowfen {

// The vertices of a polyhedron, placed in the scene in a block of the host's memory.
class PlacedVertices {
public:
    PlacedVertices(const SceneNode& polyhedron, const std::string& name);
    ~PlacedVertices();
    PlacedVertices(const PlacedVertices&) = delete;
    PlacedVertices& operator=(const PlacedVertices&) = delete;

    const std::string& error() const { return error_; }  // the host has no memory: there are no vertices
    int32_t count() const { return count_; }
    Point3 operator[](int32_t vertex) const;  // below count()

private:
    int32_t count_ = 0;
    float* block_ = nullptr;
    std::string error_;
};

// One face record.
class HostFace {
public:
    struct Corner {
        int32_t vertex = 0;
        int32_t uv = 0;
    };

    explicit HostFace(const void* record) : record_(static_cast<const char*>(record)) {}

    int16_t cornerCount() const;
    Corner corner(int16_t number) const;  // below cornerCount()
    int16_t material() const;             // its number within the polyhedron

private:
    const char* record_;
};

// The faces of a polyhedron as the artist made them.
std::vector<HostFace> facesOf(const SceneNode& polyhedron);

// The host's copy of a polyhedron whose faces are all triangles. Numbers of vertices, faces and texture coordinates
// are the host's.
class TriangulatedCopy {
public:
    TriangulatedCopy(const SceneNode& polyhedron, const std::string& name);
    ~TriangulatedCopy();
    TriangulatedCopy(const TriangulatedCopy&) = delete;
    TriangulatedCopy& operator=(const TriangulatedCopy&) = delete;

    const std::string& error() const { return error_; }  // why there is no copy to read; empty for none
    const SceneNode& node() const { return node_; }
    int32_t vertexCount() const { return positions_ ? positions_->count() : 0; }
    int32_t faceCount() const { return faceCount_; }

    Point3 position(int32_t vertex) const { return (*positions_)[vertex]; }  // in scene space
    Point3 normal(int32_t vertex) const;                                     // pointing inward
    std::optional<Point2D> uv(int32_t number) const;  // v upward; none for a number that isn't there
    HostFace face(int32_t number) const { return HostFace(faces_[number]); }

private:
    SceneNode node_;
    std::optional<PlacedVertices> positions_;
    int32_t uvCount_ = 0;
    const float* uvs_ = nullptr;
    int32_t faceCount_ = 0;
    void** faces_ = nullptr;
    const float* normals_ = nullptr;
    std::string error_;
};

}  // namespace marrowfen
