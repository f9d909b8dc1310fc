#pragma once

// ShapeBuilder: turns the host's open scene into a Shape.

#include <ostream>
#include <string>
#include <unordered_set>
#include <vector>

#include "builder/records.h"
#include "shape/shape.h"

namespace marrowfen {

class ShapeBuilder : public Shape {
public:
    // Runs the whole build, up to its end or to the first error; afterwards this object is the finished shape, or
    // hasError() is true. The log is borrowed; the host's play mode, active time and clip states are as before.
    ShapeBuilder(std::ostream& log, ExportMode mode);

private:
    void build();
    void createGeometry();

    // The scan (builder/scan.cpp).
    void scanScene();
    void scanLayers();
    void scanObjects();
    void categorizeLayers();
    void categorizeLayer(LayerInfo& layer);
    void takeBoundsObject(const LayerInfo& layer);
    void moveLayers();
    void sortDetailLayers();
    void scanClips();
    void scanNodes();
    void scanNode(TsxNode* node);

    // Clips and sequences (builder/sequences.cpp).
    void saveAnimationState();
    void restoreAnimationState();
    void readClip(TsxScene* scene, const std::string& text, ClipInfo& clip);
    void exportClips();
    bool isExportable(const ClipInfo& clip);
    void exportClip(TsxScene* scene, const ClipInfo& clip);
    void sampleNodes(const Sequence& sequence, const ClipInfo& clip);
    void sampleFrame(const Sequence& sequence, int32_t key);

    // Nodes and bones (builder/nodes.cpp).
    void scanSkeleton(LayerInfo& layer, TsxNode* node, int32_t parent);
    void createNodes();
    void addNode(const std::string& name, int32_t parent, const Pose& pose);
    std::vector<Pose> bonePoses() const;                   // relative to the parent bone, at the active time
    Pose namedNodePose(const NamedNodeInfo& named) const;  // in scene space, at the active time

    // Objects and detail levels (builder/objects.cpp).
    void checkDetailLayers();
    void createObjects();
    void createDetailMesh(size_t level, Mesh& mostDetailed);
    void convertDetailLayer(size_t level, Mesh& mostDetailed);
    void moveToNodeSpace(Mesh& mesh, size_t level);
    void addDetailLevel(const std::string& name, float size);  // of the last mesh
    void createSubShape();
    void boundsFromObject();

    // Collision meshes (builder/collisions.cpp).
    struct CollisionPass;  // what differs between the collision and the line-of-sight pass
    void createCollisionMeshes();
    void createLosCollisionMeshes();
    void runCollisionPass(const CollisionPass& pass, const std::vector<LayerInfo>& passLayers);
    void addCollisionPrimitive(const CollisionPass& pass, CollisionType primitive);
    void addCollisionLayers(const CollisionPass& pass, const std::vector<LayerInfo>& passLayers);
    Object newCollisionObject(const CollisionPass& pass, int32_t firstMesh);

    std::ostream& log;
    ExportMode mode;
    std::vector<LayerInfo> layers;  // by host layer index; only during the scan
    std::vector<LayerInfo> detailLayers;
    std::vector<LayerInfo> collisionLayers;
    std::vector<LayerInfo> losCollisionLayers;
    std::vector<LayerInfo> nodeLayers;
    std::vector<ClipInfo> clips;
    std::vector<BoneInfo> bones;
    std::vector<NamedNodeInfo> namedNodes;
    std::unordered_set<TsxNode*> walkedSkeletons;  // skeletons and IK groups that a walk has reached
    bool anyAutoLod = false;
    TextureOptions textureOptions;
    TsxNode* boundsObject = nullptr;
    int32_t firstNamedNode = 0;
    int savedPlayMode = 0;
    float savedActiveTime = 0;
};

}  // namespace marrowfen
