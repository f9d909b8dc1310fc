#include "standin/host/pose.h"

#include <algorithm>
#include <cmath>

namespace marrowfen::standin {
namespace {

NodePose keyPose(const Node& node, const Key& key) {
    NodePose pose;
    pose.location = key.location.value_or(node.location);
    pose.rotation = key.rotation.value_or(node.rotation);
    pose.transform = key.transform ? *key.transform : transformFrom(pose.location, pose.rotation);
    return pose;
}

template <size_t N>
void interpolate(std::array<float, N>& a, const std::array<float, N>& b, float t) {
    for (size_t i = 0; i < N; ++i) a[i] = a[i] + (b[i] - a[i]) * t;
}

}  // namespace

Transform transformFrom(const Vec3& location, const Vec3& rotation) {
    const double sx = std::sin(-double{rotation[0]}), cx = std::cos(-double{rotation[0]});
    const double sy = std::sin(-double{rotation[1]}), cy = std::cos(-double{rotation[1]});
    const double sz = std::sin(-double{rotation[2]}), cz = std::cos(-double{rotation[2]});

    // Ry · Rz, then times Rx, written out.
    const double rows[3][3] = {{cy * cz, -cy * sz * cx + sy * sx, cy * sz * sx + sy * cx},
                               {sz, cz * cx, -cz * sx},
                               {-sy * cz, sy * sz * cx + cy * sx, -sy * sz * sx + cy * cx}};
    Transform transform;
    for (size_t row = 0; row < 3; ++row) {
        for (size_t column = 0; column < 3; ++column) {
            transform[row * 4 + column] = static_cast<float>(rows[row][column]);
        }
        transform[row * 4 + 3] = location[row];
    }
    return transform;
}

NodePose ownPose(const Node& node) {
    return {node.location, node.rotation,
            node.transform ? *node.transform : transformFrom(node.location, node.rotation)};
}

NodePose poseAt(const Node& node, const std::vector<Key>& keys, float frame) {
    const auto isBefore = [](float time, const Key& key) { return time < key.frame; };
    const auto after = std::upper_bound(keys.begin(), keys.end(), frame, isBefore);
    if (after == keys.begin()) return keyPose(node, keys.front());
    const Key& before = *(after - 1);
    NodePose pose = keyPose(node, before);
    if (after == keys.end() || before.frame == frame) return pose;

    const NodePose next = keyPose(node, *after);
    const float t = (frame - before.frame) / (after->frame - before.frame);
    interpolate(pose.location, next.location, t);
    interpolate(pose.rotation, next.rotation, t);
    interpolate(pose.transform, next.transform, t);
    return pose;
}

}  // namespace marrowfen::standin
