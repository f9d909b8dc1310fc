#include <map>
#include <set>
#include <utility>

#include "builder/scan.h"
#include "ground/at.h"
#include "host/bones.h"

// A depth-first walk from each skeleton and IK group that is on a layer: a node before its children, so that a bone's
// parent comes before the bone. What muscles and tendons hold is bound in the order of the walk. A start that lies
// inside another one is walked again for its own layer's polyhedra only: its nodes are recorded and logged once.

namespace marrowfen {

namespace {

class BoneWalk {
public:
    explicit BoneWalk(std::ostream& log) : log_(log) {}

    void walkFrom(LayerInfo& layer) {
        reached_.clear();
        for (const SceneNode& start : layer.skeletons) {
            if (reached_.contains(start)) continue;
            const auto reached = parents_.find(start);
            walk(layer, start, reached == parents_.end() ? -1 : reached->second);
        }
    }

    std::vector<BoneInfo> takeBones() { return std::move(bones_); }

private:
    // parent: the nearest enclosing bone or IK group, -1 for none.
    void walk(LayerInfo& layer, const SceneNode& node, int32_t parent) {
        const NodeType type = node.type();
        const bool isNew = parents_.try_emplace(node, parent).second;
        reached_.insert(node);
        int32_t childParent = parent;
        if (type == NodeType::Joint) {
            if (isNew) log_ << " Found joint node " << node.name() << " with parent " << parent << std::endl;
            // A joint outside every bone has nothing to bind its vertices to.
            if (parent >= 0) bindAll(layer, parent, tendonsOf(node));
        } else if (type == NodeType::Bone) {
            childParent = isNew ? addBone(node, parent, "bone") : boneIndex_.at(node);
            bindAll(layer, childParent, musclesOf(node));
        } else if (type == NodeType::IkGroup) {
            childParent = isNew ? addBone(node, parent, "ikgroup") : boneIndex_.at(node);
        }
        for (SceneNode child = node.firstChild(); child; child = child.next()) walk(layer, child, childParent);
    }

    int32_t addBone(const SceneNode& node, int32_t parent, const char* word) {
        const int32_t index = count32(bones_);
        const std::string name = node.name();
        log_ << " Found " << word << " node " << name << "(" << index << ") with parent " << parent << std::endl;
        bones_.push_back({node, parent, name});
        boneIndex_.emplace(node, index);
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
    std::map<SceneNode, int32_t> parents_;    // of every node that was reached, as the first walk had it
    std::map<SceneNode, int32_t> boneIndex_;  // of bones and IK groups
    std::set<SceneNode> reached_;             // by walks for the current layer
};

// Vertices of the layer that muscles and tendons of more than one bone hold.
size_t verticesOnSeveralBones(const LayerInfo& layer) {
    size_t count = 0;
    for (const PolyInfo& poly : layer.polys) {
        std::map<int32_t, int32_t> boneOfVertex;
        std::set<int32_t> several;
        for (const auto& [bone, vertex] : poly.influences) {
            if (boneOfVertex.try_emplace(vertex, bone).first->second != bone) several.insert(vertex);
        }
        count += several.size();
    }
    return count;
}

}  // namespace

std::vector<BoneInfo> scanBones(const std::vector<std::vector<LayerInfo>*>& layerLists, Notices& notices) {
    BoneWalk walk(notices.log());
    for (std::vector<LayerInfo>* layers : layerLists) {
        for (LayerInfo& layer : *layers) {
            walk.walkFrom(layer);
            const size_t several = verticesOnSeveralBones(layer);
            if (several == 0) continue;
            notices.tell({&kSeveralBones, Message::Place::Layer, layer.name,
                          std::to_string(several) + " of layer " + layer.name});
        }
    }
    return walk.takeBones();
}

}  // namespace marrowfen
