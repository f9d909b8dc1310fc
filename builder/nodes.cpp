#include "builder/node_name.h"
#include "builder/shape_builder.h"
#include "builder/transforms.h"

// The node hierarchy: the bones and IK groups of the skeletons, the markers of the nodes layers, "Root".

namespace marrowfen {

namespace {

// Binds the vertices that a muscle or tendon holds on each polyhedron of the layer to a bone. getVertices answers
// (polyhedron, array or null) with their number, as the host does.
template <class GetVertices>
void addInfluences(LayerInfo& layer, int32_t bone, const Point3& position, GetVertices getVertices) {
    for (PolyInfo& poly : layer.polys) {
        const int count = getVertices(poly.node, nullptr);
        if (count <= 0) continue;
        std::vector<int> vertices(static_cast<size_t>(count));
        getVertices(poly.node, vertices.data());
        for (const int vertex : vertices) {
            poly.influences.push_back({bone, static_cast<uint32_t>(vertex), position});
        }
    }
}

Point3 axesPosition(TsxNode* node) {
    float xyz[3] = {};
    tsxGNodeGetAxesPosition(node, xyz);
    return {xyz[0], xyz[1], xyz[2]};
}

void addTendonInfluences(LayerInfo& layer, TsxNode* joint, int32_t bone) {
    TsxTendon* tendon = tsxJointGetTendon(joint);
    if (tendon == nullptr) return;
    addInfluences(layer, bone, axesPosition(joint),
                  [&](TsxNode* poly, int* vertices) { return tsxTendonGetVertices(tendon, poly, vertices); });
}

void addMuscleInfluences(LayerInfo& layer, TsxNode* boneNode, int32_t bone) {
    const Point3 position = axesPosition(boneNode);
    for (TsxNode* joint = tsxBoneGetFirstJoint(boneNode); joint != nullptr;
         joint = tsxBoneGetNextJoint(boneNode, joint)) {
        TsxMuscle* muscle = tsxBoneGetMuscle(boneNode, joint);
        if (muscle == nullptr) continue;
        addInfluences(layer, bone, position,
                      [&](TsxNode* poly, int* vertices) { return tsxMuscleGetVertices(muscle, poly, vertices); });
    }
}

}  // namespace

void ShapeBuilder::scanSkeleton(LayerInfo& layer, TsxNode* node, int32_t parent) {
    const std::string name = nodeName(node);
    const int type = tsxSobjGetType(node);
    const auto index = static_cast<int32_t>(bones.size());
    if (type == TsxSkeleton || type == TsxIkGroup) walkedSkeletons.insert(node);

    int32_t childParent = parent;
    if (type == TsxJoint) {
        log << " Found joint node " << name << " with parent " << parent << std::endl;
        // A joint outside every bone has nothing to bind its vertices to.
        if (parent >= 0) addTendonInfluences(layer, node, parent);
    } else if (type == TsxBone) {
        log << " Found bone node " << name << "(" << index << ") with parent " << parent << std::endl;
        bones.push_back({BoneInfo::Bone, node, parent, index, name});
        addMuscleInfluences(layer, node, index);
        childParent = index;
    } else if (type == TsxIkGroup) {
        log << " Found ikgroup node " << name << "(" << index << ") with parent " << parent << std::endl;
        bones.push_back({BoneInfo::IkGroup, node, parent, index, name});
        childParent = index;
    }
    for (TsxNode* child = tsxGNodeGetFirstChild(node); child != nullptr; child = tsxGNodeGetNext(child)) {
        scanSkeleton(layer, child, childParent);
    }
}

void ShapeBuilder::createNodes() {
    log << "Beginning nodes & bone creation..." << std::endl;
    const std::vector<Pose> poses = bonePoses();
    for (size_t k = 0; k < bones.size(); ++k) {
        log << "\tAdding " << bones[k].name << " as a bone node." << std::endl;
        addNode(bones[k].name, bones[k].parent, poses[k]);
    }
    firstNamedNode = static_cast<int32_t>(nodes.size());
    for (const NamedNodeInfo& named : namedNodes) {
        log << "\tAdding " << named.name << " as a named node." << std::endl;
        addNode(named.name, -1, namedNodePose(named));
    }
    const float noAngles[3] = {0, 0, 0};
    addNode("Root", -1, {rotationFromEuler(noAngles), {}});
    log << "End nodes & bone" << std::endl << std::endl;
}

void ShapeBuilder::addNode(const std::string& name, int32_t parent, const Pose& pose) {
    Node node;
    node.name = findOrAddName(name);
    node.parent = parent;
    nodes.push_back(node);
    nodeDefRotations.push_back(pose.rotation);
    nodeDefTranslations.push_back(pose.translation);
}

std::vector<Shape::Pose> ShapeBuilder::bonePoses() const {
    // A bone's transform is asked for once, however many children stand on it.
    std::vector<HostTransform> sceneFromBone;
    std::vector<Pose> poses;
    sceneFromBone.reserve(bones.size());
    poses.reserve(bones.size());
    for (const BoneInfo& bone : bones) {
        HostTransform transform = sceneFromNode(bone.hostNode);
        sceneFromBone.push_back(transform);
        if (bone.parent >= 0) {
            transform = relativeTransform(transform, sceneFromBone[static_cast<size_t>(bone.parent)]);
        }
        poses.push_back({rotationFromTransform(transform), translationFromTransform(transform)});
    }
    return poses;
}

Shape::Pose ShapeBuilder::namedNodePose(const NamedNodeInfo& named) const {
    float location[3] = {}, angles[3] = {};
    tsxGNodeGetLocation(named.hostNode, location);
    tsxGNodeGetRotation(named.hostNode, angles);
    return {rotationFromEuler(angles), {location[0], location[1], location[2]}};
}

}  // namespace marrowfen
