#include "host/animation.h"

#include "host/host_text.h"
#include "host/tsxapi.h"

namespace marrowfen {

StoppedPlayback::StoppedPlayback() : playMode_(tsxAnimGetPlayMode()), activeTime_(tsxAnimGetActiveTime()) {
    tsxAnimSetPlayMode(0);
    tsxAnimSetActiveTimeScene(0);
}

StoppedPlayback::~StoppedPlayback() {
    tsxAnimSetPlayMode(playMode_);
    tsxAnimSetActiveTimeScene(activeTime_);
}

void showFrame(float frame) { tsxAnimSetActiveTimeScene(frame); }

float hostFrameRate() { return tsxAnimGetBaseFramerate(); }

SceneClips::SceneClips() : scene_(tsxGetScene()) {}

std::vector<std::string> SceneClips::names() const {
    char** texts = nullptr;
    const int count = tsxClipsGetClipNames(scene_, &texts);
    std::vector<std::string> names;
    for (int k = 0; k < count && texts != nullptr; ++k) names.push_back(hostText(texts[k]));
    return names;
}

SceneClips::Range SceneClips::range(const std::string& clip) const {
    Range range;
    range.length = tsxClipsGetClipStartEnd(scene_, clip.c_str(), &range.start, &range.end, &range.toggle, &range.loop);
    return range;
}

bool SceneClips::isEnabled(const std::string& clip) const { return tsxClipsClipIsEnabled(scene_, clip.c_str()) == 1; }

void SceneClips::enable(const std::string& clip) const { tsxClipsEnableClip(scene_, clip.c_str()); }

void SceneClips::disable(const std::string& clip) const { tsxClipsDisableClip(scene_, clip.c_str()); }

void SceneClips::disableAll() const { tsxClipsDisableAllClips(scene_); }

}  // namespace marrowfen
