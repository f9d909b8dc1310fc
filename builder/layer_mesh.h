#pragma once

// The mesh of a layer, and what ends a build there. What is in the way is told beside the error.

#include <string>

#include "builder/notices.h"
#include "builder/records.h"
#include "host/materials.h"
#include "mesh/mesh.h"

namespace marrowfen {

// The layer's polyhedra, or a mesh with an error. defaultNode: the shape node of vertices that no influence binds.
Mesh layerMesh(const LayerInfo& layer, int32_t defaultNode, MaterialConversion& materials, Notices& notices);

// Why a file can't hold the mesh of this layer as it stands: vertex numbers and the element positions of primitives are
// 16-bit there. Empty when it can.
std::string fileLimitError(const Mesh& mesh, const LayerInfo& layer, LayerRole role, Notices& notices);

}  // namespace marrowfen
