#pragma once

#include <string>

namespace marrowfen {

// A copy of a text that the host lends; a null one is empty.
inline std::string hostText(const char* text) { return text == nullptr ? std::string() : std::string(text); }

}  // namespace marrowfen
