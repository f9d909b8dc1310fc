#include <algorithm>

#include "ground/at.h"
#include "host/tsxapi.h"
#include "standin/import/model.h"

// Skeletons as nodes of the scene. The first layer with bound vertices has all bones. Others, since the exporter binds
// a layer's vertices to bones of skeletons on that very layer only, have copies of the bones they need, under names of
// their own.

namespace marrowfen::standin {

namespace {

struct Skeleton {
    int16_t layer = kNoLayer;
    std::vector<int32_t> bones;  // parents before children
};

Node newBone(const Model& model, int32_t index, const Skeleton& skeleton, bool isCopy, const BoneVertices& held) {
    const ModelNode& source = at(model.nodes, index);
    const Matrix pose = poseInScene(model, source.bind);
    Node bone;
    bone.type = TsxBone;
    bone.name = source.name + (isCopy ? "_" + std::to_string(skeleton.layer) : "");
    bone.id = boneId(index, skeleton.layer);
    bone.layer = skeleton.layer;
    bone.location = locationOf(pose);
    bone.transform = toTransform(pose);
    const auto vertices = held.find({skeleton.layer, index});
    if (vertices == held.end()) return bone;
    // A joint's tendon binds its vertices to the bone that the joint is in.
    Node joint;
    joint.type = TsxJoint;
    joint.name = bone.name + " skin";
    joint.id = *bone.id + " skin";
    joint.layer = skeleton.layer;
    joint.location = bone.location;
    joint.tendon = vertices->second;
    bone.children.push_back(std::move(joint));
    return bone;
}

Node newSkeleton(const Model& model, const Skeleton& skeleton, bool isCopy, const BoneVertices& held) {
    Node result;
    result.type = TsxSkeleton;
    result.name = "Skeleton";
    result.id = "skeleton on layer " + std::to_string(skeleton.layer);
    result.layer = skeleton.layer;
    // Backwards, so that a bone is whole when it goes into its parent.
    std::map<int32_t, std::vector<Node>> childrenOf;
    for (auto index = skeleton.bones.rbegin(); index != skeleton.bones.rend(); ++index) {
        Node bone = newBone(model, *index, skeleton, isCopy, held);
        std::vector<Node>& children = childrenOf[*index];
        std::move(children.rbegin(), children.rend(), std::back_inserter(bone.children));
        childrenOf[parentBone(model, *index)].push_back(std::move(bone));
        childrenOf.erase(*index);
    }
    std::vector<Node>& top = childrenOf[kNoNode];
    std::move(top.rbegin(), top.rend(), std::back_inserter(result.children));
    return result;
}

std::vector<Skeleton> skeletonsOf(const Model& model, const BoneVertices& held) {
    std::map<int16_t, std::vector<bool>> needed;
    for (const auto& [place, vertices] : held) {
        std::vector<bool>& bones = needed[place.first];
        bones.resize(model.nodes.size());
        for (int32_t bone = place.second; bone != kNoNode; bone = parentBone(model, bone)) {
            at(bones, bone) = true;
        }
    }
    std::vector<Skeleton> skeletons;
    for (const auto& [layer, bones] : needed) {
        Skeleton skeleton;
        skeleton.layer = layer;
        for (size_t i = 0; i < model.nodes.size(); ++i) {
            const bool wanted = skeletons.empty() ? model.nodes[i].bone : bones[i];
            if (wanted) skeleton.bones.push_back(static_cast<int32_t>(i));
        }
        skeletons.push_back(std::move(skeleton));
    }
    // Bones that hold nothing are in the shape as well.
    const bool hasBones =
        std::any_of(model.nodes.begin(), model.nodes.end(), [](const ModelNode& n) { return n.bone; });
    if (!skeletons.empty() || !hasBones) return skeletons;
    Skeleton skeleton;
    skeleton.layer = model.firstLevel;
    for (size_t i = 0; i < model.nodes.size(); ++i) {
        if (model.nodes[i].bone) skeleton.bones.push_back(static_cast<int32_t>(i));
    }
    skeletons.push_back(std::move(skeleton));
    return skeletons;
}

}  // namespace

void addSkeletons(Model& model, const BoneVertices& held) {
    if (model.source.meshes.empty()) {
        // The exporter leaves out a layer without polyhedra, bones and all.
        Node empty;
        empty.type = TsxPolyhedron;
        empty.name = "no mesh";
        empty.id = "no mesh";
        empty.layer = model.firstLevel;
        empty.polyhedron.vertexTransform = Transform{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0};
        model.scene.nodes.push_back(std::move(empty));
        model.notes.others.push_back(
            aboutScene(load::kNoMeshes, "the file holds no meshes: it is good for sequences (.dsq) only"));
    }
    for (const Skeleton& skeleton : skeletonsOf(model, held)) {
        const bool isCopy = !model.boneIds.empty();
        model.scene.nodes.push_back(newSkeleton(model, skeleton, isCopy, held));
        for (const int32_t bone : skeleton.bones) model.boneIds[bone].push_back(boneId(bone, skeleton.layer));
    }
}

}  // namespace marrowfen::standin
