#include <algorithm>
#include <cmath>
#include <map>

#include "ground/at.h"
#include "standin/import/gltf_reading.h"

// The animations of a glTF file, as clips.

namespace marrowfen::standin {

namespace {

std::string readTrack(GltfDocument& document, const tinygltf::AnimationSampler& sampler, size_t width,
                      SourceTrack& track) {
    std::vector<float> times;
    std::string fault = document.readFloats(sampler.input, 1, times);
    if (fault.empty()) fault = document.readFloats(sampler.output, width, track.values);
    if (!fault.empty()) return fault;
    if (sampler.interpolation == "STEP") track.interpolation = Interpolation::Step;
    if (sampler.interpolation == "CUBICSPLINE") track.interpolation = Interpolation::Cubic;
    const size_t parts = track.interpolation == Interpolation::Cubic ? 3 : 1;
    if (track.values.size() < times.size() * parts * width) return "it has fewer values than times";
    track.times.assign(times.begin(), times.end());
    return {};
}

SourceTrack* trackOf(SourceChannel& channel, const std::string& path) {
    if (path == "translation") return &channel.location;
    if (path == "rotation") return &channel.rotation;
    return path == "scale" ? &channel.scale : nullptr;
}

// Empty, else what is wrong.
std::string fillClip(GltfReading& reading, const tinygltf::Animation& source, SourceClip& clip) {
    std::map<int32_t, size_t> channelOf;
    bool hasShapes = false;
    for (const tinygltf::AnimationChannel& channel : source.channels) {
        if (channel.target_path == "weights") hasShapes = true;
        const int32_t target = indexWithin(channel.target_node, reading.nodeOf.size());
        const int32_t sampler = indexWithin(channel.sampler, source.samplers.size());
        if (target == kNone || at(reading.nodeOf, target) == kNone) continue;
        if (sampler == kNone) return "sampler " + std::to_string(channel.sampler) + " isn't there";
        const int32_t node = at(reading.nodeOf, target);
        const auto [entry, isNew] = channelOf.try_emplace(node, clip.channels.size());
        if (isNew) clip.channels.emplace_back().node = node;
        SourceTrack* track = trackOf(clip.channels[entry->second], channel.target_path);
        if (track == nullptr) continue;
        const std::string fault = readTrack(reading.document, at(source.samplers, sampler),
                                            channel.target_path == "rotation" ? 4 : 3, *track);
        if (!fault.empty()) return fault;
        if (!track->times.empty()) clip.seconds = std::max(clip.seconds, track->times.back());
    }
    if (hasShapes) ++reading.model.shapeClips;
    return {};
}

// glTF states no frame rate, but exporters write keys at whole frames: the first usual rate that all times fit, 0 for
// none.
double frameRateOf(const std::vector<SourceClip>& clips) {
    constexpr double kUsualRates[] = {30, 24, 25, 60, 50, 120};
    constexpr double kOffFrame = 0.01;  // of a frame
    const auto isWhole = [](double frames) { return std::fabs(frames - std::round(frames)) < kOffFrame; };
    for (const double rate : kUsualRates) {
        bool fits = !clips.empty();
        for (const SourceClip& clip : clips) {
            for (const SourceChannel& channel : clip.channels) {
                for (const SourceTrack* track : {&channel.location, &channel.rotation, &channel.scale}) {
                    fits = fits && std::all_of(track->times.begin(), track->times.end(),
                                               [&](double time) { return isWhole(time * rate); });
                }
            }
        }
        if (fits) return rate;
    }
    return 0;
}

}  // namespace

void addClips(GltfReading& reading) {
    for (size_t a = 0; a < reading.file().animations.size(); ++a) {
        const tinygltf::Animation& source = reading.file().animations[a];
        SourceClip clip;
        clip.name = cleanText(source.name);
        clip.loops =
            source.extras.Has("loop") && source.extras.Get("loop").IsBool() && source.extras.Get("loop").Get<bool>();
        const std::string fault = fillClip(reading, source, clip);
        if (!fault.empty()) {
            // An animation's fault is none of the meshes'.
            reading.model.remarks.push_back(
                skippedAnimation(clip.name.empty() ? std::to_string(a) : clip.name, " is skipped: " + fault));
        } else if (!clip.channels.empty()) {
            reading.model.clips.push_back(std::move(clip));
        }
    }
    reading.model.frameRate = frameRateOf(reading.model.clips);
}

}  // namespace marrowfen::standin
