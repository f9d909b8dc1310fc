#pragma once

// What the builder finds in the host's scene before it makes anything of it.

#include <cstdint>
#include <string>
#include <vector>

#include "host/materials.h"
#include "host/poly_to_mesh.h"
#include "host/scene_node.h"

namespace marrowfen {

enum class CollisionType : int {
    NoCollision = 0,  // of a pass without layers
    BoxCollision = 1,
    CylinderCollision = 2,
    MeshCollision = 3,  // the layers' own polyhedra
};

enum class LayerRole { Unused, Detail, Collision, LosCollision, Bounds, Nodes };

constexpr int32_t kNoSize = -1;  // of a layer without the tag

// A layer and what the tags in its name ask for.
struct LayerInfo {
    std::string name;  // tags included
    std::vector<PolyInfo> polys;
    std::vector<SceneNode> skeletons;  // skeletons and IK groups
    CollisionType collisionType = CollisionType::MeshCollision;
    int32_t size = kNoSize;  // detail size in pixels
    uint32_t meshFlags = 0;
    bool autoLod = false;
    int32_t autoLodPercent = 0;
    bool sort = false;
    bool strip = true;
};

// A bone or an IK group. Its position in the list of bones is its shape node too.
struct BoneInfo {
    SceneNode node;
    int32_t parent = -1;  // position of the nearest enclosing bone or IK group, -1 for none
    std::string name;
};

// A polyhedron of a nodes layer: it becomes a node without geometry.
struct MarkerInfo {
    SceneNode node;
    std::string name;
};

struct ClipInfo {
    std::string name;      // up to the first ':'
    std::string fullName;  // tags included
    float start = 0;       // first frame
    float end = 0;         // last frame
    float length = 0;      // keyframes of the sequence
    bool toggle = false;   // plays forward and then back
    bool enabled = false;  // in the host, when the scan ran
    uint32_t flags = 0;    // Shape::SequenceFlag bits
    int32_t fps = 0;
    int32_t priority = 1;
};

// How a layer was read.
struct LayerReading {
    int16_t slot = 0;
    LayerRole role = LayerRole::Unused;
    LayerInfo info;
};

struct SceneScan {
    std::string error;  // why nothing can be made of the scene, empty for none; the lists are unfinished then

    std::vector<LayerReading> layers;           // all that the host has, by slot
    std::vector<LayerInfo> detailLayers;        // largest size first, layers of one size by slot
    std::vector<LayerInfo> collisionLayers;     // by slot
    std::vector<LayerInfo> losCollisionLayers;  // by slot
    SceneNode boundsObject;                     // of eight vertices; none without one
    TextureOptions textureOptions;
    std::vector<ClipInfo> clips;  // in the host's order
    std::vector<BoneInfo> bones;  // parents before their children
    std::vector<MarkerInfo> markers;
};

}  // namespace marrowfen
