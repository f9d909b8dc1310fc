#pragma once

// What is said after an export: the line about what was made, and warnings about what was dropped or guessed.

#include <string>
#include <vector>

#include "shape/shape.h"

namespace marrowfen::cli {

// "ship.dts: 3 detail levels (120, 60 and 30 triangles), 2 materials, ..."; without geometry for a DSQ file.
std::string summary(const std::string& output, const Shape& shape, bool isShapeFile, uintmax_t bytes);

// What the export log says was passed over: a warning per kind, with the names in it. The log's lines end in CR LF.
std::vector<std::string> logWarnings(const std::string& log);

// How many clips the log says were found.
int clipsFound(const std::string& log);

}  // namespace marrowfen::cli
