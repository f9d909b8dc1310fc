#include "builder/shape_builder.h"

namespace marrowfen {

ShapeBuilder::ShapeBuilder(std::ostream& exportLog, ExportMode exportMode) : log(exportLog), mode(exportMode) {
    saveAnimationState();
    build();
    // Also after an error: the artist's scene is left as it was found.
    restoreAnimationState();
}

void ShapeBuilder::build() {
    scanScene();
    if (hasError()) return;
    checkDetailLayers();
    if (hasError()) return;
    createNodes();
    if (mode != ExportMode::SequencesOnly) {
        createGeometry();
        if (hasError()) return;
    }
    exportClips();
}

void ShapeBuilder::createGeometry() {
    createObjects();
    if (hasError()) return;

    // The collision passes build on the bounds of the visible geometry.
    computeBounds();
    computeCenter();
    computeRadius();
    computeTubeRadius();
    createCollisionMeshes();
    if (hasError()) return;
    createLosCollisionMeshes();
    if (hasError()) return;
    createSubShape();
    if (hasError()) return;

    if (boundsObject != nullptr) {
        boundsFromObject();
    } else {
        computeBounds();
    }
    computeCenter();
    computeRadius();
    computeTubeRadius();
    setSmallestSize(0);
}

}  // namespace marrowfen
