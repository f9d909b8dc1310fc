#include <algorithm>
#include <cstdio>

#include "builder/layer_mesh.h"
#include "builder/passes.h"
#include "builder/refusals.h"
#include "ground/at.h"
#include "host/poly_to_mesh.h"
#include "shape/drawn_triangles.h"
#include "shape/shape_questions.h"

namespace marrowfen {

namespace {

// The meshes of the one visible object, layer by layer.
class ObjectPass {
public:
    ObjectPass(const std::vector<LayerInfo>& detailLayers, MaterialConversion& materials, Shape& shape,
               Notices& notices)
        : detailLayers_(detailLayers), materials_(materials), shape_(shape), notices_(notices), log_(notices.log()) {}

    void run();

private:
    void createMesh(size_t level);
    std::string copiesError() const;
    Mesh decimatedCopy(size_t level);
    void convertLayer(size_t level);
    void tellFault(const MessageKind& kind, const LayerInfo& layer);
    void moveToNodeSpace(Mesh& mesh, const LayerInfo& layer);
    void tellLostArea(const LayerInfo& layer, double given, double drawn);

    const std::vector<LayerInfo>& detailLayers_;
    MaterialConversion& materials_;
    Shape& shape_;
    Notices& notices_;
    std::ostream& log_;
    Mesh mostDetailed_;  // of the first layer, moved but neither sorted nor stripped: what autolod layers start from
    std::vector<MeshFaces> decimatedFaces_;  // of each autolod layer, taken when its turn comes
};

// Copies that a shape may have: 256 of any mesh, far more than the steps from full detail to nothing that anybody can
// tell apart; of a small one as many as have two million vertices together, which are written anew for every copy. A
// name is all that a copy costs in a scene: without a limit half a megabyte would ask for a file of 400.
constexpr size_t kCopiesOfAnyMesh = 256;
constexpr size_t kMostCopiedVertices = 1 << 21;

// Turns that shade a mesh visibly wrong when its normals don't take part: from one degree on.
constexpr float kVisibleTurnSquaredSine = 7.6e-5F;  // of half a degree

bool isVisibleTurn(const Quaternion& q) { return q.x * q.x + q.y * q.y + q.z * q.z > kVisibleTurnSquaredSine; }

// Whether the layer's mesh hangs on one node at the most and is drawn as it stands.
bool isStandard(const LayerInfo& layer, int32_t root) {
    return !layer.sort && nodesBoundTo(layer.polys, root).size() <= 1;
}

// The node that the object hangs on. A Standard mesh on a single bone goes into that bone's space, which makes it
// follow the bone; Skin and Sorted meshes stay in shape space, and a node other than "Root" would place them twice.
// A layer with a copy of the most detailed mesh is what that one is.
int32_t objectNode(const std::vector<LayerInfo>& layers, int32_t root) {
    const bool allStandard = std::all_of(layers.begin(), layers.end(), [root](const LayerInfo& layer) {
        return layer.autoLod || isStandard(layer, root);
    });
    if (!allStandard) return root;
    const std::set<int32_t> nodes = nodesBoundTo(layers.front().polys, root);
    return nodes.empty() ? root : *nodes.begin();
}

size_t countAutoLod(const std::vector<LayerInfo>& layers) {
    return static_cast<size_t>(
        std::count_if(layers.begin(), layers.end(), [](const LayerInfo& layer) { return layer.autoLod; }));
}

void ObjectPass::run() {
    log_ << "Beginning object creation..." << std::endl;
    Shape::Object object;
    object.name = shape_.findOrAddName("ShapeObject");
    object.numMeshes = count32(detailLayers_);
    object.firstMesh = count32(shape_.meshes);
    object.node = objectNode(detailLayers_, count32(shape_.nodes) - 1);
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
    tellUselessLayers(detailLayers_, notices_);
    log_ << "End object creation\n" << std::endl;
}

// Appends the layer's mesh to shape_.meshes. An error of the mesh becomes the shape's.
void ObjectPass::createMesh(size_t level) {
    const LayerInfo& layer = detailLayers_[level];
    if (layer.autoLod) {
        shape_.meshes.push_back(decimatedCopy(level));
        tellFault(kNotDecimated, layer);
    } else {
        convertLayer(level);
    }

    Mesh& mesh = shape_.meshes.back();
    if (!mesh.hasError() && mesh.type != MeshType::Sorted && layer.strip) {
        log_ << "Tristripping mesh..." << std::endl;
        mesh.strip();
        tellFault(kNotStripped, layer);
    }
    if (!mesh.hasError()) mesh.setError(fileLimitError(mesh, layer, LayerRole::Detail, notices_));
    if (mesh.hasError()) return shape_.setError(mesh.error());
    if (!isFinite(mesh)) notices_.tell({&kNotFinite, Message::Place::Layer, layer.name, layer.name});
}

// Why the mesh converted last can't be copied as often as is asked for. Empty when it can.
std::string ObjectPass::copiesError() const {
    const size_t copies = countAutoLod(detailLayers_), vertices = shape_.meshes.back().vertexes.size();
    if (copies <= kCopiesOfAnyMesh || copies * vertices <= kMostCopiedVertices) return {};
    const std::string facts =
        std::to_string(copies) + " copies of a mesh with " + std::to_string(vertices) + " vertices";
    notices_.tellRefusal(kTooManyCopies, detailLayers_.front().name,
                         "layer " + detailLayers_.front().name + " with " + facts);
    return "A shape holds at most " + std::to_string(std::max(kCopiesOfAnyMesh, kMostCopiedVertices / vertices)) +
           " of " + facts + ".";
}

// All copies are made at once: the fewer triangles of one go on from the more of another.
Mesh ObjectPass::decimatedCopy(size_t level) {
    std::vector<int32_t> percents;
    size_t copiesBefore = 0;
    for (size_t i = 0; i < detailLayers_.size(); ++i) {
        if (!detailLayers_[i].autoLod) continue;
        percents.push_back(detailLayers_[i].autoLodPercent);
        if (i < level) ++copiesBefore;
    }
    if (decimatedFaces_.empty()) decimatedFaces_ = mostDetailed_.decimated(percents);

    Mesh copy = mostDetailed_;
    if (!copy.hasError()) {
        copy.primitives = std::move(at(decimatedFaces_, copiesBefore).primitives);
        copy.indices = std::move(at(decimatedFaces_, copiesBefore).indices);
    }
    return copy;
}

// An algorithm that gave up on the last mesh: most probably because of a face that isn't one.
void ObjectPass::tellFault(const MessageKind& kind, const LayerInfo& layer) {
    if (!shape_.meshes.back().hasError()) return;
    const LayerInfo& source = layer.autoLod ? detailLayers_.front() : layer;
    const std::string face = oddFace(source.polys, source.name);
    if (face.empty()) {
        notices_.tellRefusal(kind, layer.name, "layer " + layer.name);
    } else {
        notices_.tellRefusal(kBadFace, source.name, face);
    }
}

void ObjectPass::convertLayer(size_t level) {
    const LayerInfo& layer = detailLayers_[level];
    // Vertices without a bone hang on "Root" in every layer, so that all detail levels come out alike.
    const int32_t root = count32(shape_.nodes) - 1;
    shape_.meshes.push_back(layerMesh(layer, root, materials_, notices_));
    Mesh& mesh = shape_.meshes.back();
    if (mesh.hasError()) return;

    mesh.flags |= layer.meshFlags;
    moveToNodeSpace(mesh, layer);
    if (level == 0 && countAutoLod(detailLayers_) > 0) {
        mesh.setError(copiesError());
        if (mesh.hasError()) return;
        mostDetailed_ = mesh;
    }
    if (mesh.type == MeshType::Sorted) {
        log_ << "Sorting mesh..." << std::endl;
        const double given = drawnArea(mesh);
        shape_.sortMesh(mesh);
        tellFault(kNotSorted, layer);
        tellLostArea(layer, given, drawnArea(mesh));
    }
}

// Faces are cut where they cross the plane of another one; far from the origin 32-bit floats place the cuts so badly
// that slivers are lost.
void ObjectPass::tellLostArea(const LayerInfo& layer, double given, double drawn) {
    constexpr double kShareThatShows = 0.001;
    const double share = (given - drawn) / given;  // no number of nothing
    if (!(share > kShareThatShows)) return;
    char percent[16];
    std::snprintf(percent, sizeof percent, "%.1f", share * 100);
    notices_.tell({&kSortedAreaLost, Message::Place::Layer, layer.name, layer.name + " (" + percent + " %)"});
}

// A Standard mesh goes into the space of the object's node, a Skin mesh learns the pose of its bones.
void ObjectPass::moveToNodeSpace(Mesh& mesh, const LayerInfo& layer) {
    if (mesh.type == MeshType::Standard && !mesh.nodeIndex.empty()) {
        const Shape::Pose pose = shape_.nodeWorldTransform(shape_.objects.front().node);
        mesh.translate(-pose.translation);
        mesh.rotate(inverse(pose.rotation));
        if (isVisibleTurn(pose.rotation)) {
            notices_.tell({&kNormalsNotTurned, Message::Place::Layer, layer.name, layer.name});
        }
    } else if (mesh.type == MeshType::Skin) {
        for (size_t slot = 0; slot < mesh.nodeIndex.size(); ++slot) {
            const Shape::Pose pose = shape_.nodeWorldTransform(mesh.nodeIndex[slot]);
            mesh.setInitialTransform(static_cast<int32_t>(slot), pose.translation, pose.rotation);
        }
    }
}

}  // namespace

void checkDetailLayers(const std::vector<LayerInfo>& detailLayers, Shape& shape, Notices& notices) {
    if (detailLayers.empty()) {
        notices.tellRefusal(kNoMeshes, "", "no layer is a detail level");
        shape.setError("No meshes found to export");
    } else if (detailLayers.front().autoLod) {
        const LayerInfo& layer = detailLayers.front();
        notices.tellRefusal(
            kAutoLodFirst, layer.name,
            "layer " + layer.name + " is a copy and comes first, " +
                (layer.size == kNoSize ? "no layer having a size" : "with a size of " + std::to_string(layer.size)));
        shape.setError("Highest size mesh cannot be autolod mesh");
    }
}

void tellUselessLayers(const std::vector<LayerInfo>& detailLayers, Notices& notices) {
    Shape levels;
    for (const LayerInfo& layer : detailLayers) {
        Shape::DetailLevel& level = levels.detailLevels.emplace_back();
        level.name = -1;
        level.size = static_cast<float>(layer.size);
    }
    for (const size_t level : levelsThatNeverShow(levels)) {
        const LayerInfo& layer = at(detailLayers, level);
        const std::string why = layer.size == kNoSize ? "has no size"
                                : layer.size < 0      ? "has a size below 0"
                                                      : "is hidden by one of its size";
        notices.tell({&kNeverShows, Message::Place::Layer, layer.name, layer.name + " " + why});
    }
    for (const LayerInfo& layer : detailLayers) {
        if (!layer.autoLod || !(layer.sort || detailLayers.front().sort)) continue;
        const std::string why =
            layer.sort ? " is a copy and isn't sorted" : " is a copy of a sorted layer, and unsorted";
        notices.tell({&kSortWithAutoLod, Message::Place::Layer, layer.name, layer.name + why});
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
