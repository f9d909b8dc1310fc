#pragma once

// Name tags: "Detail:size=64,billboard" and the like. Everything after a name's first ':' is a list of tags. Unknown
// tags are told of and passed over; nothing in a tag list is an error.

#include <cstddef>
#include <string>
#include <vector>

#include "builder/notices.h"
#include "builder/records.h"

namespace marrowfen {

// These read the tags of layer.name, of a bounds layer's name and of clip.fullName.
void parseDetailTags(LayerInfo& layer, Notices& notices);
void parseCollisionTags(LayerInfo& layer, Notices& notices);
void parseBoundsTags(const std::string& layerName, TextureOptions& options, Notices& notices);
// Nothing reads the tags of a nodes layer: says so of those that would work elsewhere.
void tellTagsOfNodesLayer(const std::string& layerName, Notices& notices);
void parseClipTags(ClipInfo& clip, Notices& notices);

// Whose tags there are.
enum class TagRole : size_t { DetailLayer, CollisionLayer, BoundsLayer, Clip, None };

// The tags of a name by whether that role knows them.
struct TagSplit {
    std::vector<std::string> understood, unknown;
};
TagSplit splitTags(const std::string& fullName, TagRole role);

// The text before the first ':', or the whole text.
std::string nameWithoutTags(const std::string& name);

}  // namespace marrowfen
