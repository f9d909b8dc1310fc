#pragma once

// A person at a real screen: acts on the windows of the user-interface thread from a thread of its own, by messages.

#include <windows.h>

#include <functional>
#include <mutex>
#include <set>
#include <string>

#include "tests/plugin/panel_person.h"
#include "tests/wine/host_thread.h"

namespace marrowfen::test {

class ScreenPerson : public PanelPerson {
public:
    // Loads the plug-in. files: where file names of save dialogs go.
    ScreenPerson(HostThread& host, const std::string& plugin, const std::string& files);
    ~ScreenPerson() override;

    int leftClick() override;
    void rightClick() override;
    void deactivate() override;
    HWND panel() override;
    void press(int control) override;
    void closePanel() override;
    void note(const std::string& line) override;

    // Looks at a dialog before it is answered; true when nothing is to be done about it.
    std::function<bool(HWND dialog)> meet = [](HWND) { return false; };
    std::function<void(int percent)> meetProgress = [](int) {};

    // Of the hook on the user-interface thread.
    void seeMessage(const CWPSTRUCT& message);

private:
    void runInHost(const std::function<void()>& act);
    void useDialogs();
    bool useDialog(HWND dialog);
    bool answerSaveDialog(HWND dialog);
    bool closeMessageBox(HWND box);
    bool closeAboutBox(HWND box);
    void noteCutTexts(HWND dialog);

    HostThread& host_;
    HMODULE plugin_ = nullptr;
    HHOOK hook_ = nullptr;
    std::string files_;
    std::set<HWND> handled_;  // dialogs that were answered and may take a while to go
    std::mutex noting_;
};

// The texts of a dialog's controls that their places don't hold.
std::vector<std::string> cutTexts(HWND dialog);

// What a dialog of this kind is.
bool isSaveDialog(HWND dialog);
bool isAboutBox(HWND dialog);
bool isQuestion(HWND dialog);  // with Yes and No

}  // namespace marrowfen::test
