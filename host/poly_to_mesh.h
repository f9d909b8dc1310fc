#pragma once

#include <cstdint>
#include <ostream>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/materials.h"
#include "host/polyhedron.h"
#include "host/scene_node.h"
#include "mesh/mesh.h"

namespace marrowfen {

// Binds a vertex of a polyhedron to a shape node.
struct VertexInfluence {
    int32_t node = -1;
    int32_t vertex = 0;  // the host's number of it
};

struct PolyInfo {
    SceneNode node;
    std::vector<VertexInfluence> influences;  // in recording order; the first one of a vertex binds it
    std::string name;
};

// The nodes that the vertices of the polyhedra's faces hang on. defaultNode: that of vertices without an influence.
std::set<int32_t> nodesBoundTo(const std::vector<PolyInfo>& polys, int32_t defaultNode);

// The first face of the polyhedra that has less than three corners or the same corner twice, in words: "face 3 of
// polyhedron hull on layer Detail names vertex 7 twice", faces and vertices counted from 0. Empty for none.
std::string oddFace(const std::vector<PolyInfo>& polys, const std::string& layerName);

// Some polyhedra as one mesh, in scene space: triangulated by the host, corners with equal vertex and texture
// coordinate merged, every face a primitive of its own, every vertex bound to one shape node.
//
// The type is Sorted if that is asked for, else Skin if the vertices hang on more than one node, else Standard. No
// polyhedra give an empty mesh. A polyhedron that the host can't hand over whole is the mesh's error.
class PolyToMesh : public Mesh {
public:
    // Runs the whole conversion. defaultNode: the shape node of vertices that no influence binds. The shape's
    // materials may grow.
    PolyToMesh(const std::vector<PolyInfo>& polys, bool sorted, int32_t defaultNode, MaterialConversion& materials,
               std::ostream& log);

    // Where an error came up: positions of the polyhedron and, if it lies in one, of the face; -1 for none.
    int32_t faultyPoly() const { return faultyPoly_; }
    int32_t faultyFace() const { return faultyFace_; }

private:
    struct HostPoly;

    void addPoly(const PolyInfo& poly, int32_t position, int32_t defaultNode, MaterialConversion& materials,
                 std::ostream& log);
    void addFace(HostPoly& poly, const HostFace& face, uint32_t faceMaterial);
    uint32_t cornerVertex(HostPoly& poly, int32_t vertex, int32_t uv);
    void addVertex(const HostPoly& poly, int32_t vertex, int32_t uv);

    int32_t faultyPoly_ = -1;
    int32_t faultyFace_ = -1;
    std::unordered_map<int32_t, int32_t> slotOfNode_;  // what boneSlot() answered
};

}  // namespace marrowfen
