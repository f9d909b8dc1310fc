#include "ground/block_stream.h"
#include "mesh/mesh.h"

// The block of one mesh in the three packed blocks of a file: scalars, the vertex and index lists, then what only skins
// or only sorted meshes have. A Null mesh is its type word alone. Each section's fields stand here once, for writing (a
// BlockWriter and a const Mesh) and for reading (a BlockReader and a Mesh).

namespace marrowfen {

namespace {

template <class Blocks, class AnyMesh>
void exchangeScalars(Blocks& file, AnyMesh& mesh) {
    file.words.values(mesh.numFrames, mesh.matFrames, mesh.parent, mesh.bounds, mesh.center);
    file.words.whole(mesh.radius);
}

// The lists of normals have no length of their own: they are as long as the list of vertices.
template <class Blocks, class AnyMesh>
void exchangeNormals(Blocks& file, AnyMesh& mesh) {
    file.words.entries(count32(mesh.vertexes), mesh.normals);
    file.bytes.entries(count32(mesh.vertexes), mesh.encodedNormals);
}

template <class Blocks, class AnyMesh>
void exchangeVertices(Blocks& file, AnyMesh& mesh) {
    file.words.list(mesh.vertexes);
    file.words.list(mesh.texturevertexes);
    exchangeNormals(file, mesh);
}

// A file holds 16 bits of each vertex number.
template <class Blocks, class Indices>
void exchangeIndices(Blocks& file, Indices& indices) {
    file.halves.entries(file.words.count(indices), kBytesOf<uint16_t>, indices,
                        [&](auto& index) { file.halves.low16(index); });
}

template <class Blocks, class AnyMesh>
void exchangePrimitives(Blocks& file, AnyMesh& mesh) {
    file.words.entries(file.words.count(mesh.primitives), kBytesOf<uint32_t>, mesh.primitives, [&](auto& primitive) {
        file.halves.low16(primitive.firstElement);
        file.halves.low16(primitive.numElements);
        file.words.value(primitive.material);
    });
    exchangeIndices(file, mesh.indices);
    exchangeIndices(file, mesh.mindices);
    file.words.values(mesh.vertsPerFrame, mesh.flags);
}

// The vertices and normals stand in a skin's block twice. The second copy is what a skin is bound by, so it is the one
// that counts when it is read.
template <class Blocks, class AnyMesh>
void exchangeSkin(Blocks& file, AnyMesh& mesh) {
    file.words.list(mesh.vertexes);
    exchangeNormals(file, mesh);

    file.words.entries(file.words.count(mesh.nodeIndex), mesh.initialTransforms);
    file.words.list(mesh.vindex);
    file.words.entries(count32(mesh.vindex), mesh.vbone);
    file.words.entries(count32(mesh.vindex), mesh.vweight);
    file.words.list(mesh.nodeIndex);
}

template <class Blocks, class AnyMesh>
void exchangeClusters(Blocks& file, AnyMesh& mesh) {
    constexpr size_t kClusterBytes = 4 * kBytesOf<int32_t> + kBytesOf<Point3> + kBytesOf<float>;
    file.words.entries(file.words.count(mesh.clusters), kClusterBytes, mesh.clusters, [&](auto& cluster) {
        file.words.values(cluster.startPrimitive, cluster.endPrimitive, cluster.planeNormal, cluster.planeConstant,
                          cluster.frontCluster, cluster.backCluster);
    });
    for (auto* list :
         {&mesh.frameStartCluster, &mesh.frameFirstVertex, &mesh.frameVertexCount, &mesh.frameFirstTexVertex}) {
        file.words.list(*list);
    }
    file.words.unused();
}

// What follows the type word of a mesh that isn't Null.
template <class Blocks, class AnyMesh>
void exchangeMesh(Blocks& file, AnyMesh& mesh) {
    file.checkpoint();
    exchangeScalars(file, mesh);
    exchangeVertices(file, mesh);
    exchangePrimitives(file, mesh);
    file.checkpoint();
    if (mesh.type == MeshType::Skin) exchangeSkin(file, mesh);
    if (mesh.type == MeshType::Sorted) exchangeClusters(file, mesh);
}

void checkBones(ByteReader& words, const Mesh& mesh) {
    if (mesh.nodeIndex.size() == mesh.initialTransforms.size()) return;
    words.report("a skin with " + std::to_string(mesh.nodeIndex.size()) + " bones has " +
                 std::to_string(mesh.initialTransforms.size()) + " bone transforms");
}

}  // namespace

void Mesh::writeMeshBlock(BlockWriter& file) const {
    file.words.value(static_cast<int32_t>(type));
    if (type == MeshType::Null) return;
    exchangeMesh(file, *this);
    if (type == MeshType::Skin || type == MeshType::Sorted) file.checkpoint();
}

void Mesh::readMeshBlock(BlockReader& file) {
    type = static_cast<MeshType>(file.words.read<int32_t>());
    if (type == MeshType::Null) return;
    exchangeMesh(file, *this);
    if (type == MeshType::Skin) checkBones(file.words, *this);
    if (type == MeshType::Skin || type == MeshType::Sorted) file.checkpoint();
}

}  // namespace marrowfen
