#pragma once

// A node of the host's scene: the walk over the scene, and what a node says of itself.

#include <compare>
#include <cstdint>
#include <string>

#include "ground/math.h"
#include "host/transforms.h"

struct TsxNode;

namespace marrowfen {

enum class NodeType { Other, Joint, Bone, Polyhedron, Group, IkGroup, Skeleton };

// Borrowed from the host, and cheap to copy. A node may be none: it tests as false and ends a walk.
class SceneNode {
public:
    SceneNode() = default;
    explicit SceneNode(TsxNode* handle) : handle_(handle) {}

    static SceneNode firstOfScene();
    SceneNode next() const;  // behind this one, among those of the same parent
    SceneNode firstChild() const;

    NodeType type() const;
    std::string name() const;       // at most 127 bytes of it
    int16_t layer() const;          // 0 or less: on no layer
    int32_t vertexCount() const;    // of a polyhedron, as the artist made it
    Point3 location() const;        // in scene space, like the next two
    Point3 rotationAngles() const;  // radians about x, y, z
    HostTransform sceneFromNode() const;

    TsxNode* handle() const { return handle_; }  // for host/ itself
    explicit operator bool() const { return handle_ != nullptr; }
    auto operator<=>(const SceneNode&) const = default;  // an order for sets, the same within one run only

private:
    TsxNode* handle_ = nullptr;
};

}  // namespace marrowfen
