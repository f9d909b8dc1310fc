#include <cmath>

#include "standin/import/model.h"

// Assimp checks some formats and not others. What the later passes rely on is checked here once, for all of them.

namespace marrowfen::standin {

namespace {

constexpr unsigned kMostLevels = 1000;  // of the hierarchy, which later passes and the host walk recursively

bool isFiniteVector(const aiVector3D& v) { return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z); }

std::string meshName(const Model& model, unsigned mesh) {
    const std::string name = cleanText(model.source->mMeshes[mesh]->mName);
    return "mesh " + std::to_string(mesh) + (name.empty() ? "" : " (" + name + ")");
}

// A face whose corners don't span an area has no normal, and Assimp's own results have none that is a number for it,
// nor for lines and points.
bool spansArea(const aiMesh& mesh, const aiFace& face) {
    for (unsigned c = 2; c < face.mNumIndices; ++c) {
        const Vector a(mesh.mVertices[face.mIndices[0]]), b(mesh.mVertices[face.mIndices[c - 1]]),
            d(mesh.mVertices[face.mIndices[c]]);
        if (((b - a) ^ (d - a)).SquareLength() > 0) return true;
    }
    return false;
}

void checkFaces(Model& model, unsigned index) {
    const aiMesh& mesh = *model.source->mMeshes[index];
    for (unsigned f = 0; f < mesh.mNumFaces; ++f) {
        const aiFace& face = mesh.mFaces[f];
        for (unsigned c = 0; c < face.mNumIndices; ++c) {
            if (face.mIndices[c] < mesh.mNumVertices) continue;
            return model.fail(meshName(model, index) + ", face " + std::to_string(f) + ": vertex " +
                              std::to_string(face.mIndices[c]) + " of " + std::to_string(mesh.mNumVertices));
        }
        for (unsigned c = 0; mesh.HasNormals() && c < face.mNumIndices; ++c) {
            if (isFiniteVector(mesh.mNormals[face.mIndices[c]]) || !spansArea(mesh, face)) continue;
            return model.fail(meshName(model, index) + ": the normal of vertex " + std::to_string(face.mIndices[c]) +
                              " isn't finite");
        }
    }
}

void checkVertices(Model& model, unsigned index) {
    const aiMesh& mesh = *model.source->mMeshes[index];
    for (unsigned v = 0; v < mesh.mNumVertices; ++v) {
        if (!isFiniteVector(mesh.mVertices[v])) {
            return model.fail(meshName(model, index) + ": vertex " + std::to_string(v) + " isn't finite");
        }
        for (unsigned set = 0; set < AI_MAX_NUMBER_OF_TEXTURECOORDS && mesh.HasTextureCoords(set); ++set) {
            const aiVector3D& uv = mesh.mTextureCoords[set][v];
            if (!std::isfinite(uv.x) || !std::isfinite(uv.y)) {
                return model.fail(meshName(model, index) + ": the texture coordinate of vertex " + std::to_string(v) +
                                  " isn't finite");
            }
        }
    }
}

void checkBones(Model& model, unsigned index) {
    const aiMesh& mesh = *model.source->mMeshes[index];
    for (unsigned b = 0; b < mesh.mNumBones; ++b) {
        const aiBone& bone = *mesh.mBones[b];
        const std::string where = meshName(model, index) + ", bone " + cleanText(bone.mName) + ": ";
        if (!isFinite(Matrix(bone.mOffsetMatrix))) return model.fail(where + "its bind pose isn't finite");
        for (unsigned w = 0; w < bone.mNumWeights; ++w) {
            const aiVertexWeight& weight = bone.mWeights[w];
            if (weight.mVertexId >= mesh.mNumVertices) {
                return model.fail(where + "vertex " + std::to_string(weight.mVertexId) + " of " +
                                  std::to_string(mesh.mNumVertices));
            }
            if (!std::isfinite(weight.mWeight)) return model.fail(where + "a weight isn't finite");
        }
    }
}

void checkMesh(Model& model, unsigned index) {
    const aiMesh* mesh = model.source->mMeshes[index];
    if (mesh == nullptr || mesh->mVertices == nullptr || (mesh->mNumFaces > 0 && mesh->mFaces == nullptr)) {
        return model.fail("mesh " + std::to_string(index) + " has no vertices or faces");
    }
    if (mesh->mMaterialIndex >= model.source->mNumMaterials) {
        return model.fail(meshName(model, index) + ": material " + std::to_string(mesh->mMaterialIndex) + " of " +
                          std::to_string(model.source->mNumMaterials));
    }
    checkVertices(model, index);
    checkFaces(model, index);
    checkBones(model, index);
}

void checkNode(Model& model, const aiNode& node, unsigned level) {
    const std::string where = "node " + cleanText(node.mName) + ": ";
    if (level > kMostLevels) return model.fail("nodes are nested deeper than " + std::to_string(kMostLevels));
    if (!isFinite(Matrix(node.mTransformation))) return model.fail(where + "its transform isn't finite");
    for (unsigned m = 0; m < node.mNumMeshes; ++m) {
        if (node.mMeshes[m] >= model.source->mNumMeshes) {
            return model.fail(where + "mesh " + std::to_string(node.mMeshes[m]) + " of " +
                              std::to_string(model.source->mNumMeshes));
        }
    }
    for (unsigned c = 0; c < node.mNumChildren && model.error.empty(); ++c) {
        checkNode(model, *node.mChildren[c], level + 1);
    }
}

// True when all keys of a track are finite and their times don't fall.
template <typename KeyType>
bool isTrackSound(const KeyType* keys, unsigned count, bool (*isSound)(const KeyType&)) {
    for (unsigned k = 0; k < count; ++k) {
        if (!std::isfinite(keys[k].mTime) || !isSound(keys[k])) return false;
    }
    return true;
}

bool isVectorSound(const aiVectorKey& key) { return isFiniteVector(key.mValue); }
bool isQuatSound(const aiQuatKey& key) {
    const aiQuaternion& q = key.mValue;
    return std::isfinite(q.x) && std::isfinite(q.y) && std::isfinite(q.z) && std::isfinite(q.w);
}

void checkAnimation(Model& model, const aiAnimation& animation) {
    const std::string where = "animation " + cleanText(animation.mName) + ": ";
    if (!std::isfinite(animation.mDuration) || !std::isfinite(animation.mTicksPerSecond)) {
        return model.fail(where + "its duration isn't finite");
    }
    for (unsigned c = 0; c < animation.mNumChannels; ++c) {
        const aiNodeAnim& track = *animation.mChannels[c];
        if (!isTrackSound(track.mPositionKeys, track.mNumPositionKeys, isVectorSound) ||
            !isTrackSound(track.mRotationKeys, track.mNumRotationKeys, isQuatSound) ||
            !isTrackSound(track.mScalingKeys, track.mNumScalingKeys, isVectorSound)) {
            return model.fail(where + "a key of " + cleanText(track.mNodeName) + " isn't finite");
        }
    }
}

}  // namespace

void checkModel(Model& model) {
    const aiScene* source = model.source;
    if (source->mNumMeshes == 0) return model.fail("the file holds no meshes");
    if (source->mRootNode == nullptr) return model.fail("the file holds no nodes");
    for (unsigned m = 0; m < source->mNumMeshes && model.error.empty(); ++m) checkMesh(model, m);
    if (model.error.empty()) checkNode(model, *source->mRootNode, 1);
    for (unsigned a = 0; a < source->mNumAnimations && model.error.empty(); ++a) {
        checkAnimation(model, *source->mAnimations[a]);
    }
}

}  // namespace marrowfen::standin
