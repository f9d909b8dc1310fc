#include "builder/passes.h"
#include "ground/at.h"
#include "host/transforms.h"

namespace marrowfen {

namespace {

void addNode(const std::string& name, int32_t parent, const Shape::Pose& pose, Shape& shape) {
    Shape::Node node;
    node.name = shape.findOrAddName(name);
    node.parent = parent;
    shape.nodes.push_back(node);
    shape.nodeDefRotations.push_back(pose.rotation);
    shape.nodeDefTranslations.push_back(pose.translation);
}

// An engine finds a node by its name, so that only one of those that share it can be found.
void tellSharedNames(const Shape& shape, Notices& notices) {
    std::vector<int32_t> nodesOfName(shape.names.size());
    for (const Shape::Node& node : shape.nodes) {
        if (++at(nodesOfName, node.name) != 2) continue;
        const std::string& name = at(shape.names, node.name);
        notices.tell({&kSharedName, Message::Place::Node, name, name});
    }
}

}  // namespace

void createNodes(const std::vector<BoneInfo>& bones, const std::vector<MarkerInfo>& markers, Shape& shape,
                 Notices& notices) {
    std::ostream& log = notices.log();
    log << "Beginning nodes & bone creation..." << std::endl;
    const std::vector<Shape::Pose> poses = bonePoses(bones);
    for (size_t k = 0; k < bones.size(); ++k) {
        log << "\tAdding " << bones[k].name << " as a bone node." << std::endl;
        addNode(bones[k].name, bones[k].parent, poses[k], shape);
    }
    for (const MarkerInfo& marker : markers) {
        log << "\tAdding " << marker.name << " as a named node." << std::endl;
        addNode(marker.name, -1, markerPose(marker), shape);
    }
    addNode("Root", -1, {}, shape);
    tellSharedNames(shape, notices);
    log << "End nodes & bone" << std::endl << std::endl;
}

std::vector<Shape::Pose> bonePoses(const std::vector<BoneInfo>& bones) {
    // A bone's transform is asked for once, however many children stand on it.
    std::vector<HostTransform> sceneFromBone;
    std::vector<Shape::Pose> poses;
    sceneFromBone.reserve(bones.size());
    poses.reserve(bones.size());
    for (const BoneInfo& bone : bones) {
        HostTransform transform = bone.node.sceneFromNode();
        sceneFromBone.push_back(transform);
        if (bone.parent >= 0) transform = relativeTransform(transform, at(sceneFromBone, bone.parent));
        poses.push_back({rotationFromTransform(transform), translationFromTransform(transform)});
    }
    return poses;
}

Shape::Pose markerPose(const MarkerInfo& marker) {
    const Point3 location = marker.node.location();
    return {rotationFromEuler(marker.node.rotationAngles()), location};
}

}  // namespace marrowfen
