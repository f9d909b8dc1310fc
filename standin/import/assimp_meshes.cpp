#include <cmath>
#include <optional>

#include "standin/import/assimp_files.h"
#include "standin/import/assimp_reading.h"
#include "standin/import/polygon_cut.h"

namespace marrowfen::standin {

namespace {

void addFaces(AssimpReading& reading, const aiMesh& source, SourceMesh& mesh) {
    for (unsigned f = 0; f < source.mNumFaces; ++f) {
        const aiFace& face = source.mFaces[f];
        if (face.mNumIndices < 3) ++reading.model.linesAndPoints;
        const std::vector<uint32_t> corners(face.mIndices, face.mIndices + face.mNumIndices);
        const std::vector<uint32_t> triangles = cutPolygon(mesh.positions, corners);
        mesh.corners.insert(mesh.corners.end(), triangles.begin(), triangles.end());
    }
}

void addBones(AssimpReading& reading, const aiMesh& source, SourceMesh& mesh) {
    std::vector<float> heaviest(source.mNumVertices, 0);
    std::vector<uint8_t> noticed(source.mNumVertices, 0);
    for (unsigned b = 0; b < source.mNumBones; ++b) {
        const aiBone& bone = *source.mBones[b];
        const int32_t node = findNode(reading, bone.mName);
        if (node == kNone) {
            ++reading.model.lostBones;
            continue;
        }
        mesh.holds.resize(source.mNumVertices);
        for (unsigned w = 0; w < bone.mNumWeights; ++w) {
            const unsigned vertex = bone.mWeights[w].mVertexId;
            const float weight = bone.mWeights[w].mWeight;
            if (!std::isfinite(weight)) {
                return reading.model.fail("mesh " + mesh.name + ", bone " + textOf(bone.mName) +
                                          ": a weight isn't finite");
            }
            if (weight > kNoticeableWeight && noticed[vertex]++ > 0) mesh.holds[vertex].several = true;
            if (noticed[vertex] > 1) noticed[vertex] = 1;
            if (!(weight > heaviest[vertex])) continue;
            heaviest[vertex] = weight;
            mesh.holds[vertex].bone = static_cast<int32_t>(mesh.bones.size());
        }
        mesh.bones.push_back({node, Matrix(bone.mOffsetMatrix)});
    }
}

// The set of texture coordinates that the colour's texture uses, else the first.
void addUvs(const aiScene& scene, const aiMesh& source, SourceMesh& mesh) {
    int set = 0;
    const aiMaterial& material = *scene.mMaterials[source.mMaterialIndex];
    if (material.Get(AI_MATKEY_UVWSRC_DIFFUSE(0), set) != aiReturn_SUCCESS || set < 0 ||
        set >= AI_MAX_NUMBER_OF_TEXTURECOORDS || !source.HasTextureCoords(static_cast<unsigned>(set))) {
        set = 0;
    }
    const aiVector3D* uvs = source.mTextureCoords[set];
    for (unsigned v = 0; uvs != nullptr && v < source.mNumVertices; ++v) mesh.uvs.push_back({uvs[v].x, uvs[v].y});
    mesh.hasMoreUvs = source.GetNumUVChannels() > 1;
}

}  // namespace

void addMesh(AssimpReading& reading, unsigned index) {
    const aiMesh& source = *reading.scene.mMeshes[index];
    SourceMesh mesh;
    mesh.name = textOf(source.mName);
    const bool madeUp = mesh.name.starts_with('<') || !madeUpNumber(reading, mesh.name).empty();
    if (madeUp) mesh.name.clear();
    mesh.positions.assign(source.mVertices, source.mVertices + source.mNumVertices);
    if (source.HasNormals()) mesh.normals.assign(source.mNormals, source.mNormals + source.mNumVertices);
    mesh.material = static_cast<int32_t>(source.mMaterialIndex);
    const std::optional<int> kind = surfaceKind(*reading.scene.mMaterials[source.mMaterialIndex]);
    mesh.flat = kind && (*kind & kSmoothSurface) == 0;
    if (mesh.flat) mesh.normals.clear();
    mesh.hasMorphs = source.mNumAnimMeshes > 0;
    mesh.hasColors = source.HasVertexColors(0);
    addUvs(reading.scene, source, mesh);
    addFaces(reading, source, mesh);
    addBones(reading, source, mesh);
    reading.model.meshes.push_back(std::move(mesh));
}

}  // namespace marrowfen::standin
