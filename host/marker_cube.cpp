#include "host/marker_cube.h"

#include "host/scratch_material.h"
#include "host/tsxapi.h"

namespace marrowfen {

namespace {

constexpr float kSize = 0.125F;
constexpr float kLocation[3] = {1, 1, 1};
constexpr int kMarkedFace = 4;
constexpr unsigned char kColor[4] = {0, 255, 0, 255};
constexpr unsigned char kMarkedFaceColor[4] = {0, 0, 255, 255};

// A host without a material to paint with leaves the cube as it is.
void paint(TsxNode* cube) {
    tsxPolyhInitializeMaterials(cube);
    const ScratchMaterial material;
    if (material.handle() == nullptr) return;
    tsxMaterialSetColor(material.handle(), kColor);
    tsxPolyhPaint(cube, material.handle());
    tsxMaterialSetColor(material.handle(), kMarkedFaceColor);
    tsxPolyhPaintFace(cube, kMarkedFace, material.handle(), 0);
}

}  // namespace

bool addMarkerCube(const char* name, int16_t layer) {
    TsxNode* cube = tsxCreateCube(1, kSize, kSize, kSize);
    if (cube == nullptr) return false;
    paint(cube);
    tsxGNodeSetLocation(cube, kLocation);
    tsxGNodeSetName(cube, name);
    tsxMoveObjectToLayerEx(layer, cube);
    tsxSceneAddObject(cube, 0);
    return true;
}

}  // namespace marrowfen
