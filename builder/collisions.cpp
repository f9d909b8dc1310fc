#include <utility>

#include "builder/collision_primitives.h"
#include "builder/layer_mesh.h"
#include "builder/passes.h"
#include "builder/refusals.h"
#include "ground/at.h"
#include "host/poly_to_mesh.h"

// Collision and line-of-sight meshes: one procedure on different inputs and words. An object of either kind has a mesh
// for each detail level so far: Null meshes for the visible ones, then its own.

namespace marrowfen {

namespace {

constexpr size_t kMostLayers = 8;         // of each kind that an engine looks for
constexpr float kCylinderDetail = 0.02F;  // four sides
constexpr float kCollisionSize = -1;      // a level that is never drawn

// What differs between the two kinds.
struct Words {
    const char* firstLine;
    const char* typeText;
    const char* objectName;
    const char* levelPrefix;  // of a detail level's name, before its number
    int firstNumber;
    const char* limitMessage;
    const char* lastLine;
};

constexpr Words kCollision = {"Begin collisions",
                              "Collision mesh = ",
                              "CollisionObject",
                              "Collision-",
                              1,
                              "The DTS format only supports up to 8 collision meshes.",
                              "End collisions"};
constexpr Words kLosCollision = {"Begin los collisions",
                                 "LosCollision mesh = ",
                                 "LosCollisionObject",
                                 "LOS-",
                                 9,
                                 "The DTS format only supports up to 8 LOS collision meshes.",
                                 "End los collisions"};

class CollisionPass {
public:
    CollisionPass(const Words& words, const std::vector<LayerInfo>& layers, Shape& shape, Notices& notices)
        : words_(words), layers_(layers), shape_(shape), notices_(notices), log_(notices.log()) {}

    void run(MaterialConversion& materials);

private:
    void addPrimitive(CollisionType primitive);
    void addLayers(MaterialConversion& materials);
    Shape::Object newObject(int32_t firstMesh);

    const Words& words_;
    const std::vector<LayerInfo>& layers_;
    Shape& shape_;
    Notices& notices_;
    std::ostream& log_;
};

void CollisionPass::run(MaterialConversion& materials) {
    log_ << words_.firstLine << std::endl;
    // The last layer decides for all.
    const CollisionType type = layers_.empty() ? CollisionType::NoCollision : layers_.back().collisionType;
    tellOverruledLayers(layers_, notices_);
    if (!layers_.empty()) log_ << words_.typeText << static_cast<int>(type) << std::endl;

    if (type == CollisionType::BoxCollision || type == CollisionType::CylinderCollision) {
        if (shape_.bounds.min.x > shape_.bounds.max.x) {
            notices_.tell({&kEmptyCollision, Message::Place::Layer, layers_.back().name, layers_.back().name});
        }
        addPrimitive(type);
    } else if (type == CollisionType::MeshCollision) {
        addLayers(materials);
        if (shape_.hasError()) return;
    }
    log_ << words_.lastLine << std::endl;
}

Shape::Object CollisionPass::newObject(int32_t firstMesh) {
    Shape::Object object;
    object.name = shape_.findOrAddName(words_.objectName);
    object.node = count32(shape_.nodes) - 1;
    object.firstMesh = firstMesh;
    object.numMeshes = count32(shape_.detailLevels);
    return object;
}

void CollisionPass::addPrimitive(CollisionType primitive) {
    const auto firstMesh = count32(shape_.meshes);
    shape_.meshes.insert(shape_.meshes.end(), shape_.detailLevels.size(), Mesh(MeshType::Null));
    shape_.meshes.push_back(primitive == CollisionType::BoxCollision
                                ? boxPrimitive(shape_.bounds)
                                : cylinderPrimitive(shape_.bounds, shape_.tubeRadius, kCylinderDetail));
    addDetailLevel(words_.levelPrefix + std::to_string(words_.firstNumber), kCollisionSize, shape_);
    shape_.objects.push_back(newObject(firstMesh));
}

void CollisionPass::addLayers(MaterialConversion& materials) {
    // Its name comes before those of its levels, also when the pass is refused.
    Shape::Object object = newObject(count32(shape_.meshes));
    if (layers_.size() > kMostLayers) {
        notices_.tellRefusal(
            kCollisionLayers, layers_.back().name,
            "there are " + std::to_string(layers_.size()) + " such layers, the last being " + layers_.back().name);
        shape_.setError(words_.limitMessage);
        return;
    }
    shape_.meshes.insert(shape_.meshes.end(), shape_.detailLevels.size(), Mesh(MeshType::Null));
    int number = words_.firstNumber;
    for (const LayerInfo& layer : layers_) {
        if (layer.collisionType != CollisionType::MeshCollision) continue;
        Mesh mesh = layerMesh(layer, object.node, materials, notices_);
        if (!mesh.hasError()) mesh.setError(fileLimitError(mesh, layer, LayerRole::Collision, notices_));
        if (mesh.hasError()) {
            shape_.setError(mesh.error());
            return;
        }
        shape_.meshes.push_back(std::move(mesh));
        addDetailLevel(words_.levelPrefix + std::to_string(number++), kCollisionSize, shape_);
        log_ << "Added mesh to collsion" << std::endl;
    }
    object.numMeshes = count32(shape_.detailLevels);
    shape_.objects.push_back(object);
}

}  // namespace

void tellOverruledLayers(const std::vector<LayerInfo>& layers, Notices& notices) {
    for (const LayerInfo& layer : layers) {
        if (layer.collisionType == layers.back().collisionType) continue;
        notices.tell({&kOverruledCollision, Message::Place::Layer, layer.name,
                      layer.name + " (the last one is " + layers.back().name + ")"});
    }
}

void createCollisionMeshes(const std::vector<LayerInfo>& layers, MaterialConversion& materials, Shape& shape,
                           Notices& notices) {
    CollisionPass(kCollision, layers, shape, notices).run(materials);
}

void createLosCollisionMeshes(const std::vector<LayerInfo>& layers, MaterialConversion& materials, Shape& shape,
                              Notices& notices) {
    CollisionPass(kLosCollision, layers, shape, notices).run(materials);
}

}  // namespace marrowfen
