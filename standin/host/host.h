#pragma once

// The stand-in host: an in-memory scene that answers the functions of host/tsxapi.h.

#include <memory>
#include <string>
#include <vector>

#include "standin/host/scene.h"

struct TsxNode;

namespace marrowfen::standin {

class HostState;  // what the tsx functions work on (standin/host/host_state.h)

class Host {
public:
    // Takes a scene that readSceneFile or importModel accepted, and becomes the host that the tsx functions answer
    // for, until it is destroyed. There is one at a time.
    explicit Host(Scene scene);
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    // The scene as it is now, with the layers and objects that the plug-in added; otherwise what was given.
    Scene scene() const;

    // Ownership of what was handed out: handles not yet given back, and misuse (double delete, use after delete,
    // handles of the wrong kind), a line each.
    int liveHandles() const;
    const std::vector<std::string>& faults() const;

    // From now on each call that changes or samples the host's animation state is noted, a line each, such as
    // "tsxAnimSetActiveTimeScene 3" or "tsxGNodeGetPureTransform arm".
    void recordCalls();
    const std::vector<std::string>& calls() const;

    // What tsxGetMainViewHwnd answers from now on; null before.
    void setMainView(void* window);

    // Makes the next tsxAddNewLayerEx fail.
    void refuseNewLayers();

private:
    std::unique_ptr<HostState> state_;
};

}  // namespace marrowfen::standin
