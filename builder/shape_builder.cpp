#include "builder/shape_builder.h"

#include <algorithm>
#include <sstream>

#include "builder/passes.h"
#include "builder/refusals.h"
#include "builder/scan.h"
#include "ground/at.h"
#include "host/animation.h"
#include "host/polyhedron.h"
#include "shape/shape_questions.h"

namespace marrowfen {

namespace {

void measure(Shape& shape) {
    shape.computeCenter();
    shape.computeRadius();
    shape.computeTubeRadius();
}

// One subshape holds everything, and every object shows itself.
void createSubShape(Shape& shape) {
    Shape::SubShape subshape;
    subshape.numNodes = count32(shape.nodes);
    subshape.numObjects = count32(shape.objects);
    subshape.numDecals = count32(shape.decals);
    shape.subshapes.push_back(subshape);
    shape.objectStates.resize(shape.objects.size());
}

void tellFacesWithoutTexture(const Shape& shape, Notices& notices) {
    const bool hasAny = std::any_of(shape.materials.begin(), shape.materials.end(),
                                    [](const Shape::Material& material) { return material.name == kNoTextureName; });
    if (hasAny) notices.tell({&kNoTexture, Message::Place::Scene, "", kNoTextureName});
}

void tellFarBounds(const Shape& shape, Notices& notices) {
    const float reach = reachOf(shape.bounds);
    if (!(reach > kFarReach)) return;
    std::ostringstream text;
    text << reach << " units";
    notices.tell({&kFarFromOrigin, Message::Place::Scene, "", text.str()});
}

// The box around the object where it stands in the scene.
void takeBoundsOf(const SceneNode& object, Shape& shape, Notices& notices) {
    const PlacedVertices vertices(object, object.name());
    if (!vertices.error().empty()) {
        notices.tellRefusal(kBadPolyhedron, "", "polyhedron " + object.name() + " of the bounds layer");
        return shape.setError(vertices.error());
    }
    if (vertices.count() == 0) {
        notices.tellRefusal(kBoundsShape, "", "polyhedron " + object.name() + " has no vertices");
        return shape.setError("Bounds object can only be a cube.");
    }
    shape.bounds = emptyBox();
    for (int32_t v = 0; v < vertices.count(); ++v) widen(shape.bounds, vertices[v]);
}

void createGeometry(const SceneScan& scan, Shape& shape, Notices& notices) {
    MaterialConversion materials(shape.materials, notices.log(), scan.textureOptions);
    createObjects(scan.detailLayers, materials, shape, notices);
    if (shape.hasError()) return;

    // The collision passes build on the bounds of the visible geometry.
    shape.computeBounds();
    measure(shape);
    createCollisionMeshes(scan.collisionLayers, materials, shape, notices);
    if (shape.hasError()) return;
    createLosCollisionMeshes(scan.losCollisionLayers, materials, shape, notices);
    if (shape.hasError()) return;
    createSubShape(shape);
    tellFacesWithoutTexture(shape, notices);

    if (scan.boundsObject) {
        takeBoundsOf(scan.boundsObject, shape, notices);
    } else {
        shape.computeBounds();
    }
    measure(shape);
    tellFarBounds(shape, notices);
    shape.setSmallestSize(0);
}

void build(ExportMode mode, Shape& shape, Notices& notices) {
    const SceneScan scan = scanScene(notices);
    shape.setError(scan.error);
    const bool hasGeometry = mode != ExportMode::SequencesOnly;
    if (!shape.hasError() && hasGeometry) checkDetailLayers(scan.detailLayers, shape, notices);
    if (shape.hasError()) return;
    createNodes(scan.bones, scan.markers, shape, notices);
    if (hasGeometry) createGeometry(scan, shape, notices);
    if (shape.hasError()) return;
    if (mode == ExportMode::ShapeOnly) {
        for (const ClipInfo& clip : scan.clips) {
            notices.tell({&kClipLeftOut, Message::Place::Clip, clip.name, clip.name});
        }
    } else {
        exportClips(scan.clips, scan.bones, scan.markers, shape, notices);
    }
}

}  // namespace

ShapeBuilder::ShapeBuilder(std::ostream& log, ExportMode mode, const MessageListener& listener) {
    // Put back after an error too: the artist's scene is left as it was found.
    const StoppedPlayback playback;
    Notices notices(log, listener);
    build(mode, *this, notices);
}

}  // namespace marrowfen
