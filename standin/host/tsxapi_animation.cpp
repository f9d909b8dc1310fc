#include "host/tsxapi.h"
#include "standin/host/api_handles.h"
#include "standin/host/json_document.h"

// Bones with their muscles and tendons, animation and clips, memory.

using namespace marrowfen::standin;

namespace {

// The position of a joint among a bone's; one past the last if it isn't there, or if a handle isn't valid.
size_t jointPosition(const HostNode* bone, const HostNode* joint) {
    size_t i = 0;
    while (bone != nullptr && i < bone->joints.size() && bone->joints[i]->node != joint) ++i;
    return i;
}

// The number of the vertices that are held on a polyhedron; their indices go into an array, if there is one.
int copyHeld(const HostNode::Held& held, const HostNode* polyhedron, int* vertices) {
    for (const auto& [node, indices] : held) {
        if (node != polyhedron) continue;
        if (vertices != nullptr) std::copy(indices->begin(), indices->end(), vertices);
        return static_cast<int>(indices->size());
    }
    return 0;
}

Clip* clipOf(const TsxScene* scene, const char* name, const char* caller) {
    if (host().handles.find<Scene>(HandleKind::Scene, scene, caller) == nullptr) return nullptr;
    return host().findClip(name, caller);
}

void enableClip(const TsxScene* scene, const char* name, bool enabled, const char* caller) {
    host().note(caller, name);
    if (Clip* clip = clipOf(scene, name, caller)) host().setClipEnabled(*clip, enabled);
}

}  // namespace

TsxNode* tsxBoneGetFirstJoint(TsxNode* handle) {
    const HostNode* bone = nodeOfType(handle, TsxBone, __func__);
    return bone == nullptr || bone->joints.empty() ? nullptr : bone->joints.front()->node->handle;
}

TsxNode* tsxBoneGetNextJoint(TsxNode* boneHandle, TsxNode* jointHandle) {
    const HostNode* bone = nodeOfType(boneHandle, TsxBone, __func__);
    const size_t next = jointPosition(bone, nodeOfType(jointHandle, TsxJoint, __func__)) + 1;
    return bone != nullptr && next < bone->joints.size() ? bone->joints[next]->node->handle : nullptr;
}

TsxMuscle* tsxBoneGetMuscle(TsxNode* boneHandle, TsxNode* jointHandle) {
    const HostNode* bone = nodeOfType(boneHandle, TsxBone, __func__);
    const size_t position = jointPosition(bone, nodeOfType(jointHandle, TsxJoint, __func__));
    return bone != nullptr && position < bone->joints.size() ? bone->joints[position]->muscle : nullptr;
}

int tsxMuscleGetVertices(TsxMuscle* muscle, TsxNode* polyhedron, int* vertices) {
    const auto* joint = host().handles.find<HostNode::Joint>(HandleKind::Muscle, muscle, __func__);
    const HostNode* node = polyhedronOf(polyhedron, __func__);
    return joint && node ? copyHeld(joint->held, node, vertices) : 0;
}

TsxTendon* tsxJointGetTendon(TsxNode* handle) {
    const HostNode* joint = nodeOfType(handle, TsxJoint, __func__);
    return joint ? joint->tendon : nullptr;
}

int tsxTendonGetVertices(TsxTendon* tendon, TsxNode* polyhedron, int* vertices) {
    const auto* joint = host().handles.find<HostNode>(HandleKind::Tendon, tendon, __func__);
    const HostNode* node = polyhedronOf(polyhedron, __func__);
    return joint && node ? copyHeld(joint->held, node, vertices) : 0;
}

int tsxAnimGetPlayMode() { return host().scene.host.playMode; }

void tsxAnimSetPlayMode(int mode) {
    host().note(__func__, std::to_string(mode));
    host().scene.host.playMode = mode;
}

float tsxAnimGetActiveTime() { return host().scene.host.activeTime; }

void tsxAnimSetActiveTimeScene(float frame) {
    if (host().recordsCalls) host().note(__func__, numberText(frame));
    host().setActiveTime(frame);
}

float tsxAnimGetBaseFramerate() { return host().scene.host.frameRate; }

int tsxClipsGetClipNames(TsxScene* scene, char*** names) {
    *names = nullptr;
    if (host().handles.find<Scene>(HandleKind::Scene, scene, __func__) == nullptr) return 0;
    *names = host().clipNames.data();
    return static_cast<int>(host().clipNames.size());
}

float tsxClipsGetClipStartEnd(TsxScene* scene, const char* name, float* start, float* end, int* toggle, int* loop) {
    const Clip* found = clipOf(scene, name, __func__);
    const Clip none;
    const Clip& clip = found ? *found : none;
    *start = clip.start;
    *end = clip.end;
    *toggle = clip.toggle;
    *loop = clip.loop;
    return clip.length.value_or(clip.end - clip.start);
}

int tsxClipsClipIsEnabled(TsxScene* scene, const char* name) {
    const Clip* clip = clipOf(scene, name, __func__);
    return clip != nullptr && clip->enabled ? 1 : 0;
}

void tsxClipsEnableClip(TsxScene* scene, const char* name) { enableClip(scene, name, true, __func__); }

void tsxClipsDisableClip(TsxScene* scene, const char* name) { enableClip(scene, name, false, __func__); }

void tsxClipsDisableAllClips(TsxScene* scene) {
    host().note(__func__);
    if (host().handles.find<Scene>(HandleKind::Scene, scene, __func__) == nullptr) return;
    for (Clip& clip : host().scene.clips) host().setClipEnabled(clip, false);
}

void* tsxMalloc(unsigned int bytes) { return host().allocate(bytes); }

void tsxFree(void* block) {
    if (!host().releaseBlock(block)) host().handles.addFault(__func__, "not a block that is in use");
}
