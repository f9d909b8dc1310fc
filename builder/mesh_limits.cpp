#include "builder/mesh_limits.h"

#include <algorithm>

namespace marrowfen {

namespace {
constexpr size_t kLargest16Bit = 65535;
}

std::string fileLimitError(const Mesh& mesh, const std::string& layerName) {
    const auto tooMany = [&](size_t count, const char* what) {
        return "Layer " + layerName + " has " + std::to_string(count) + " " + what + ", a mesh holds at most " +
               std::to_string(kLargest16Bit) + ".";
    };
    if (mesh.vertexes.size() > kLargest16Bit) return tooMany(mesh.vertexes.size(), "vertices");
    for (const Primitive& p : mesh.primitives) {
        if (std::max(p.firstElement, p.numElements) > kLargest16Bit) return tooMany(mesh.indices.size(), "indices");
    }
    return {};
}

}  // namespace marrowfen
