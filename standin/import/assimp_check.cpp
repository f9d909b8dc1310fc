#include "standin/import/assimp_reading.h"

namespace marrowfen::standin {

namespace {

std::string meshName(const aiScene& scene, unsigned mesh) {
    const std::string name = textOf(scene.mMeshes[mesh]->mName);
    return "mesh " + std::to_string(mesh) + (name.empty() ? "" : " (" + name + ")");
}

std::string outOf(size_t index, size_t count) { return std::to_string(index) + " of " + std::to_string(count); }

void checkMesh(AssimpReading& reading, unsigned index) {
    SourceModel& model = reading.model;
    const aiMesh* mesh = reading.scene.mMeshes[index];
    if (mesh != nullptr && mesh->mNumFaces == 0 && mesh->mNumVertices == 0) return;
    if (mesh == nullptr || mesh->mVertices == nullptr || (mesh->mNumFaces > 0 && mesh->mFaces == nullptr)) {
        return model.fail("mesh " + std::to_string(index) + " has no vertices or faces");
    }
    const std::string name = meshName(reading.scene, index);
    if (mesh->mMaterialIndex >= reading.scene.mNumMaterials) {
        return model.fail(name + ": material " + outOf(mesh->mMaterialIndex, reading.scene.mNumMaterials));
    }
    for (unsigned f = 0; f < mesh->mNumFaces; ++f) {
        const aiFace& face = mesh->mFaces[f];
        for (unsigned c = 0; c < face.mNumIndices; ++c) {
            if (face.mIndices[c] < mesh->mNumVertices) continue;
            return model.fail(name + ", face " + std::to_string(f) + ": vertex " +
                              outOf(face.mIndices[c], mesh->mNumVertices));
        }
    }
    for (unsigned b = 0; b < mesh->mNumBones; ++b) {
        const aiBone& bone = *mesh->mBones[b];
        for (unsigned w = 0; w < bone.mNumWeights; ++w) {
            if (bone.mWeights[w].mVertexId < mesh->mNumVertices) continue;
            return model.fail(name + ", bone " + textOf(bone.mName) + ": vertex " +
                              outOf(bone.mWeights[w].mVertexId, mesh->mNumVertices));
        }
    }
}

void checkNode(AssimpReading& reading, const aiNode& node, int level) {
    SourceModel& model = reading.model;
    if (level > kDeepestNode) return model.fail("nodes are nested deeper than " + std::to_string(kDeepestNode));
    for (unsigned m = 0; m < node.mNumMeshes; ++m) {
        if (node.mMeshes[m] < reading.scene.mNumMeshes) continue;
        return model.fail("node " + textOf(node.mName) + ": mesh " + outOf(node.mMeshes[m], reading.scene.mNumMeshes));
    }
    for (unsigned c = 0; c < node.mNumChildren && model.error.empty(); ++c) {
        // The reader of RAW files leaves gaps.
        if (node.mChildren[c] != nullptr) checkNode(reading, *node.mChildren[c], level + 1);
    }
}

}  // namespace

void checkScene(AssimpReading& reading) {
    const aiScene& scene = reading.scene;
    if (scene.mRootNode == nullptr) reading.model.fail("the file holds no nodes");
    for (unsigned m = 0; m < scene.mNumMeshes && reading.model.error.empty(); ++m) checkMesh(reading, m);
    if (reading.model.error.empty()) checkNode(reading, *scene.mRootNode, 1);
}

}  // namespace marrowfen::standin
