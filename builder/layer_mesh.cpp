#include "builder/layer_mesh.h"

#include <algorithm>

#include "builder/refusals.h"
#include "ground/at.h"
#include "ground/counted.h"
#include "host/poly_to_mesh.h"

namespace marrowfen {

namespace {
constexpr size_t kLargest16Bit = 65535;
}

Mesh layerMesh(const LayerInfo& layer, int32_t defaultNode, MaterialConversion& materials, Notices& notices) {
    PolyToMesh mesh(layer.polys, layer.sort, defaultNode, materials, notices.log());
    if (mesh.hasError()) {
        const std::string place = "polyhedron " + at(layer.polys, mesh.faultyPoly()).name + " on layer " + layer.name;
        const int32_t face = mesh.faultyFace();
        if (face < 0) {
            notices.tellRefusal(kBadPolyhedron, layer.name, place);
        } else {
            notices.tellRefusal(kBadFace, layer.name, "triangle " + std::to_string(face) + " of " + place);
        }
    }
    return mesh;
}

std::string fileLimitError(const Mesh& mesh, const LayerInfo& layer, LayerRole role, Notices& notices) {
    const auto tooMany = [&](size_t count, const char* what, const MessageKind& ofDetailLayer) {
        const MessageKind& kind = role != LayerRole::Detail ? kCollisionTooLarge
                                  : layer.autoLod           ? kCopyTooLarge
                                                            : ofDetailLayer;
        notices.tellRefusal(kind, layer.name,
                            "layer " + layer.name + " with " + counted(layer.polys.size(), "polyhedron", "polyhedra") +
                                " and " + counted(static_cast<size_t>(mesh.faceCount()), "triangle", "triangles"));
        return "Layer " + layer.name + " has " + std::to_string(count) + " " + what + ", a mesh holds at most " +
               std::to_string(kLargest16Bit) + ".";
    };
    if (mesh.vertexes.size() > kLargest16Bit) return tooMany(mesh.vertexes.size(), "vertices", kLayerTooLarge);
    for (const Primitive& p : mesh.primitives) {
        if (std::max(p.firstElement, p.numElements) > kLargest16Bit) {
            return tooMany(mesh.indices.size(), "indices", layer.strip ? kLayerTooLarge : kUnstrippedTooLarge);
        }
    }
    return {};
}

}  // namespace marrowfen
