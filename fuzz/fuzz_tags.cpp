// Any text as a layer's or a clip's name: unknown tags are passed over, and the values stay in their ranges.

#include <sstream>
#include <string>

#include "builder/tags.h"
#include "fuzz/require.h"

using namespace marrowfen;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string name(reinterpret_cast<const char*>(data), size);
    std::ostringstream log;
    const MessageListener listener = [](const Message& message) {
        REQUIRE(message.kind == &kUnknownTag || message.kind == &kTagOfOtherRole || message.kind == &kTagValue);
    };
    Notices notices(log, listener);
    LayerInfo layer;
    layer.name = name;
    parseDetailTags(layer, notices);
    parseCollisionTags(layer, notices);
    REQUIRE(layer.collisionType >= CollisionType::BoxCollision && layer.collisionType <= CollisionType::MeshCollision);
    TextureOptions options;
    parseBoundsTags(name, options, notices);
    ClipInfo clip;
    clip.fullName = name;
    parseClipTags(clip, notices);
    REQUIRE(name.compare(0, nameWithoutTags(name).size(), nameWithoutTags(name)) == 0);
    return 0;
}
