#pragma once

// The host's animation: its play state and its clips. Times are frames.

#include <string>
#include <vector>

struct TsxScene;

namespace marrowfen {

// Stops the host at frame 0 and, at the end, puts the artist's play mode and time back.
class StoppedPlayback {
public:
    StoppedPlayback();
    ~StoppedPlayback();
    StoppedPlayback(const StoppedPlayback&) = delete;
    StoppedPlayback& operator=(const StoppedPlayback&) = delete;

private:
    int playMode_;
    float activeTime_;
};

void showFrame(float frame);  // all nodes take their poses at once
float hostFrameRate();        // frames per second

// The clips of the open scene. The host finds a clip by the text before the first ':' of its name.
class SceneClips {
public:
    SceneClips();

    std::vector<std::string> names() const;  // as the artist wrote them

    struct Range {
        float start = 0, end = 0;  // first and last frame
        float length = 0;          // frames, as the host counts them
        int toggle = 0;            // 1: plays forward and then back
        int loop = 0;              // 1: plays on and on
    };
    Range range(const std::string& clip) const;

    bool isEnabled(const std::string& clip) const;
    void enable(const std::string& clip) const;
    void disable(const std::string& clip) const;
    void disableAll() const;

private:
    TsxScene* scene_;
};

}  // namespace marrowfen
