#include <array>
#include <cmath>
#include <string_view>

#include "standin/import/model.h"

// Assimp's convention is Y up, and most of its readers turn what they read to it. Some hand over the file's own axes;
// what those are is listed here.

namespace marrowfen::standin {

namespace {

using Axis = std::array<double, 3>;

// Readers, by the name that Assimp gives them, that leave a Z-up file as it is. STL has no up axis of its own; what
// writes and reads it (CAD, printing) takes Z. OpenGEX files are Z up unless they say otherwise, which isn't passed on.
constexpr std::string_view kZUpReaders[] = {
    "TrueSpace Object Importer",
    "3mf Importer",
    "Additive manufacturing file format(AMF) Importer",
    "Stereolithography (STL) Importer",
    "Valve SMD Importer",
    "Quick3D Importer",
    "CharacterStudio Motion Importer (MoCap)",
    "3D GameStudio Heightmap (HMP) Importer",
    "Blender 3D Importer (http://www.blender3d.org)",
    "Open Game Engine Exchange",
};
// A left-handed Z-up format that is mirrored along Z, as if it were Y-up: the top comes out at the bottom.
constexpr std::string_view kUnrealReader = "Unreal Mesh Importer";
constexpr std::string_view kFbxReader = "Autodesk FBX Importer";

Axis unit(int axis, int sign) {
    Axis result = {0, 0, 0};
    result[static_cast<size_t>(axis)] = sign < 0 ? -1 : 1;
    return result;
}

Axis cross(const Axis& a, const Axis& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

// The rotation that brings the model's right axis to X and its up axis to Z.
Matrix turn(const Axis& right, const Axis& up) {
    const Axis y = cross(up, right);
    return {right[0], right[1], right[2], 0, y[0], y[1], y[2], 0, up[0], up[1], up[2], 0, 0, 0, 0, 1};
}

// FBX files say their axes; the reader passes that on without acting on it.
Matrix turnOfMetadata(const aiMetadata& metadata) {
    int32_t up = 1, upSign = 1, right = 0, rightSign = 1;
    metadata.Get("UpAxis", up);
    metadata.Get("UpAxisSign", upSign);
    metadata.Get("CoordAxis", right);
    metadata.Get("CoordAxisSign", rightSign);
    if (up < 0 || up > 2) up = 1;
    if (right < 0 || right > 2 || right == up) right = up == 0 ? 1 : 0;
    return turn(unit(right, rightSign), unit(up, upSign));
}

// Scene-from-model without the scale.
Matrix turnOf(const Model& model) {
    const Axis x = {1, 0, 0}, y = {0, 1, 0}, z = {0, 0, 1};
    const aiMetadata* metadata = model.source->mMetaData;
    if (model.format == kUnrealReader) return turn(x, {0, 0, -1});
    for (const std::string_view reader : kZUpReaders) {
        if (model.format == reader) return turn(x, z);
    }
    if (metadata != nullptr && metadata->HasKey("UpAxis")) return turnOfMetadata(*metadata);
    return turn(x, y);
}

bool isUpright(const Matrix& rotation) {
    Matrix rest = rotation;
    rest.a4 = rest.b4 = rest.c4 = 0;
    return rest.IsIdentity();
}

}  // namespace

Matrix sceneFromModel(const Model& model) {
    Matrix scale;
    scale.a1 = scale.b2 = scale.c3 = static_cast<double>(model.options.scale);
    return scale * turnOf(model);
}

void findNodeFrame(Model& model) {
    const Matrix turn = turnOf(model);
    // Exporters of Z-up programs turn the top nodes of an FBX file.
    if (model.format == kFbxReader || isUpright(rigidPose(turn * model.nodes[0].local))) return;
    model.modelFromUpright = turn;
    model.modelFromUpright.Transpose();
}

Matrix poseInScene(const Model& model, const Matrix& sceneFromNode) {
    return rigidPose(sceneFromNode) * model.modelFromUpright;
}

}  // namespace marrowfen::standin
