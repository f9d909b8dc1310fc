#include <algorithm>

#include "builder/mesh_limits.h"
#include "builder/shape_builder.h"
#include "host/poly_to_mesh.h"

// The one visible object with a mesh and a detail level a detail layer, and the closing steps of the build.

namespace marrowfen {

void ShapeBuilder::checkDetailLayers() {
    if (mode == ExportMode::SequencesOnly) return;
    if (detailLayers.empty()) setError("No meshes found to export");
    anyAutoLod = std::any_of(detailLayers.begin(), detailLayers.end(), [](const LayerInfo& l) { return l.autoLod; });
    if (anyAutoLod && detailLayers.front().autoLod) setError("Highest size mesh cannot be autolod mesh");
}

void ShapeBuilder::createObjects() {
    log << "Beginning object creation..." << std::endl;
    Object object;
    object.name = findOrAddName("ShapeObject");
    object.numMeshes = static_cast<int32_t>(detailLayers.size());
    object.firstMesh = static_cast<int32_t>(meshes.size());
    object.node = static_cast<int32_t>(nodes.size()) - 1;
    objects.push_back(object);

    Mesh mostDetailed;  // of the first layer, moved but neither sorted nor stripped: what autolod layers start from
    for (size_t level = 0; level < detailLayers.size(); ++level) {
        const LayerInfo& layer = detailLayers[level];
        const std::string title = layer.name + " (" + std::to_string(level) + ")";
        log << "Beginning export of layer " << title << "..." << std::endl;
        createDetailMesh(level, mostDetailed);
        if (!meshes.back().error().empty()) return;
        log << "End export of layer " << title << "\n" << std::endl;

        log << "Creating detail level for layer " << title << "\n" << std::endl;
        addDetailLevel("Detail" + std::to_string(layer.size), static_cast<float>(layer.size));
        log << "End detail layer for layer " << title << "\n" << std::endl;
    }
    log << "End object creation\n" << std::endl;
}

// Appends the layer's mesh to meshes. An error of the mesh becomes the shape's.
void ShapeBuilder::createDetailMesh(size_t level, Mesh& mostDetailed) {
    const LayerInfo& layer = detailLayers[level];
    if (layer.autoLod) {
        meshes.push_back(mostDetailed);
        meshes.back().decimate(layer.autoLodPercent);
    } else {
        convertDetailLayer(level, mostDetailed);
    }

    Mesh& mesh = meshes.back();
    if (!mesh.hasError() && mesh.type != MeshType::Sorted && layer.strip) {
        log << "Tristripping mesh..." << std::endl;
        mesh.strip();
    }
    if (!mesh.hasError()) mesh.setError(fileLimitError(mesh, layer.name));
    if (mesh.hasError()) setError(mesh.error());
}

void ShapeBuilder::convertDetailLayer(size_t level, Mesh& mostDetailed) {
    const LayerInfo& layer = detailLayers[level];
    // Vertices without a bone hang on "Root" in every layer, so that all detail levels come out alike.
    const auto root = static_cast<int32_t>(nodes.size()) - 1;
    meshes.push_back(PolyToMesh(layer, root, materials, log, textureOptions));
    Mesh& mesh = meshes.back();
    if (mesh.hasError()) return;

    mesh.flags |= layer.meshFlags;
    moveToNodeSpace(mesh, level);
    if (level == 0 && anyAutoLod) mostDetailed = mesh;
    if (mesh.type == MeshType::Sorted) {
        log << "Sorting mesh..." << std::endl;
        sortMesh(mesh);
    }
}

// A Standard mesh goes into the space of the object's node, a Skin mesh learns the pose of its bones.
void ShapeBuilder::moveToNodeSpace(Mesh& mesh, size_t level) {
    Object& object = objects.front();
    if (mesh.type == MeshType::Standard) {
        // The most detailed mesh decides: the object of a mesh that hangs on a single bone hangs there too.
        if (level == 0 && !mesh.nodeIndex.empty()) object.node = mesh.nodeIndex.front();
        if (mesh.nodeIndex.empty()) return;
        const Pose pose = nodeWorldTransform(object.node);
        mesh.translate(-pose.translation);
        mesh.rotate(inverse(pose.rotation));
    } else if (mesh.type == MeshType::Skin) {
        for (size_t slot = 0; slot < mesh.nodeIndex.size(); ++slot) {
            const Pose pose = nodeWorldTransform(mesh.nodeIndex[slot]);
            mesh.setInitialTransform(static_cast<int32_t>(slot), pose.translation, pose.rotation);
        }
    }
}

void ShapeBuilder::addDetailLevel(const std::string& name, float size) {
    DetailLevel level;
    level.name = findOrAddName(name);
    level.objectDetail = static_cast<int32_t>(detailLevels.size());
    level.size = size;
    level.polyCount = meshes.back().faceCount();
    detailLevels.push_back(level);
}

void ShapeBuilder::createSubShape() {
    SubShape subshape;
    subshape.numNodes = static_cast<int32_t>(nodes.size());
    subshape.numObjects = static_cast<int32_t>(objects.size());
    subshape.numDecals = static_cast<int32_t>(decals.size());
    subshapes.push_back(subshape);
    objectStates.resize(objects.size());
}

void ShapeBuilder::boundsFromObject() {
    const int count = tsxPolyhGetNbrVxs(boundsObject);
    float transform[12];
    tsxPolyhGetVxTxmx(boundsObject, transform);
    const float* vertices = tsxPolyhGetVxArray(boundsObject);
    auto* placed = static_cast<float*>(tsxMalloc(static_cast<unsigned>(count) * 3 * sizeof(float)));
    tsxTransformVecs3f(count, placed, vertices, transform);

    bounds = emptyBox();
    for (int v = 0; v < count; ++v) widen(bounds, Point3{placed[v * 3], placed[v * 3 + 1], placed[v * 3 + 2]});
    tsxFree(placed);
}

}  // namespace marrowfen
