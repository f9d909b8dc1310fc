#pragma once

#include "shape/shape.h"
#include "view/gltf_file.h"
#include "view/mesh_gltf.h"

namespace marrowfen::view {

// Adds every material of the shape by its name. A shape has no colours, only texture names: the colour is one that the
// name mentions, or made from the name, so that it is the same in every shape.
MaterialMap addMaterials(GltfFile& file, const Shape& shape);

// Adds what collision geometry without a material of its own is drawn in: see-through and two-sided.
int32_t addCollisionMaterial(GltfFile& file, const char* name, bool lineOfSight);

}  // namespace marrowfen::view
