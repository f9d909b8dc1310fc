#pragma once

#include "ground/math.h"
#include "mesh/mesh.h"

namespace marrowfen {

// Generated collision meshes: vertices in shape space with normals, strips without a material.

// A prism about the z axis through the centre of the box, from its bottom to its top, with the given radius.
// detail: segments in units of 1/64; between 4 and 64 of them, an even number.
Mesh cylinderPrimitive(const Box& box, float radius, float detail);

// The box itself: its sides as one strip, its top and its bottom.
Mesh boxPrimitive(const Box& box);

}  // namespace marrowfen
