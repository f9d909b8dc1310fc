#pragma once

// How the tsx functions get at what their handles stand for. Null, and a fault in the caller's name, for a handle that
// isn't a valid one of its kind: the function then answers with nothing.

#include <algorithm>
#include <cstring>
#include <string>

#include "standin/host/host_state.h"

namespace marrowfen::standin {

inline HostState& host() { return HostState::current(); }

inline HostNode* nodeOf(const TsxNode* handle, const char* caller) {
    return host().handles.find<HostNode>(HandleKind::Node, handle, caller);
}

inline HostNode* nodeOfType(const TsxNode* handle, TsxNodeType type, const char* caller) {
    HostNode* node = nodeOf(handle, caller);
    if (node == nullptr || node->node->type == type) return node;
    host().handles.addFault(caller, "node \"" + node->node->name + "\" is of type " + std::to_string(node->node->type) +
                                        " instead of " + std::to_string(type));
    return nullptr;
}

inline HostNode* polyhedronOf(const TsxNode* handle, const char* caller) {
    return nodeOfType(handle, TsxPolyhedron, caller);
}

// Copies text into a buffer of that size, cut to fit and terminated.
inline void copyText(const std::string& text, char* buffer, int size) {
    if (size <= 0) return;
    const size_t length = std::min(text.size(), static_cast<size_t>(size) - 1);
    std::memcpy(buffer, text.data(), length);
    buffer[length] = '\0';
}

}  // namespace marrowfen::standin
