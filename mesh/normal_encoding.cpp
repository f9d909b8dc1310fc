#include "mesh/normal_encoding.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "mesh/normal_table.h"

// The nearest entry is found in three passes without branches, which the compiler turns into vector instructions: all
// dot products, their maximum, the first entry that reaches it. That is the entry that a scan with a strict comparison
// keeps: a NaN never becomes the maximum, nor does a dot product that isn't above kLeastDot.

namespace marrowfen {
namespace {

constexpr size_t kEntries = std::size(kNormalTable);
constexpr size_t kLanes = 8;  // independent maxima, so that none waits for the one before

static_assert(kEntries == 256 && kEntries % kLanes == 0);  // an entry's number is a byte

// No entry counts as near below this.
constexpr float kLeastDot = -1e31F;

struct TableByAxis {
    std::array<float, kEntries> x{}, y{}, z{};

    constexpr TableByAxis() {
        for (size_t i = 0; i < kEntries; ++i) {
            x[i] = kNormalTable[i].x;
            y[i] = kNormalTable[i].y;
            z[i] = kNormalTable[i].z;
        }
    }
};

constexpr TableByAxis kTable;

using Dots = std::array<float, kEntries>;

float largestDot(const Dots& dots) {
    std::array<float, kLanes> largest;
    largest.fill(kLeastDot);
    for (size_t i = 0; i < kEntries; i += kLanes) {
        for (size_t lane = 0; lane < kLanes; ++lane) {
            largest[lane] = dots[i + lane] > largest[lane] ? dots[i + lane] : largest[lane];
        }
    }
    return *std::max_element(largest.begin(), largest.end());
}

}  // namespace

uint8_t encodeNormal(const Point3& normal) {
    Dots dots;
    for (size_t i = 0; i < kEntries; ++i) {
        dots[i] = normal.x * kTable.x[i] + normal.y * kTable.y[i] + normal.z * kTable.z[i];
    }

    const float largest = largestDot(dots);
    if (!(largest > kLeastDot)) return 0;
    return static_cast<uint8_t>(std::find(dots.begin(), dots.end(), largest) - dots.begin());
}

}  // namespace marrowfen
