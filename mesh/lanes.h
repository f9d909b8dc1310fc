#pragma once

#include <cmath>
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

inline Lanes allLanes(float value) { return Lanes{value, value, value, value}; }

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

// The compiler doesn't see that choices are minimums and maximums of the processor, which take the second number when
// one of the two isn't a number.
#ifdef __SSE2__
inline Lanes lower(Lanes a, Lanes b) { return static_cast<Lanes>(_mm_min_ps(a, b)); }
inline Lanes higher(Lanes a, Lanes b) { return static_cast<Lanes>(_mm_max_ps(a, b)); }
inline Lanes squareRoots(Lanes a) { return static_cast<Lanes>(_mm_sqrt_ps(a)); }

// A bit for each lane whose highest bit is set.
inline uint32_t signsOf(Bits bits) { return static_cast<uint32_t>(_mm_movemask_ps(reinterpret_cast<__m128>(bits))); }
#else
inline Lanes lower(Lanes a, Lanes b) { return a < b ? a : b; }
inline Lanes higher(Lanes a, Lanes b) { return a > b ? a : b; }
inline Lanes squareRoots(Lanes a) { return Lanes{std::sqrt(a[0]), std::sqrt(a[1]), std::sqrt(a[2]), std::sqrt(a[3])}; }

inline uint32_t signsOf(Bits bits) {
    bits = (bits < 0) & Bits{1, 2, 4, 8};
    return static_cast<uint32_t>(bits[0] | bits[1] | bits[2] | bits[3]);
}
#endif

inline int32_t sum(Bits numbers) {
    numbers += __builtin_shufflevector(numbers, numbers, 2, 3, 0, 1);
    return numbers[0] + numbers[1];
}

// The lowest of the four, in all lanes.
inline Lanes lowestOf(Lanes a) {
    a = lower(a, __builtin_shufflevector(a, a, 2, 3, 0, 1));
    return lower(a, __builtin_shufflevector(a, a, 1, 0, 3, 2));
}

// The lowest of each of four.
inline Lanes lowestOfEach(Lanes a, Lanes b, Lanes c, Lanes d) {
    const Lanes ab = lower(__builtin_shufflevector(a, b, 0, 4, 1, 5), __builtin_shufflevector(a, b, 2, 6, 3, 7));
    const Lanes cd = lower(__builtin_shufflevector(c, d, 0, 4, 1, 5), __builtin_shufflevector(c, d, 2, 6, 3, 7));
    return lower(__builtin_shufflevector(ab, cd, 0, 1, 4, 5), __builtin_shufflevector(ab, cd, 2, 3, 6, 7));
}

// Three coordinates of four points.
struct PointLanes {
    Lanes x, y, z;
};

// Each of the four holds one point, and anything in its last lane.
inline PointLanes pointLanes(const Lanes* p) {
    const Lanes xy01 = __builtin_shufflevector(p[0], p[1], 0, 4, 1, 5);
    const Lanes xy23 = __builtin_shufflevector(p[2], p[3], 0, 4, 1, 5);
    const Lanes z01 = __builtin_shufflevector(p[0], p[1], 2, 6, 3, 7);
    const Lanes z23 = __builtin_shufflevector(p[2], p[3], 2, 6, 3, 7);
    return {__builtin_shufflevector(xy01, xy23, 0, 1, 4, 5), __builtin_shufflevector(xy01, xy23, 2, 3, 6, 7),
            __builtin_shufflevector(z01, z23, 0, 1, 4, 5)};
}

}  // namespace marrowfen
