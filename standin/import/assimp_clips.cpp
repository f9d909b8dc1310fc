#include <algorithm>
#include <cmath>

#include "standin/import/assimp_reading.h"

namespace marrowfen::standin {

namespace {

constexpr double kDefaultTicksPerSecond = 25;  // of files that name none

template <typename KeyType>
void addKey(const KeyType& key, double ticksPerSecond, SourceTrack& track) {
    track.times.push_back(key.mTime / ticksPerSecond);
    if constexpr (std::is_same_v<KeyType, aiQuatKey>) {
        track.values.insert(track.values.end(), {key.mValue.x, key.mValue.y, key.mValue.z, key.mValue.w});
    } else {
        track.values.insert(track.values.end(), {key.mValue.x, key.mValue.y, key.mValue.z});
    }
}

template <typename KeyType>
SourceTrack trackOf(const KeyType* keys, unsigned count, double ticksPerSecond) {
    SourceTrack track;
    for (unsigned k = 0; keys != nullptr && k < count; ++k) addKey(keys[k], ticksPerSecond, track);
    return track;
}

double lastTime(const SourceTrack& track) { return track.times.empty() ? 0 : track.times.back(); }

void addClip(AssimpReading& reading, const aiAnimation& source) {
    if (source.mNumMorphMeshChannels > 0 || source.mNumMeshChannels > 0) ++reading.model.shapeClips;
    if (source.mNumChannels == 0) return;
    const double ticksPerSecond = source.mTicksPerSecond > 0 ? source.mTicksPerSecond : kDefaultTicksPerSecond;
    SourceClip clip;
    clip.name = textOf(source.mName);
    clip.seconds = source.mDuration / ticksPerSecond;
    double last = 0;
    std::unordered_map<int32_t, size_t> channelOf;
    for (unsigned c = 0; c < source.mNumChannels; ++c) {
        const aiNodeAnim& track = *source.mChannels[c];
        SourceChannel channel;
        channel.node = findNode(reading, track.mNodeName);
        channel.location = trackOf(track.mPositionKeys, track.mNumPositionKeys, ticksPerSecond);
        channel.rotation = trackOf(track.mRotationKeys, track.mNumRotationKeys, ticksPerSecond);
        channel.scale = trackOf(track.mScalingKeys, track.mNumScalingKeys, ticksPerSecond);
        last = std::max({last, lastTime(channel.location), lastTime(channel.rotation), lastTime(channel.scale)});
        if (track.mPostState == aiAnimBehaviour_REPEAT) clip.loops = true;
        if (channel.node == kNone) continue;
        const auto [entry, isNew] = channelOf.try_emplace(channel.node, clip.channels.size());
        if (isNew) {
            clip.channels.push_back(std::move(channel));
        } else {
            clip.channels[entry->second] = std::move(channel);
        }
    }
    if (!(clip.seconds > 0)) clip.seconds = last;
    reading.model.clips.push_back(std::move(clip));
}

// Where keys lie on whole ticks, a tick is a frame.
double frameRateOf(const aiScene& scene) {
    constexpr double kMostFrames = 240;
    for (unsigned a = 0; a < scene.mNumAnimations; ++a) {
        const aiAnimation& animation = *scene.mAnimations[a];
        const double rate = animation.mTicksPerSecond;
        if (!(rate >= 1) || rate > kMostFrames || animation.mNumChannels == 0) continue;
        const aiNodeAnim& track = *animation.mChannels[0];
        if (track.mNumRotationKeys < 2) continue;
        bool whole = true;
        for (unsigned k = 0; k < track.mNumRotationKeys && whole; ++k) {
            const double time = track.mRotationKeys[k].mTime;
            whole = std::fabs(time - std::round(time)) < 1e-3;
        }
        if (whole) return rate;
    }
    return 0;
}

}  // namespace

void addClips(AssimpReading& reading) {
    const aiScene& scene = reading.scene;
    for (unsigned a = 0; a < scene.mNumAnimations; ++a) addClip(reading, *scene.mAnimations[a]);
    reading.model.frameRate = frameRateOf(scene);
}

}  // namespace marrowfen::standin
