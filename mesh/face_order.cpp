#include "mesh/face_order.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>

// The members are halved along the axis on which they are farthest apart, and so are the halves, as in a k-d tree
// (Bentley 1975).

namespace marrowfen {
namespace {

constexpr float kLarge = 0.7F;  // size of a large face as a fraction of that of all

struct PlacedFace {
    std::array<float, 3> center;  // of its box; 0 where that isn't finite
    float size = 0;               // of its box
    uint32_t face = 0;
};

using PlacedFaces = std::vector<PlacedFace>;

// The sum of its sides.
float sizeOf(const Box& box) {
    const Point3 sides = box.max - box.min;
    return sides.x + sides.y + sides.z;
}

PlacedFace placed(uint32_t face, const Box& box) {
    const Point3 center = boxCenter(box);
    if (!isFinite(center) || !std::isfinite(sizeOf(box))) return {{}, 0, face};
    return {{center.x, center.y, center.z}, sizeOf(box), face};
}

size_t longestAxis(PlacedFaces::const_iterator first, PlacedFaces::const_iterator end) {
    std::array<float, 3> low = first->center, high = low;
    for (; first != end; ++first) {
        for (size_t axis = 0; axis < 3; ++axis) {
            low[axis] = std::min(low[axis], first->center[axis]);
            high[axis] = std::max(high[axis], first->center[axis]);
        }
    }
    size_t longest = 0;
    for (size_t axis = 1; axis < 3; ++axis) {
        if (high[axis] - low[axis] > high[longest] - low[longest]) longest = axis;
    }
    return longest;
}

// Divides those from first to before end where the longest run within begins, and goes on with both parts.
void bringTogether(PlacedFaces& faces, size_t first, size_t end, size_t runLength) {
    if (end - first <= 1) return;
    const size_t length = std::bit_floor(first ^ (end - 1));
    if (length < runLength) return;
    const size_t middle = (end - 1) / length * length;
    const auto at = [&](size_t place) { return faces.begin() + static_cast<std::ptrdiff_t>(place); };
    const size_t axis = longestAxis(at(first), at(end));
    const auto isLower = [axis](const PlacedFace& a, const PlacedFace& b) { return a.center[axis] < b.center[axis]; };
    std::nth_element(at(first), at(middle), at(end), isLower);
    bringTogether(faces, first, middle, runLength);
    bringTogether(faces, middle, end, runLength);
}

}  // namespace

std::vector<uint32_t> neighborsTogether(const SortFaces& faces, const std::vector<uint32_t>& members,
                                        size_t runLength) {
    PlacedFaces order;
    order.reserve(members.size());
    Box all = emptyBox();
    for (const uint32_t face : members) {
        Box box = emptyBox();
        for (int corner = 0; corner < 3; ++corner) widen(box, faces.position(face, corner));
        widen(all, box);
        order.push_back(placed(face, box));
    }

    const float large = kLarge * sizeOf(all);
    const auto isLarge = [large](const PlacedFace& f) { return f.size > large; };
    const auto small = std::partition(order.begin(), order.end(), isLarge);
    std::sort(order.begin(), small, [](const PlacedFace& a, const PlacedFace& b) { return a.size > b.size; });
    bringTogether(order, static_cast<size_t>(small - order.begin()), order.size(), runLength);

    std::vector<uint32_t> numbers;
    numbers.reserve(order.size());
    for (const PlacedFace& f : order) numbers.push_back(f.face);
    return numbers;
}

}  // namespace marrowfen
