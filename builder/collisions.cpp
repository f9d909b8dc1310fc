#include "builder/collision_primitives.h"
#include "builder/mesh_limits.h"
#include "builder/shape_builder.h"
#include "host/poly_to_mesh.h"

// Collision and line-of-sight meshes: one procedure on different inputs and words. An object of either kind has a mesh
// for each detail level so far: Null meshes for the visible ones, then its own.

namespace marrowfen {

namespace {
constexpr size_t kMostLayers = 8;         // of each kind that an engine looks for
constexpr float kCylinderDetail = 0.02F;  // four sides
constexpr float kCollisionSize = -1;      // a level that is never drawn
}  // namespace

struct ShapeBuilder::CollisionPass {
    const char* firstLine;
    const char* typeText;
    const char* objectName;
    const char* levelPrefix;  // of a detail level's name, before its number
    int firstNumber;
    const char* limitMessage;
    const char* lastLine;
};

void ShapeBuilder::createCollisionMeshes() {
    runCollisionPass({"Begin collisions", "Collision mesh = ", "CollisionObject", "Collision-", 1,
                      "The DTS format only supports up to 8 collision meshes.", "End collisions"},
                     collisionLayers);
}

void ShapeBuilder::createLosCollisionMeshes() {
    runCollisionPass({"Begin los collisions", "LosCollision mesh = ", "LosCollisionObject", "LOS-", 9,
                      "The DTS format only supports up to 8 LOS collision meshes.", "End los collisions"},
                     losCollisionLayers);
}

void ShapeBuilder::runCollisionPass(const CollisionPass& pass, const std::vector<LayerInfo>& passLayers) {
    log << pass.firstLine << std::endl;
    // The last layer decides for the whole pass.
    const CollisionType type = passLayers.empty() ? CollisionType::NoCollision : passLayers.back().collisionType;
    if (!passLayers.empty()) log << pass.typeText << static_cast<int>(type) << std::endl;

    if (type == CollisionType::BoxCollision || type == CollisionType::CylinderCollision) {
        addCollisionPrimitive(pass, type);
    } else if (type == CollisionType::MeshCollision) {
        addCollisionLayers(pass, passLayers);
        if (hasError()) return;
    }
    log << pass.lastLine << std::endl;
}

Shape::Object ShapeBuilder::newCollisionObject(const CollisionPass& pass, int32_t firstMesh) {
    Object object;
    object.name = findOrAddName(pass.objectName);
    object.node = static_cast<int32_t>(nodes.size()) - 1;
    object.firstMesh = firstMesh;
    object.numMeshes = static_cast<int32_t>(detailLevels.size());
    return object;
}

void ShapeBuilder::addCollisionPrimitive(const CollisionPass& pass, CollisionType primitive) {
    const Mesh mesh = primitive == CollisionType::BoxCollision
                          ? BoxPrimitive(bounds).mesh()
                          : CylinderPrimitive(bounds, tubeRadius, kCylinderDetail).mesh();
    const auto firstMesh = static_cast<int32_t>(meshes.size());
    meshes.insert(meshes.end(), detailLevels.size(), Mesh(MeshType::Null));
    meshes.push_back(mesh);
    addDetailLevel(pass.levelPrefix + std::to_string(pass.firstNumber), kCollisionSize);
    objects.push_back(newCollisionObject(pass, firstMesh));
}

void ShapeBuilder::addCollisionLayers(const CollisionPass& pass, const std::vector<LayerInfo>& passLayers) {
    // Its name comes before those of its levels, also when the pass is refused.
    Object object = newCollisionObject(pass, static_cast<int32_t>(meshes.size()));
    if (passLayers.size() > kMostLayers) {
        setError(pass.limitMessage);
        return;
    }
    meshes.insert(meshes.end(), detailLevels.size(), Mesh(MeshType::Null));
    int number = pass.firstNumber;
    for (const LayerInfo& layer : passLayers) {
        if (layer.collisionType != CollisionType::MeshCollision) continue;
        Mesh mesh = PolyToMesh(layer, object.node, materials, log, textureOptions);
        if (!mesh.hasError()) mesh.setError(fileLimitError(mesh, layer.name));
        if (mesh.hasError()) {
            setError(mesh.error());
            return;
        }
        meshes.push_back(std::move(mesh));
        addDetailLevel(pass.levelPrefix + std::to_string(number++), kCollisionSize);
        log << "Added mesh to collsion" << std::endl;
    }
    object.numMeshes = static_cast<int32_t>(detailLevels.size());
    objects.push_back(object);
}

}  // namespace marrowfen
