#include <cmath>
#include <cstdio>

#include "standin/import/assimp_axes.h"
#include "standin/import/model.h"

// From the file's axes and unit to the scene's: Z up, a character's front along +Y, metres.

namespace marrowfen::standin {

namespace {

bool isUpright(const Matrix& rotation) {
    Matrix rest = rotation;
    rest.a4 = rest.b4 = rest.c4 = 0;
    return rest.IsIdentity();
}

Matrix turnedAboutUp(double degrees) {
    // Quarter turns keep axes exact.
    const double quarters = degrees / 90;
    const double turn = std::fmod(quarters, 4) * std::acos(0.0);
    double sine = std::sin(turn), cosine = std::cos(turn);
    if (quarters == std::round(quarters)) sine = std::round(sine), cosine = std::round(cosine);
    return {cosine, 0 - sine, 0, 0, sine, cosine, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
}

Matrix uprightOf(const Model& model) {
    if (!model.options.up) return model.source.upright;
    switch (*model.options.up) {
        case UpAxis::X:
            return uprightFrom(1, -1, 0, 1);
        case UpAxis::Y:
            return uprightFrom(0, 1, 1, 1);
        default:
            return uprightFrom(0, 1, 2, 1);
    }
}

bool isTurnedToFront(const Model& model) {
    return model.source.facesFront || (model.options.up && model.options.up != UpAxis::Z);
}

double frontTurn(const Model& model) {
    return (isTurnedToFront(model) ? 180 : 0) + static_cast<double>(model.options.turnDegrees);
}

double unitOf(const Model& model) {
    if (model.options.unit > 0) return model.options.unit;
    return model.source.unit > 0 ? model.source.unit : 1;
}

std::string shortNumber(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", value);
    return text;
}

}  // namespace

Matrix sceneFromModel(const Model& model) {
    Matrix scale;
    scale.a1 = scale.b2 = scale.c3 = unitOf(model) * static_cast<double>(model.options.scale);
    return scale * turnedAboutUp(frontTurn(model)) * uprightOf(model);
}

void findNodeFrame(Model& model) {
    const Matrix upright = uprightOf(model);
    const bool nodesUpright = model.source.nodesUpright || isUpright(rigidPose(upright * model.source.nodes[0].local));
    model.modelFromUpright = turnedAboutUp(frontTurn(model)) * (nodesUpright ? Matrix() : upright);
    model.modelFromUpright.Transpose();
}

Matrix poseInScene(const Model& model, const Matrix& sceneFromNode) {
    return rigidPose(sceneFromNode) * model.modelFromUpright;
}

std::string axesText(const Model& model) {
    const Matrix upright = uprightOf(model);
    const char* up = std::fabs(upright.c1) > 0.5 ? "X" : std::fabs(upright.c2) > 0.5 ? "Y" : "Z";
    std::string text = std::string("the file's ") + (upright.c1 + upright.c2 + upright.c3 < 0 ? "-" : "") + up +
                       " is up; turned by " + shortNumber(frontTurn(model)) + " degrees about it; ";
    const bool known = model.options.unit > 0 || model.source.unit > 0;
    text += known ? "a unit is " + shortNumber(unitOf(model)) + " m" : "the file has no unit, so one is taken for 1 m";
    if (model.options.scale != 1) text += "; scaled by " + shortNumber(static_cast<double>(model.options.scale));
    return text;
}

}  // namespace marrowfen::standin
