#pragma once

// What the builder tells: the export log's lines, and beside those that an artist should know of, messages.

#include <map>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>

#include "ground/excerpt.h"
#include "ground/message.h"

namespace marrowfen {

inline constexpr MessageKind kUnknownTag = {"UNKNOWN_TAG", Severity::Warning, "unknown tags"};
inline constexpr MessageKind kTagOfOtherRole = {"TAG_OF_OTHER_ROLE", Severity::Warning,
                                                "tags that do nothing where they stand"};
inline constexpr MessageKind kTagValue = {"TAG_VALUE", Severity::Warning, "tag values that aren't whole numbers"};
inline constexpr MessageKind kNearRole = {"NEAR_ROLE", Severity::Warning, "layers read as detail levels"};
inline constexpr MessageKind kLayerDropped = {"LAYER_DROPPED", Severity::Warning, "layers without polyhedra, left out"};
inline constexpr MessageKind kNodeOnNoLayer = {"NODE_ON_NO_LAYER", Severity::Warning, "on no layer, left out"};
inline constexpr MessageKind kNeverShows = {"NEVER_SHOWS", Severity::Warning, "layers that never show"};
inline constexpr MessageKind kSortWithAutoLod = {"SORT_WITH_AUTOLOD", Severity::Warning,
                                                 "sort and autolod don't go together"};
inline constexpr MessageKind kNormalsNotTurned = {
    "NORMALS_NOT_TURNED", Severity::Warning,
    "layers on a turned bone, whose vertices are turned and whose normals aren't"};
inline constexpr MessageKind kSortedAreaLost = {"SORTED_AREA_LOST", Severity::Warning,
                                                "sorted layers that lose some of their faces' area"};
inline constexpr MessageKind kNotFinite = {"NOT_FINITE", Severity::Warning,
                                           "layers with positions or normals that aren't finite numbers"};
inline constexpr MessageKind kFarFromOrigin = {"FAR_FROM_ORIGIN", Severity::Warning,
                                               "a shape that reaches beyond 1000000 units, where positions are coarse"};
inline constexpr MessageKind kSeveralBones = {"SEVERAL_BONES", Severity::Warning,
                                              "vertices held by several bones follow the first"};
inline constexpr MessageKind kSharedName = {"SHARED_NAME", Severity::Warning, "nodes that share a name"};
inline constexpr MessageKind kSharedClipName = {"SHARED_CLIP_NAME", Severity::Warning,
                                                "clips that share a name, of which the first is played for all"};
inline constexpr MessageKind kEmptyCollision = {"EMPTY_COLLISION", Severity::Warning,
                                                "collision shapes around nothing"};
inline constexpr MessageKind kOverruledCollision = {"OVERRULED_COLLISION", Severity::Warning,
                                                    "collision layers left out, the last one being of another shape"};
inline constexpr MessageKind kNoTexture = {"NO_TEXTURE", Severity::Warning,
                                           "faces without a texture, for which an engine looks for the file"};
inline constexpr MessageKind kFrameRate = {"FRAME_RATE", Severity::Warning, "frame rates that were replaced"};
inline constexpr MessageKind kClipSkipped = {"CLIP_SKIPPED", Severity::Warning, "clips that were skipped"};
inline constexpr MessageKind kClipLeftOut = {"CLIP_LEFT_OUT", Severity::Warning, "animations that aren't in the file"};

// All kinds, in the order in which a person wants to read them.
inline constexpr const MessageKind* kExportMessageKinds[] = {
    &kUnknownTag,   &kTagOfOtherRole,  &kTagValue,         &kNearRole,       &kLayerDropped,       &kNodeOnNoLayer,
    &kNeverShows,   &kSortWithAutoLod, &kNormalsNotTurned, &kSortedAreaLost, &kNotFinite,          &kFarFromOrigin,
    &kSeveralBones, &kSharedName,      &kSharedClipName,   &kEmptyCollision, &kOverruledCollision, &kNoTexture,
    &kFrameRate,    &kClipSkipped,     &kClipLeftOut};

// The export log, borrowed, and the listener to messages.
class Notices {
public:
    Notices(std::ostream& log, MessageListener listener) : log_(log), listener_(std::move(listener)) {}

    std::ostream& log() { return log_; }

    // A message without a line in the log. Of a long name or text the beginning is told, of very many of a kind the
    // first.
    void tell(const Message& message) {
        if (listener_ && ++told_[message.kind] <= kMostOfAKind)
            listener_({message.kind, message.place, excerpt(message.name), excerpt(message.text, kMostText)});
    }

    // What is in the way of a layer that ends the build; the error itself is the shape's.
    void tellRefusal(const MessageKind& kind, const std::string& layer, const std::string& facts) {
        tell({&kind, layer.empty() ? Message::Place::Scene : Message::Place::Layer, layer, facts});
    }

    // A line of the log, and the message that says the same.
    void tell(std::string_view logLine, const Message& message) {
        log_ << logLine << std::endl;
        tell(message);
    }

private:
    static constexpr size_t kMostText = 1000;      // in bytes
    static constexpr size_t kMostOfAKind = 10000;  // nobody reads more, and a small scene can be worth a million

    std::ostream& log_;
    const MessageListener listener_;
    std::map<const MessageKind*, size_t> told_;
};

}  // namespace marrowfen
