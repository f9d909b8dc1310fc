#pragma once

// What differs between two shapes, as a reviewer wants to read it.

#include <string>
#include <vector>

#include "cli/shape_file.h"

namespace marrowfen::cli {

// A line a difference, in words; empty for files of the same bytes. Things are matched by their names, as a game finds
// them. A file without a byte is one that isn't there: all of the other one is new, or gone.
std::vector<std::string> differences(const ShapeFile& before, const ShapeFile& after);

}  // namespace marrowfen::cli
