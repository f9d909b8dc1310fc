#include <algorithm>

#include "builder/mesh_limits.h"
#include "builder/passes.h"
#include "ground/at.h"
#include "host/poly_to_mesh.h"

namespace marrowfen {

namespace {

// The meshes of the one visible object, layer by layer.
class ObjectPass {
public:
    ObjectPass(const std::vector<LayerInfo>& detailLayers, MaterialConversion& materials, Shape& shape,
               Notices& notices)
        : detailLayers_(detailLayers), materials_(materials), shape_(shape), log_(notices.log()) {}

    void run();

private:
    void createMesh(size_t level);
    void convertLayer(size_t level);
    void moveToNodeSpace(Mesh& mesh, size_t level);

    const std::vector<LayerInfo>& detailLayers_;
    MaterialConversion& materials_;
    Shape& shape_;
    std::ostream& log_;
    Mesh mostDetailed_;  // of the first layer, moved but neither sorted nor stripped: what autolod layers start from
};

bool anyAutoLod(const std::vector<LayerInfo>& layers) {
    return std::any_of(layers.begin(), layers.end(), [](const LayerInfo& layer) { return layer.autoLod; });
}

void ObjectPass::run() {
    log_ << "Beginning object creation..." << std::endl;
    Shape::Object object;
    object.name = shape_.findOrAddName("ShapeObject");
    object.numMeshes = count32(detailLayers_);
    object.firstMesh = count32(shape_.meshes);
    object.node = count32(shape_.nodes) - 1;
    shape_.objects.push_back(object);

    for (size_t level = 0; level < detailLayers_.size(); ++level) {
        const LayerInfo& layer = detailLayers_[level];
        const std::string title = layer.name + " (" + std::to_string(level) + ")";
        log_ << "Beginning export of layer " << title << "..." << std::endl;
        createMesh(level);
        if (shape_.meshes.back().hasError()) return;
        log_ << "End export of layer " << title << "\n" << std::endl;

        log_ << "Creating detail level for layer " << title << "\n" << std::endl;
        addDetailLevel("Detail" + std::to_string(layer.size), static_cast<float>(layer.size), shape_);
        log_ << "End detail layer for layer " << title << "\n" << std::endl;
    }
    log_ << "End object creation\n" << std::endl;
}

// Appends the layer's mesh to shape_.meshes. An error of the mesh becomes the shape's.
void ObjectPass::createMesh(size_t level) {
    const LayerInfo& layer = detailLayers_[level];
    if (layer.autoLod) {
        shape_.meshes.push_back(mostDetailed_);
        shape_.meshes.back().decimate(layer.autoLodPercent);
    } else {
        convertLayer(level);
    }

    Mesh& mesh = shape_.meshes.back();
    if (!mesh.hasError() && mesh.type != MeshType::Sorted && layer.strip) {
        log_ << "Tristripping mesh..." << std::endl;
        mesh.strip();
    }
    if (!mesh.hasError()) mesh.setError(fileLimitError(mesh, layer.name));
    if (mesh.hasError()) shape_.setError(mesh.error());
}

void ObjectPass::convertLayer(size_t level) {
    const LayerInfo& layer = detailLayers_[level];
    // Vertices without a bone hang on "Root" in every layer, so that all detail levels come out alike.
    const int32_t root = count32(shape_.nodes) - 1;
    shape_.meshes.push_back(PolyToMesh(layer.polys, layer.sort, root, materials_, log_));
    Mesh& mesh = shape_.meshes.back();
    if (mesh.hasError()) return;

    mesh.flags |= layer.meshFlags;
    moveToNodeSpace(mesh, level);
    if (level == 0 && anyAutoLod(detailLayers_)) mostDetailed_ = mesh;
    if (mesh.type == MeshType::Sorted) {
        log_ << "Sorting mesh..." << std::endl;
        shape_.sortMesh(mesh);
    }
}

// A Standard mesh goes into the space of the object's node, a Skin mesh learns the pose of its bones.
void ObjectPass::moveToNodeSpace(Mesh& mesh, size_t level) {
    Shape::Object& object = shape_.objects.front();
    if (mesh.type == MeshType::Standard) {
        // The most detailed mesh decides: the object of a mesh that hangs on a single bone hangs there too.
        if (level == 0 && !mesh.nodeIndex.empty()) object.node = mesh.nodeIndex.front();
        if (mesh.nodeIndex.empty()) return;
        const Shape::Pose pose = shape_.nodeWorldTransform(object.node);
        mesh.translate(-pose.translation);
        mesh.rotate(inverse(pose.rotation));
    } else if (mesh.type == MeshType::Skin) {
        for (size_t slot = 0; slot < mesh.nodeIndex.size(); ++slot) {
            const Shape::Pose pose = shape_.nodeWorldTransform(mesh.nodeIndex[slot]);
            mesh.setInitialTransform(static_cast<int32_t>(slot), pose.translation, pose.rotation);
        }
    }
}

}  // namespace

void checkDetailLayers(const std::vector<LayerInfo>& detailLayers, Shape& shape) {
    if (detailLayers.empty()) {
        shape.setError("No meshes found to export");
    } else if (detailLayers.front().autoLod) {
        shape.setError("Highest size mesh cannot be autolod mesh");
    }
}

void createObjects(const std::vector<LayerInfo>& detailLayers, MaterialConversion& materials, Shape& shape,
                   Notices& notices) {
    ObjectPass(detailLayers, materials, shape, notices).run();
}

void addDetailLevel(const std::string& name, float size, Shape& shape) {
    Shape::DetailLevel level;
    level.name = shape.findOrAddName(name);
    level.objectDetail = count32(shape.detailLevels);
    level.size = size;
    level.polyCount = shape.meshes.back().faceCount();
    shape.detailLevels.push_back(level);
}

}  // namespace marrowfen
