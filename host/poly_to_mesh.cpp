#include "host/poly_to_mesh.h"

#include <utility>

#include "ground/at.h"
#include "mesh/normal_encoding.h"

// Corners are merged by a hash of vertex and texture coordinate, so that a corner is found without a search through all
// corners, however many texture coordinates meet at one vertex.

namespace marrowfen {

namespace {

// The node that binds each vertex of the polyhedron: that of its first influence.
std::vector<int32_t> nodesOfVertices(const PolyInfo& poly, int32_t vertexCount, int32_t defaultNode) {
    std::vector<int32_t> nodes(static_cast<size_t>(vertexCount), defaultNode);
    for (auto influence = poly.influences.rbegin(); influence != poly.influences.rend(); ++influence) {
        if (hasIndex(nodes, influence->vertex)) at(nodes, influence->vertex) = influence->node;
    }
    return nodes;
}

}  // namespace

std::set<int32_t> nodesBoundTo(const std::vector<PolyInfo>& polys, int32_t defaultNode) {
    std::set<int32_t> nodes;
    for (const PolyInfo& poly : polys) {
        const std::vector<int32_t> nodeOfVertex = nodesOfVertices(poly, poly.node.vertexCount(), defaultNode);
        for (const HostFace& face : facesOf(poly.node)) {
            for (int16_t c = 0; c < face.cornerCount(); ++c) {
                const int32_t vertex = face.corner(c).vertex;
                if (hasIndex(nodeOfVertex, vertex)) nodes.insert(at(nodeOfVertex, vertex));
            }
        }
    }
    return nodes;
}

namespace {

// What is wrong with the face; empty for a good one.
std::string faceFault(const HostFace& face) {
    if (face.cornerCount() < 3) return "has " + std::to_string(face.cornerCount()) + " corners";
    std::set<std::pair<int32_t, int32_t>> seen;
    for (int16_t c = 0; c < face.cornerCount(); ++c) {
        const auto [vertex, uv] = face.corner(c);
        if (!seen.emplace(vertex, uv).second) return "names vertex " + std::to_string(vertex) + " twice";
    }
    return {};
}

}  // namespace

std::string oddFace(const std::vector<PolyInfo>& polys, const std::string& layerName) {
    for (const PolyInfo& poly : polys) {
        const std::vector<HostFace> faces = facesOf(poly.node);
        for (size_t f = 0; f < faces.size(); ++f) {
            const std::string fault = faceFault(faces[f]);
            if (!fault.empty()) {
                return "face " + std::to_string(f) + " of polyhedron " + poly.name + " on layer " + layerName + " " +
                       fault;
            }
        }
    }
    return {};
}

// One polyhedron on its way into the mesh, and the corners of it that are mesh vertices already.
struct PolyToMesh::HostPoly {
    HostPoly(const PolyInfo& info, int32_t positionInLayer, int32_t defaultNode)
        : copy(info.node, info.name),
          position(positionInLayer),
          nodeOfVertex(nodesOfVertices(info, copy.vertexCount(), defaultNode)) {
        vertexOfCorner.reserve(nodeOfVertex.size());
    }

    TriangulatedCopy copy;
    int32_t position;
    std::vector<int32_t> nodeOfVertex;
    std::unordered_map<uint64_t, uint32_t> vertexOfCorner;  // mesh vertex by host vertex and texture coordinate
};

PolyToMesh::PolyToMesh(const std::vector<PolyInfo>& polys, bool sorted, int32_t defaultNode,
                       MaterialConversion& materials, std::ostream& log) {
    log << "Preparing to export " << polys.size() << " poly to mesh..." << std::endl;
    for (int32_t i = 0; i < count32(polys); ++i) {
        addPoly(at(polys, i), i, defaultNode, materials, log);
        if (hasError() && faultyPoly_ < 0) faultyPoly_ = i;
    }

    if (sorted) {
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

void PolyToMesh::addPoly(const PolyInfo& info, int32_t position, int32_t defaultNode, MaterialConversion& materials,
                         std::ostream& log) {
    HostPoly poly(info, position, defaultNode);
    if (!poly.copy.error().empty()) {
        setError(poly.copy.error());
        return;
    }
    log << "Poly " << position << ": " << poly.copy.vertexCount() << " vetices" << std::endl;
    log << "Poly " << position << ": " << poly.copy.faceCount() << " faces" << std::endl;

    materials.beginPolyhedron();
    for (int32_t f = 0; f < poly.copy.faceCount(); ++f) {
        const HostFace face = poly.copy.face(f);
        addFace(poly, face, materials.faceMaterial(poly.copy.node(), face.material()));
        if (hasError() && faultyPoly_ < 0 && faultyFace_ < 0) faultyFace_ = f;
    }
}

void PolyToMesh::addFace(HostPoly& poly, const HostFace& face, uint32_t faceMaterial) {
    Primitive primitive;
    primitive.firstElement = static_cast<uint32_t>(indices.size());
    primitive.material = Primitive::Indexed | faceMaterial;
    primitive.sourcePoly = poly.position;
    for (int16_t c = 0; c < face.cornerCount(); ++c) {
        const HostFace::Corner corner = face.corner(c);
        if (corner.vertex < 0 || corner.vertex >= poly.copy.vertexCount()) {
            setError("Polyhedron " + std::to_string(poly.position) + " has a face with vertex " +
                     std::to_string(corner.vertex) + " of " + std::to_string(poly.copy.vertexCount()) + ".");
            return;
        }
        indices.push_back(cornerVertex(poly, corner.vertex, corner.uv));
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
    const int32_t node = at(poly.nodeOfVertex, vertex);
    const auto [slot, isNew] = slotOfNode_.try_emplace(node);
    if (isNew) slot->second = boneSlot(node);
    vindex.push_back(count32(vertexes));
    vbone.push_back(slot->second);
    vweight.push_back(1);

    vertexes.push_back(poly.copy.position(vertex));
    // A polyhedron without texture coordinates reads (0, 0) everywhere.
    const Point2D texture = poly.copy.uv(uv).value_or(Point2D{0, 0});
    texturevertexes.push_back({texture.x, 1 - texture.y});
    // The host's normals point inward.
    normals.push_back(-poly.copy.normal(vertex));
    encodedNormals.push_back(encodeNormal(normals.back()));
}

}  // namespace marrowfen
