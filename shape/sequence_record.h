#pragma once

// The record of an animation sequence after its name, the same in DTS and DSQ files.

#include "ground/byte_stream.h"
#include "shape/shape.h"

namespace marrowfen {

// As files of version 24 hold it.
void exchangeSequence(ByteWriter& bytes, const Shape::Sequence& sequence);

// As files of a version from 19 on hold it.
void exchangeSequence(ByteReader& bytes, uint32_t version, Shape::Sequence& sequence);

// Bytes of a sequence in the shortest of the versions, its name included: 12 words, three flags and six empty sets.
inline constexpr size_t kSmallestSequence = 12 * 4 + 3 + 6 * 8;

}  // namespace marrowfen
