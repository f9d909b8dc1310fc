#include "mesh/mesh.h"
#include "shape/coding.h"
#include "shape/shape_buffers.h"

// The block of one mesh in the three packed buffers: scalars, the vertex and index lists, then what only skins or only
// sorted meshes have. A Null mesh is its type word alone.

namespace marrowfen {

namespace {

template <class List>
void writeCount(ShapeBuffers& out, const List& list) {
    out.write32(static_cast<uint32_t>(list.size()));
}

void writePoints(ShapeBuffers& out, const std::vector<Point3>& points) {
    for (const Point3& point : points) out.writePoint(point);
}

void writeBytes(ShapeBuffers& out, const std::vector<uint8_t>& bytes) {
    for (const uint8_t byte : bytes) out.write8(byte);
}

void writeInts(ShapeBuffers& out, const std::vector<int32_t>& values) {
    for (const int32_t value : values) out.writeInt(value);
}

void writeCountedInts(ShapeBuffers& out, const std::vector<int32_t>& values) {
    writeCount(out, values);
    writeInts(out, values);
}

void writeCountedHalves(ShapeBuffers& out, const std::vector<uint32_t>& values) {
    writeCount(out, values);
    for (const uint32_t value : values) out.write16(static_cast<uint16_t>(value));
}

void writeScalars(ShapeBuffers& out, const Mesh& mesh) {
    out.writeInt(mesh.numFrames);
    out.writeInt(mesh.matFrames);
    out.writeInt(mesh.parent);
    out.writeBox(mesh.bounds);
    out.writePoint(mesh.center);
    out.writeInt(truncatedToInt32(mesh.radius));  // a whole number in the file
}

// The lists of normals have no count of their own: they are as long as the list of vertices.
void writeVertices(ShapeBuffers& out, const Mesh& mesh) {
    writeCount(out, mesh.vertexes);
    writePoints(out, mesh.vertexes);
    writeCount(out, mesh.texturevertexes);
    for (const Point2D& point : mesh.texturevertexes) {
        out.writeFloat(point.x);
        out.writeFloat(point.y);
    }
    writePoints(out, mesh.normals);
    writeBytes(out, mesh.encodedNormals);
}

void writePrimitives(ShapeBuffers& out, const Mesh& mesh) {
    writeCount(out, mesh.primitives);
    for (const Primitive& primitive : mesh.primitives) {
        out.write16(static_cast<uint16_t>(primitive.firstElement));
        out.write16(static_cast<uint16_t>(primitive.numElements));
        out.write32(primitive.material);
    }
    writeCountedHalves(out, mesh.indices);
    writeCountedHalves(out, mesh.mindices);
    out.writeInt(mesh.vertsPerFrame);
    out.write32(mesh.flags);
}

void writeSkin(ShapeBuffers& out, const Mesh& mesh) {
    // The vertices and normals stand in a skin's block twice.
    writeCount(out, mesh.vertexes);
    writePoints(out, mesh.vertexes);
    writePoints(out, mesh.normals);
    writeBytes(out, mesh.encodedNormals);

    writeCount(out, mesh.nodeIndex);
    for (const Matrix44& transform : mesh.initialTransforms) {
        for (const auto& row : transform.m) {
            for (const float value : row) out.writeFloat(value);
        }
    }
    writeCountedInts(out, mesh.vindex);
    writeInts(out, mesh.vbone);
    for (const float weight : mesh.vweight) out.writeFloat(weight);
    writeCountedInts(out, mesh.nodeIndex);
    out.checkpoint();
}

void writeClusters(ShapeBuffers& out, const Mesh& mesh) {
    writeCount(out, mesh.clusters);
    for (const Cluster& cluster : mesh.clusters) {
        out.writeInt(cluster.startPrimitive);
        out.writeInt(cluster.endPrimitive);
        out.writePoint(cluster.planeNormal);
        out.writeFloat(cluster.planeConstant);
        out.writeInt(cluster.frontCluster);
        out.writeInt(cluster.backCluster);
    }
    writeCountedInts(out, mesh.frameStartCluster);
    writeCountedInts(out, mesh.frameFirstVertex);
    writeCountedInts(out, mesh.frameVertexCount);
    writeCountedInts(out, mesh.frameFirstTexVertex);
    out.write32(0);
    out.checkpoint();
}

}  // namespace

void Mesh::writeMeshBlock(ShapeBuffers& buffers) const {
    buffers.writeInt(static_cast<int32_t>(type));
    if (type == MeshType::Null) return;
    buffers.checkpoint();
    writeScalars(buffers, *this);
    writeVertices(buffers, *this);
    writePrimitives(buffers, *this);
    buffers.checkpoint();
    if (type == MeshType::Skin) writeSkin(buffers, *this);
    if (type == MeshType::Sorted) writeClusters(buffers, *this);
}

}  // namespace marrowfen
