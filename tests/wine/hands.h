#pragma once

// Real hands and eyes: keys, mouse and camera of the screen, which a program outside Windows moves (tests/wine/play). A
// request is a file in a folder; it is done when the file is gone.

#include <windows.h>

#include <string>

namespace marrowfen::test {

class Hands {
public:
    explicit Hands(std::string folder) : folder_(std::move(folder)) {}

    void press(const std::string& keys) const { ask("xdotool key --delay 30 " + keys); }
    void type(const std::string& text) const;
    void click(HWND control) const;
    void clickCloseBox(HWND window) const;
    void takePicture(const std::string& name) const;

private:
    void ask(const std::string& command) const;
    void clickAt(POINT place) const;

    std::string folder_;
};

}  // namespace marrowfen::test
