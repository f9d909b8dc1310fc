#pragma once

// The record of an animation sequence, the same in DTS and DSQ files but for its name.

#include <string>

#include "ground/shape_reader.h"
#include "shape/shape.h"

namespace marrowfen {

// Appends `flags` to `toolBegin` and the eight index sets.
void putSequence(std::string& out, const Shape::Sequence& sequence);

// Reads them back as files of a version from 19 on hold them; the name is left as it is.
void readSequence(ByteReader& in, uint32_t version, Shape::Sequence& sequence);

inline constexpr size_t kSmallestSequence =
    99;  // bytes of a sequence in the shortest of the versions, name index included

}  // namespace marrowfen
