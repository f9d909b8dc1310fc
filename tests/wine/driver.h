#pragma once

// What the driver program can be asked for; each prints what isn't as expected and answers whether all is.

#include <filesystem>
#include <string>

#include "tests/plugin/panel_cases.h"
#include "tests/wine/hands.h"
#include "tests/wine/host_thread.h"

namespace marrowfen::test {

// The plug-in's library and a folder for files.
struct Stage {
    HostThread& host;
    std::string plugin;
    std::filesystem::path folder;
};

// Lets the stand-in be a host with the case's scene; ends the program when it can't.
void openScene(const Stage& stage, const PanelCase& panelCase);

// Every panel case, each in a folder of its own.
bool playPanelCases(const Stage& stage);

// The exports of a list, a line each: scene file, output's name, and "animation" or nothing, with tabs between.
bool exportScenes(const Stage& stage, const std::string& list);

// What hosts do besides: loading again and again, a thousand exports, closing everything at the wrong time.
bool tryHost(const Stage& stage);

// The dialogs by mouse and keyboard.
bool tryHands(const Stage& stage, const Hands& hands);

}  // namespace marrowfen::test
