#include "tests/wine/hands.h"

#include <cstdio>
#include <fstream>
#include <mutex>

#include "tests/wine/host_thread.h"

namespace marrowfen::test {

// Keys are still being pressed while the plug-in shows how far it is.
void Hands::ask(const std::string& command) const {
    static std::mutex asking;
    const std::lock_guard lock(asking);
    const std::string request = folder_ + "\\request";
    std::ofstream(request + ".new", std::ios::binary) << command << "\n";
    MoveFileA((request + ".new").c_str(), request.c_str());
    while (GetFileAttributesA(request.c_str()) != INVALID_FILE_ATTRIBUTES) Sleep(kPollMilliseconds);
}

void Hands::takePicture(const std::string& name) const {
    GdiFlush();
    ask("import -window root pictures/now/" + name + ".png");
}

// Backslashes are nothing to a shell within single quotes.
void Hands::type(const std::string& text) const { ask("xdotool type --delay 5 '" + text + "'"); }

void Hands::clickAt(POINT place) const {
    ask("xdotool mousemove " + std::to_string(place.x) + " " + std::to_string(place.y) + " sleep 0.05 click 1");
}

void Hands::click(HWND control) const {
    RECT area{};
    GetWindowRect(control, &area);
    clickAt({(area.left + area.right) / 2, (area.top + area.bottom) / 2});
}

void Hands::clickCloseBox(HWND window) const {
    RECT area{};
    GetWindowRect(window, &area);
    for (POINT place{area.right - 1, area.top + 1}; place.y < area.bottom; ++place.y) {
        for (place.x = area.right - 1; place.x > area.left; --place.x) {
            const LPARAM at = MAKELPARAM(place.x, place.y);
            if (SendMessageA(window, WM_NCHITTEST, 0, at) == HTCLOSE) return clickAt({place.x - 5, place.y + 5});
        }
    }
}

}  // namespace marrowfen::test
