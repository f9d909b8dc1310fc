#pragma once

#include <cstddef>
#include <string>

namespace marrowfen {

// "1 mesh", "2 meshes": a number and the words for one or for several.
inline std::string counted(size_t count, const char* one, const char* many) {
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

}  // namespace marrowfen
