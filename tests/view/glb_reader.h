#pragma once

#include <array>
#include <cstring>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace marrowfen::test {

using Numbers = std::vector<double>;
using Place = std::array<double, 3>;

inline Place crossed(const Place& a, const Place& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

// Enough of a glTF reader to pose a model, written from the format's own rules.
struct Glb {
    nlohmann::json json;
    std::string binary;

    explicit Glb(const std::string& file) {
        const auto word = [&](size_t at) {
            uint32_t value = 0;
            std::memcpy(&value, file.data() + at, 4);
            return value;
        };
        json = nlohmann::json::parse(file.substr(20, word(12)));
        if (file.size() > 20 + word(12)) binary = file.substr(28 + word(12), word(20 + word(12)));
    }

    Numbers numbers(size_t accessor) const {
        const nlohmann::json& a = json["accessors"][accessor];
        const nlohmann::json& view = json["bufferViews"][a["bufferView"].get<size_t>()];
        const size_t width = a["componentType"] == 5123 ? 2 : 4;
        Numbers values;
        for (size_t at = view["byteOffset"]; values.size() < view["byteLength"].get<size_t>() / width; at += width) {
            uint32_t bits = 0;
            std::memcpy(&bits, binary.data() + at, width);
            float value = 0;
            std::memcpy(&value, &bits, 4);
            values.push_back(a["componentType"] == 5126 ? double{value} : static_cast<double>(bits));
        }
        return values;
    }

    // A node's own values, those of an animation's key where it has a channel for the node. Pass -1 for no animation.
    Numbers value(size_t node, const char* path, int animation, size_t key) const {
        Numbers own = json["nodes"][node].value(
            path, std::strcmp(path, "rotation") == 0 ? Numbers{0, 0, 0, 1} : Numbers{0, 0, 0});
        if (animation < 0) return own;
        const nlohmann::json& a = json["animations"][static_cast<size_t>(animation)];
        for (const nlohmann::json& channel : a["channels"]) {
            if (channel["target"]["node"] != node || channel["target"]["path"] != path) continue;
            const Numbers keys = numbers(a["samplers"][channel["sampler"].get<size_t>()]["output"]);
            const size_t last = keys.size() / own.size() - 1;  // of two keys where all are equal
            for (size_t i = 0; i < own.size(); ++i) own[i] = keys[std::min(key, last) * own.size() + i];
        }
        return own;
    }

    // A place of the node's space in that of the scene.
    Place inScene(size_t node, const Place& p, int animation, size_t key) const {
        const Numbers r = value(node, "rotation", animation, key);
        const Numbers t = value(node, "translation", animation, key);
        const Place axis = {r[0], r[1], r[2]}, once = crossed(axis, p), twice = crossed(axis, once);
        Place at{};
        for (size_t i = 0; i < 3; ++i) at[i] = p[i] + 2 * (r[3] * once[i] + twice[i]) + t[i];
        for (size_t parent = 0; parent < json["nodes"].size(); ++parent) {
            for (const nlohmann::json& child : json["nodes"][parent].value("children", nlohmann::json::array())) {
                if (child == node) return inScene(parent, at, animation, key);
            }
        }
        return at;
    }

    const nlohmann::json& primitiveOf(size_t node) const {
        return json["meshes"][json["nodes"][node]["mesh"].get<size_t>()]["primitives"][0];
    }

    // The place of a mesh node's vertex in the glTF scene. Skins here have one weight a vertex.
    Place placed(size_t node, size_t vertex, int animation, size_t key) const {
        const nlohmann::json& attributes = primitiveOf(node)["attributes"];
        const Numbers p = numbers(attributes["POSITION"]);
        const Place own = {p[vertex * 3], p[vertex * 3 + 1], p[vertex * 3 + 2]};
        if (!json["nodes"][node].contains("skin")) return inScene(node, own, animation, key);

        const nlohmann::json& skin = json["skins"][json["nodes"][node]["skin"].get<size_t>()];
        const auto joint = static_cast<size_t>(numbers(attributes["JOINTS_0"])[vertex * 4]);
        const Numbers all = numbers(skin["inverseBindMatrices"]);
        const double* m = &all[joint * 16];  // column by column
        Place inBone{};
        for (size_t i = 0; i < 3; ++i) inBone[i] = m[i] * own[0] + m[4 + i] * own[1] + m[8 + i] * own[2] + m[12 + i];
        return inScene(skin["joints"][joint], inBone, animation, key);
    }

    size_t nodeNamed(const std::string& name) const {
        for (size_t n = 0; n < json["nodes"].size(); ++n) {
            if (json["nodes"][n]["name"] == name) return n;
        }
        return static_cast<size_t>(-1);
    }
};

}  // namespace marrowfen::test
