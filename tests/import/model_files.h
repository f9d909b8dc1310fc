#pragma once

// Small models, written by the tests themselves.

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "standin/import/model_import.h"
#include "tests/files.h"

namespace marrowfen::standin {

struct ModelFolder : test::TestFolder {
    std::string write(const std::string& name, const std::string& content) const {
        test::writeFile(folder / name, content);
        return pathOf(name);
    }
    std::string pathOf(const std::string& name) const { return (folder / name).string(); }
};

// A glTF file with its numbers inside. json is free to be added to; the lists return accessor numbers. A file without
// nodes shows its first mesh, one without scenes its first node.
struct Gltf {
    nlohmann::json json = {{"asset", {{"version", "2.0"}}}, {"scene", 0}};
    std::string bytes;

    int view(const std::string& content) {
        json["bufferViews"].push_back({{"buffer", 0}, {"byteOffset", bytes.size()}, {"byteLength", content.size()}});
        bytes += content;
        return static_cast<int>(json["bufferViews"].size()) - 1;
    }
    template <typename T>
    int list(const std::vector<T>& values, const char* type, int componentType, size_t perElement) {
        while (bytes.size() % 4 != 0) bytes += '\0';
        const size_t size = values.size() * sizeof(T);
        nlohmann::json accessor = {{"bufferView", view({reinterpret_cast<const char*>(values.data()), size})},
                                   {"componentType", componentType},
                                   {"count", values.size() / perElement},
                                   {"type", type}};
        // Assimp takes the time range of animations from here.
        if constexpr (std::is_same_v<T, float>) {
            if (perElement == 1) accessor["min"] = {values.front()}, accessor["max"] = {values.back()};
        }
        json["accessors"].push_back(accessor);
        return static_cast<int>(json["accessors"].size()) - 1;
    }
    int scalars(const std::vector<float>& values) { return list(values, "SCALAR", 5126, 1); }
    int points(const std::vector<float>& values) { return list(values, "VEC3", 5126, 3); }
    int fours(const std::vector<float>& values) { return list(values, "VEC4", 5126, 4); }
    int matrices(const std::vector<float>& values) { return list(values, "MAT4", 5126, 16); }
    int bytesOfFour(const std::vector<uint8_t>& values) { return list(values, "VEC4", 5121, 4); }
    int triangle() { return points({0, 0, 0, 0, 0, 1, 1, 0, 0}); }

    // One more primitive of the first mesh.
    void addPrimitive(int places, nlohmann::json primitive = nlohmann::json::object()) {
        primitive["attributes"]["POSITION"] = places;
        json["meshes"][0]["primitives"].push_back(primitive);
    }

    // An animation's track.
    void animate(nlohmann::json& animation, int node, const char* path, int times, int values) {
        animation["samplers"].push_back({{"input", times}, {"output", values}});
        animation["channels"].push_back(
            {{"sampler", animation["samplers"].size() - 1}, {"target", {{"node", node}, {"path", path}}}});
    }

    std::string text() {
        static const char* kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        while (bytes.size() % 3 != 0) bytes += '\0';
        std::string coded;
        for (size_t i = 0; i < bytes.size(); i += 3) {
            const auto byte = [&](size_t k) { return static_cast<unsigned>(static_cast<unsigned char>(bytes[i + k])); };
            const unsigned word = byte(0) << 16 | byte(1) << 8 | byte(2);
            for (int shift = 18; shift >= 0; shift -= 6) coded += kDigits[word >> shift & 63];
        }
        json["buffers"] = {{{"byteLength", bytes.size()}, {"uri", "data:application/octet-stream;base64," + coded}}};
        if (!json.contains("nodes")) json["nodes"] = {{{"mesh", 0}}};
        if (!json.contains("scenes")) json["scenes"] = {{{"nodes", {0}}}};
        return json.dump();
    }
};

}  // namespace marrowfen::standin
