// The dialogs by mouse and keyboard.

#include <windows.h>

#include <cstdio>
#include <fstream>

#include "plugin/resources/resource.h"
#include "tests/wine/driver.h"
#include "tests/wine/screen_person.h"
#include "tests/wine/standin_entry.h"

namespace marrowfen::test {

namespace {

namespace fs = std::filesystem;

constexpr ULONGLONG kPatienceMilliseconds = 30000;

// What is done, and what has the keyboard then: the active window and in it a control, by its text or its number.
struct Step {
    std::string act;
    std::string state;
};

std::string nameOf(HWND control) {
    // A combo box's text is typed into a window of its own.
    if (classOf(GetParent(control)) == "ComboBox") control = GetParent(control);
    std::string name = classOf(control) == "Button" ? textOf(control) : "#" + std::to_string(GetDlgCtrlID(control));
    if (SendMessageA(control, BM_GETCHECK, 0, 0) == BST_CHECKED) name += " (on)";
    return name;
}

std::string stateOf(const HostThread& host) {
    GUITHREADINFO info{};
    info.cbSize = sizeof info;
    GetGUIThreadInfo(host.id(), &info);
    if (info.hwndActive == host.mainView()) return "host";
    if (info.hwndActive == nullptr || info.hwndFocus == nullptr) return "nothing";
    return textOf(info.hwndActive) + ": " + nameOf(info.hwndFocus);
}

HWND activeWindow(const HostThread& host) {
    GUITHREADINFO info{};
    info.cbSize = sizeof info;
    GetGUIThreadInfo(host.id(), &info);
    return info.hwndActive;
}

class HandPlayer {
public:
    HandPlayer(const Stage& stage, const Hands& hands) : stage_(stage), hands_(hands) {}

    bool play(const std::vector<Step>& steps) {
        for (const Step& step : steps) {
            act(step.act);
            if (!waitFor(step)) return false;
        }
        if (hasFailed_) std::printf("FAILED: a file was replaced, or wasn't\n");
        return !hasFailed_;
    }

private:
    void act(const std::string& act) {
        const std::string verb = act.substr(0, act.find(' ')), rest = act.substr(act.find(' ') + 1);
        HWND window = activeWindow(stage_.host);
        if (verb == "press") hands_.press(rest);
        if (verb == "type") hands_.type(rest);
        if (verb == "name") hands_.type((stage_.folder / rest).string());
        if (verb == "click") hands_.click(GetDlgItem(window, std::stoi(rest)));
        if (act == "close box") hands_.clickCloseBox(window);
        if (verb == "picture") hands_.takePicture(rest);
        if (verb == "empty") std::ofstream(stage_.folder / rest, std::ios::trunc).flush();
        if (verb == "empty?" || verb == "full?") hasFailed_ |= fs::is_empty(stage_.folder / rest) != (verb == "empty?");
    }

    bool waitFor(const Step& step) const {
        const ULONGLONG start = GetTickCount64();
        std::string seen;
        while ((seen = stateOf(stage_.host)) != step.state && GetTickCount64() - start < kPatienceMilliseconds) {
            Sleep(kPollMilliseconds);
        }
        if (seen == step.state) return true;
        std::printf("FAILED: after \"%s\" there is \"%s\", expected \"%s\"\n", step.act.c_str(), seen.c_str(),
                    step.state.c_str());
        hands_.takePicture("failed");
        return false;
    }

    const Stage& stage_;
    const Hands& hands_;
    bool hasFailed_ = false;
};

// The panel from its first control to its last and back, the check box and the list by their keys.
const std::vector<Step> kTabOrder = {
    {"nothing", "Marrowfen: #1000"},
    {"press Tab", "Marrowfen: Add Node"},
    {"press Tab", "Marrowfen: Export With Animation"},
    {"press Tab", "Marrowfen: Export"},
    {"press Tab", "Marrowfen: Export DSQ"},
    {"press Tab", "Marrowfen: About"},
    {"press Tab", "Marrowfen: #1000"},
    {"picture panel", "Marrowfen: #1000"},
    {"press shift+Tab", "Marrowfen: About"},
    {"press Escape", "Marrowfen: About"},  // the panel has no Cancel
    {"press space", "Dialog: OK"},
    {"picture about", "Dialog: OK"},
    {"press Escape", "Dialog: OK"},  // nor has the About box
    {"press Return", "Marrowfen: About"},
    {"click 1003", "Dialog: OK"},
    {"press alt+F4", "Marrowfen: About"},
    {"click 1003", "Dialog: OK"},
    {"click 1", "Marrowfen: About"},
    {"click 1006", "Marrowfen: Export With Animation (on)"},
    {"press space", "Marrowfen: Export With Animation"},
    {"press space", "Marrowfen: Export With Animation (on)"},
};

// Enter exports from wherever the focus is; the question about an old file is answered in both ways.
const std::vector<Step> kExports = {
    {"press Return", "Save As: #1148"},
    {"press Escape", "Marrowfen: Export With Animation (on)"},
    {"press Return", "Save As: #1148"},
    {"name ship", "Save As: #1148"},
    {"picture save", "Save As: #1148"},
    {"press Return", "Marrowfen: OK"},
    {"picture complete", "Marrowfen: OK"},
    {"press Return", "Marrowfen: Export With Animation (on)"},
    {"empty ship.dts", "Marrowfen: Export With Animation (on)"},
    {"press Return", "Save As: #1148"},
    {"name ship.dts", "Save As: #1148"},
    {"press alt+s", "Error: &Yes"},
    {"picture question", "Error: &Yes"},
    {"press alt+n", "Save As: &Save"},
    {"press Escape", "Marrowfen: Export With Animation (on)"},
    {"empty? ship.dts", "Marrowfen: Export With Animation (on)"},
    {"press Return", "Save As: #1148"},
    {"name ship.dts", "Save As: #1148"},
    {"press Return", "Error: &Yes"},
    {"press alt+y", "Marrowfen: OK"},
    {"press Escape", "Marrowfen: Export With Animation (on)"},
    {"full? ship.dts", "Marrowfen: Export With Animation (on)"},
    {"click 1013", "Save As: #1148"},
    {"name walk", "Save As: #1148"},
    {"click 1", "Marrowfen: OK"},
    {"click 1", "Marrowfen: Export DSQ"},
    {"full? walk.dsq", "Marrowfen: Export DSQ"},
};

// A marker by keyboard, and the panel's close box.
const std::vector<Step> kMarker = {
    {"press Tab", "Marrowfen: About"},    {"press Tab", "Marrowfen: #1000"},      {"type mount9", "Marrowfen: #1000"},
    {"press Tab", "Marrowfen: Add Node"}, {"press space", "Marrowfen: Add Node"}, {"close box", "host"},
};

}  // namespace

bool tryHands(const Stage& stage, const Hands& hands) {
    openScene(stage, {});
    bool isGood = false;
    {
        ScreenPerson person(stage.host, stage.plugin, "");
        person.meetProgress = [&](int percent) {
            if (percent == 60) hands.takePicture("progress");
        };
        person.leftClick();
        HandPlayer player(stage, hands);
        isGood = player.play(kTabOrder) && player.play(kExports) && player.play(kMarker);
        for (const std::string& line : person.seen) {
            if (line.starts_with("cut: ")) std::printf("FAILED: %s\n", line.c_str()), isGood = false;
        }
    }
    const std::string left = standinUnload();
    const bool hasMarker = left.find("\"mount9\"") != std::string::npos;
    if (isGood && !hasMarker) std::printf("FAILED: no marker was added\n");
    return isGood && hasMarker;
}

}  // namespace marrowfen::test
