#include "ground/coding.h"
#include "ground/shape_buffers.h"
#include "ground/shape_reader.h"
#include "mesh/mesh.h"

// The block of one mesh in the three packed buffers: scalars, the vertex and index lists, then what only skins or only
// sorted meshes have. A Null mesh is its type word alone. Writing and reading stand side by side, section by section.

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

void readScalars(ShapeReader& in, Mesh& mesh) {
    mesh.numFrames = in.words.readInt();
    mesh.matFrames = in.words.readInt();
    mesh.parent = in.words.readInt();
    mesh.bounds.min = in.words.readPoint();
    mesh.bounds.max = in.words.readPoint();
    mesh.center = in.words.readPoint();
    mesh.radius = static_cast<float>(in.words.readInt());
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

void readNormals(ShapeReader& in, Mesh& mesh) {
    in.readPoints(static_cast<int64_t>(mesh.vertexes.size()), mesh.normals);
    readList(in.bytes, static_cast<int64_t>(mesh.vertexes.size()), 1, mesh.encodedNormals,
             [&] { return in.bytes.read8(); });
}

void readVertices(ShapeReader& in, Mesh& mesh) {
    in.readPoints(in.words.readInt(), mesh.vertexes);
    readList(in.words, in.words.readInt(), 8, mesh.texturevertexes, [&] {
        const float x = in.words.readFloat();
        return Point2D{x, in.words.readFloat()};
    });
    readNormals(in, mesh);
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

void readCountedHalves(ShapeReader& in, std::vector<uint32_t>& values) {
    readList(in.halves, in.words.readInt(), 2, values, [&] { return in.halves.read16(); });
}

void readPrimitives(ShapeReader& in, Mesh& mesh) {
    readList(in.words, in.words.readInt(), 4, mesh.primitives, [&] {
        Primitive primitive;
        primitive.firstElement = in.halves.read16();
        primitive.numElements = in.halves.read16();
        primitive.material = in.words.read32();
        return primitive;
    });
    readCountedHalves(in, mesh.indices);
    readCountedHalves(in, mesh.mindices);
    mesh.vertsPerFrame = in.words.readInt();
    mesh.flags = in.words.read32();
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

Matrix44 readMatrix(ByteReader& words) {
    Matrix44 matrix;
    for (auto& row : matrix.m) {
        for (float& value : row) value = words.readFloat();
    }
    return matrix;
}

void readSkin(ShapeReader& in, Mesh& mesh) {
    // The second copy of the vertices is what a skin is bound by, so it is the one that counts.
    in.readPoints(in.words.readInt(), mesh.vertexes);
    readNormals(in, mesh);

    readList(in.words, in.words.readInt(), 64, mesh.initialTransforms, [&] { return readMatrix(in.words); });
    in.readInts(in.words.readInt(), mesh.vindex);
    const auto weights = static_cast<int64_t>(mesh.vindex.size());
    in.readInts(weights, mesh.vbone);
    in.readFloats(weights, mesh.vweight);
    in.readInts(in.words.readInt(), mesh.nodeIndex);
    if (mesh.nodeIndex.size() != mesh.initialTransforms.size()) {
        in.words.report("a skin with " + std::to_string(mesh.nodeIndex.size()) + " bones has " +
                        std::to_string(mesh.initialTransforms.size()) + " bone transforms");
    }
    in.checkpoint();
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

Cluster readCluster(ByteReader& words) {
    Cluster cluster;
    cluster.startPrimitive = words.readInt();
    cluster.endPrimitive = words.readInt();
    cluster.planeNormal = words.readPoint();
    cluster.planeConstant = words.readFloat();
    cluster.frontCluster = words.readInt();
    cluster.backCluster = words.readInt();
    return cluster;
}

void readClusters(ShapeReader& in, Mesh& mesh) {
    readList(in.words, in.words.readInt(), 32, mesh.clusters, [&] { return readCluster(in.words); });
    for (std::vector<int32_t>* list :
         {&mesh.frameStartCluster, &mesh.frameFirstVertex, &mesh.frameVertexCount, &mesh.frameFirstTexVertex}) {
        in.readInts(in.words.readInt(), *list);
    }
    in.words.read32();
    in.checkpoint();
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

void Mesh::readMeshBlock(ShapeReader& in) {
    type = static_cast<MeshType>(in.words.readInt());
    if (type == MeshType::Null) return;
    in.checkpoint();
    readScalars(in, *this);
    readVertices(in, *this);
    readPrimitives(in, *this);
    in.checkpoint();
    if (type == MeshType::Skin) readSkin(in, *this);
    if (type == MeshType::Sorted) readClusters(in, *this);
}

}  // namespace marrowfen
