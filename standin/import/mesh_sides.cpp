#include "standin/import/mesh_sides.h"

#include <assimp/types.h>

#include <algorithm>

namespace marrowfen::standin {

namespace {

using Vector = aiVector3t<double>;

constexpr size_t kMostlyWrong = 9;  // disagreeing faces for each agreeing one

}  // namespace

bool hasUsableNormals(const aiMesh& mesh) {
    for (unsigned v = 0; mesh.HasNormals() && v < mesh.mNumVertices; ++v) {
        if (mesh.mNormals[v].SquareLength() > 0) return true;
    }
    return false;
}

bool normalsOpposeFaces(const aiMesh& mesh) {
    size_t agreeing = 0, disagreeing = 0;
    for (unsigned f = 0; mesh.HasNormals() && f < mesh.mNumFaces; ++f) {
        const aiFace& face = mesh.mFaces[f];
        if (face.mNumIndices != 3) continue;
        const unsigned* corner = face.mIndices;
        const aiVector3D outward = (mesh.mVertices[corner[1]] - mesh.mVertices[corner[0]]) ^
                                   (mesh.mVertices[corner[2]] - mesh.mVertices[corner[0]]);
        const float sign = outward * (mesh.mNormals[corner[0]] + mesh.mNormals[corner[1]] + mesh.mNormals[corner[2]]);
        if (sign > 0) ++agreeing;
        if (sign < 0) ++disagreeing;
    }
    return disagreeing > kMostlyWrong * agreeing;
}

double enclosedVolume(const aiMesh& mesh) {
    Vector middle;
    for (unsigned v = 0; v < mesh.mNumVertices; ++v) middle += Vector(mesh.mVertices[v]);
    middle /= std::max(1U, mesh.mNumVertices);
    double volume = 0;
    for (unsigned f = 0; f < mesh.mNumFaces; ++f) {
        const aiFace& face = mesh.mFaces[f];
        if (face.mNumIndices != 3) continue;
        const Vector a = Vector(mesh.mVertices[face.mIndices[0]]) - middle;
        const Vector b = Vector(mesh.mVertices[face.mIndices[1]]) - middle;
        const Vector c = Vector(mesh.mVertices[face.mIndices[2]]) - middle;
        volume += a * (b ^ c);
    }
    return volume;
}

}  // namespace marrowfen::standin
