#include "cli/geometry_diff.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <iterator>

#include "cli/shape_facts.h"
#include "ground/at.h"
#include "ground/byte_order.h"
#include "ground/counted.h"
#include "shape/drawn_triangles.h"

namespace marrowfen::cli {

namespace {

using Bits = std::array<uint32_t, 3>;

struct Face {
    int32_t material;
    std::array<Bits, 3> corners;  // the smallest one first; a vertex's number or its place

    auto operator<=>(const Face&) const = default;
};

struct Geometry {
    std::vector<Point3> positions, normals;
    std::vector<Point2D> textures;
    std::vector<uint32_t> runs;                       // what draws them
    std::vector<std::pair<int32_t, Triangle>> faces;  // materials and vertices
};

// Equal for equal bits only: what isn't a number is compared too.
Bits bitsOf(const Point3& p) { return {floatBits(p.x), floatBits(p.y), floatBits(p.z)}; }
Bits bitsOf(const Point2D& p) { return {floatBits(p.x), floatBits(p.y), 0}; }

Geometry geometryOf(const MeshGroup& group) {
    Geometry all;
    const bool isDrawn = !drawsWithoutEnd(group.shape);
    for (const int32_t i : group.meshes) {
        const Mesh& mesh = at(group.shape.meshes, i);
        const auto first = static_cast<uint32_t>(all.positions.size());
        for (const TriangleRun& run : isDrawn ? trianglesOf(mesh) : std::vector<TriangleRun>()) {
            for (const Triangle& t : run.triangles) {
                all.faces.push_back({run.material, {first + t[0], first + t[1], first + t[2]}});
            }
        }
        all.positions.insert(all.positions.end(), mesh.vertexes.begin(), mesh.vertexes.end());
        all.normals.insert(all.normals.end(), mesh.normals.begin(), mesh.normals.end());
        all.textures.insert(all.textures.end(), mesh.texturevertexes.begin(), mesh.texturevertexes.end());
        for (const Primitive& run : mesh.primitives) {
            all.runs.insert(all.runs.end(), {run.firstElement, run.numElements, run.material});
        }
        all.runs.insert(all.runs.end(), mesh.indices.begin(), mesh.indices.end());
    }
    return all;
}

float distance(const Point3& a, const Point3& b) { return std::hypot(a.x - b.x, a.y - b.y, a.z - b.z); }
float distance(const Point2D& a, const Point2D& b) { return std::hypot(a.x - b.x, a.y - b.y); }

// The vertices of which one thing differs. Lists of different lengths have nothing to be compared with.
template <class Point>
void tellMoved(const std::vector<Point>& before, const std::vector<Point>& after, const std::string& what,
               std::vector<std::string>& words) {
    size_t count = 0;
    float most = 0;
    for (size_t i = 0; i < std::min(before.size(), after.size()); ++i) {
        if (bitsOf(before[i]) == bitsOf(after[i])) continue;
        ++count;
        most = std::fmax(most, distance(before[i], after[i]));
    }
    if (before.size() != after.size() || count == 0) return;
    char by[32] = "";
    if (most > 0) std::snprintf(by, sizeof by, ", by up to %.4g", static_cast<double>(most));
    words.push_back(std::to_string(count) + " of " + counted(before.size(), "vertex", "vertices") + " " + what + by);
}

// "3 triangles gone, 5 new". Sorts the lists.
template <class Thing>
bool tellExchanged(std::vector<Thing>& before, std::vector<Thing>& after, const char* one, const char* many,
                   std::vector<std::string>& words) {
    std::sort(before.begin(), before.end());
    std::sort(after.begin(), after.end());
    std::vector<Thing> gone, added;
    std::set_difference(before.begin(), before.end(), after.begin(), after.end(), std::back_inserter(gone));
    std::set_difference(after.begin(), after.end(), before.begin(), before.end(), std::back_inserter(added));
    if (!gone.empty()) words.push_back(counted(gone.size(), one, many) + " gone");
    if (!added.empty()) words.push_back(counted(added.size(), one, many) + " new");
    return !gone.empty() || !added.empty();
}

std::vector<Bits> placesOf(const Geometry& geometry) {
    std::vector<Bits> places;
    for (const Point3& p : geometry.positions) places.push_back(bitsOf(p));
    return places;
}

std::vector<Face> facesOf(const Geometry& geometry, bool byPlace) {
    std::vector<Face> faces;
    for (const auto& [material, triangle] : geometry.faces) {
        Face face{material, {}};
        for (size_t i = 0; i < 3; ++i) {
            face.corners[i] = byPlace ? bitsOf(at(geometry.positions, triangle[i])) : Bits{triangle[i], 0, 0};
        }
        std::rotate(face.corners.begin(), std::min_element(face.corners.begin(), face.corners.end()),
                    face.corners.end());
        faces.push_back(face);
    }
    return faces;
}

}  // namespace

std::vector<std::string> geometryDifferences(const MeshGroup& before, const MeshGroup& after) {
    const Geometry old = geometryOf(before), now = geometryOf(after);
    std::vector<std::string> words;
    const bool byPlace = old.positions.size() != now.positions.size();
    tellMoved(old.positions, now.positions, "moved", words);
    if (byPlace) {
        std::vector<Bits> oldPlaces = placesOf(old), newPlaces = placesOf(now);
        tellExchanged(oldPlaces, newPlaces, "vertex", "vertices", words);
    }
    tellMoved(old.normals, now.normals, "have another normal", words);
    tellMoved(old.textures, now.textures, "have other texture coordinates", words);
    if (old.runs == now.runs && !byPlace) return words;
    std::vector<Face> oldFaces = facesOf(old, byPlace), newFaces = facesOf(now, byPlace);
    if (!tellExchanged(oldFaces, newFaces, "triangle", "triangles", words) && old.runs != now.runs) {
        words.emplace_back("the same triangles are drawn in another order");
    }
    return words;
}

}  // namespace marrowfen::cli
