#pragma once

// What `marrowfen inspect` prints.

#include <string>
#include <vector>

#include "cli/shape_file.h"

namespace marrowfen::cli {

// Aligned for a terminal, with names as a terminal may show them.
std::string inspectText(const ShapeFile& file, const std::vector<ShapeProblem>& problems);

// One line with a JSON object; docs/for-loaders.md lists its keys. Bytes of names that aren't UTF-8 become U+FFFD,
// numbers that JSON doesn't have become null.
std::string inspectJson(const ShapeFile& file, const std::vector<ShapeProblem>& problems);

// One line: "error MESH_INDEX_RANGE meshes[2].indices[17]: 512 of 300 (vertex index that is out of range)".
std::string findingText(const ShapeProblem& problem);

// Detail levels that are listed; a file may hold any number.
inline constexpr size_t kMostLevels = 256;

}  // namespace marrowfen::cli
