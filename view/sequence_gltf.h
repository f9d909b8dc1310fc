#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "shape/shape.h"
#include "view/gltf_file.h"

namespace marrowfen::view {

// The glTF rotation of a shape's quaternion: a unit quaternion of the common convention, which is the conjugate. One
// without a length gives the identity.
Quaternion commonRotation(const Quaternion& q);

// A translation with zeros in place of what isn't finite.
Point3 finiteTranslation(const Point3& p);

// Adds each sequence as an animation: key j at second j * duration / numKeyFrames, as it was sampled. placements[n]
// lists the glTF nodes that stand for node n; all of them move. The shape has passed findFault.
void addAnimations(GltfFile& file, const Shape& shape, const std::vector<std::vector<int32_t>>& placements,
                   std::vector<std::string>& warnings);

}  // namespace marrowfen::view
