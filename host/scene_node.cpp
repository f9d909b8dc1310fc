#include "host/scene_node.h"

#include <algorithm>

#include "host/tsxapi.h"

namespace marrowfen {

namespace {
constexpr int kNameSize = 128;  // the terminating zero included
}

SceneNode SceneNode::firstOfScene() { return SceneNode(tsxSceneGetFirstNode()); }

SceneNode SceneNode::next() const { return SceneNode(tsxGNodeGetNext(handle_)); }

SceneNode SceneNode::firstChild() const { return SceneNode(tsxGNodeGetFirstChild(handle_)); }

NodeType SceneNode::type() const {
    switch (tsxSobjGetType(handle_)) {
        case TsxJoint:
            return NodeType::Joint;
        case TsxBone:
            return NodeType::Bone;
        case TsxPolyhedron:
            return NodeType::Polyhedron;
        case TsxGroup:
            return NodeType::Group;
        case TsxIkGroup:
            return NodeType::IkGroup;
        case TsxSkeleton:
            return NodeType::Skeleton;
        default:
            return NodeType::Other;
    }
}

std::string SceneNode::name() const {
    char buffer[kNameSize] = {};
    tsxGNodeGetName(handle_, buffer, kNameSize);
    return buffer;
}

int16_t SceneNode::layer() const { return tsxGetObjectLayerIndex(handle_); }

int32_t SceneNode::vertexCount() const { return std::max(tsxPolyhGetNbrVxs(handle_), 0); }

Point3 SceneNode::location() const {
    float xyz[3] = {};
    tsxGNodeGetLocation(handle_, xyz);
    return {xyz[0], xyz[1], xyz[2]};
}

Point3 SceneNode::rotationAngles() const {
    float angles[3] = {};
    tsxGNodeGetRotation(handle_, angles);
    return {angles[0], angles[1], angles[2]};
}

HostTransform SceneNode::sceneFromNode() const {
    HostTransform transform;
    tsxGNodeGetPureTransform(handle_, transform.data());
    return transform;
}

}  // namespace marrowfen
