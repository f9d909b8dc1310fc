#include <algorithm>
#include <cassert>
#include <cstddef>

#include "shape/shape.h"
#include "shape/vertex_grid.h"

// Each triangle adds its unit normal to every vertex at the position of one of its corners, once per such corner.
// Vertices of one frame with identical position and group always get the same sum, so sums are kept per such site, and
// the sites near a corner come from a grid. Sums grow in the order of triangles and corners: 32-bit addition depends on
// it.

namespace marrowfen {
namespace {

// Squared length up to which a vector has no direction.
constexpr float kLeastSquaredLength = 1e-07F;

using PositionGrid = VertexGrid<3>;

// Vertices at one position with one group.
struct Site {
    int32_t group = 0;
    Point3 normal;  // the sum of the touching triangles' normals
    int32_t count = 0;
    size_t source = SIZE_MAX;  // lowest vertex here that has a normal
};

struct Sites {
    explicit Sites(size_t vertexCount) : near(vertexCount), own(vertexCount) { siteOf.reserve(vertexCount); }

    PositionGrid near, own;  // an item per site; own is salted with the group
    std::vector<Site> sites;
    std::vector<size_t> siteOf;  // per vertex
};

struct Input {
    const std::vector<Primitive>& primitives;
    const std::vector<uint32_t>& indices;
    const std::vector<Point3>& vertexes;
    const std::vector<int32_t>& groups;
    size_t perFrame;

    // Vertices of later frames have the group of the same vertex in the first one.
    int32_t groupOf(size_t vertex) const {
        assert(vertex < vertexes.size() && groups.size() == perFrame);
        return groups[vertex % perFrame];
    }
};

PositionGrid::Coordinates coordinatesOf(const Point3& p) { return {p.x, p.y, p.z}; }

// A position with a NaN equals no other, so each such vertex is a site of its own.
void addVertex(Sites& sites, const Point3& position, int32_t group, uint32_t salt) {
    const PositionGrid::Coordinates at = coordinatesOf(position);
    size_t site = sites.own.findSame(at, static_cast<uint32_t>(group));
    if (site == PositionGrid::kNotFound) {
        site = sites.sites.size();
        sites.sites.push_back({group, {}, 0, SIZE_MAX});
        sites.own.add(at, static_cast<uint32_t>(group));
        sites.near.add(at, salt);
    }
    assert(site < sites.sites.size() && sites.own.size() == sites.sites.size());
    sites.siteOf.push_back(site);
}

// Visits the sites at the position, those of all groups.
template <class Visit>
void visitSitesAt(Sites& sites, const Point3& position, uint32_t salt, Visit visit) {
    sites.near.visitNear(coordinatesOf(position), salt, [&](size_t site) {
        visit(sites.sites[site]);
        return true;
    });
}

bool sharesGroup(int32_t a, int32_t b) { return (a & b) != 0 || a == b; }

Point3 normalizedWhereLongEnough(const Point3& v) { return squaredLength(v) > kLeastSquaredLength ? normalized(v) : v; }

void addTriangle(Sites& sites, const Input& in, const uint32_t* corners, size_t frameStart) {
    assert(corners[0] < in.perFrame && corners[1] < in.perFrame && corners[2] < in.perFrame);
    const auto position = [&](size_t corner) { return in.vertexes[frameStart + corners[corner]]; };
    const Point3 p0 = position(0);
    const Point3 e1 = normalizedWhereLongEnough(position(2) - p0);
    const Point3 e2 = normalizedWhereLongEnough(position(1) - p0);
    const Point3 n = cross(e1, e2);
    if (!(squaredLength(n) > kLeastSquaredLength)) return;

    const Point3 normal = normalized(n);
    for (size_t corner = 0; corner < 3; ++corner) {
        const int32_t group = in.groups[corners[corner]];
        visitSitesAt(sites, position(corner), 0, [&](Site& site) {
            if (!sharesGroup(group, site.group)) return;
            site.normal = site.normal + normal;
            ++site.count;
        });
    }
}

// Empty when all is well.
const char* addTriangles(Sites& sites, const Input& in, size_t frameStart) {
    for (const Primitive& primitive : in.primitives) {
        if ((primitive.material & Primitive::TypeMask) != 0) return "Assertion error while computing normals";
        if (primitive.firstElement + size_t{3} > in.indices.size()) return "Assertion failed:  vertex number mismatch";
        const uint32_t* corners = &in.indices[primitive.firstElement];
        for (size_t corner = 0; corner < 3; ++corner) {
            if (corners[corner] >= in.perFrame) return "Assertion failed:  vertex number mismatch";
        }
        addTriangle(sites, in, corners, frameStart);
    }
    return "";
}

// Sums of one frame's triangles per vertex.
const char* sumFrame(const Input& in, size_t frameStart, std::vector<Point3>& normals, std::vector<int32_t>& counts) {
    assert(frameStart + in.perFrame <= in.vertexes.size());
    Sites sites(in.perFrame);
    for (size_t i = 0; i < in.perFrame; ++i) addVertex(sites, in.vertexes[frameStart + i], in.groups[i], 0);

    const char* error = addTriangles(sites, in, frameStart);
    for (size_t i = 0; i < in.perFrame; ++i) {
        const Site& site = sites.sites[sites.siteOf[i]];
        normals[frameStart + i] = site.normal;
        counts[frameStart + i] = site.count;
    }
    return error;
}

// Gives each vertex without a normal that of the first vertex of all frames that has one, at the same position and, if
// asked for, with the same group. Those given early serve the later ones.
void borrowNormals(const Input& in, bool ofSameGroup, std::vector<Point3>& normals, std::vector<int32_t>& counts) {
    assert(normals.size() == in.vertexes.size() && counts.size() == in.vertexes.size());
    if (std::find(counts.begin(), counts.end(), 0) == counts.end()) return;

    Sites sites(in.vertexes.size());
    const auto groupOf = [&](size_t vertex) { return ofSameGroup ? in.groupOf(vertex) : 0; };
    for (size_t i = 0; i < in.vertexes.size(); ++i) {
        const int32_t group = groupOf(i);
        addVertex(sites, in.vertexes[i], group, static_cast<uint32_t>(group));
        Site& site = sites.sites[sites.siteOf[i]];
        if (counts[i] > 0) site.source = std::min(site.source, i);
    }

    for (size_t i = 0; i < in.vertexes.size(); ++i) {
        if (counts[i] > 0) continue;
        size_t source = SIZE_MAX;
        visitSitesAt(sites, in.vertexes[i], static_cast<uint32_t>(groupOf(i)),
                     [&](const Site& site) { source = std::min(source, site.source); });
        if (source == SIZE_MAX) continue;
        assert(counts[source] > 0);
        normals[i] = normals[source];
        counts[i] = 1;
        Site& site = sites.sites[sites.siteOf[i]];
        site.source = std::min(site.source, i);
    }
}

}  // namespace

void Shape::computeNormals(const std::vector<Primitive>& primitives, const std::vector<uint32_t>& indices,
                           const std::vector<Point3>& vertexes, std::vector<Point3>& normals,
                           const std::vector<int32_t>& groups, int32_t vertsPerFrame, int32_t numFrames,
                           const std::vector<uint32_t>& mindices) {
    if (hasError()) return;
    const auto perFrame = static_cast<size_t>(vertsPerFrame);
    if (vertsPerFrame < 0 || numFrames < 0 || perFrame * static_cast<size_t>(numFrames) != vertexes.size() ||
        perFrame != groups.size() || (!mindices.empty() && mindices.size() != perFrame)) {
        setError("Assertion failed:  vertex number mismatch");
        return;
    }

    // Sum the triangles' normals.
    const Input in{primitives, indices, vertexes, groups, perFrame};
    normals.assign(vertexes.size(), {});
    std::vector<int32_t> counts(vertexes.size());
    for (size_t frame = 0; frame < static_cast<size_t>(numFrames); ++frame) {
        const char* error = sumFrame(in, frame * perFrame, normals, counts);
        if (*error != '\0') {
            setError(error);
            return;
        }
    }
    for (Point3& normal : normals) normal = normalizedWhereLongEnough(normal);

    // Vertices that no triangle gave one.
    borrowNormals(in, true, normals, counts);
    borrowNormals(in, false, normals, counts);
    for (size_t i = 0; i < normals.size(); ++i) {
        if (counts[i] == 0) normals[i] = {0, 0, 1};
    }
}

}  // namespace marrowfen
