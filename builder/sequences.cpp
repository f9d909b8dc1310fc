#include <algorithm>
#include <vector>

#include "builder/shape_builder.h"
#include "builder/tags.h"
#include "ground/coding.h"

// Clips become sequences: each is played in the host frame by frame, and every bone and marker leaves one key a frame.
// A frame is set once for all nodes, since the host poses its whole scene at each change of time; the tables and the
// host's last frame are the same as if each node were sampled by itself.

namespace marrowfen {

namespace {

constexpr int32_t kDefaultFps = 30;  // when neither clip nor host has a usable rate
// Keys of all sequences and nodes together: half a gigabyte in memory. A host that reports more is mistaken about a
// clip's length.
constexpr int64_t kMostKeys = int64_t{1} << 24;

// Frames to sample, in order: forward, then back for a clip that toggles; at most `most` of them.
std::vector<float> framesOf(const ClipInfo& clip, int32_t most) {
    std::vector<float> frames;
    const auto isRoom = [&] { return frames.size() < static_cast<size_t>(most); };
    for (int64_t f = truncatedToInt32(clip.start); isRoom() && static_cast<float>(f) <= clip.end; ++f) {
        frames.push_back(static_cast<float>(f));
    }
    if (!clip.toggle) return frames;
    for (int64_t f = truncatedToInt32(clip.end - 1); isRoom() && static_cast<float>(f) >= clip.start; --f) {
        frames.push_back(static_cast<float>(f));
    }
    return frames;
}

}  // namespace

void ShapeBuilder::saveAnimationState() {
    savedPlayMode = tsxAnimGetPlayMode();
    savedActiveTime = tsxAnimGetActiveTime();
    tsxAnimSetPlayMode(0);
    tsxAnimSetActiveTimeScene(0);
}

void ShapeBuilder::restoreAnimationState() {
    tsxAnimSetPlayMode(savedPlayMode);
    tsxAnimSetActiveTimeScene(savedActiveTime);
}

void ShapeBuilder::readClip(TsxScene* scene, const std::string& text, ClipInfo& clip) {
    clip.fullName = text;
    clip.name = nameWithoutTags(text);

    int toggle = 0, loop = 0;
    clip.length = tsxClipsGetClipStartEnd(scene, clip.name.c_str(), &clip.start, &clip.end, &toggle, &loop);
    clip.toggle = toggle == 1;
    if (loop == 1) clip.flags |= Cyclic;
    clip.enabled = tsxClipsClipIsEnabled(scene, clip.name.c_str()) == 1;
    const int32_t hostFps = truncatedToInt32(tsxAnimGetBaseFramerate());
    clip.fps = hostFps;
    clip.priority = 1;
    if (clip.toggle) clip.length *= 2;
    clip.length += 1;

    log << "  Clip: name=" << clip.name << " start=" << clip.start << " end=" << clip.end << " length=" << clip.length
        << " toggle=" << (clip.toggle ? 1 : 0) << " loop=" << loop << std::endl;
    parseClipTags(clip, log);

    // No duration is infinite or negative.
    if (clip.fps <= 0) {
        const int32_t usable = hostFps > 0 ? hostFps : kDefaultFps;
        log << "  Frame rate " << clip.fps << " isn't positive, using " << usable << std::endl;
        clip.fps = usable;
    }
}

void ShapeBuilder::exportClips() {
    if (mode == ExportMode::ShapeOnly) return;
    TsxScene* scene = tsxGetScene();
    log << "Beginning to export clips" << std::endl;
    tsxClipsDisableAllClips(scene);
    for (const ClipInfo& clip : clips) {
        if (isExportable(clip)) exportClip(scene, clip);
        if (hasError()) break;
    }
    for (const ClipInfo& clip : clips) {
        if (clip.enabled) tsxClipsEnableClip(scene, clip.name.c_str());
    }
    if (hasError()) return;
    log << "End export clips" << std::endl << std::endl;
}

// A clip without a keyframe, or without a frame to take it from, would be a sequence that an engine can't play. One
// with far too many is an error before any memory is taken.
bool ShapeBuilder::isExportable(const ClipInfo& clip) {
    const int32_t keyFrames = truncatedToInt32(clip.length);
    if (keyFrames < 1 || framesOf(clip, 1).empty()) {
        log << "  Clip " << clip.name << " has no frames, skipping it" << std::endl;
        return false;
    }
    const auto held = static_cast<int64_t>(nodeTranslations.size());
    if (held + static_cast<int64_t>(nodes.size()) * keyFrames > kMostKeys) {
        setError("Clip " + clip.name + " has " + std::to_string(keyFrames) + " keyframes for each of " +
                 std::to_string(nodes.size()) + " nodes; an export holds at most " + std::to_string(kMostKeys) +
                 " keys.");
        return false;
    }
    return true;
}

void ShapeBuilder::exportClip(TsxScene* scene, const ClipInfo& clip) {
    tsxClipsEnableClip(scene, clip.name.c_str());

    Sequence s;
    // Scripts know a sequence by the name without its tags.
    s.nameIndex = findOrAddName(clip.name);
    s.flags = clip.flags | UniformScale;
    s.numKeyFrames = truncatedToInt32(clip.length);
    s.duration = static_cast<float>(s.numKeyFrames) / static_cast<float>(clip.fps);
    s.priority = clip.priority;
    s.baseRotation = static_cast<int32_t>(nodeRotations.size());
    s.baseTranslation = static_cast<int32_t>(nodeTranslations.size());
    for (IndexSet* matters : {&s.rotationMatters, &s.translationMatters}) {
        matters->resize(bones.size() + namedNodes.size());
        for (size_t i = 0; i < matters->size(); ++i) matters->set(i);
    }

    // What isn't sampled, the block of "Root", is written all the same: at rest.
    const size_t grown = nodeTranslations.size() + nodes.size() * static_cast<size_t>(s.numKeyFrames);
    nodeTranslations.resize(grown);
    nodeRotations.resize(grown);
    sampleNodes(s, clip);

    tsxClipsDisableClip(scene, clip.name.c_str());
    sequences.push_back(s);
}

// Each sampled node gets exactly numKeyFrames keys: surplus frames are dropped, missing ones repeat the last.
void ShapeBuilder::sampleNodes(const Sequence& sequence, const ClipInfo& clip) {
    const std::vector<float> frames = framesOf(clip, sequence.numKeyFrames);
    int32_t key = 0;
    for (const float frame : frames) {
        tsxAnimSetActiveTimeScene(frame);
        sampleFrame(sequence, key++);
    }

    const auto keyFrames = static_cast<size_t>(sequence.numKeyFrames);
    const size_t sampled = bones.size() + namedNodes.size();
    for (size_t n = 0; n < sampled; ++n) {
        const size_t block = static_cast<size_t>(sequence.baseTranslation) + n * keyFrames;
        const size_t last = block + frames.size() - 1;
        for (size_t k = last + 1; k < block + keyFrames; ++k) {
            nodeTranslations[k] = nodeTranslations[last];
            nodeRotations[k] = nodeRotations[last];
        }
    }
}

void ShapeBuilder::sampleFrame(const Sequence& sequence, int32_t key) {
    size_t entry = static_cast<size_t>(sequence.baseTranslation) + static_cast<size_t>(key);
    const auto take = [&](const Pose& pose) {
        nodeTranslations[entry] = pose.translation;
        nodeRotations[entry] = pose.rotation;
        entry += static_cast<size_t>(sequence.numKeyFrames);
    };
    for (const Pose& pose : bonePoses()) take(pose);
    for (const NamedNodeInfo& named : namedNodes) take(namedNodePose(named));
}

}  // namespace marrowfen
