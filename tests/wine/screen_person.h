#pragma once

// A person at a real screen: acts on the windows of the user-interface thread from a thread of its own.

#include <windows.h>

#include <functional>
#include <mutex>
#include <set>
#include <string>

#include "tests/plugin/panel_person.h"

namespace marrowfen::test {

class ScreenPerson : public PanelPerson {
public:
    // Runs what is sent to it as the host would call it; its thread is the user-interface thread.
    static constexpr UINT kRunMessage = WM_APP + 1;

    // files: where file names of save dialogs go. shots: where pictures of the windows go; empty for nowhere.
    ScreenPerson(HWND mainView, const std::string& plugin, const std::string& files, const std::string& shots);
    ~ScreenPerson() override;

    int leftClick() override;
    void rightClick() override;
    void deactivate() override;
    HWND panel() override;
    void press(int control) override;
    void closePanel() override;
    void note(const std::string& line) override;

    // Of the hook on the user-interface thread.
    void seeMessage(const CWPSTRUCT& message);

private:
    void runInHost(const std::function<void()>& act);
    void useDialogs();
    bool useDialog(HWND dialog);
    bool answerSaveDialog(HWND dialog);
    bool closeMessageBox(HWND box);
    bool closeAboutBox(HWND box);
    void takePicture(const std::string& name);

    HWND mainView_;
    DWORD uiThread_;
    HMODULE plugin_ = nullptr;
    HHOOK hook_ = nullptr;
    std::string files_;
    std::string shots_;
    std::set<HWND> handled_;  // dialogs that were answered and may take a while to go
    std::mutex noting_;
};

}  // namespace marrowfen::test
