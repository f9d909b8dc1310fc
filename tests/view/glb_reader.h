#pragma once

#include <array>
#include <cstring>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace marrowfen::test {

using Numbers = std::vector<double>;
using Matrix = std::array<double, 16>;  // column by column, as in glTF

inline Matrix multiply(const Matrix& a, const Matrix& b) {
    Matrix product{};
    for (size_t i = 0; i < 16; ++i) {
        for (size_t k = 0; k < 4; ++k) product[i] += a[k * 4 + i % 4] * b[i / 4 * 4 + k];
    }
    return product;
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

    Matrix local(size_t node, int animation, size_t key) const {
        const Numbers r = value(node, "rotation", animation, key);
        const Numbers t = value(node, "translation", animation, key);
        const double x = r[0], y = r[1], z = r[2], w = r[3];
        return {1 - 2 * (y * y + z * z),
                2 * (x * y + z * w),
                2 * (x * z - y * w),
                0,
                2 * (x * y - z * w),
                1 - 2 * (x * x + z * z),
                2 * (y * z + x * w),
                0,
                2 * (x * z + y * w),
                2 * (y * z - x * w),
                1 - 2 * (x * x + y * y),
                0,
                t[0],
                t[1],
                t[2],
                1};
    }

    Matrix world(size_t node, int animation, size_t key) const {
        for (size_t parent = 0; parent < json["nodes"].size(); ++parent) {
            for (const nlohmann::json& child : json["nodes"][parent].value("children", nlohmann::json::array())) {
                if (child == node) return multiply(world(parent, animation, key), local(node, animation, key));
            }
        }
        return local(node, animation, key);
    }

    // The place of a mesh node's vertex in the glTF scene. Skins here have one weight a vertex.
    std::array<double, 3> placed(size_t node, size_t vertex, int animation, size_t key) const {
        const nlohmann::json& n = json["nodes"][node];
        const nlohmann::json& attributes = json["meshes"][n["mesh"].get<size_t>()]["primitives"][0]["attributes"];
        Matrix m;
        if (n.contains("skin")) {
            const nlohmann::json& skin = json["skins"][n["skin"].get<size_t>()];
            const auto joint = static_cast<size_t>(numbers(attributes["JOINTS_0"])[vertex * 4]);
            const Numbers bind = numbers(skin["inverseBindMatrices"]);
            Matrix inverseBind;
            std::copy_n(bind.begin() + static_cast<std::ptrdiff_t>(joint * 16), 16, inverseBind.begin());
            m = multiply(world(skin["joints"][joint], animation, key), inverseBind);
        } else {
            m = world(node, animation, key);
        }
        const Numbers p = numbers(attributes["POSITION"]);
        std::array<double, 3> at{};
        for (size_t i = 0; i < 3; ++i) {
            at[i] = m[i] * p[vertex * 3] + m[4 + i] * p[vertex * 3 + 1] + m[8 + i] * p[vertex * 3 + 2] + m[12 + i];
        }
        return at;
    }

    size_t nodeNamed(const std::string& name) const {
        for (size_t n = 0; n < json["nodes"].size(); ++n) {
            if (json["nodes"][n]["name"] == name) return n;
        }
        return static_cast<size_t>(-1);
    }
};

}  // namespace marrowfen::test
