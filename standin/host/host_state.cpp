#include "standin/host/host_state.h"

#include <algorithm>
#include <new>

#include "standin/host/cube.h"

namespace marrowfen::standin {
namespace {

HostState* currentHost = nullptr;

std::string_view beforeColon(const std::string& name) { return std::string_view(name).substr(0, name.find(':')); }

}  // namespace

HostState& HostState::current() {
    static HostState none{Scene{}};
    return currentHost ? *currentHost : none;
}

void HostState::setCurrent(HostState* host) { currentHost = host; }

HostState::HostState(Scene given) : scene(std::move(given)) {
    sceneHandle = handles.add<TsxScene>(HandleKind::Scene, &scene);
    for (const auto& [key, material] : scene.materials) materials_.emplace(key, &material);
    NodesById byId;
    firstNode = linkNodes(scene.nodes, byId, &lastNode_);
    linkHeldVertices(byId);
    indexClips(byId);
}

// Makes the host's nodes of a list of siblings and all below them; returns the first.
HostNode* HostState::linkNodes(std::vector<Node>& nodes, NodesById& byId, HostNode** last) {
    HostNode* first = nullptr;
    HostNode* previous = nullptr;
    for (Node& node : nodes) {
        HostNode& made = sceneNodes_.emplace_back();
        made.node = &node;
        made.handle = handles.add<TsxNode>(HandleKind::Node, &made);
        byId.emplace(node.identity(), &made);
        if (node.type == TsxPolyhedron) resolveMaterials(made);
        made.firstChild = linkNodes(node.children, byId, nullptr);
        (previous ? previous->next : first) = &made;
        previous = &made;
    }
    if (last != nullptr) *last = previous;
    return first;
}

void HostState::resolveMaterials(HostNode& node) const {
    for (const std::optional<std::string>& key : node.node->polyhedron.materials) {
        const auto found = key ? materials_.find(*key) : materials_.end();
        node.materials.push_back(found == materials_.end() ? nullptr : found->second);
    }
}

void HostState::linkHeldVertices(const NodesById& byId) {
    const auto link = [&](const HeldVertices& from, HostNode::Held& to) {
        for (const auto& [id, vertices] : from) {
            const auto polyhedron = byId.find(id);
            if (polyhedron != byId.end()) to.emplace_back(polyhedron->second, &vertices);
        }
    };
    for (HostNode& node : sceneNodes_) {
        if (node.node->type == TsxJoint) node.tendon = handles.add<TsxTendon>(HandleKind::Tendon, &node);
        link(node.node->tendon, node.held);
        for (const Muscle& muscle : node.node->muscles) {
            const auto found = byId.find(muscle.joint);
            const auto isFound = [&](const auto& joint) { return joint->node == found->second; };
            // A joint twice would make the walk from joint to joint endless.
            if (found == byId.end() || std::any_of(node.joints.begin(), node.joints.end(), isFound)) continue;
            HostNode::Joint& joint = *node.joints.emplace_back(std::make_unique<HostNode::Joint>());
            joint.node = found->second;
            joint.muscle = handles.add<TsxMuscle>(HandleKind::Muscle, &joint);
            link(muscle.vertices, joint.held);
        }
    }
}

void HostState::indexClips(const NodesById& byId) {
    clipNameBytes_.reserve(scene.clips.size());
    for (size_t i = 0; i < scene.clips.size(); ++i) {
        const Clip& clip = scene.clips[i];
        clips_.emplace(beforeColon(clip.name), i);
        std::vector<char>& bytes = clipNameBytes_.emplace_back(clip.name.begin(), clip.name.end());
        bytes.push_back('\0');
        clipNames.push_back(bytes.data());
        for (const auto& [id, keys] : clip.keys) {
            const auto node = byId.find(id);
            if (node != byId.end() && !keys.empty()) node->second->tracks.push_back({i, &keys});
        }
    }
}

const NodePose& HostState::poseOf(HostNode& node) {
    if (node.poseStamp == poseStamp_) return node.pose;
    if (node.keysStamp != clipsStamp_) {
        const auto isEnabled = [this](const HostNode::Track& track) { return scene.clips[track.clip].enabled; };
        const auto winner = std::find_if(node.tracks.rbegin(), node.tracks.rend(), isEnabled);
        node.keys = winner == node.tracks.rend() ? nullptr : winner->keys;
        node.keysStamp = clipsStamp_;
    }
    node.pose = node.keys ? poseAt(*node.node, *node.keys, scene.host.activeTime) : ownPose(*node.node);
    node.poseStamp = poseStamp_;
    return node.pose;
}

void HostState::setActiveTime(float frame) {
    scene.host.activeTime = frame;
    ++poseStamp_;
}

void HostState::setClipEnabled(Clip& clip, bool enabled) {
    if (clip.enabled == enabled) return;
    clip.enabled = enabled;
    ++clipsStamp_;
    ++poseStamp_;
}

Clip* HostState::findClip(const char* name, const char* caller) {
    const auto found = clips_.find(name);
    if (found != clips_.end()) return &scene.clips[found->second];
    handles.addFault(caller, "no clip is called \"" + std::string(name) + "\"");
    return nullptr;
}

void HostState::note(const char* call, const std::string& argument) {
    if (recordsCalls) calls.push_back(argument.empty() ? call : call + (" " + argument));
}

TsxNode* HostState::handOut(std::shared_ptr<HostNode> node) {
    HostNode& made = *node;
    made.node = made.ownNode.get();
    made.handle = handles.add<TsxNode>(HandleKind::Node, &made, std::move(node));
    ++liveHandles_;
    return made.handle;
}

TsxNode* HostState::makeCube(const Vec3& size) {
    auto cube = std::make_shared<HostNode>();
    cube->owner = HostNode::CallersCube;
    cube->ownNode = std::make_unique<Node>(cubeNode(size));
    return handOut(std::move(cube));
}

TsxNode* HostState::makeTriangulatedCopy(HostNode& original) {
    auto copy = std::make_shared<HostNode>();
    copy->owner = HostNode::CallersCopy;
    copy->vertexTransform = vertexTransformOf(original);
    copy->materials = original.materials;
    copy->arrays = std::make_unique<PolyhedronArrays>(original.node->polyhedron, FaceForm::Triangles);

    // Everything but what is large: the arrays are the copy's own already.
    const Node& from = *original.node;
    copy->ownNode = std::make_unique<Node>();
    Node& to = *copy->ownNode;
    to.type = from.type;
    to.name = from.name;
    to.layer = from.layer;
    to.location = from.location;
    to.rotation = from.rotation;
    to.transform = from.transform;
    to.axes = from.axes;
    return handOut(std::move(copy));
}

Transform HostState::vertexTransformOf(const HostNode& node) {
    if (node.owner == HostNode::CallersCopy) return node.vertexTransform;
    const std::optional<Transform>& given = node.node->polyhedron.vertexTransform;
    return given ? *given : ownPose(*node.node).transform;
}

void HostState::addToScene(HostNode& cube) {
    cube.owner = HostNode::SceneOwned;
    addedNodes_.push_back(&cube);
    (lastNode_ ? lastNode_->next : firstNode) = &cube;
    lastNode_ = &cube;
    --liveHandles_;
}

void HostState::release(HostNode& node) {
    --liveHandles_;
    handles.remove(node.handle);
}

TsxMaterial* HostState::makeScratch() {
    auto scratch = std::make_shared<ScratchMaterial>();
    scratch->material = &scratch->edited;
    ++liveHandles_;
    ScratchMaterial* object = scratch.get();
    return handles.add<TsxMaterial>(HandleKind::Material, object, std::move(scratch));
}

void HostState::setScratch(ScratchMaterial& scratch, const HostMaterial* material) {
    if (scratch.shader != nullptr) handles.remove(scratch.shader);
    for (const TsxParameterValue* value : scratch.values) handles.remove(value);
    scratch.shader = nullptr;
    scratch.values.clear();
    scratch.material = material;
}

void HostState::releaseScratch(TsxMaterial* handle, ScratchMaterial& scratch) {
    setScratch(scratch, nullptr);
    handles.remove(handle);
    --liveHandles_;
}

void* HostState::allocate(size_t bytes) {
    std::unique_ptr<std::byte[]> block(new (std::nothrow) std::byte[bytes]);
    void* address = block.get();
    if (address != nullptr) blocks_[address] = std::move(block);
    return address;
}

bool HostState::releaseBlock(void* block) { return blocks_.erase(block) == 1; }

PolyhedronArrays& HostState::arraysOf(HostNode& node) {
    if (!node.arrays) {
        node.arrays = std::make_unique<PolyhedronArrays>(node.node->polyhedron, FaceForm::AsWritten);
    }
    return *node.arrays;
}

const HostMaterial* HostState::painted(const HostMaterial& material) {
    const auto found = std::find(paints_.begin(), paints_.end(), material);
    return found == paints_.end() ? &paints_.emplace_back(material) : &*found;
}

void HostState::paintFaces(HostNode& cube, size_t first, size_t count, const HostMaterial& material) {
    const HostMaterial* paint = painted(material);
    const auto known = std::find(cube.materials.begin(), cube.materials.end(), paint);
    const auto number = static_cast<int32_t>(known - cube.materials.begin());
    if (known == cube.materials.end()) cube.materials.push_back(paint);
    for (size_t i = first; i < first + count; ++i) cube.node->polyhedron.faces[i].material = number;
    cube.arrays.reset();  // its face records are out of date
}

Scene HostState::wholeScene() const {
    Scene whole = scene;
    for (const HostNode* cube : addedNodes_)
        whole.nodes.push_back(savedCube(*cube->node, cube->materials, whole.materials));
    return whole;
}

}  // namespace marrowfen::standin
