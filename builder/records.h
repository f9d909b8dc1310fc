#pragma once

// What the builder notes while it scans the host's scene.

#include <cstdint>
#include <string>
#include <vector>

#include "host/tsxapi.h"
#include "ground/math.h"

namespace marrowfen {

enum class ExportMode : int { ShapeOnly = 0, ShapeWithAnimation = 1, SequencesOnly = 2 };

enum class LayerKind : int {
    UnusedLayer = 0,
    LosCollisionLayer = 1,
    CollisionLayer = 2,
    DetailLayer = 3,
    BoundsLayer = 4,
    NodesLayer = 5,
};

enum class CollisionType : int {
    NoCollision = 0,  // of a pass without layers
    BoxCollision = 1,
    CylinderCollision = 2,
    MeshCollision = 3,  // the layers' own polyhedra
};

// Binds a vertex of a polyhedron to a bone.
struct VertexInfluence {
    int32_t node = -1;    // index of the bone, also its shape node
    uint32_t vertex = 0;  // the host's number of the vertex
    Point3 position;      // axes position of the bone or joint that recorded it
};

struct PolyInfo {
    TsxNode* node = nullptr;
    std::vector<VertexInfluence> influences;  // in recording order; the first one of a vertex binds it
    std::string name;
};

struct LayerInfo {
    LayerKind kind = LayerKind::UnusedLayer;
    std::string name;  // tags included
    std::vector<PolyInfo> polys;
    std::vector<TsxNode*> skeletons;  // skeletons and IK groups
    CollisionType collisionType = CollisionType::MeshCollision;
    int32_t size = -1;  // detail size in pixels
    uint32_t meshFlags = 0;
    bool autoLod = false;
    int32_t autoLodPercent = 0;
    bool sort = false;
    bool strip = true;
};

// Shape-wide texture flags from the bounds layer's tags.
struct TextureOptions {
    bool noMipmap = false;
    bool noMipmapTrans = false;
    bool noBlackBorder = false;
};

struct BoneInfo {
    enum Kind { IkGroup = 0, Bone = 2 };

    Kind kind = Bone;
    TsxNode* hostNode = nullptr;
    int32_t parent = -1;  // index of the nearest enclosing bone or IK group, -1 for none
    int32_t index = 0;    // own position in the list of bones, also its shape node
    std::string name;
};

struct NamedNodeInfo {
    TsxNode* hostNode = nullptr;
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

}  // namespace marrowfen
