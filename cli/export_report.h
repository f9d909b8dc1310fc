#pragma once

// What is said after an export: the line about what was made, and warnings about what was dropped or guessed.

#include <string>
#include <vector>

#include "ground/message.h"
#include "shape/shape.h"

namespace marrowfen::cli {

// "ship.dts: 3 detail levels (120, 60 and 30 triangles), 2 materials, ..."; without geometry for a DSQ file.
std::string exportSummary(const std::string& output, const Shape& shape, bool isShapeFile, uintmax_t bytes);

// What was in the way of an export that was refused, and the way out; empty when nobody told.
std::string refusalHint(const std::vector<Message>& messages);

// A warning per kind of message, with what the messages of that kind are about.
std::vector<std::string> groupedWarnings(const std::vector<Message>& messages);

}  // namespace marrowfen::cli
