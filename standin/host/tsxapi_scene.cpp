#include "ground/at.h"
#include "host/tsxapi.h"
#include "standin/host/api_handles.h"

// The host itself, layers, and nodes.

using namespace marrowfen::standin;

namespace {

std::optional<std::string>* layerSlot(short layer) {
    std::vector<std::optional<std::string>>& layers = host().scene.layers;
    return layer >= 0 && static_cast<size_t>(layer) < layers.size() ? &marrowfen::at(layers, layer) : nullptr;
}

// The name of the layer in a slot; null and a fault if it holds none.
std::string* layerName(short layer, const char* caller) {
    std::optional<std::string>* slot = layerSlot(layer);
    if (slot != nullptr && slot->has_value()) return &**slot;
    host().handles.addFault(caller, "slot " + std::to_string(layer) + " holds no layer");
    return nullptr;
}

TsxNode* handleOf(const HostNode* node) { return node ? node->handle : nullptr; }

void copyNumbers(const Vec3& from, float* to) { std::copy(from.begin(), from.end(), to); }

// The node for a call that samples the animation.
HostNode* sampledNode(const TsxNode* handle, const char* caller) {
    HostNode* node = nodeOf(handle, caller);
    if (node != nullptr) host().note(caller, node->node->name);
    return node;
}

}  // namespace

void tsxGetTsVersionNbrs(short* major, short* minor) {
    *major = host().scene.host.major;
    *minor = host().scene.host.minor;
}

void* tsxGetMainViewHwnd() { return host().mainView; }

const char* tsxGetTSDir(int argument) { return argument == 0 ? host().scene.host.directory.c_str() : ""; }

short tsxGetNumberOfLayers() { return static_cast<short>(std::min(host().scene.layers.size(), kMostLayers)); }

int tsxIsLayerValid(short layer) {
    const std::optional<std::string>* slot = layerSlot(layer);
    return slot != nullptr && slot->has_value() ? 1 : 0;
}

const char* tsxGetLayerName(short layer) {
    const std::string* name = layerName(layer, __func__);
    return name ? name->c_str() : "";
}

int tsxAddNewLayerEx() {
    const bool isRefused = std::exchange(host().refuseNextLayer, false);
    if (isRefused || host().scene.layers.size() >= kMostLayers) return 0;
    host().scene.layers.emplace_back("");
    return 1;
}

void tsxSetLayerName(short layer, const char* name) {
    if (std::string* known = layerName(layer, __func__)) *known = name;
}

void tsxMoveObjectToLayerEx(short layer, TsxNode* handle) {
    HostNode* node = nodeOf(handle, __func__);
    if (node != nullptr && layerName(layer, __func__) != nullptr) node->node->layer = layer;
}

TsxScene* tsxGetScene() { return host().sceneHandle; }

TsxNode* tsxSceneGetFirstNode() { return handleOf(host().firstNode); }

TsxNode* tsxGNodeGetNext(TsxNode* handle) {
    const HostNode* node = nodeOf(handle, __func__);
    return node ? handleOf(node->next) : nullptr;
}

TsxNode* tsxGNodeGetFirstChild(TsxNode* handle) {
    const HostNode* node = nodeOf(handle, __func__);
    return node ? handleOf(node->firstChild) : nullptr;
}

int tsxSobjGetType(TsxNode* handle) {
    const HostNode* node = nodeOf(handle, __func__);
    return node ? node->node->type : 0;
}

void tsxGNodeGetName(TsxNode* handle, char* buffer, int size) {
    const HostNode* node = nodeOf(handle, __func__);
    copyText(node ? node->node->name : "", buffer, size);
}

short tsxGetObjectLayerIndex(TsxNode* handle) {
    const HostNode* node = nodeOf(handle, __func__);
    return node ? node->node->layer : short{0};
}

void tsxGNodeGetLocation(TsxNode* handle, float* xyz) {
    HostNode* node = sampledNode(handle, __func__);
    copyNumbers(node ? host().poseOf(*node).location : Vec3{}, xyz);
}

void tsxGNodeGetRotation(TsxNode* handle, float* angles) {
    HostNode* node = sampledNode(handle, __func__);
    copyNumbers(node ? host().poseOf(*node).rotation : Vec3{}, angles);
}

void tsxGNodeGetPureTransform(TsxNode* handle, float* transform) {
    HostNode* node = sampledNode(handle, __func__);
    const Transform answer = node ? host().poseOf(*node).transform : transformFrom({}, {});
    std::copy(answer.begin(), answer.end(), transform);
}

// Not a part of the poses that clips give: a node keeps its own.
void tsxGNodeGetAxesPosition(TsxNode* handle, float* xyz) {
    const HostNode* node = nodeOf(handle, __func__);
    copyNumbers(node ? node->node->axes.value_or(node->node->location) : Vec3{}, xyz);
}

// The three sizes are the lengths of the edges: an argument that is named after an axis is most plainly a length along
// it. What the first argument means is the real host's.
TsxNode* tsxCreateCube(int argument, float x, float y, float z) {
    host().handles.expectFixed(__func__, argument, 1);
    return host().makeCube({x, y, z});
}

void tsxGNodeSetLocation(TsxNode* handle, const float* xyz) {
    HostNode* node = nodeOf(handle, __func__);
    if (node == nullptr) return;
    for (size_t axis = 0; axis < 3; ++axis) {
        node->node->location[axis] = xyz[axis];
        if (node->node->transform) (*node->node->transform)[axis * 4 + 3] = xyz[axis];
    }
    host().forgetPose(*node);
}

void tsxGNodeSetName(TsxNode* handle, const char* name) {
    HostNode* node = nodeOf(handle, __func__);
    if (node == nullptr) return;
    // Clips, muscles and tendons go on calling a node of the scene by its former name.
    if (!node->ownNode && !node->node->id) node->node->id = node->node->name;
    node->node->name = name;
}

void tsxSceneAddObject(TsxNode* handle, int argument) {
    host().handles.expectFixed(__func__, argument, 0);
    HostNode* node = nodeOf(handle, __func__);
    if (node == nullptr) return;
    if (node->owner == HostNode::CallersCube) {
        host().addToScene(*node);
    } else {
        host().handles.addFault(__func__, "node \"" + node->node->name + "\" isn't the caller's to add");
    }
}

void tsxSobjDelete(TsxNode* handle) {
    HostNode* node = nodeOf(handle, __func__);
    if (node == nullptr) return;
    if (node->owner == HostNode::SceneOwned) {
        host().handles.addFault(__func__, "node \"" + node->node->name + "\" belongs to the scene");
    } else {
        host().release(*node);
    }
}
