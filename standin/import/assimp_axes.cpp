#include "standin/import/assimp_axes.h"
#include "ground/at.h"

#include <algorithm>
#include <array>
#include <cmath>

// Assimp's convention is Y up, and most of its readers turn what they read to it. Some hand over the file's own axes;
// what those are is listed here. A character looks along +Z in Y-up files and along -Y in the Z-up files of modelling
// programs; formats of games, CAD and the host itself keep their own front.

namespace marrowfen::standin {

namespace {

using Axis = std::array<double, 3>;

struct ZUpReader {
    std::string_view name;
    bool facesFront;
};

// Readers, by the name that Assimp gives them, that leave a Z-up file as it is. STL has no up axis of its own; what
// writes and reads it (CAD, printing) takes Z. OpenGEX files are Z up unless they say otherwise, which isn't passed on.
constexpr ZUpReader kZUpReaders[] = {
    {"TrueSpace Object Importer", false},
    {"3mf Importer", false},
    {kAmfReader, false},
    {"Stereolithography (STL) Importer", false},
    {"Valve SMD Importer", false},
    {"Quick3D Importer", false},
    {"CharacterStudio Motion Importer (MoCap)", false},
    {"3D GameStudio Heightmap (HMP) Importer", false},
    {kBlenderReader, true},
    {"Open Game Engine Exchange", true},
};
// A left-handed Z-up format that is mirrored along Z, as if it were Y-up: the top comes out at the bottom.
constexpr std::string_view kUnrealReader = "Unreal Mesh Importer";
// LightWave looks along +Z at its models, which therefore face -Z.
constexpr std::string_view kLightWaveReader = "LightWave/Modo Object Importer";
constexpr std::string_view kLightWaveScenes = "LightWave Scene Importer";

Axis axisOf(int axis, int sign) {
    Axis result = {0, 0, 0};
    at(result, axis) = sign < 0 ? -1 : 1;
    return result;
}

Axis cross(const Axis& a, const Axis& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

// FBX files say their axes; the reader passes that on without acting on it.
Matrix uprightOfMetadata(const aiMetadata& metadata) {
    int32_t up = 1, upSign = 1, right = 0, rightSign = 1;
    metadata.Get("UpAxis", up);
    metadata.Get("UpAxisSign", upSign);
    metadata.Get("CoordAxis", right);
    metadata.Get("CoordAxisSign", rightSign);
    if (up < 0 || up > 2) up = 1;
    if (right < 0 || right > 2 || right == up) right = up == 0 ? 1 : 0;
    return uprightFrom(right, rightSign, up, upSign);
}

// FBX files count in centimetres times this factor.
double unitOfMetadata(const aiMetadata& metadata) {
    constexpr double kCentimetre = 0.01;
    float single = 1;
    double factor = 1;
    if (!metadata.Get("UnitScaleFactor", factor) && metadata.Get("UnitScaleFactor", single)) {
        factor = static_cast<double>(single);
    }
    return factor > 0 && std::isfinite(factor) ? factor * kCentimetre : 0;
}

}  // namespace

Matrix uprightFrom(int right, int rightSign, int up, int upSign) {
    const Axis x = axisOf(right, rightSign), z = axisOf(up, upSign), y = cross(z, x);
    return {x[0], x[1], x[2], 0, y[0], y[1], y[2], 0, z[0], z[1], z[2], 0, 0, 0, 0, 1};
}

void findAxes(const aiScene& scene, std::string_view reader, SourceModel& model) {
    model.upright = uprightFrom(0, 1, 1, 1);
    const auto zUp = std::find_if(std::begin(kZUpReaders), std::end(kZUpReaders),
                                  [&](const ZUpReader& entry) { return entry.name == reader; });
    if (zUp != std::end(kZUpReaders)) {
        model.upright = Matrix();
        model.facesFront = zUp->facesFront;
        if (reader == kBlenderReader) model.unit = 1;
    } else if (reader == kUnrealReader) {
        model.upright = uprightFrom(0, 1, 2, -1);
        model.facesFront = false;
    } else if (reader == kLightWaveReader || reader == kLightWaveScenes) {
        model.facesFront = false;
    } else if (reader == kFbxReader && scene.mMetaData != nullptr) {
        model.upright = uprightOfMetadata(*scene.mMetaData);
        model.unit = unitOfMetadata(*scene.mMetaData);
        // Exporters of Z-up programs turn the top nodes of an FBX file.
        model.nodesUpright = true;
    }
}

}  // namespace marrowfen::standin
