#pragma once

// The handles that the stand-in host gives out. A handle is a number that is never used again, not an address, so that
// one that was given back, or that never was one, is found out whatever has become of the memory behind it.

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace marrowfen::standin {

enum class HandleKind { Scene, Node, Material, Shader, ParameterValue, Muscle, Tendon };

class HandleTable {
public:
    // A handle for an object; owned is released when the handle is removed.
    template <class Handle>
    Handle* add(HandleKind kind, const void* object, std::shared_ptr<void> owned = nullptr) {
        last_ += kStep;
        entries_[last_] = {kind, const_cast<void*>(object), std::move(owned)};
        return reinterpret_cast<Handle*>(last_);
    }

    // The object behind a handle of that kind. Null, and a fault in the caller's name, if there is none.
    template <class Object>
    Object* find(HandleKind kind, const void* handle, const char* caller) {
        return static_cast<Object*>(object(kind, handle, caller));
    }

    void remove(const void* handle) { entries_.erase(reinterpret_cast<uintptr_t>(handle)); }

    // Records "caller: what".
    void addFault(const char* caller, const std::string& what);
    // Of an argument whose meaning is the real host's own: its value is always the same.
    void expectFixed(const char* caller, int argument, int fixed);
    const std::vector<std::string>& faults() const { return faults_; }

private:
    struct Entry {
        HandleKind kind;
        void* object;
        std::shared_ptr<void> owned;
    };

    static constexpr uintptr_t kStep = 16;  // looks like an address, which helps in a debugger

    std::unordered_map<uintptr_t, Entry> entries_;
    uintptr_t last_ = 0;
    std::vector<std::string> faults_;

    void* object(HandleKind kind, const void* handle, const char* caller);
};

}  // namespace marrowfen::standin
