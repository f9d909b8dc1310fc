#include <meshoptimizer.h>

#include <algorithm>
#include <array>
#include <map>
#include <unordered_map>

#include "ground/at.h"
#include "standin/import/simplify.h"
#include "standin/import/source_model.h"

// A wedge is a vertex with a texture coordinate and a material: what makes two corners at one place differ. The
// simplifier moves the wedges of a place together, along the seam. Where three or more meet it moves none, so a model
// of flat faces only is simplified by its places, and each corner then takes the wedge that fits its new face best.

namespace marrowfen::standin {

namespace {

constexpr float kAnyError = 1;         // the count decides, not the error
constexpr double kCloseEnough = 1.25;  // of the wanted count

struct Wedge {
    int32_t vertex, uv, material;

    auto operator<=>(const Wedge&) const = default;
};

struct Wedges {
    std::vector<Wedge> all;
    std::vector<Vec3> positions;
    std::vector<uint32_t> corners;
};

Wedges wedgesOf(const Polyhedron& polyhedron) {
    Wedges wedges;
    std::map<Wedge, uint32_t> numberOf;
    for (const Face& face : polyhedron.faces) {
        for (const Corner& corner : face.corners) {
            const Wedge wedge = {corner.vertex, corner.uv, face.material};
            const auto [entry, isNew] = numberOf.try_emplace(wedge, static_cast<uint32_t>(wedges.all.size()));
            if (isNew) {
                wedges.all.push_back(wedge);
                wedges.positions.push_back(at(polyhedron.vertices, corner.vertex));
            }
            wedges.corners.push_back(entry->second);
        }
    }
    return wedges;
}

std::vector<uint32_t> reduced(const std::vector<uint32_t>& corners, const std::vector<Vec3>& positions,
                              size_t triangles) {
    std::vector<uint32_t> result(corners.size());
    result.resize(meshopt_simplify(result.data(), corners.data(), corners.size(), positions[0].data(), positions.size(),
                                   sizeof(Vec3), triangles * 3, kAnyError, 0, nullptr));
    return result;
}

Vec3 normalOf(const std::array<Vec3, 3>& at) {
    std::array<float, 3> a, b;
    for (size_t k = 0; k < 3; ++k) a[k] = at[1][k] - at[0][k], b[k] = at[2][k] - at[0][k];
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

float dot(const Vec3& a, const Vec3& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

// By places alone; the corners' wedges are found again afterwards.
std::vector<uint32_t> reducedByPlaces(const Polyhedron& polyhedron, const Wedges& wedges, size_t triangles) {
    std::map<Vec3, uint32_t> numberOf;
    std::vector<std::vector<uint32_t>> wedgesAt;
    std::vector<uint32_t> placeOf, corners;
    std::vector<Vec3> positions;
    for (uint32_t w = 0; w < wedges.all.size(); ++w) {
        const auto [entry, isNew] = numberOf.try_emplace(wedges.positions[w], static_cast<uint32_t>(positions.size()));
        if (isNew) positions.push_back(wedges.positions[w]), wedgesAt.emplace_back();
        placeOf.push_back(entry->second);
        wedgesAt[entry->second].push_back(w);
    }
    for (const uint32_t corner : wedges.corners) corners.push_back(placeOf[corner]);
    corners = reduced(corners, positions, triangles);
    for (size_t t = 0; t + 2 < corners.size(); t += 3) {
        // Faces are clockwise and normals point inward, so the two agree.
        const Vec3 normal = normalOf({positions[corners[t]], positions[corners[t + 1]], positions[corners[t + 2]]});
        int32_t material = kNone;
        for (size_t c = t; c < t + 3; ++c) {
            const auto fit = [&](uint32_t w) {
                const Wedge& wedge = wedges.all[w];
                const bool sameMaterial = material == kNone || wedge.material == material;
                const float side =
                    polyhedron.normals ? dot((*polyhedron.normals)[static_cast<size_t>(wedge.vertex)], normal) : 0;
                return std::make_pair(sameMaterial, side);
            };
            const std::vector<uint32_t>& there = wedgesAt[corners[c]];
            corners[c] =
                *std::max_element(there.begin(), there.end(), [&](uint32_t a, uint32_t b) { return fit(a) < fit(b); });
            material = wedges.all[corners[c]].material;
        }
    }
    return corners;
}

}  // namespace

SimplerPolyhedron simplify(const Polyhedron& polyhedron, size_t triangles) {
    const Wedges wedges = wedgesOf(polyhedron);
    SimplerPolyhedron result;
    result.vertexOf.assign(polyhedron.vertices.size(), kNone);
    result.polyhedron.uvs = polyhedron.uvs;
    result.polyhedron.materials = polyhedron.materials;
    result.polyhedron.vertexTransform = polyhedron.vertexTransform;
    if (polyhedron.normals) result.polyhedron.normals.emplace();
    if (wedges.corners.empty()) return result;
    std::vector<uint32_t> corners = reduced(wedges.corners, wedges.positions, triangles);
    if (static_cast<double>(corners.size()) > static_cast<double>(triangles * 3) * kCloseEnough) {
        corners = reducedByPlaces(polyhedron, wedges, triangles);
    }
    for (size_t t = 0; t + 2 < corners.size(); t += 3) {
        Face face;
        face.material = wedges.all[corners[t]].material;
        for (size_t c = t; c < t + 3; ++c) {
            const Wedge& wedge = wedges.all[corners[c]];
            int32_t& vertex = at(result.vertexOf, wedge.vertex);
            if (vertex == kNone) {
                vertex = static_cast<int32_t>(result.polyhedron.vertices.size());
                result.polyhedron.vertices.push_back(at(polyhedron.vertices, wedge.vertex));
                if (polyhedron.normals) {
                    result.polyhedron.normals->push_back((*polyhedron.normals)[static_cast<size_t>(wedge.vertex)]);
                }
            }
            face.corners.push_back({vertex, wedge.uv});
        }
        result.polyhedron.faces.push_back(std::move(face));
    }
    return result;
}

}  // namespace marrowfen::standin
