#pragma once

// Mesh: the geometry of one object at one detail level, or of one collision mesh, in the form in which the DTS file
// stores it. Vertex numbers are 16-bit; front faces are clockwise seen from outside.

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "ground/math.h"

namespace marrowfen {

class ShapeDumper;
struct BlockReader;
struct BlockWriter;

enum class MeshType : int32_t { Standard = 0, Skin = 1, Decal = 2, Sorted = 3, Null = 4 };

// Bits of Mesh::flags.
enum MeshFlag : uint32_t {
    Billboard = 0x80000000,
    HasDetail = 0x40000000,
    BillboardZ = 0x20000000,
    EncodedNormals = 0x10000000,
};

// One drawing run over Mesh::indices.
struct Primitive {
    // Parts of the material word.
    static constexpr uint32_t TypeMask = 0xC0000000;
    static constexpr uint32_t Triangles = 0x00000000;
    static constexpr uint32_t Strip = 0x40000000;
    static constexpr uint32_t Fan = 0x80000000;
    static constexpr uint32_t Indexed = 0x20000000;
    static constexpr uint32_t NoMaterial = 0x10000000;
    static constexpr uint32_t MaterialMask = 0x0FFFFFFF;
    static constexpr uint32_t NegativeMaterial = 0xFFFFFFFF;

    // Elements are counted in 32 bits until a file is written, so that a mesh may be larger before it is stripped or
    // decimated; the mesh block holds 16 bits of each.
    uint32_t firstElement = 0;
    uint32_t numElements = 0;
    uint32_t material = 0;   // draw type, Indexed, NoMaterial and the material index
    int32_t sourcePoly = 0;  // in memory only: position of the host polyhedron in its layer

    bool isIndexedTriangle() const { return (material & (TypeMask | Indexed)) == Indexed && numElements == 3; }
};

inline bool operator==(const Primitive& a, const Primitive& b) {
    return a.firstElement == b.firstElement && a.numElements == b.numElements && a.material == b.material &&
           a.sourcePoly == b.sourcePoly;
}

// What stripping and decimation replace of a mesh.
struct MeshFaces {
    std::vector<Primitive> primitives;
    std::vector<uint32_t> indices;
};

// A run of primitives of a sorted mesh with the plane that decides which cluster is drawn next.
struct Cluster {
    int32_t startPrimitive = 0;
    int32_t endPrimitive = 0;  // one past the last
    Point3 planeNormal;
    float planeConstant = 0;
    int32_t frontCluster = -1;  // next cluster for a viewer in front of the plane, -1 ends the walk
    int32_t backCluster = -1;   // next cluster for a viewer behind it
};

class Mesh {
public:
    explicit Mesh(MeshType kind = MeshType::Standard) : type(kind) {}

    std::vector<Point3> vertexes;          // frame f holds entries f * vertsPerFrame to (f + 1) * vertsPerFrame - 1
    std::vector<Point2D> texturevertexes;  // one per vertex, v downward
    std::vector<Point3> normals;           // one per vertex
    std::vector<uint8_t> encodedNormals;   // one per vertex: its entry in the normal table
    std::vector<Primitive> primitives;
    std::vector<uint32_t> indices;   // into one frame's vertices; 16 bits each in a file
    std::vector<uint32_t> mindices;  // merge indices; empty unless the mesh was read from a file

    std::vector<int32_t> vindex;              // skin: vertex of each weight entry
    std::vector<int32_t> vbone;               // skin: bone slot of each weight entry
    std::vector<float> vweight;               // skin: weight of each weight entry
    std::vector<int32_t> nodeIndex;           // skin: shape node of each bone slot
    std::vector<Matrix44> initialTransforms;  // skin: bone-from-shape, one per bone slot

    std::vector<Cluster> clusters;             // sorted
    std::vector<int32_t> frameStartCluster;    // sorted: one per frame
    std::vector<int32_t> frameFirstVertex;     // sorted: one per frame
    std::vector<int32_t> frameVertexCount;     // sorted: one per frame
    std::vector<int32_t> frameFirstTexVertex;  // sorted: one per frame and material frame

    MeshType type;
    int32_t numFrames = 1;
    int32_t matFrames = 1;
    int32_t parent = -1;  // mesh whose geometry this one shares, -1 for none
    Box bounds;           // of vertexes
    Point3 center;        // of bounds
    float radius = 0;     // largest distance of a vertex from center
    int32_t vertsPerFrame = 0;
    uint32_t flags = 0;  // MeshFlag bits

    // The first error that an operation reported; empty for none. Later ones are dropped.
    const std::string& error() const { return error_; }
    bool hasError() const { return !error_.empty(); }
    void setError(const std::string& text);

    // n must not be 0.
    void setNumFrames(int32_t n);

    void computeBounds();  // an empty mesh gets emptyBox()
    void computeCenter();
    void computeRadius();

    // Measures of the mesh placed by a node: each vertex is rotated first, then moved.
    Box transformedBounds(const Point3& translation, const Quaternion& rotation) const;
    float transformedRadius(const Point3& translation, const Quaternion& rotation, const Point3& from) const;
    float transformedRadius2D(const Point3& translation, const Quaternion& rotation, const Point3& from) const;

    // Triangles that the primitives describe.
    int32_t faceCount() const;

    // Both keep bounds, center and radius valid; normals are left as they are.
    void translate(const Point3& offset);
    void rotate(const Quaternion& rotation);

    // The slot of a shape node in nodeIndex, added with an identity transform when it isn't there yet.
    int32_t boneSlot(int32_t node);

    // Makes the slot's transform undo a bone's default pose v -> rotate(rotation, v) + position.
    void setInitialTransform(int32_t slot, const Point3& position, const Quaternion& rotation);

    // Replaces single triangles by triangle strips, each a primitive of its own (mesh/strip.cpp).
    void strip();

    // Lowers the number of triangles to percent of what it is (mesh/decimate.cpp).
    void decimate(int32_t percent);

    // What decimate() would leave at each percentage, for little more than the time of the lowest. Empty, with an error
    // set, for a mesh that decimate() refuses.
    std::vector<MeshFaces> decimated(std::span<const int32_t> percents);

    // Orders the triangles of a Sorted mesh into clusters that draw back to front (mesh/sort.cpp).
    void sort();

    // Appends the mesh's block of a DTS file (mesh/mesh_block.cpp). Vertex numbers and element positions fit 16 bits,
    // and lists that share a length have it.
    void writeMeshBlock(BlockWriter& file) const;

    // Fills this new mesh from its block; the type is the block's (mesh/mesh_block.cpp). Faults are the reader's.
    void readMeshBlock(BlockReader& file);

    // Writes the mesh as indented text (mesh/mesh_dump.cpp).
    void dump(ShapeDumper& out) const;

private:
    std::string error_;
};

}  // namespace marrowfen
