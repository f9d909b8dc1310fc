#include <set>

#include "builder/scan.h"
#include "builder/tags.h"
#include "ground/math.h"
#include "host/animation.h"
#include "shape/shape.h"

namespace marrowfen {

namespace {

constexpr int32_t kDefaultFps = 30;  // when neither clip nor host has a usable rate

ClipInfo readClip(const SceneClips& clips, const std::string& text, Notices& notices) {
    std::ostream& log = notices.log();
    ClipInfo clip;
    clip.fullName = text;
    clip.name = nameWithoutTags(text);

    const SceneClips::Range range = clips.range(clip.name);
    clip.start = range.start;
    clip.end = range.end;
    clip.toggle = range.toggle == 1;
    clip.length = (clip.toggle ? range.length * 2 : range.length) + 1;
    if (range.loop == 1) clip.flags |= Shape::Cyclic;
    clip.enabled = clips.isEnabled(clip.name);
    const int32_t hostFps = truncatedToInt32(hostFrameRate());
    clip.fps = hostFps;

    log << "  Clip: name=" << clip.name << " start=" << clip.start << " end=" << clip.end << " length=" << clip.length
        << " toggle=" << (clip.toggle ? 1 : 0) << " loop=" << range.loop << std::endl;
    parseClipTags(clip, notices);

    // No duration is infinite or negative.
    if (clip.fps <= 0) {
        const int32_t usable = hostFps > 0 ? hostFps : kDefaultFps;
        const std::string fault = std::to_string(clip.fps) + " isn't positive, using " + std::to_string(usable);
        notices.tell("  Frame rate " + fault, {&kFrameRate, Message::Place::Clip, clip.name, clip.name + ": " + fault});
        clip.fps = usable;
    }
    return clip;
}

// The host knows clips by their names alone, and plays the first of a name.
void tellSharedNames(const std::vector<ClipInfo>& clips, Notices& notices) {
    std::set<std::string> names, told;
    for (const ClipInfo& clip : clips) {
        if (names.insert(clip.name).second || !told.insert(clip.name).second) continue;
        notices.tell({&kSharedClipName, Message::Place::Clip, clip.name, clip.name});
    }
}

}  // namespace

std::vector<ClipInfo> scanClips(Notices& notices) {
    std::ostream& log = notices.log();
    log << "Beginning to scan scene for animation information" << std::endl;
    const SceneClips hostClips;
    const std::vector<std::string> names = hostClips.names();
    std::vector<ClipInfo> clips;
    if (names.empty()) {
        log << "  No animation clips found to export" << std::endl;
    } else {
        log << "  " << names.size() << " animation clips found" << std::endl;
        for (const std::string& name : names) clips.push_back(readClip(hostClips, name, notices));
        tellSharedNames(clips, notices);
    }
    log << "End animation scan" << std::endl << std::endl;
    return clips;
}

}  // namespace marrowfen
