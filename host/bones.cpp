#include "host/bones.h"

#include "host/tsxapi.h"

namespace marrowfen {

namespace {

// getVertices answers (holder, polyhedron, array or null) with the number of vertices and fills the array.
template <class Holder>
VertexHold holdOf(Holder* holder, int (*getVertices)(Holder*, TsxNode*, int*)) {
    return [=](const SceneNode& polyhedron) {
        const int count = getVertices(holder, polyhedron.handle(), nullptr);
        std::vector<int32_t> vertices(count > 0 ? static_cast<size_t>(count) : 0);
        if (count > 0) getVertices(holder, polyhedron.handle(), vertices.data());
        return vertices;
    };
}

}  // namespace

std::vector<VertexHold> musclesOf(const SceneNode& bone) {
    std::vector<VertexHold> muscles;
    for (TsxNode* joint = tsxBoneGetFirstJoint(bone.handle()); joint != nullptr;
         joint = tsxBoneGetNextJoint(bone.handle(), joint)) {
        TsxMuscle* muscle = tsxBoneGetMuscle(bone.handle(), joint);
        if (muscle != nullptr) muscles.push_back(holdOf(muscle, tsxMuscleGetVertices));
    }
    return muscles;
}

std::vector<VertexHold> tendonsOf(const SceneNode& joint) {
    TsxTendon* tendon = tsxJointGetTendon(joint.handle());
    if (tendon == nullptr) return {};
    return {holdOf(tendon, tsxTendonGetVertices)};
}

}  // namespace marrowfen
