#pragma once

#include <ostream>
#include <unordered_map>
#include <vector>

#include "builder/records.h"
#include "host/materials.h"
#include "mesh/mesh.h"
#include "shape/shape.h"

namespace marrowfen {

// All polyhedra of one layer as one mesh, in scene space: triangulated by the host, corners with equal vertex and
// texture coordinate merged, every face a primitive of its own, every vertex bound to one shape node.
//
// The type is Sorted if the layer asks for it, else Skin if the vertices hang on more than one node, else Standard. A
// layer without polyhedra gives an empty mesh. A face that names a vertex which its polyhedron doesn't have is the
// mesh's error.
class PolyToMesh : public Mesh {
public:
    // Runs the whole conversion. defaultNode: the shape node of vertices that no influence binds. materials: the
    // shape's list, which may grow. Both it and the log are borrowed for the constructor's time.
    PolyToMesh(const LayerInfo& layer, int32_t defaultNode, std::vector<Shape::Material>& materials, std::ostream& log,
               const TextureOptions& textureOptions);

private:
    struct HostPoly;

    void addPoly(const PolyInfo& poly, int32_t position, int32_t defaultNode, MaterialConversion& conversion,
                 std::ostream& log);
    void addFace(HostPoly& poly, const char* face, uint32_t faceMaterial);
    uint32_t cornerVertex(HostPoly& poly, int32_t vertex, int32_t uv);
    void addVertex(const HostPoly& poly, int32_t vertex, int32_t uv);

    std::unordered_map<int32_t, int32_t> slotOfNode_;  // what boneSlot() answered
};

}  // namespace marrowfen
