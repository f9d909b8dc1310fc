#pragma once

// What the tsx functions work on: the scene, the nodes' links and poses, and what was handed out.

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "host/tsxapi.h"
#include "standin/host/handle_table.h"
#include "standin/host/polyhedron_arrays.h"
#include "standin/host/pose.h"
#include "standin/host/scene.h"

namespace marrowfen::standin {

struct HostNode {
    enum Owner { SceneOwned, CallersCube, CallersCopy };

    Owner owner = SceneOwned;
    TsxNode* handle = nullptr;
    Node* node = nullptr;           // in the scene, or ownNode
    std::unique_ptr<Node> ownNode;  // of a cube, and of a triangulated copy (there without its polyhedron)
    HostNode* next = nullptr;
    HostNode* firstChild = nullptr;

    // The keys that clips have for the node; the last enabled clip wins.
    struct Track {
        size_t clip = 0;
        const std::vector<Key>* keys = nullptr;
    };
    std::vector<Track> tracks;               // by clip, rising
    const std::vector<Key>* keys = nullptr;  // of the winning clip as of keysStamp, null for none
    uint64_t keysStamp = 0;
    NodePose pose;  // as of poseStamp
    uint64_t poseStamp = 0;

    // Of a polyhedron.
    std::unique_ptr<PolyhedronArrays> arrays;    // made when first asked for
    std::vector<const HostMaterial*> materials;  // by material number, null for one that can't be given
    Transform vertexTransform{};                 // of a triangulated copy

    // The vertices that a muscle or tendon holds on each polyhedron.
    using Held = std::vector<std::pair<const HostNode*, const std::vector<int32_t>*>>;
    struct Joint {
        HostNode* node = nullptr;
        TsxMuscle* muscle = nullptr;
        Held held;
    };
    std::vector<std::unique_ptr<Joint>> joints;  // of a bone
    TsxTendon* tendon = nullptr;                 // of a joint
    Held held;                                   // by the tendon
};

// A material that the plug-in has made to read into or to paint with.
struct ScratchMaterial {
    const HostMaterial* material = nullptr;  // one of the scene's or a painted one, or edited
    HostMaterial edited;
    TsxShaderInfo* shader = nullptr;         // handed out for the material as it is
    std::vector<TsxParameterValue*> values;  // likewise, by parameter
};

class HostState {
public:
    explicit HostState(Scene given);

    // The host that answers; one without a scene when none was made.
    static HostState& current();
    static void setCurrent(HostState* host);

    Scene scene;  // without the cubes that were added
    HandleTable handles;
    TsxScene* sceneHandle = nullptr;
    HostNode* firstNode = nullptr;
    std::vector<char*> clipNames;  // into clipNameBytes
    void* mainView = nullptr;
    bool refuseNextLayer = false;
    bool recordsCalls = false;
    std::vector<std::string> calls;

    // The scene with the cubes that were added.
    Scene wholeScene() const;
    int liveHandles() const { return liveHandles_ + static_cast<int>(blocks_.size()); }

    // Poses follow the active time and the clips' enabled states at the next question.
    const NodePose& poseOf(HostNode& node);
    void setActiveTime(float frame);
    void setClipEnabled(Clip& clip, bool enabled);
    void forgetPose(HostNode& node) { node.poseStamp = 0; }

    // The first clip with this text before its ':'; null and a fault if there is none.
    Clip* findClip(const char* name, const char* caller);
    void note(const char* call, const std::string& argument = {});

    // What the caller gets to own until it gives it back.
    TsxNode* makeCube(const Vec3& size);
    TsxNode* makeTriangulatedCopy(HostNode& node);
    void addToScene(HostNode& cube);
    void release(HostNode& node);
    TsxMaterial* makeScratch();
    void setScratch(ScratchMaterial& scratch, const HostMaterial* material);
    void releaseScratch(TsxMaterial* handle, ScratchMaterial& scratch);
    void* allocate(size_t bytes);
    bool releaseBlock(void* block);  // false if it isn't the caller's

    static Transform vertexTransformOf(const HostNode& polyhedron);
    PolyhedronArrays& arraysOf(HostNode& polyhedron);
    bool canPaint(const HostNode& node) const { return node.ownNode && node.owner != HostNode::CallersCopy; }
    void paintFaces(HostNode& cube, size_t first, size_t count, const HostMaterial& material);

private:
    std::deque<HostNode> sceneNodes_;
    std::vector<HostNode*> addedNodes_;
    HostNode* lastNode_ = nullptr;  // top-level
    std::unordered_map<std::string, const HostMaterial*> materials_;
    std::deque<HostMaterial> paints_;  // each once; polyhedra point to them
    std::vector<std::vector<char>> clipNameBytes_;
    std::unordered_map<std::string, size_t> clips_;  // by the text before the ':'
    std::unordered_map<void*, std::unique_ptr<std::byte[]>> blocks_;
    int liveHandles_ = 0;
    uint64_t clipsStamp_ = 1;  // rises with a change of a clip's state
    uint64_t poseStamp_ = 1;   // rises with any change that moves nodes

    using NodesById = std::unordered_map<std::string_view, HostNode*>;

    HostNode* linkNodes(std::vector<Node>& nodes, NodesById& byId, HostNode** last);
    void indexClips(const NodesById& byId);
    void linkHeldVertices(const NodesById& byId);
    void resolveMaterials(HostNode& node) const;
    TsxNode* handOut(std::shared_ptr<HostNode> node);
    const HostMaterial* painted(const HostMaterial& material);
};

}  // namespace marrowfen::standin
