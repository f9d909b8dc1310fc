#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "mesh/mesh.h"
#include "view/gltf_file.h"

namespace marrowfen::view {

// A mesh as it stands in the glTF file. A skin's joints are its bone slots in order and, where some vertex has no
// weight, one more: the frame of the whole shape, in which such a vertex stays.
struct GltfMesh {
    int32_t mesh = -1;                 // -1 for one that draws nothing
    int32_t inverseBindMatrices = -1;  // accessor, -1 unless skinned
    bool hasShapeJoint = false;        // the joint after the bone slots
    size_t triangles = 0;
    size_t vertices = 0;
};

// The glTF materials of a mesh's runs.
struct MaterialMap {
    std::vector<int32_t> ofShape;  // one per shape material
    int32_t withoutMaterial = -1;  // for runs that have none; -1 leaves them plain
};

// Adds the mesh's first frame. Triangles with a corner that isn't finite are left out with a warning. The mesh has
// passed findFault.
GltfMesh addMesh(GltfFile& file, const Mesh& mesh, const std::string& name, const MaterialMap& materials,
                 std::vector<std::string>& warnings);

}  // namespace marrowfen::view
