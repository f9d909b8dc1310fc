#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "mesh/mesh.h"

namespace marrowfen::plain {

// Shape::collapseVertices and Shape::computeNormals step by step: every vertex is compared with every other one and the
// tables close up after each merge. Same results in quadratic time and worse. They return the error, empty for none,
// and trust the tables to fit together.
std::string collapseVertices(Mesh& mesh, std::vector<int32_t>& groups, std::vector<int32_t>& remap);
std::string computeNormals(const Mesh& mesh, const std::vector<int32_t>& groups, std::vector<Point3>& normals);

}  // namespace marrowfen::plain
