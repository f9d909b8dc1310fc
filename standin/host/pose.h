#pragma once

// Where a node stands: its own pose, and the pose that a clip's keys give it at a frame.

#include <vector>

#include "standin/host/scene.h"

namespace marrowfen::standin {

struct NodePose {
    Vec3 location{};
    Vec3 rotation{};        // radians
    Transform transform{};  // scene-from-node
};

// The transform with the rotation part Ry(-ay) · Rz(-az) · Rx(-ax) and the location as its fourth column. Computed in
// double precision; each number is rounded once.
Transform transformFrom(const Vec3& location, const Vec3& rotation);

NodePose ownPose(const Node& node);

// The pose at a frame: a key's at its frame and beyond the ends, and between two keys each number of theirs
// interpolated. The keys' frames rise; there is at least one.
NodePose poseAt(const Node& node, const std::vector<Key>& keys, float frame);

}  // namespace marrowfen::standin
