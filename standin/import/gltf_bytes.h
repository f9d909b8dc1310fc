#pragma once

// The bytes that a glTF file refers to: its GLB chunks, external files and data URIs.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "standin/host/scene.h"

namespace marrowfen::standin {

struct GltfImage {
    std::string name;
    std::string path;   // of an external file, as the model says it; empty for none
    std::string bytes;  // of a data URI
    std::string mimeType;
    int32_t bufferView = -1;
};

struct GltfBuffer {
    std::string bytes;
    bool isThere = true;  // false for one that only says how large a compressed one would be
};

struct GltfBytes {
    std::string json;  // the model's text without buffers and images, which the lists below have
    std::vector<GltfBuffer> buffers;
    std::vector<GltfImage> images;
    std::vector<LookedFor> files;  // that were asked for
    std::string error;             // empty for none
};

// The byte offset that marks an accessor without a buffer view.
inline constexpr uint64_t kNoViewOffset = uint64_t{1} << 52;

// What is wrong with the text of a glTF file, behind "line:column: "; empty for nothing.
std::string gltfTextFault(const std::string& path);

// Reads the file and the buffers beside it. What lies outside the model's folder isn't opened, and images aren't at
// all.
GltfBytes readGltfBytes(const std::string& path);

}  // namespace marrowfen::standin
