#pragma once

// The record of an animation sequence, the same in DTS and DSQ files but for its name.

#include <string>

#include "shape/shape.h"

namespace marrowfen {

// Appends `flags` to `toolBegin` and the eight index sets.
void putSequence(std::string& out, const Shape::Sequence& sequence);

}  // namespace marrowfen
