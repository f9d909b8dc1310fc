#pragma once

#include <vector>

#include "standin/host/scene.h"

namespace marrowfen::standin {

struct SimplerPolyhedron {
    Polyhedron polyhedron;
    std::vector<int32_t> vertexOf;  // by vertex of the polyhedron given, kNone for those that are gone
};

// About as many triangles as wanted, on vertices of the polyhedron given. What stands together stays together: no holes
// open where normals, texture coordinates or materials meet. All faces are triangles.
SimplerPolyhedron simplify(const Polyhedron& polyhedron, size_t triangles);

}  // namespace marrowfen::standin
