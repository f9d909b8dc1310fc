#include "standin/host/handle_table.h"

namespace marrowfen::standin {
namespace {

// A plug-in that goes on with a dead handle could fill the memory with its faults.
constexpr size_t kMostFaults = 1000;

const char* kindName(HandleKind kind) {
    switch (kind) {
        case HandleKind::Scene:
            return "scene";
        case HandleKind::Node:
            return "node";
        case HandleKind::Material:
            return "material";
        case HandleKind::Shader:
            return "shader";
        case HandleKind::ParameterValue:
            return "parameter value";
        case HandleKind::Muscle:
            return "muscle";
        default:
            return "tendon";
    }
}

}  // namespace

void HandleTable::addFault(const char* caller, const std::string& what) {
    if (faults_.size() < kMostFaults) faults_.push_back(std::string(caller) + ": " + what);
}

void HandleTable::expectFixed(const char* caller, int argument, int fixed) {
    if (argument != fixed) addFault(caller, std::to_string(argument) + " instead of " + std::to_string(fixed));
}

void* HandleTable::object(HandleKind kind, const void* handle, const char* caller) {
    const uintptr_t number = reinterpret_cast<uintptr_t>(handle);
    const auto found = entries_.find(number);
    if (found != entries_.end() && found->second.kind == kind) return found->second.object;

    const std::string wanted = kindName(kind);
    if (found != entries_.end()) {
        addFault(caller, std::string(kindName(found->second.kind)) + " handle instead of a " + wanted + " handle");
    } else if (number == 0) {
        addFault(caller, "null instead of a " + wanted + " handle");
    } else if (number <= last_ && number % kStep == 0) {
        addFault(caller, wanted + " handle that is no longer valid");
    } else {
        addFault(caller, "not a handle of this host");
    }
    return nullptr;
}

}  // namespace marrowfen::standin
