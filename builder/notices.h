#pragma once

// What the builder tells: the export log's lines, and beside those that an artist should know of, messages.

#include <ostream>
#include <string_view>

#include "ground/message.h"

namespace marrowfen {

inline constexpr MessageKind kUnknownTag = {"UNKNOWN_TAG", Severity::Warning, "unknown tags"};
inline constexpr MessageKind kLayerDropped = {"LAYER_DROPPED", Severity::Warning, "layers without polyhedra, left out"};
inline constexpr MessageKind kNodeOnNoLayer = {"NODE_ON_NO_LAYER", Severity::Warning, "on no layer, left out"};
inline constexpr MessageKind kClipLeftOut = {"CLIP_LEFT_OUT", Severity::Warning, "animations that aren't in the file"};

// All kinds, in the order in which a person wants to read them.
inline constexpr const MessageKind* kExportMessageKinds[] = {&kUnknownTag, &kLayerDropped, &kNodeOnNoLayer,
                                                             &kClipLeftOut};

// The export log and the listener to messages, both borrowed.
class Notices {
public:
    Notices(std::ostream& log, const MessageListener& listener) : log_(log), listener_(listener) {}

    std::ostream& log() { return log_; }

    // A message without a line in the log.
    void tell(const Message& message) {
        if (listener_) listener_(message);
    }

    // A line of the log, and the message that says the same.
    void tell(std::string_view logLine, const Message& message) {
        log_ << logLine << std::endl;
        tell(message);
    }

private:
    std::ostream& log_;
    const MessageListener& listener_;
};

}  // namespace marrowfen
