#include <algorithm>
#include <cmath>
#include <set>

#include "standin/import/model.h"

// Animations become clips: every bone and marker that an animation moves gets a pose at every frame of the host's rate.
// Times between two keys of a track are interpolated as glTF does: places and sizes along a line, rotations along the
// shortest arc; before the first key and after the last that key holds.

namespace marrowfen::standin {

namespace {

constexpr double kDefaultTicksPerSecond = 25;  // of files that name none
// A key takes about 90 bytes here and 150 in a scene file; an hour of 100 bones at 30 frames a second fits.
constexpr double kMostKeys = 20e6;
constexpr double kScaleChange = 0.01;  // smaller ones aren't seen
constexpr double kStill = 1e-6;        // of a component of a key

using Quaternion = aiQuaterniont<double>;

struct LocalPose {
    Vector scale = {1, 1, 1};
    Quaternion rotation;
    Vector location;
};

LocalPose poseOf(const Matrix& matrix) {
    LocalPose pose;
    matrix.Decompose(pose.scale, pose.rotation, pose.location);
    return pose;
}

Quaternion unitOf(const aiQuaternion& q) {
    Quaternion result(q.w, q.x, q.y, q.z);
    const double length =
        std::sqrt(result.w * result.w + result.x * result.x + result.y * result.y + result.z * result.z);
    if (!(length > 0)) return {};
    return {result.w / length, result.x / length, result.y / length, result.z / length};
}

Vector valueOf(const aiVectorKey& key) { return Vector(key.mValue); }
Quaternion valueOf(const aiQuatKey& key) { return unitOf(key.mValue); }

Vector between(const Vector& a, const Vector& b, double t) { return a + (b - a) * t; }
Quaternion between(const Quaternion& a, const Quaternion& b, double t) {
    Quaternion result;
    Quaternion::Interpolate(result, a, b, t);
    return result.Normalize();
}

// The value of a track at a time; rest if it has no keys.
template <typename KeyType, typename Value>
Value sample(const KeyType* keys, unsigned count, double time, const Value& rest) {
    if (count == 0 || keys == nullptr) return rest;
    const KeyType* after =
        std::upper_bound(keys, keys + count, time, [](double t, const KeyType& key) { return t < key.mTime; });
    if (after == keys) return valueOf(keys[0]);
    if (after == keys + count) return valueOf(keys[count - 1]);
    const KeyType& before = after[-1];
    const double span = after->mTime - before.mTime;
    if (!(span > 0)) return valueOf(before);
    return between(valueOf(before), valueOf(*after), (time - before.mTime) / span);
}

Matrix sampleLocal(const aiNodeAnim& track, const LocalPose& rest, double time) {
    return Matrix(sample(track.mScalingKeys, track.mNumScalingKeys, time, rest.scale),
                  sample(track.mRotationKeys, track.mNumRotationKeys, time, rest.rotation),
                  sample(track.mPositionKeys, track.mNumPositionKeys, time, rest.location));
}

bool isSame(const Vector& a, const Vector& b) { return (a - b).Length() <= kStill * std::max(1.0, a.Length()); }

// What an animation moves, and the poses at the time being looked at.
struct Player {
    struct Track {
        const aiNodeAnim* keys = nullptr;
        LocalPose rest;
    };

    std::vector<Track> tracks;      // per node
    std::vector<bool> driven;       // per node: it or one above has a track
    std::vector<Matrix> worlds;     // per node
    std::vector<int32_t> moving;    // driven nodes that matter, parents before children
    std::vector<int32_t> recorded;  // bones and markers among them
    double ticksPerSecond = kDefaultTicksPerSecond;
    double seconds = 0;
};

bool isRecorded(const Model& model, int32_t node) {
    return model.boneIds.count(node) > 0 || model.nodes[static_cast<size_t>(node)].marker;
}

double lastKeyTime(const aiAnimation& animation) {
    double last = 0;
    for (unsigned c = 0; c < animation.mNumChannels; ++c) {
        const aiNodeAnim& track = *animation.mChannels[c];
        if (track.mNumPositionKeys > 0) last = std::max(last, track.mPositionKeys[track.mNumPositionKeys - 1].mTime);
        if (track.mNumRotationKeys > 0) last = std::max(last, track.mRotationKeys[track.mNumRotationKeys - 1].mTime);
        if (track.mNumScalingKeys > 0) last = std::max(last, track.mScalingKeys[track.mNumScalingKeys - 1].mTime);
    }
    return last;
}

Player newPlayer(const Model& model, const aiAnimation& animation) {
    Player player;
    const size_t count = model.nodes.size();
    player.tracks.resize(count);
    player.driven.resize(count);
    player.worlds.resize(count);
    if (animation.mTicksPerSecond > 0) player.ticksPerSecond = animation.mTicksPerSecond;
    const double ticks = animation.mDuration > 0 ? animation.mDuration : lastKeyTime(animation);
    player.seconds = ticks / player.ticksPerSecond;
    for (unsigned c = 0; c < animation.mNumChannels; ++c) {
        const auto found = model.nodeByName.find(animation.mChannels[c]->mNodeName.C_Str());
        if (found == model.nodeByName.end()) continue;
        const auto node = static_cast<size_t>(found->second);
        player.tracks[node] = {animation.mChannels[c], poseOf(model.nodes[node].local)};
    }
    std::vector<bool> matters(count);
    for (size_t i = count; i-- > 0;) {
        const int32_t parent = model.nodes[i].parent;
        if (isRecorded(model, static_cast<int32_t>(i))) matters[i] = true;
        if (matters[i] && parent != kNoNode) matters[static_cast<size_t>(parent)] = true;
    }
    for (size_t i = 0; i < count; ++i) {
        const int32_t parent = model.nodes[i].parent;
        player.worlds[i] = model.nodes[i].world;
        player.driven[i] =
            player.tracks[i].keys != nullptr || (parent != kNoNode && player.driven[static_cast<size_t>(parent)]);
        if (!player.driven[i] || !matters[i]) continue;
        player.moving.push_back(static_cast<int32_t>(i));
        if (isRecorded(model, static_cast<int32_t>(i))) player.recorded.push_back(static_cast<int32_t>(i));
    }
    return player;
}

void pose(const Model& model, Player& player, double seconds) {
    const Matrix root = sceneFromModel(model);
    for (const int32_t index : player.moving) {
        const auto i = static_cast<size_t>(index);
        const ModelNode& node = model.nodes[i];
        const Player::Track& track = player.tracks[i];
        const Matrix local =
            track.keys != nullptr ? sampleLocal(*track.keys, track.rest, seconds * player.ticksPerSecond) : node.local;
        player.worlds[i] = (node.parent == kNoNode ? root : player.worlds[static_cast<size_t>(node.parent)]) * local;
    }
}

Key keyOf(const Model& model, const ModelNode& node, const Matrix& world, float frame) {
    const Matrix rigid = poseInScene(model, world);
    Key key;
    key.frame = frame;
    // The host answers for a marker with its place and angles, for a bone with its transform.
    if (node.marker) {
        key.location = locationOf(rigid);
        key.rotation = anglesOf(rigid);
    } else {
        key.transform = toTransform(rigid);
    }
    return key;
}

bool changesScale(const ModelNode& node, const Matrix& world) {
    const Vector before = scaleOf(node.bind), now = scaleOf(world);
    for (unsigned k = 0; k < 3; ++k) {
        if (std::fabs(now[k] - before[k]) > kScaleChange * std::max(now[k], before[k])) return true;
    }
    return false;
}

// A node that stays where it is needs one key.
void dropRepeatedKeys(std::vector<Key>& keys) {
    const bool still = std::all_of(keys.begin(), keys.end(), [&](Key key) {
        key.frame = keys[0].frame;
        return key == keys[0];
    });
    if (still) keys.resize(1);
}

void addKeys(const Model& model, int32_t node, std::vector<Key> keys, Clip& clip) {
    const auto bones = model.boneIds.find(node);
    if (bones == model.boneIds.end()) {
        clip.keys.emplace_back(nodeId(node), std::move(keys));
        return;
    }
    for (const std::string& id : bones->second) clip.keys.emplace_back(id, keys);
}

void recordFrames(const Model& model, Player& player, int32_t lastFrame, Clip& clip, std::set<int32_t>& scaled) {
    std::vector<std::vector<Key>> keys(player.recorded.size());
    for (int32_t frame = 0; frame <= lastFrame; ++frame) {
        pose(model, player, frame / static_cast<double>(model.options.frameRate));
        for (size_t r = 0; r < player.recorded.size(); ++r) {
            const auto i = static_cast<size_t>(player.recorded[r]);
            keys[r].push_back(keyOf(model, model.nodes[i], player.worlds[i], static_cast<float>(frame)));
            if (changesScale(model.nodes[i], player.worlds[i])) scaled.insert(player.recorded[r]);
        }
    }
    for (size_t r = 0; r < player.recorded.size(); ++r) {
        dropRepeatedKeys(keys[r]);
        addKeys(model, player.recorded[r], std::move(keys[r]), clip);
    }
    // What this animation leaves at rest isn't in the bind pose for that.
    for (const auto& [bone, ids] : model.boneIds) {
        const ModelNode& node = model.nodes[static_cast<size_t>(bone)];
        if (player.driven[static_cast<size_t>(bone)] || node.bind == node.world) continue;
        addKeys(model, bone, {keyOf(model, node, node.world, 0)}, clip);
    }
}

// Clip names differ before the first ':', which is how the host finds them.
std::string clipName(const std::string& given, size_t number, std::set<std::string>& taken) {
    const size_t colon = std::min(given.find(':'), given.size());
    std::string base = given.substr(0, colon);
    if (base.empty()) base = "clip" + std::to_string(number);
    std::string name = base;
    for (int copy = 2; !taken.insert(name).second; ++copy) name = base + "_" + std::to_string(copy);
    return name + given.substr(colon);
}

void convertAnimation(Model& model, const aiAnimation& animation, const std::string& name, std::set<int32_t>& scaled) {
    Player player = newPlayer(model, animation);
    if (player.recorded.empty()) {
        model.notes.others.push_back("animation " + name + " moves nothing that is exported and is skipped");
        return;
    }
    const double frames = std::max(1.0, std::round(player.seconds * static_cast<double>(model.options.frameRate)));
    if (!((frames + 1) * static_cast<double>(player.recorded.size()) <= kMostKeys)) {
        model.fail("animation " + name + ": " + std::to_string(player.recorded.size()) + " nodes over " +
                   std::to_string(static_cast<long long>(std::min(frames, 1e15))) + " frames are too many to keep");
        return;
    }
    Clip clip;
    clip.name = name;
    clip.end = static_cast<float>(frames);
    // The scene stands in its bind pose, which is what vertices are bound in.
    clip.enabled = false;
    for (unsigned c = 0; c < animation.mNumChannels; ++c) {
        if (animation.mChannels[c]->mPostState == aiAnimBehaviour_REPEAT) clip.loop = 1;
    }
    recordFrames(model, player, static_cast<int32_t>(frames), clip, scaled);
    model.scene.clips.push_back(std::move(clip));
}

}  // namespace

bool isMoving(const ModelNode& node, const aiNodeAnim& track) {
    const LocalPose rest = poseOf(node.local);
    for (unsigned k = 0; k < track.mNumPositionKeys; ++k) {
        if (!isSame(valueOf(track.mPositionKeys[k]), rest.location)) return true;
    }
    for (unsigned k = 0; k < track.mNumScalingKeys; ++k) {
        if (!isSame(valueOf(track.mScalingKeys[k]), rest.scale)) return true;
    }
    for (unsigned k = 0; k < track.mNumRotationKeys; ++k) {
        const Quaternion a = valueOf(track.mRotationKeys[k]), b = rest.rotation;
        if (std::fabs(a.w * b.w + a.x * b.x + a.y * b.y + a.z * b.z) < 1 - kStill) return true;
    }
    return false;
}

void convertAnimations(Model& model) {
    if (losesSkeleton(model)) {
        model.notes.others.emplace_back(
            "the reader of this format gets skeletons wrong; bones and animations are dropped");
        return;
    }
    std::set<std::string> taken;
    std::set<int32_t> scaled;
    for (unsigned a = 0; a < model.source->mNumAnimations && model.error.empty(); ++a) {
        const aiAnimation& animation = *model.source->mAnimations[a];
        if (animation.mNumMorphMeshChannels > 0 || animation.mNumMeshChannels > 0) ++model.notes.shapeAnimations;
        if (animation.mNumChannels == 0) continue;
        convertAnimation(model, animation, clipName(cleanText(animation.mName), model.scene.clips.size(), taken),
                         scaled);
    }
    model.notes.scaledBones = scaled.size();
}

}  // namespace marrowfen::standin
