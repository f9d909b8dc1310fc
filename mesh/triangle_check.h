#pragma once

#include "mesh/mesh.h"

namespace marrowfen {

// What keeps a primitive from being one of the single triangles that stripping and decimation take.
enum class TriangleFault { None, NegativeMaterial, NoTriangle, OutsideIndices };

inline TriangleFault checkTriangle(const Mesh& mesh, const Primitive& p) {
    if (p.material == Primitive::NegativeMaterial) return TriangleFault::NegativeMaterial;
    if (!p.isIndexedTriangle()) return TriangleFault::NoTriangle;
    if (p.firstElement + size_t{3} > mesh.indices.size()) return TriangleFault::OutsideIndices;
    return TriangleFault::None;
}

}  // namespace marrowfen
