#include <set>
#include <utility>

#include "builder/scan.h"
#include "ground/at.h"
#include "host/bones.h"

// A depth-first walk from each skeleton and IK group that is on a layer: a node before its children, so that a bone's
// parent comes before the bone. What muscles and tendons hold is bound in the order of the walk.

namespace marrowfen {

namespace {

class BoneWalk {
public:
    explicit BoneWalk(std::ostream& log) : log_(log) {}

    void walkFrom(LayerInfo& layer) {
        for (const SceneNode& start : layer.skeletons) {
            // One that lies inside another has given its bones to that one's walk.
            if (!walked_.contains(start)) walk(layer, start, -1);
        }
    }

    std::vector<BoneInfo> takeBones() { return std::move(bones_); }

private:
    // parent: the nearest enclosing bone or IK group, -1 for none.
    void walk(LayerInfo& layer, const SceneNode& node, int32_t parent) {
        const NodeType type = node.type();
        if (type == NodeType::Skeleton || type == NodeType::IkGroup) walked_.insert(node);
        int32_t childParent = parent;
        if (type == NodeType::Joint) {
            const std::string name = node.name();
            log_ << " Found joint node " << name << " with parent " << parent << std::endl;
            // A joint outside every bone has nothing to bind its vertices to.
            if (parent >= 0) bindAll(layer, parent, tendonsOf(node));
        } else if (type == NodeType::Bone) {
            childParent = addBone(node, parent, "bone");
            bindAll(layer, childParent, musclesOf(node));
        } else if (type == NodeType::IkGroup) {
            childParent = addBone(node, parent, "ikgroup");
        }
        for (SceneNode child = node.firstChild(); child; child = child.next()) walk(layer, child, childParent);
    }

    int32_t addBone(const SceneNode& node, int32_t parent, const char* word) {
        const int32_t index = count32(bones_);
        const std::string name = node.name();
        log_ << " Found " << word << " node " << name << "(" << index << ") with parent " << parent << std::endl;
        bones_.push_back({node, parent, name});
        return index;
    }

    static void bindAll(LayerInfo& layer, int32_t bone, const std::vector<VertexHold>& holds) {
        for (const VertexHold& heldVertices : holds) {
            for (PolyInfo& poly : layer.polys) {
                for (const int32_t vertex : heldVertices(poly.node)) poly.influences.push_back({bone, vertex});
            }
        }
    }

    std::ostream& log_;
    std::vector<BoneInfo> bones_;
    std::set<SceneNode> walked_;  // skeletons and IK groups
};

}  // namespace

std::vector<BoneInfo> scanBones(const std::vector<std::vector<LayerInfo>*>& layerLists, Notices& notices) {
    BoneWalk walk(notices.log());
    for (std::vector<LayerInfo>* layers : layerLists) {
        for (LayerInfo& layer : *layers) walk.walkFrom(layer);
    }
    return walk.takeBones();
}

}  // namespace marrowfen
