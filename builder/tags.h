#pragma once

// Name tags: "Detail:size=64,billboard" and the like. Everything after a name's first ':' is a list of tags. Unknown
// tags are logged and passed over; nothing in a tag list is an error.

#include <ostream>
#include <string>

#include "builder/records.h"

namespace marrowfen {

void parseDetailTags(const std::string& name, LayerInfo& layer, std::ostream& log);
void parseCollisionTags(const std::string& name, LayerInfo& layer, std::ostream& log);
void parseBoundsTags(const std::string& name, TextureOptions& options, std::ostream& log);

// Reads the tags of clip.fullName.
void parseClipTags(ClipInfo& clip, std::ostream& log);

// The text before the first ':', or the whole text.
std::string nameWithoutTags(const std::string& name);

}  // namespace marrowfen
