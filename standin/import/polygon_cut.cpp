#include "standin/import/polygon_cut.h"

#include <array>
#include <cmath>
#include <utility>

// Ears are clipped: a corner goes whose triangle turns like the polygon and holds no other corner, seen along the
// polygon's mean normal. Convex polygons come out as fans. Where no corner is an ear, as in polygons that cross
// themselves, the first one goes that turns like the polygon, so that nothing is lost.

namespace marrowfen::standin {

namespace {

struct Place {
    double x = 0, y = 0;

    bool operator==(const Place&) const = default;
};

// Twice the area of a triangle, above 0 for anticlockwise ones.
double turn(const Place& a, const Place& b, const Place& c) {
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

// The corners as seen from the side from which the polygon is anticlockwise.
std::vector<Place> flattened(const std::vector<aiVector3D>& positions, const std::vector<uint32_t>& corners) {
    std::array<double, 3> normal = {0, 0, 0};
    for (size_t c = 0; c < corners.size(); ++c) {
        const aiVector3D& a = positions[corners[c]];
        const aiVector3D& b = positions[corners[(c + 1) % corners.size()]];
        for (unsigned k = 0; k < 3; ++k) {
            const unsigned u = (k + 1) % 3, v = (k + 2) % 3;
            normal[k] += static_cast<double>(a[u] - b[u]) * static_cast<double>(a[v] + b[v]);
        }
    }
    unsigned along = 0;
    for (unsigned k = 1; k < 3; ++k) along = std::fabs(normal[k]) > std::fabs(normal[along]) ? k : along;
    unsigned right = (along + 1) % 3, up = (along + 2) % 3;
    if (normal[along] < 0) std::swap(right, up);
    std::vector<Place> places;
    places.reserve(corners.size());
    for (const uint32_t corner : corners) {
        places.push_back({static_cast<double>(positions[corner][right]), static_cast<double>(positions[corner][up])});
    }
    return places;
}

bool holdsAny(const std::vector<Place>& places, const std::vector<size_t>& left, const std::array<Place, 3>& ear) {
    for (const size_t corner : left) {
        const Place& place = places[corner];
        if (place == ear[0] || place == ear[1] || place == ear[2]) continue;
        if (turn(ear[0], ear[1], place) >= 0 && turn(ear[1], ear[2], place) >= 0 && turn(ear[2], ear[0], place) >= 0) {
            return true;
        }
    }
    return false;
}

// The position in left of the corner that goes next.
size_t nextEar(const std::vector<Place>& places, const std::vector<size_t>& left) {
    size_t best = 0;
    for (size_t k = 1; k <= left.size(); ++k) {
        const size_t at = k % left.size();
        const std::array<Place, 3> ear = {places[left[k - 1]], places[left[at]], places[left[(k + 1) % left.size()]]};
        if (!(turn(ear[0], ear[1], ear[2]) > 0)) continue;
        if (best == 0) best = k;
        if (!holdsAny(places, left, ear)) return at;
    }
    return best % left.size();
}

}  // namespace

std::vector<uint32_t> cutPolygon(const std::vector<aiVector3D>& positions, const std::vector<uint32_t>& corners) {
    std::vector<uint32_t> triangles;
    const std::vector<Place> places = flattened(positions, corners);
    std::vector<size_t> left(corners.size());
    for (size_t c = 0; c < left.size(); ++c) left[c] = c;
    while (left.size() >= 3) {
        const size_t at = left.size() == 3 ? 1 : nextEar(places, left);
        const size_t before = left[(at + left.size() - 1) % left.size()], after = left[(at + 1) % left.size()];
        triangles.insert(triangles.end(), {corners[before], corners[left[at]], corners[after]});
        left.erase(left.begin() + static_cast<std::ptrdiff_t>(at));
    }
    return triangles;
}

}  // namespace marrowfen::standin
