#pragma once

#include <string>

#include "host/tsxapi.h"

namespace marrowfen {

// The host's name of a node, at most 127 bytes of it.
inline std::string nodeName(TsxNode* node) {
    char buffer[128] = {};
    tsxGNodeGetName(node, buffer, sizeof buffer);
    return buffer;
}

}  // namespace marrowfen
