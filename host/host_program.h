#pragma once

// The program that the plug-in runs in.

#include <cstdint>
#include <optional>
#include <string>

namespace marrowfen {

struct HostVersion {
    int16_t major = 0;  // 660 for 6.6
    int16_t minor = 0;
};
HostVersion hostVersion();

// Where it is installed; none when it doesn't say.
std::optional<std::string> hostFolder();

// The window (an HWND) of its main view, null when there is none now.
void* hostMainView();

}  // namespace marrowfen
