#include "builder/passes.h"
#include "ground/at.h"
#include "ground/math.h"
#include "host/animation.h"

// Clips become sequences: each is played in the host frame by frame, and every bone and marker leaves one key a frame.
// A frame is set once for all nodes, since the host poses its whole scene at each change of time; the tables and the
// host's last frame are the same as if each node were sampled by itself.

namespace marrowfen {

namespace {

// Keys of all sequences and nodes together: 32 megabytes in memory and 20 in a file. A host that reports more is
// mistaken about a clip's length.
constexpr int64_t kMostKeys = int64_t{1} << 20;

// Frames to sample, in order: forward, then back for a clip that toggles; at most `most` of them.
std::vector<float> framesOf(const ClipInfo& clip, int32_t most) {
    std::vector<float> frames;
    const auto isRoom = [&] { return count32(frames) < most; };
    for (int64_t f = truncatedToInt32(clip.start); isRoom() && static_cast<float>(f) <= clip.end; ++f) {
        frames.push_back(static_cast<float>(f));
    }
    if (!clip.toggle) return frames;
    for (int64_t f = truncatedToInt32(clip.end - 1); isRoom() && static_cast<float>(f) >= clip.start; --f) {
        frames.push_back(static_cast<float>(f));
    }
    return frames;
}

// A clip without a keyframe, or without a frame to take it from, would be a sequence that an engine can't play.
bool hasFrames(const ClipInfo& clip) { return truncatedToInt32(clip.length) >= 1 && !framesOf(clip, 1).empty(); }

int64_t keysOf(const ClipInfo& clip, int32_t nodes) { return int64_t{nodes} * truncatedToInt32(clip.length); }

class ClipExport {
public:
    ClipExport(const std::vector<BoneInfo>& bones, const std::vector<MarkerInfo>& markers, Shape& shape)
        : bones_(bones), markers_(markers), shape_(shape) {}

    // Of a clip that plays in the host.
    void addSequence(const ClipInfo& clip);

private:
    void sampleNodes(const Shape::Sequence& sequence, const ClipInfo& clip);
    void sampleFrame(const Shape::Sequence& sequence, int32_t key);

    const std::vector<BoneInfo>& bones_;
    const std::vector<MarkerInfo>& markers_;
    Shape& shape_;
};

void ClipExport::addSequence(const ClipInfo& clip) {
    Shape::Sequence s;
    // Scripts know a sequence by the name without its tags.
    s.nameIndex = shape_.findOrAddName(clip.name);
    s.flags = clip.flags | Shape::UniformScale;
    s.numKeyFrames = truncatedToInt32(clip.length);
    s.duration = static_cast<float>(s.numKeyFrames) / static_cast<float>(clip.fps);
    s.priority = clip.priority;
    s.baseRotation = count32(shape_.nodeRotations);
    s.baseTranslation = count32(shape_.nodeTranslations);
    for (IndexSet* matters : {&s.rotationMatters, &s.translationMatters}) {
        matters->resize(bones_.size() + markers_.size());
        for (size_t i = 0; i < matters->size(); ++i) matters->set(i);
    }

    // What isn't sampled, the block of "Root", is written all the same: at rest.
    const size_t grown = shape_.nodeTranslations.size() + shape_.nodes.size() * static_cast<size_t>(s.numKeyFrames);
    shape_.nodeTranslations.resize(grown);
    shape_.nodeRotations.resize(grown);
    sampleNodes(s, clip);
    shape_.sequences.push_back(s);
}

// Each sampled node gets exactly numKeyFrames keys: surplus frames are dropped, missing ones repeat the last.
void ClipExport::sampleNodes(const Shape::Sequence& sequence, const ClipInfo& clip) {
    const std::vector<float> frames = framesOf(clip, sequence.numKeyFrames);
    int32_t key = 0;
    for (const float frame : frames) {
        showFrame(frame);
        sampleFrame(sequence, key++);
    }

    for (int32_t n = 0; n < count32(bones_) + count32(markers_); ++n) {
        const int32_t block = sequence.baseTranslation + n * sequence.numKeyFrames;
        const int32_t last = block + count32(frames) - 1;
        for (int32_t k = last + 1; k < block + sequence.numKeyFrames; ++k) {
            at(shape_.nodeTranslations, k) = at(shape_.nodeTranslations, last);
            at(shape_.nodeRotations, k) = at(shape_.nodeRotations, last);
        }
    }
}

void ClipExport::sampleFrame(const Shape::Sequence& sequence, int32_t key) {
    int32_t entry = sequence.baseTranslation + key;
    const auto take = [&](const Shape::Pose& pose) {
        at(shape_.nodeTranslations, entry) = pose.translation;
        at(shape_.nodeRotations, entry) = pose.rotation;
        entry += sequence.numKeyFrames;
    };
    for (const Shape::Pose& pose : bonePoses(bones_)) take(pose);
    for (const MarkerInfo& marker : markers_) take(markerPose(marker));
}

}  // namespace

std::vector<ClipInfo> playableClips(const std::vector<ClipInfo>& clips, int32_t nodes, Notices& notices) {
    std::vector<ClipInfo> playable;
    int64_t keys = 0;  // said before any memory is taken for them
    for (const ClipInfo& clip : clips) {
        std::string fault;
        if (!hasFrames(clip)) {
            fault = "has no frames";
        } else if (keys + keysOf(clip, nodes) > kMostKeys) {
            fault = "has " + std::to_string(truncatedToInt32(clip.length)) + " keyframes for each of " +
                    std::to_string(nodes) + " nodes, an export holds at most " + std::to_string(kMostKeys) + " keys";
        } else {
            keys += keysOf(clip, nodes);
            playable.push_back(clip);
            continue;
        }
        notices.tell("  Clip " + clip.name + " " + fault + ", skipping it",
                     {&kClipSkipped, Message::Place::Clip, clip.name, clip.name + " " + fault});
    }
    return playable;
}

void exportClips(const std::vector<ClipInfo>& clips, const std::vector<BoneInfo>& bones,
                 const std::vector<MarkerInfo>& markers, Shape& shape, Notices& notices) {
    std::ostream& log = notices.log();
    log << "Beginning to export clips" << std::endl;
    const SceneClips hostClips;
    hostClips.disableAll();
    ClipExport sequences(bones, markers, shape);
    for (const ClipInfo& clip : playableClips(clips, count32(shape.nodes), notices)) {
        hostClips.enable(clip.name);
        sequences.addSequence(clip);
        hostClips.disable(clip.name);
    }
    for (const ClipInfo& clip : clips) {
        if (clip.enabled) hostClips.enable(clip.name);
    }
    log << "End export clips" << std::endl << std::endl;
}

}  // namespace marrowfen
