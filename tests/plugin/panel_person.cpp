#include "tests/plugin/panel_person.h"

#include <map>

#include "plugin/resources/resource.h"

namespace marrowfen::test {

namespace {

const std::map<std::string, int> kControls = {{"Export", IDC_EXPORT_DTS},
                                              {"Export DSQ", IDC_EXPORT_DSQ},
                                              {"Add Node", IDC_ADD_NODE},
                                              {"About", IDC_ABOUT},
                                              {"Animation", IDC_WITH_ANIMATION}};

std::string entry(HWND panel, int index) {
    const auto at = static_cast<WPARAM>(index);
    const LRESULT length = SendDlgItemMessageA(panel, IDC_NODE_NAME, CB_GETLBTEXTLEN, at, 0);
    if (length < 0) return "none";
    std::string text(static_cast<size_t>(length) + 1, '\0');
    SendDlgItemMessageA(panel, IDC_NODE_NAME, CB_GETLBTEXT, at, reinterpret_cast<LPARAM>(text.data()));
    return text.c_str();
}

std::string entries(HWND panel) {
    constexpr int kMostShown = 8;
    const int count = static_cast<int>(SendDlgItemMessageA(panel, IDC_NODE_NAME, CB_GETCOUNT, 0, 0));
    if (count > kMostShown)
        return std::to_string(count) + " entries, " + entry(panel, 0) + " to " + entry(panel, count - 1);
    std::string all;
    for (int i = 0; i < count; ++i) all += (i > 0 ? "|" : "") + entry(panel, i);
    return all;
}

}  // namespace

void PanelPerson::noteMessage(const std::string& text, const std::string& caption, bool isError, bool isOfPanel) {
    note("message \"" + text + "\" (" + caption + ", " + (isError ? "error" : "information") +
         (isOfPanel ? ", owner panel)" : ", no owner)"));
}

void PanelPerson::noteProgress(int percent, const std::string& text) {
    note("progress " + std::to_string(percent) + " " + text);
}

void PanelPerson::noteSaveDialog(const std::string& initial, const std::vector<std::string>& filters) {
    std::string line = "save dialog: \"" + initial + "\"";
    for (const std::string& filter : filters) line += ", " + filter;
    note(line);
}

void PanelPerson::play(const std::vector<std::string>& steps) {
    for (const std::string& step : steps) playStep(step);
}

void PanelPerson::playStep(const std::string& step) {
    const auto after = [&](const std::string& verb) { return step.substr(verb.size() + 1); };
    if (step == "left click") {
        const int result = leftClick();
        note("left click: " + std::to_string(result));
    } else if (step == "right click") {
        rightClick();
    } else if (step == "deactivate") {
        deactivate();
    } else if (step == "close") {
        closePanel();
    } else if (step == "cancel") {
        fileName.reset();
    } else if (step == "look") {
        look();
    } else if (step.starts_with("save as ")) {
        fileName = after("save as");
    } else if (step.starts_with("type ")) {
        SetDlgItemTextA(panel(), IDC_NODE_NAME, after("type").c_str());
    } else if (step.starts_with("press ")) {
        press(kControls.at(after("press")));
    } else {
        note("no such step: " + step);
    }
}

void PanelPerson::look() {
    const HWND window = panel();
    if (window == nullptr) return note("panel closed");
    char name[256];
    GetDlgItemTextA(window, IDC_NODE_NAME, name, sizeof name);
    const bool isChecked = SendDlgItemMessageA(window, IDC_WITH_ANIMATION, BM_GETCHECK, 0, 0) == BST_CHECKED;
    note("panel: name \"" + std::string(name) + "\", animation " + (isChecked ? "on" : "off") + ", list [" +
         entries(window) + "]");
}

}  // namespace marrowfen::test
