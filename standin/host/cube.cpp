#include "standin/host/cube.h"

#include <algorithm>

#include "ground/at.h"
#include "host/tsxapi.h"

namespace marrowfen::standin {
namespace {

// Vertex i is at the far end of x, y, z where bit 0, 1, 2 of i is set. The corners run clockwise seen from outside.
// The fifth face shows the artist which way a marker looks, so it is the one towards +y, the engine's forward.
constexpr int32_t kFaces[6][4] = {
    {0, 1, 3, 2},  // bottom
    {4, 6, 7, 5},  // top
    {0, 2, 6, 4},  // -x
    {1, 5, 7, 3},  // +x
    {2, 3, 7, 6},  // +y
    {0, 4, 5, 1},  // -y
};

std::string hexByte(uint8_t byte) {
    constexpr char kDigits[] = "0123456789abcdef";
    return {kDigits[byte >> 4], kDigits[byte & 15]};
}

constexpr int32_t kUnpainted = -1;  // no material number: the host can't give such a face's material

// A key that no material has, such as "color-00ff00ff".
std::string newKey(const HostMaterial& material, const KeyedMaterials& materials) {
    std::string base = "color-";
    for (const uint8_t byte : material.color) base += hexByte(byte);
    std::string key = base;
    const auto isTaken = [&](const auto& entry) { return entry.first == key; };
    for (int number = 2; std::any_of(materials.begin(), materials.end(), isTaken); ++number) {
        key = base + "-" + std::to_string(number);
    }
    return key;
}

std::string keyOf(const HostMaterial& material, KeyedMaterials& materials) {
    const auto found =
        std::find_if(materials.begin(), materials.end(), [&](const auto& entry) { return entry.second == material; });
    if (found != materials.end()) return found->first;
    return materials.emplace_back(newKey(material, materials), material).first;
}

}  // namespace

Node cubeNode(const Vec3& size) {
    Node cube;
    cube.type = TsxPolyhedron;
    cube.name = "Cube";
    for (int i = 0; i < 8; ++i) {
        Vec3& vertex = cube.polyhedron.vertices.emplace_back();
        for (size_t axis = 0; axis < 3; ++axis) vertex[axis] = (i >> axis & 1) != 0 ? size[axis] / 2 : -size[axis] / 2;
    }
    for (const auto& corners : kFaces) {
        Face& face = cube.polyhedron.faces.emplace_back();
        face.material = kUnpainted;
        for (const int32_t vertex : corners) face.corners.push_back({vertex, 0});
    }
    return cube;
}

Node savedCube(const Node& cube, const std::vector<const HostMaterial*>& paints, KeyedMaterials& materials) {
    Node saved = cube;
    std::vector<std::optional<std::string>>& keys = saved.polyhedron.materials;
    for (Face& face : saved.polyhedron.faces) {
        if (static_cast<size_t>(face.material) >= paints.size()) continue;
        const std::string key = keyOf(*at(paints, face.material), materials);
        const auto known = std::find(keys.begin(), keys.end(), key);
        face.material = static_cast<int32_t>(known - keys.begin());
        if (known == keys.end()) keys.push_back(key);
    }
    return saved;
}

}  // namespace marrowfen::standin
