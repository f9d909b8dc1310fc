#pragma once

// Plays the steps of a panel case and notes what is seen. What differs between the headless layer and a real screen is
// left to the two kinds of person.

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

#include "tests/plugin/panel_cases.h"

namespace marrowfen::test {

class PanelPerson {
public:
    virtual ~PanelPerson() = default;

    virtual int leftClick() = 0;
    virtual void rightClick() = 0;
    virtual void deactivate() = 0;
    virtual HWND panel() = 0;  // null when there is none
    virtual void press(int control) = 0;
    virtual void closePanel() = 0;

    void play(const std::vector<std::string>& steps);

    // Notes; each becomes a line of `seen`.
    void noteMessage(const std::string& text, const std::string& caption, bool isError, bool isOfPanel);
    void noteProgress(int percent, const std::string& text);
    void noteSaveDialog(const std::string& initial, const std::vector<std::string>& filters);
    virtual void note(const std::string& line) { seen.push_back(line); }

    std::vector<std::string> seen;
    std::optional<std::string> fileName;  // answer to save dialogs; none cancels

private:
    void playStep(const std::string& step);
    void look();
};

}  // namespace marrowfen::test
