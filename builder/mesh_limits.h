#pragma once

#include <string>

#include "mesh/mesh.h"

namespace marrowfen {

// Why a file can't hold the mesh of this layer as it stands: vertex numbers and the element positions of primitives are
// 16-bit there. Empty when it can.
std::string fileLimitError(const Mesh& mesh, const std::string& layerName);

}  // namespace marrowfen
