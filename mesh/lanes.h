#pragma once

#include <cstdint>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace marrowfen {

// Four numbers side by side, on which one instruction works at once where the processor has it. Each lane goes through
// the same operations in the same order as a single number would, to the same bits.
using Lanes = float __attribute__((vector_size(16)));
using Bits = int32_t __attribute__((vector_size(16)));  // of a comparison: all bits of a lane or none

inline Lanes lanesAt(const float* first) {
    Lanes four;
    std::memcpy(&four, first, sizeof four);
    return four;
}

inline Bits bitsAt(const int32_t* first) {
    Bits four;
    std::memcpy(&four, first, sizeof four);
    return four;
}

// A bit for each lane whose highest bit is set.
#ifdef __SSE2__
inline uint32_t signsOf(Bits bits) { return static_cast<uint32_t>(_mm_movemask_ps(reinterpret_cast<__m128>(bits))); }
#else
inline uint32_t signsOf(Bits bits) {
    bits = (bits < 0) & Bits{1, 2, 4, 8};
    return static_cast<uint32_t>(bits[0] | bits[1] | bits[2] | bits[3]);
}
#endif

inline int32_t sum(Bits numbers) {
    numbers += __builtin_shufflevector(numbers, numbers, 2, 3, 0, 1);
    return numbers[0] + numbers[1];
}

}  // namespace marrowfen
