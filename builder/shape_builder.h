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

    // The scan (builder/scan.cpp).
    void scanScene();
    void scanLayers();
    void scanObjects();
    void categorizeLayers();
    void categorizeLayer(LayerInfo& layer);
    void scanBoundsLayer(const LayerInfo& layer);
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

    // Nodes and bones (builder/nodes.cpp).
    void scanSkeleton(LayerInfo& layer, TsxNode* node, int32_t parent);
    void createNodes();

    // Objects and detail levels (builder/objects.cpp).
    void checkDetailLayers();
    void createObjects();
    void createSubShape();
    void boundsFromObject();

    // Collision meshes (builder/collisions.cpp).
    void createCollisionMeshes();
    void createLosCollisionMeshes();

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
    bool anyAutoLod = false;
    TextureOptions textureOptions;
    TsxNode* boundsObject = nullptr;
    int32_t firstNamedNode = 0;
    int savedPlayMode = 0;
    float savedActiveTime = 0;
};

}  // namespace marrowfen
