#include "standin/import/mesh_sides.h"

#include <algorithm>
#include <array>
#include <map>

namespace marrowfen::standin {

namespace {

constexpr size_t kMostlyWrong = 9;  // disagreeing faces for each agreeing one

}  // namespace

bool hasUsableNormals(const SourceMesh& mesh) {
    return std::any_of(mesh.normals.begin(), mesh.normals.end(),
                       [](const aiVector3D& normal) { return normal.SquareLength() > 0; });
}

bool normalsOpposeFaces(const SourceMesh& mesh) {
    size_t agreeing = 0, disagreeing = 0;
    for (size_t f = 0; !mesh.normals.empty() && f + 2 < mesh.corners.size(); f += 3) {
        const uint32_t* corner = &mesh.corners[f];
        const aiVector3D outward = (mesh.positions[corner[1]] - mesh.positions[corner[0]]) ^
                                   (mesh.positions[corner[2]] - mesh.positions[corner[0]]);
        const float sign = outward * (mesh.normals[corner[0]] + mesh.normals[corner[1]] + mesh.normals[corner[2]]);
        if (sign > 0) ++agreeing;
        if (sign < 0) ++disagreeing;
    }
    return disagreeing > kMostlyWrong * agreeing;
}

double enclosedVolume(const SourceMesh& mesh) {
    Vector middle;
    for (const aiVector3D& position : mesh.positions) middle += Vector(position);
    middle /= static_cast<double>(std::max<size_t>(1, mesh.positions.size()));
    double volume = 0;
    for (size_t f = 0; f + 2 < mesh.corners.size(); f += 3) {
        const auto at = [&](size_t c) { return Vector(mesh.positions[mesh.corners[f + c]]) - middle; };
        volume += at(0) * (at(1) ^ at(2));
    }
    return volume;
}

bool isClosed(const SourceMesh& mesh) {
    // Vertices at one place are one here.
    std::map<std::array<float, 3>, uint32_t> placeOf;
    std::vector<uint32_t> places;
    for (const aiVector3D& p : mesh.positions) {
        places.push_back(placeOf.try_emplace({p.x, p.y, p.z}, static_cast<uint32_t>(placeOf.size())).first->second);
    }
    std::vector<std::pair<uint32_t, uint32_t>> edges;
    for (size_t c = 0; c < mesh.corners.size(); ++c) {
        const uint32_t from = places[mesh.corners[c]], to = places[mesh.corners[c % 3 == 2 ? c - 2 : c + 1]];
        if (from != to) edges.emplace_back(from, to);
    }
    std::sort(edges.begin(), edges.end());
    if (std::adjacent_find(edges.begin(), edges.end()) != edges.end()) return false;
    return std::all_of(edges.begin(), edges.end(), [&](const auto& edge) {
        return std::binary_search(edges.begin(), edges.end(), std::make_pair(edge.second, edge.first));
    });
}

}  // namespace marrowfen::standin
