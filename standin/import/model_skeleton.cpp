#include <algorithm>
#include <cmath>
#include <functional>
#include <set>

#include "ground/ascii.h"
#include "ground/at.h"
#include "ground/comma_list.h"
#include "ground/counted.h"
#include "standin/import/model.h"

// Which nodes become bones, and in which pose they are bound.
//
// Bones are the nodes that a skin names, what connects them, what hangs below them without a mesh (hand tips, eyes),
// and nodes whose animation moves a mesh as a whole: that mesh's vertices then hang on the node.
//
// The scene shows the bind pose: skinned vertices stand where they were bound, and the bones with them, so that the
// exporter's default pose is undeformed. A skin only says where its bones were relative to the mesh (the offset
// matrix); where the mesh stood, is chosen by the rest pose if that fits, since then the model looks in the scene as it
// does elsewhere, and by the mesh's node otherwise.

namespace marrowfen::standin {

namespace {

// Two placements of a mesh are the same when they differ by less than this part of its size.
constexpr double kSamePlace = 1e-3;

struct Joint {
    int32_t node = kNoNode;
    Matrix offset;  // bone-from-mesh when it was bound
    Matrix meshFromBone;
};

// Corners of a mesh's box, to measure by how much two placements of the mesh differ.
using BoxCorners = std::array<Vector, 8>;

ModelNode& nodeAt(Model& model, int32_t index) { return at(model.nodes, index); }

const SourceMesh& meshAt(const Model& model, int32_t index) { return at(model.source.meshes, index); }

// Calls act(node, mesh number) for every mesh that hangs in the hierarchy.
void eachMesh(const Model& model, const std::function<void(int32_t, int32_t)>& act) {
    for (size_t n = 0; n < model.nodes.size(); ++n) {
        for (const int32_t mesh : model.nodes[n].source->meshes) act(static_cast<int32_t>(n), mesh);
    }
}

int32_t levelOf(const Model& model, int32_t node) {
    int32_t level = 0;
    for (; node != kNoNode; node = at(model.nodes, node).parent) ++level;
    return level;
}

int32_t commonAncestor(const Model& model, int32_t a, int32_t b) {
    int32_t levelA = levelOf(model, a), levelB = levelOf(model, b);
    while (a != b) {
        int32_t& lower = levelA >= levelB ? a : b;
        int32_t& level = levelA >= levelB ? levelA : levelB;
        lower = at(model.nodes, lower).parent;
        --level;
    }
    return a;
}

// The bones that a mesh names, and what connects them up to their common ancestor. The root of the whole file connects
// everything and means nothing.
void markSkin(Model& model, const SourceMesh& mesh) {
    std::vector<int32_t> named;
    for (const SourceBone& bone : mesh.bones) named.push_back(bone.node);
    if (named.empty()) return;
    int32_t top = named[0];
    for (const int32_t node : named) top = commonAncestor(model, top, node);
    for (const int32_t node : named) nodeAt(model, node).skinned = true;
    if (top == 0) return;
    for (int32_t node : named) {
        for (; node != top; node = nodeAt(model, node).parent) nodeAt(model, node).skinned = true;
    }
    nodeAt(model, top).skinned = true;
}

// Fills what lies between two marked nodes, and what hangs below one without meshes or a role of its own.
void markBetweenAndBelow(Model& model) {
    std::vector<bool> holdsMeshes(model.nodes.size()), holdsBones(model.nodes.size()), belowBone(model.nodes.size());
    for (size_t i = model.nodes.size(); i-- > 0;) {
        const ModelNode& node = model.nodes[i];
        if (!node.source->meshes.empty()) holdsMeshes[i] = true;
        if (node.skinned) holdsBones[i] = true;
        if (node.parent == kNoNode) continue;
        const auto parent = static_cast<size_t>(node.parent);
        if (holdsMeshes[i]) holdsMeshes[parent] = true;
        if (holdsBones[i]) holdsBones[parent] = true;
    }
    for (size_t i = 0; i < model.nodes.size(); ++i) {
        ModelNode& node = model.nodes[i];
        if (node.parent == kNoNode) continue;
        const auto parent = static_cast<size_t>(node.parent);
        belowBone[i] = (belowBone[parent] || model.nodes[parent].skinned) && !namesRole(node);
        if (belowBone[i] && (holdsBones[i] || !holdsMeshes[i])) node.skinned = true;
    }
}

BoxCorners cornersOf(const SourceMesh& mesh) {
    Vector low(mesh.positions[0]), high = low;
    for (const aiVector3D& position : mesh.positions) {
        const Vector at(position);
        low = {std::min(low.x, at.x), std::min(low.y, at.y), std::min(low.z, at.z)};
        high = {std::max(high.x, at.x), std::max(high.y, at.y), std::max(high.z, at.z)};
    }
    BoxCorners corners;
    for (unsigned c = 0; c < 8; ++c) {
        corners[c] = {(c & 1) != 0 ? high.x : low.x, (c & 2) != 0 ? high.y : low.y, (c & 4) != 0 ? high.z : low.z};
    }
    return corners;
}

bool isSamePlace(const BoxCorners& corners, const Matrix& a, const Matrix& b) {
    const double size =
        std::max((a * corners[7] - a * corners[0]).Length(), (b * corners[7] - b * corners[0]).Length());
    return std::all_of(corners.begin(), corners.end(),
                       [&](const Vector& corner) { return (a * corner - b * corner).Length() <= kSamePlace * size; });
}

bool isSameSize(const BoxCorners& corners, const Matrix& a, const Matrix& b) {
    const double sizeA = (a * corners[7] - a * corners[0]).Length();
    const double sizeB = (b * corners[7] - b * corners[0]).Length();
    return std::fabs(sizeA - sizeB) <= 0.01 * std::max(sizeA, sizeB);
}

std::vector<Joint> jointsOf(const SourceMesh& mesh) {
    std::vector<Joint> joints;
    for (const SourceBone& bone : mesh.bones) {
        const std::optional<Matrix> inverse = inverseOf(bone.boneFromMesh);
        if (inverse) joints.push_back({bone.node, bone.boneFromMesh, *inverse});
    }
    return joints;
}

// Scene-from-mesh of a skinned mesh in its bind pose.
Matrix bindPlace(const Model& model, int32_t node, const std::vector<Joint>& joints, const BoxCorners& corners) {
    // A bone that another mesh has bound already says where this one stood.
    for (const Joint& joint : joints) {
        const ModelNode& bone = at(model.nodes, joint.node);
        if (bone.bound) return bone.bind * joint.offset;
    }
    const Matrix& meshPlace = at(model.nodes, node).world;
    const auto restPlace = [&](const Joint& joint) { return at(model.nodes, joint.node).world * joint.offset; };
    const auto restFits = [&](const Matrix& place) {
        return std::all_of(joints.begin(), joints.end(),
                           [&](const Joint& joint) { return isSamePlace(corners, restPlace(joint), place); });
    };
    const Matrix first = restPlace(joints[0]);
    if (restFits(meshPlace)) return meshPlace;
    // What a single bone says always fits itself.
    if ((joints.size() > 1 || model.source.skinsStandAlone) && restFits(first)) return first;
    // The model rests in another pose than the one it was bound in.
    return isSameSize(corners, meshPlace, first) ? meshPlace : first;
}

void bindMesh(Model& model, int32_t node, int32_t meshIndex) {
    const SourceMesh& mesh = meshAt(model, meshIndex);
    const std::vector<Joint> joints = jointsOf(mesh);
    if (joints.empty() || mesh.positions.empty()) return;
    const BoxCorners corners = cornersOf(mesh);
    const Matrix place = bindPlace(model, node, joints, corners);
    if (!isFinite(place)) return;
    model.skinPlaces.emplace(std::make_pair(node, meshIndex), place);
    for (const Joint& joint : joints) {
        ModelNode& bone = nodeAt(model, joint.node);
        if (!bone.bound) {
            bone.bind = place * joint.meshFromBone;
            bone.bound = true;
        } else if (!isSamePlace(corners, bone.bind * joint.offset, place)) {
            ++model.notes.bindConflicts;
        }
    }
}

// Moves a node's rest pose along with a bone that was bound elsewhere than it rests.
std::optional<Matrix> bindBeside(const ModelNode& bone, const ModelNode& node) {
    const std::optional<Matrix> boneFromScene = inverseOf(bone.world);
    if (!boneFromScene) return std::nullopt;
    return bone.bind * (*boneFromScene * node.world);
}

// Bones that no skin has bound take their pose from one that is, below or above; the rest stay as they stand.
void bindOtherBones(Model& model) {
    std::vector<bool> known(model.nodes.size());
    for (size_t i = model.nodes.size(); i-- > 0;) {
        const ModelNode& node = model.nodes[i];
        known[i] = known[i] || node.bound;
        const int32_t above = node.bone && known[i] ? parentBone(model, static_cast<int32_t>(i)) : kNoNode;
        if (above == kNoNode || nodeAt(model, above).bound) continue;
        if (const auto bind = bindBeside(node, nodeAt(model, above))) {
            nodeAt(model, above).bind = *bind;
            at(known, above) = true;
        }
    }
    for (size_t i = 0; i < model.nodes.size(); ++i) {
        ModelNode& node = model.nodes[i];
        if (!node.bone || known[i]) continue;
        const int32_t above = parentBone(model, static_cast<int32_t>(i));
        if (above == kNoNode || !at(known, above)) continue;
        if (const auto bind = bindBeside(nodeAt(model, above), node)) node.bind = *bind;
        known[i] = true;
    }
}

// Nodes that hold meshes of roles whose geometry follows no bones, and nothing else.
std::vector<bool> nodesOfStillThings(const Model& model) {
    std::vector<bool> hasStill(model.nodes.size()), hasOther(model.nodes.size());
    for (size_t i = model.nodes.size(); i-- > 0;) {
        const ModelNode& node = model.nodes[i];
        const bool holds = !node.source->meshes.empty();
        if (holds) (isDetailLayer(model, node.layer) ? hasOther : hasStill)[i] = true;
        if (node.bone) hasOther[i] = true;
        if (node.parent == kNoNode) continue;
        const auto parent = static_cast<size_t>(node.parent);
        if (hasStill[i]) hasStill[parent] = true;
        if (hasOther[i]) hasOther[parent] = true;
    }
    for (size_t i = 0; i < hasStill.size(); ++i) hasStill[i] = hasStill[i] && !hasOther[i];
    return hasStill;
}

// By more than rounding.
bool differs(const Matrix& a, const Matrix& b) {
    constexpr double kNoticeable = 1e-3;
    for (unsigned row = 0; row < 3; ++row) {
        for (unsigned column = 0; column < 4; ++column) {
            const double size = std::max({1.0, std::fabs(a[row][column]), std::fabs(b[row][column])});
            if (std::fabs(a[row][column] - b[row][column]) > kNoticeable * size) return true;
        }
    }
    return false;
}

// The node that a helper of the FBX reader belongs to: the first real one below.
int32_t realNode(const Model& model, int32_t node) {
    const auto count = static_cast<int32_t>(model.nodes.size());
    while (node < count && at(model.nodes, node).source->helper) ++node;
    return node < count ? node : kNoNode;
}

}  // namespace

int32_t boneAbove(const Model& model, int32_t node) {
    while (node != kNoNode && !at(model.nodes, node).bone) {
        node = at(model.nodes, node).parent;
    }
    return node;
}

int32_t parentBone(const Model& model, int32_t node) { return boneAbove(model, at(model.nodes, node).parent); }

Matrix sceneFromMesh(const Model& model, int32_t node, int32_t mesh) {
    const auto skin = model.skinPlaces.find({node, mesh});
    if (skin != model.skinPlaces.end()) return skin->second;
    const ModelNode& source = at(model.nodes, node);
    const int32_t above = boneAbove(model, node);
    if (above == kNoNode) return source.world;
    const ModelNode& bone = at(model.nodes, above);
    if (bone.bind == bone.world) return source.world;
    return bindBeside(bone, source).value_or(source.world);
}

void findSkinBones(Model& model) {
    if (model.source.losesSkeleton) return;
    // Of a file with animations alone, what they say something about is the skeleton.
    for (const SourceClip& clip : model.source.clips) {
        for (const SourceChannel& channel : clip.channels) {
            const int32_t node = model.source.meshes.empty() ? realNode(model, channel.node) : kNoNode;
            if (node != kNoNode) nodeAt(model, node).skinned = true;
        }
    }
    eachMesh(model, [&](int32_t, int32_t mesh) { markSkin(model, meshAt(model, mesh)); });
    markBetweenAndBelow(model);
    for (ModelNode& node : model.nodes) {
        node.skinned = node.skinned && !node.source->helper;
        node.bone = node.skinned;
    }
    eachMesh(model, [&](int32_t node, int32_t mesh) { bindMesh(model, node, mesh); });
}

void nameBonesAsShape(Model& model) {
    const std::vector<std::string>& wanted = model.options.shapeNodes;
    if (wanted.empty()) return;
    const auto withoutNamespace = [](const std::string& name) { return name.substr(name.rfind(':') + 1); };
    std::set<std::string> met;
    std::vector<std::string> strangers;
    for (ModelNode& node : model.nodes) {
        if (!node.bone && !node.marker) continue;
        const auto same = std::find_if(wanted.begin(), wanted.end(), [&](const std::string& name) {
            return equalIgnoringCase(name, node.name) ||
                   equalIgnoringCase(withoutNamespace(name), withoutNamespace(node.name));
        });
        if (same == wanted.end()) {
            strangers.push_back(node.name);
        } else {
            node.name = *same;
            met.insert(*same);
        }
    }
    std::vector<std::string> still;
    for (const std::string& name : wanted) {
        if (met.count(name) == 0 && name != "Root") still.push_back(name);
    }
    const auto tell = [&](const std::vector<std::string>& names, const char* one, const char* many) {
        if (names.empty()) return;
        model.notes.others.push_back(
            aboutScene(load::kOtherNodes, counted(names.size(), one, many) + ": " + commaList(names)));
    };
    tell(strangers, "node of the model isn't in the shape", "nodes of the model aren't in the shape");
    tell(still, "node of the shape isn't in the model", "nodes of the shape aren't in the model");
}

void findMovingBones(Model& model) {
    if (model.source.losesSkeleton) return;
    const std::vector<bool> isStill = nodesOfStillThings(model);
    for (const SourceClip& clip : model.source.clips) {
        for (const SourceChannel& channel : clip.channels) {
            if (!isMoving(nodeAt(model, channel.node), channel)) continue;
            const int32_t moved = realNode(model, channel.node);
            if (moved == kNoNode || at(isStill, moved) || nodeAt(model, moved).marker) continue;
            nodeAt(model, moved).bone = true;
        }
    }
    bindOtherBones(model);
    for (const ModelNode& node : model.nodes) {
        if (node.bone && node.bound && differs(node.bind, node.world)) model.notes.restsElsewhere = true;
    }
}

}  // namespace marrowfen::standin
