#include "ground/at.h"
#include "standin/import/gltf_reading.h"

// The meshes of a glTF file, a primitive each, and the skins that hold them.

namespace marrowfen::standin {

namespace {

std::vector<int32_t> addMesh(GltfReading& reading, int meshIndex, int skinIndex, const std::vector<double>& weights) {
    const tinygltf::Mesh& source = reading.file().meshes[static_cast<size_t>(meshIndex)];
    const GltfSkin* skin = skinIndex == kNone ? nullptr : &at(reading.skins, skinIndex);
    std::vector<int32_t> meshes;
    for (size_t p = 0; p < source.primitives.size(); ++p) {
        const tinygltf::Primitive& primitive = source.primitives[p];
        const size_t materials = reading.model.materials.size();
        SourceMesh mesh;
        mesh.name = cleanText(source.name);
        mesh.material = static_cast<int32_t>(materials) - 1;
        if (primitive.material >= 0) mesh.material = indexWithin(primitive.material, materials - 1);
        std::string fault =
            mesh.material == kNone ? "material " + std::to_string(primitive.material) + " isn't there" : "";
        if (fault.empty()) {
            fault = readPrimitive(reading.document, primitive, at(reading.uvsOf, mesh.material), skin,
                                  weights.empty() ? source.weights : weights, mesh, reading.model.linesAndPoints);
        }
        if (!fault.empty()) {
            reading.model.fail("mesh " + std::to_string(meshIndex) + (mesh.name.empty() ? "" : " (" + mesh.name + ")") +
                               ", primitive " + std::to_string(p) + ": " + fault);
            return meshes;
        }
        if (mesh.positions.empty()) continue;
        meshes.push_back(static_cast<int32_t>(reading.model.meshes.size()));
        reading.model.meshes.push_back(std::move(mesh));
    }
    return meshes;
}

}  // namespace

void addSkins(GltfReading& reading) {
    for (const tinygltf::Skin& source : reading.file().skins) {
        std::vector<float> inverses;
        if (source.inverseBindMatrices >= 0) {
            const std::string fault = reading.document.readFloats(source.inverseBindMatrices, 16, inverses);
            if (!fault.empty()) return reading.model.fail(fault);
            if (inverses.size() < source.joints.size() * 16) {
                return reading.model.fail("a skin has fewer bind matrices than joints");
            }
        }
        GltfSkin skin;
        for (size_t j = 0; j < source.joints.size(); ++j) {
            SourceBone bone;
            const int32_t node = indexWithin(source.joints[j], reading.nodeOf.size());
            if (node != kNone) bone.node = at(reading.nodeOf, node);
            if (bone.node == kNone) {
                return reading.model.fail("a skin names joint node " + std::to_string(source.joints[j]) +
                                          ", which isn't in the scene");
            }
            if (!inverses.empty()) bone.boneFromMesh = matrixOfColumns(&inverses[j * 16]);
            skin.bones.push_back(bone);
        }
        reading.skins.push_back(std::move(skin));
    }
}

void addMeshes(GltfReading& reading) {
    const tinygltf::Model& file = reading.file();
    for (size_t n = 0; n < file.nodes.size() && reading.model.error.empty(); ++n) {
        const tinygltf::Node& node = file.nodes[n];
        if (reading.nodeOf[n] == kNone || node.mesh < 0) continue;
        if (indexWithin(node.mesh, file.meshes.size()) == kNone) {
            return reading.model.fail("node " + std::to_string(n) + ": mesh " + std::to_string(node.mesh) + " of " +
                                      std::to_string(file.meshes.size()));
        }
        const int32_t skin = indexWithin(node.skin, reading.skins.size());
        if (node.skin >= 0 && skin == kNone) {
            return reading.model.fail("node " + std::to_string(n) + ": skin " + std::to_string(node.skin) + " of " +
                                      std::to_string(reading.skins.size()));
        }
        const auto [entry, isNew] = reading.meshesOf.try_emplace({node.mesh, skin, node.weights});
        if (isNew) entry->second = addMesh(reading, node.mesh, skin, node.weights);
        const auto copies = reading.copiesOf.find(reading.nodeOf[n]);
        if (copies == reading.copiesOf.end()) {
            at(reading.model.nodes, reading.nodeOf[n]).meshes = entry->second;
        } else {
            for (const int32_t copy : copies->second) at(reading.model.nodes, copy).meshes = entry->second;
        }
    }
}

}  // namespace marrowfen::standin
