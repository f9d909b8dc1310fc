#include <algorithm>
#include <cctype>
#include <cmath>
#include <set>

#include "builder/tags.h"
#include "ground/ascii.h"
#include "ground/at.h"
#include "standin/import/model.h"

// Animations become clips: every bone and marker that an animation moves gets a pose at every frame of the host's rate.
// Times between two keys of a track are interpolated as glTF does: linear ones along a line, rotations along the
// shortest arc, cubic ones along Hermite curves; before the first key and after the last that key holds.

namespace marrowfen::standin {

namespace {

// A key takes about 90 bytes here and 150 in a scene file; an hour of 100 bones at 30 frames a second fits.
constexpr double kMostKeys = 20e6;
constexpr double kScaleChange = 0.01;  // smaller ones aren't seen
constexpr double kStill = 1e-6;        // of a component of a key
constexpr double kSameTime = 1e-4;     // seconds; what files round times by is less, and a frame is more

// What a track moves the rest of: the file's own parts, since a matrix has several.
TransformParts restOf(const SourceNode& node) { return node.parts ? *node.parts : partsOf(node.local); }

Quaternion unitOf(const Quaternion& q) {
    const double length = std::sqrt(q.w * q.w + q.x * q.x + q.y * q.y + q.z * q.z);
    if (!(length > 0)) return {};
    return {q.w / length, q.x / length, q.y / length, q.z / length};
}

// The numbers of a track's key: of three a place or size, of four a rotation; of cubic tracks also the tangents.
enum class KeyPart { TangentIn, Value, TangentOut };

template <typename Value>
constexpr size_t kWidth = std::is_same_v<Value, Quaternion> ? 4 : 3;

template <typename Value>
Value partOf(const SourceTrack& track, size_t key, KeyPart part) {
    const bool cubic = track.interpolation == Interpolation::Cubic;
    const size_t at = (cubic ? key * 3 + static_cast<size_t>(part) : key) * kWidth<Value>;
    const auto number = [&](size_t k) { return static_cast<double>(track.values[at + k]); };
    if constexpr (std::is_same_v<Value, Quaternion>) {
        return {number(3), number(0), number(1), number(2)};
    } else {
        return {number(0), number(1), number(2)};
    }
}

Vector asValue(const Vector& v) { return v; }
Quaternion asValue(const Quaternion& q) { return unitOf(q); }

template <typename Value>
Value valueOf(const SourceTrack& track, size_t key) {
    return asValue(partOf<Value>(track, key, KeyPart::Value));
}

Vector between(const Vector& a, const Vector& b, double t) { return a + (b - a) * t; }
Quaternion between(const Quaternion& a, const Quaternion& b, double t) {
    Quaternion result;
    Quaternion::Interpolate(result, a, b, t);
    return result.Normalize();
}

Vector weighted(const std::array<Vector, 4>& v, const std::array<double, 4>& w) {
    return v[0] * w[0] + v[1] * w[1] + v[2] * w[2] + v[3] * w[3];
}
Quaternion weighted(const std::array<Quaternion, 4>& q, const std::array<double, 4>& w) {
    Quaternion sum(0, 0, 0, 0);
    for (size_t k = 0; k < 4; ++k) {
        sum.w += q[k].w * w[k], sum.x += q[k].x * w[k], sum.y += q[k].y * w[k], sum.z += q[k].z * w[k];
    }
    return unitOf(sum);
}

// A Hermite curve from one key to the next, in the time between them.
template <typename Value>
Value onCurve(const SourceTrack& track, size_t before, double span, double t) {
    const double t2 = t * t, t3 = t2 * t;
    return weighted(
        {partOf<Value>(track, before, KeyPart::Value), partOf<Value>(track, before, KeyPart::TangentOut),
         partOf<Value>(track, before + 1, KeyPart::Value), partOf<Value>(track, before + 1, KeyPart::TangentIn)},
        {2 * t3 - 3 * t2 + 1, span * (t3 - 2 * t2 + t), 3 * t2 - 2 * t3, span * (t3 - t2)});
}

// The value of a track at a time; rest if it has no keys.
template <typename Value>
Value sample(const SourceTrack& track, double time, const Value& rest) {
    if (track.times.empty()) return rest;
    const bool steps = track.interpolation == Interpolation::Step;
    // A step is taken at its frame even if the file's time is rounded up.
    const auto after = std::upper_bound(track.times.begin(), track.times.end(), steps ? time + kSameTime : time);
    if (after == track.times.begin()) return valueOf<Value>(track, 0);
    const auto before = static_cast<size_t>(after - track.times.begin()) - 1;
    if (after == track.times.end() || steps) return valueOf<Value>(track, before);
    const double span = *after - track.times[before];
    if (!(span > 0)) return valueOf<Value>(track, before);
    const double t = (time - track.times[before]) / span;
    if (track.interpolation == Interpolation::Cubic) return onCurve<Value>(track, before, span, t);
    return between(valueOf<Value>(track, before), valueOf<Value>(track, before + 1), t);
}

Matrix sampleLocal(const SourceChannel& channel, const TransformParts& rest, double time) {
    return matrixOf({sample(channel.scale, time, rest.scale), sample(channel.rotation, time, rest.rotation),
                     sample(channel.location, time, rest.location)});
}

bool isSame(const Vector& a, const Vector& b) { return (a - b).Length() <= kStill * std::max(1.0, a.Length()); }

// What an animation moves, and the poses at the time being looked at.
struct Player {
    struct Track {
        const SourceChannel* keys = nullptr;
        TransformParts rest;
    };

    std::vector<Track> tracks;      // per node
    std::vector<bool> driven;       // per node: it or one above has a track
    std::vector<Matrix> worlds;     // per node
    std::vector<int32_t> moving;    // driven nodes that matter, parents before children
    std::vector<int32_t> recorded;  // bones and markers among them
};

bool isRecorded(const Model& model, int32_t node) {
    return model.boneIds.count(node) > 0 || at(model.nodes, node).marker;
}

Player newPlayer(const Model& model, const SourceClip& clip) {
    Player player;
    const size_t count = model.nodes.size();
    player.tracks.resize(count);
    player.driven.resize(count);
    player.worlds.resize(count);
    for (const SourceChannel& channel : clip.channels) {
        const auto node = static_cast<size_t>(channel.node);
        player.tracks[node] = {&channel, restOf(*model.nodes[node].source)};
    }
    std::vector<bool> matters(count);
    for (size_t i = count; i-- > 0;) {
        const int32_t parent = model.nodes[i].parent;
        if (isRecorded(model, static_cast<int32_t>(i))) matters[i] = true;
        if (matters[i] && parent != kNoNode) at(matters, parent) = true;
    }
    for (size_t i = 0; i < count; ++i) {
        const int32_t parent = model.nodes[i].parent;
        player.worlds[i] = model.nodes[i].world;
        player.driven[i] = player.tracks[i].keys != nullptr || (parent != kNoNode && at(player.driven, parent));
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
        const Matrix local = track.keys != nullptr ? sampleLocal(*track.keys, track.rest, seconds) : node.source->local;
        player.worlds[i] = (node.parent == kNoNode ? root : at(player.worlds, node.parent)) * local;
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
    // Most bones have one skeleton, and its list needn't be copied.
    const std::vector<std::string>& ids = bones->second;
    for (size_t i = 0; i + 1 < ids.size(); ++i) clip.keys.emplace_back(ids[i], keys);
    clip.keys.emplace_back(ids.back(), std::move(keys));
}

void recordFrames(const Model& model, Player& player, double seconds, Clip& clip, std::set<int32_t>& scaled) {
    std::vector<std::vector<Key>> keys(player.recorded.size());
    const auto lastFrame = static_cast<int32_t>(clip.end);
    for (std::vector<Key>& list : keys) list.reserve(static_cast<size_t>(lastFrame) + 1);
    for (int32_t frame = 0; frame <= lastFrame; ++frame) {
        const double time = frame / static_cast<double>(model.scene.host.frameRate);
        // The last frame has the last pose, even if it is a little early.
        pose(model, player, frame == lastFrame ? std::max(time, seconds) : time);
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
        const ModelNode& node = at(model.nodes, bone);
        if (at(player.driven, bone) || node.bind == node.world) continue;
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

// Takes the tag "loop" out of a clip's name, where the exporter knows none; true if it was there, or if the name ends
// in the word.
bool takeLoopWord(std::string& name) {
    constexpr std::string_view kWord = "loop";
    bool found = false;
    const size_t colon = name.find(':');
    if (colon != std::string::npos) {
        std::string tags;
        for (size_t at = colon + 1; at <= name.size();) {
            const size_t end = std::min(name.find(',', at), name.size());
            const std::string tag = name.substr(at, end - at);
            if (equalIgnoringCase(tag, kWord)) {
                found = true;
            } else {
                tags += (tags.empty() ? "" : ",") + tag;
            }
            at = end + 1;
        }
        if (found) name = name.substr(0, colon) + (tags.empty() ? "" : ":") + tags;
    }
    const std::string base = name.substr(0, name.find(':'));
    if (base.size() <= kWord.size() || !equalIgnoringCase(base.substr(base.size() - kWord.size()), kWord)) return found;
    return found || std::isalnum(static_cast<unsigned char>(base[base.size() - kWord.size() - 1])) == 0;
}

void convertClip(Model& model, const SourceClip& source, const std::string& name, std::set<int32_t>& scaled) {
    Player player = newPlayer(model, source);
    if (player.recorded.empty()) {
        model.notes.others.push_back(skippedAnimation(name, " moves nothing that is exported and is skipped"));
        return;
    }
    const double rate = static_cast<double>(model.scene.host.frameRate);
    const double frames = std::max(1.0, std::round(source.seconds * rate));
    if (!((frames + 1) * static_cast<double>(player.recorded.size()) <= kMostKeys)) {
        model.notes.others.push_back(skippedAnimation(
            name, " is skipped: " + std::to_string(player.recorded.size()) + " nodes over " +
                      std::to_string(static_cast<long long>(std::min(frames, 1e15))) + " frames are too many to keep"));
        return;
    }
    Clip clip;
    clip.name = name;
    clip.end = static_cast<float>(frames);
    clip.loop = source.loops ? 1 : 0;
    // The scene stands in its bind pose, which is what vertices are bound in.
    clip.enabled = false;
    recordFrames(model, player, source.seconds, clip, scaled);
    model.scene.clips.push_back(std::move(clip));
}

}  // namespace

bool isMoving(const ModelNode& node, const SourceChannel& channel) {
    const TransformParts rest = restOf(*node.source);
    for (size_t k = 0; k < channel.location.times.size(); ++k) {
        if (!isSame(valueOf<Vector>(channel.location, k), rest.location)) return true;
    }
    for (size_t k = 0; k < channel.scale.times.size(); ++k) {
        if (!isSame(valueOf<Vector>(channel.scale, k), rest.scale)) return true;
    }
    for (size_t k = 0; k < channel.rotation.times.size(); ++k) {
        const Quaternion a = valueOf<Quaternion>(channel.rotation, k), b = rest.rotation;
        if (std::fabs(a.w * b.w + a.x * b.x + a.y * b.y + a.z * b.z) < 1 - kStill) return true;
    }
    return false;
}

void convertAnimations(Model& model) {
    if (model.source.losesSkeleton) {
        model.notes.others.push_back(aboutScene(
            load::kReaderLoss, "the reader of this format gets skeletons wrong; bones and animations are dropped"));
        return;
    }
    std::set<std::string> taken;
    std::set<int32_t> scaled;
    std::vector<bool> used(model.options.loops.size());
    for (SourceClip& clip : model.source.clips) {
        if (takeLoopWord(clip.name)) clip.loops = true;
        for (size_t p = 0; p < used.size(); ++p) {
            if (!matches(model.options.loops[p], nameWithoutTags(clip.name))) continue;
            used[p] = true;
            clip.loops = true;
        }
        if (model.error.empty()) convertClip(model, clip, clipName(clip.name, model.scene.clips.size(), taken), scaled);
    }
    for (size_t p = 0; p < used.size(); ++p) {
        if (used[p]) continue;
        model.notes.others.push_back(aboutScene(
            load::kPatternUnused, "no animation is called like " + model.options.loops[p] + ", which --loop gives"));
    }
    model.notes.scaledBones = scaled.size();
}

}  // namespace marrowfen::standin
