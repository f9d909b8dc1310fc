#pragma once

// What there is to tell a person about a scene or a file, as records: whoever shows them chooses the form, and a
// program goes by the code.

#include <functional>
#include <string>

namespace marrowfen {

enum class Severity { Note, Warning, Error };

constexpr const char* severityWord(Severity severity) {
    return severity == Severity::Error ? "error" : severity == Severity::Warning ? "warning" : "note";
}

// The kind of a message. Each is one constant; two messages are of one kind if they point at the same.
struct MessageKind {
    const char* code;  // stable, for programs: "UNKNOWN_TAG"
    Severity severity;
    const char* headline;  // of one or many such messages: "unknown tags"
};

struct Message {
    enum class Place { Scene, Layer, Node, Clip };

    const MessageKind* kind = nullptr;
    Place place = Place::Scene;
    std::string name;  // of the layer, node or clip
    std::string text;  // what stands behind the headline: "\"frob\""
};

// Hears each message as it comes up.
using MessageListener = std::function<void(const Message&)>;

}  // namespace marrowfen
