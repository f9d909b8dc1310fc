#pragma once

// A glTF 2.0 file whose parts can be asked for: every index and every range of bytes is checked when it is used.

#include <tiny_gltf.h>

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "standin/import/gltf_bytes.h"

namespace marrowfen::standin {

class GltfDocument {
public:
    // Reads and parses the file; error() says what is wrong with it.
    explicit GltfDocument(const std::string& path);

    const tinygltf::Model& model() const { return model_; }
    const std::vector<GltfImage>& images() const { return bytes_.images; }
    const std::vector<LookedFor>& files() const { return bytes_.files; }
    const std::string& error() const { return error_; }  // empty for none

    // The bytes of a buffer view, decompressed; false and a fault when it doesn't hold.
    bool viewBytes(int32_t view, std::string_view& bytes, std::string& fault);

    // The numbers of an accessor with the given count of components, normalised as it says. Empty, else what is wrong.
    std::string readFloats(int32_t accessor, size_t components, std::vector<float>& values);
    std::string readIntegers(int32_t accessor, size_t components, std::vector<uint32_t>& values);

private:
    struct Elements;
    std::string findElements(int32_t accessor, size_t components, Elements& elements);
    std::string decompressView(const tinygltf::BufferView& view, std::string& bytes);
    template <typename Number>
    std::string readNumbers(int32_t accessor, size_t components, std::vector<Number>& values);
    template <typename Number>
    std::string readSparse(const tinygltf::Accessor& accessor, size_t components, std::vector<Number>& values);

    GltfBytes bytes_;
    tinygltf::Model model_;
    std::map<int32_t, std::string> decompressed_;  // by view
    std::string error_;
};

// The index of a list that a file names, or kNone where it is out of range.
int32_t indexWithin(int32_t index, size_t count);

}  // namespace marrowfen::standin
