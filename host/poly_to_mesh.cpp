#include "host/poly_to_mesh.h"

#include <cstring>

#include "mesh/normal_encoding.h"

// Corners are merged by a hash of vertex and texture coordinate, so that a corner is found without a search through all
// corners, however many texture coordinates meet at one vertex.

namespace marrowfen {

namespace {

// Byte offsets of the host's face and corner records.
constexpr size_t kFaceCornerCount = 0;
constexpr size_t kFaceCorners = 4;
constexpr size_t kFaceMaterial = 20;
constexpr size_t kCornerVertex = 0;
constexpr size_t kCornerUv = 4;
constexpr size_t kCornerSize = 20;

template <class Value>
Value readAt(const char* record, size_t offset) {
    Value value;
    std::memcpy(&value, record + offset, sizeof value);
    return value;
}

// The node that binds each vertex of the polyhedron: that of its first influence.
std::vector<int32_t> nodeOfVertex(const PolyInfo& poly, size_t vertexCount, int32_t defaultNode) {
    std::vector<int32_t> nodes(vertexCount, defaultNode);
    for (auto influence = poly.influences.rbegin(); influence != poly.influences.rend(); ++influence) {
        if (influence->vertex < vertexCount) nodes[influence->vertex] = influence->node;
    }
    return nodes;
}

}  // namespace

// The host's triangulated copy of one polyhedron, and the corners of it that are mesh vertices already.
struct PolyToMesh::HostPoly {
    int32_t position = 0;  // in the layer's polys
    int32_t vertexCount = 0;
    const float* positions = nullptr;  // in scene space
    const float* normals = nullptr;
    int32_t uvCount = 0;
    const float* uvs = nullptr;
    std::vector<int32_t> nodeOfVertex;

    std::unordered_map<uint64_t, uint32_t> vertexOfCorner;  // mesh vertex by host vertex and texture coordinate
};

PolyToMesh::PolyToMesh(const LayerInfo& layer, int32_t defaultNode, std::vector<Shape::Material>& materials,
                       std::ostream& log, const TextureOptions& textureOptions) {
    log << "Preparing to export " << layer.polys.size() << " poly to mesh..." << std::endl;
    MaterialConversion conversion(materials, log, textureOptions);
    for (size_t i = 0; i < layer.polys.size(); ++i) {
        addPoly(layer.polys[i], static_cast<int32_t>(i), defaultNode, conversion, log);
    }

    if (layer.sort) {
        type = MeshType::Sorted;
    } else if (nodeIndex.size() > 1) {
        type = MeshType::Skin;
    }
    setNumFrames(1);
    parent = -1;
    computeBounds();
    computeCenter();
    computeRadius();
    log << "End export of poly to mesh" << std::endl;
}

void PolyToMesh::addPoly(const PolyInfo& info, int32_t position, int32_t defaultNode, MaterialConversion& conversion,
                         std::ostream& log) {
    TsxNode* copy = tsxMNodeGetTriangulatedPolyhedron(info.node);
    if (copy == nullptr) {
        setError("The host can't triangulate the polyhedron " + info.name + ".");
        return;
    }
    HostPoly poly;
    poly.position = position;
    poly.vertexCount = tsxPolyhGetNbrVxs(copy);
    log << "Poly " << position << ": " << poly.vertexCount << " vetices" << std::endl;

    // Place the vertices in the scene.
    float transform[12];
    tsxPolyhGetVxTxmx(copy, transform);
    const float* untransformed = tsxPolyhGetVxArray(copy);
    auto* placed = static_cast<float*>(tsxMalloc(static_cast<unsigned>(poly.vertexCount) * 3 * sizeof(float)));
    tsxTransformVecs3f(poly.vertexCount, placed, untransformed, transform);
    poly.positions = placed;

    poly.uvCount = tsxPolyhGetNbrUV(copy);
    poly.uvs = tsxPolyhGetUVArray(copy);
    const int faceCount = tsxPolyhGetNbrFaces(copy);
    void** faces = tsxPolyhGetFaceptrArray(copy);
    log << "Poly " << position << ": " << faceCount << " faces" << std::endl;
    poly.normals = tsxPolyhGetVxNormalsArray(copy);

    const auto vertexCount = static_cast<size_t>(poly.vertexCount);
    poly.nodeOfVertex = nodeOfVertex(info, vertexCount, defaultNode);
    poly.vertexOfCorner.reserve(vertexCount);
    conversion.beginPolyhedron();
    for (int f = 0; f < faceCount; ++f) {
        const auto* face = static_cast<const char*>(faces[f]);
        addFace(poly, face, conversion.faceMaterial(copy, readAt<int16_t>(face, kFaceMaterial)));
    }

    tsxFree(placed);
    tsxSobjDelete(copy);
}

void PolyToMesh::addFace(HostPoly& poly, const char* face, uint32_t faceMaterial) {
    const auto cornerCount = readAt<int16_t>(face, kFaceCornerCount);
    const auto* corners = readAt<const char*>(face, kFaceCorners);

    Primitive primitive;
    primitive.firstElement = static_cast<uint32_t>(indices.size());
    primitive.material = Primitive::Indexed | faceMaterial;
    primitive.sourcePoly = poly.position;
    for (int16_t c = 0; c < cornerCount; ++c, corners += kCornerSize) {
        const auto vertex = readAt<int32_t>(corners, kCornerVertex);
        if (vertex < 0 || vertex >= poly.vertexCount) {
            setError("Polyhedron " + std::to_string(poly.position) + " has a face with vertex " +
                     std::to_string(vertex) + " of " + std::to_string(poly.vertexCount) + ".");
            return;
        }
        indices.push_back(cornerVertex(poly, vertex, readAt<int32_t>(corners, kCornerUv)));
        ++primitive.numElements;
    }
    primitives.push_back(primitive);
}

// The mesh vertex of a corner, added when no earlier corner of the polyhedron has this vertex and texture coordinate.
uint32_t PolyToMesh::cornerVertex(HostPoly& poly, int32_t vertex, int32_t uv) {
    const uint64_t corner = uint64_t{static_cast<uint32_t>(vertex)} << 32 | static_cast<uint32_t>(uv);
    const auto next = static_cast<uint32_t>(vertexes.size());
    const auto [entry, isNew] = poly.vertexOfCorner.try_emplace(corner, next);
    if (isNew) addVertex(poly, vertex, uv);
    return entry->second;
}

void PolyToMesh::addVertex(const HostPoly& poly, int32_t vertex, int32_t uv) {
    const auto v = static_cast<size_t>(vertex);
    const int32_t node = poly.nodeOfVertex[v];
    const auto [slot, isNew] = slotOfNode_.try_emplace(node);
    if (isNew) slot->second = boneSlot(node);
    vindex.push_back(static_cast<int32_t>(vertexes.size()));
    vbone.push_back(slot->second);
    vweight.push_back(1);

    const float* p = poly.positions + v * 3;
    vertexes.push_back({p[0], p[1], p[2]});
    // A polyhedron without texture coordinates reads (0, 0) everywhere.
    const bool hasUv = uv >= 0 && uv < poly.uvCount;
    const float* t = poly.uvs + static_cast<size_t>(hasUv ? uv : 0) * 2;
    texturevertexes.push_back(hasUv ? Point2D{t[0], 1 - t[1]} : Point2D{0, 1});
    // The host's normals point inward.
    const float* n = poly.normals + v * 3;
    normals.push_back({-n[0], -n[1], -n[2]});
    encodedNormals.push_back(encodeNormal(normals.back()));
}

}  // namespace marrowfen
