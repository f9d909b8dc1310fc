#pragma once

// A glTF 2.0 file in the making: its JSON, and one binary buffer that grows with every accessor.

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace marrowfen::view {

// Appends to a list that may not be there yet. (The library's own way loses a value when there is no memory for it.)
void append(nlohmann::json& list, nlohmann::json entry);

class GltfFile {
public:
    enum class Use { Plain = 0, Vertices = 34962, Indices = 34963 };  // a buffer view's target
    enum class Bounds { Left, Given };                                // whether the accessor says its min and max

    // Everything but buffers, bufferViews and accessors.
    nlohmann::json json;

    // Appends an entry to one of the top-level lists and returns its index.
    int32_t add(const char* list, nlohmann::json entry);

    // Each appends an accessor and returns its index. `type` is the glTF name ("VEC3", ...); the values must be finite
    // and at least one element long.
    int32_t addFloats(const char* type, const std::vector<float>& values, Use use, Bounds bounds = Bounds::Left);
    int32_t addIndices(const std::vector<uint32_t>& values);  // in 16 bits where they fit
    int32_t addJoints(const std::vector<uint16_t>& values);   // four a vertex

    // The whole file in binary form; empty when it would exceed the format's 4 GiB.
    std::string glb() const;

private:
    int32_t addAccessor(const char* type, int componentType, size_t count, const std::string& bytes, Use use);

    std::string buffer_;
};

}  // namespace marrowfen::view
