#include <gtest/gtest.h>

#include <cmath>
#include <map>

#include "tests/import/model_files.h"

namespace marrowfen::standin {
namespace {

using nlohmann::json;

// What became of a model, with its nodes by what clips call them.
struct Imported {
    explicit Imported(Gltf& gltf) {
        const ModelFolder folder;
        const LoadResult result = importModel(folder.write("a.gltf", gltf.text()), {});
        EXPECT_EQ(result.error, "");
        scene = result.scene.value_or(Scene{});
        list(scene.nodes);
    }

    void list(const std::vector<Node>& of) {
        for (const Node& node : of) {
            nodes[node.identity()] = &node;
            list(node.children);
        }
    }

    const std::vector<Key>& keysOf(size_t clip, const std::string& id) const {
        for (const auto& [node, keys] : scene.clips.at(clip).keys) {
            if (node == id) return keys;
        }
        throw std::out_of_range("no keys of " + id);
    }

    Scene scene;
    std::map<std::string, const Node*> nodes;
};

Vec3 apply(const Transform& t, const Vec3& v) {
    Vec3 result;
    for (size_t r = 0; r < 3; ++r)
        result[r] = t[r * 4] * v[0] + t[r * 4 + 1] * v[1] + t[r * 4 + 2] * v[2] + t[r * 4 + 3];
    return result;
}

// Of a rotation and a place.
Vec3 applyInverse(const Transform& t, const Vec3& v) {
    const Vec3 d = {v[0] - t[3], v[1] - t[7], v[2] - t[11]};
    Vec3 result;
    for (size_t c = 0; c < 3; ++c) result[c] = t[c] * d[0] + t[4 + c] * d[1] + t[8 + c] * d[2];
    return result;
}

// An arm upward: bone 1 "shoulder" at the origin, bone 2 "elbow" at (0, 1, 0) with the tip 3 at its end, in the node 0
// "Armature" with the mesh 4. Vertices: the root (shoulder), the middle (0.4 shoulder, 0.6 elbow), the end (elbow). In
// one second the shoulder moves 3 along x and the elbow turns a quarter about z.
Gltf arm(const json& armature) {
    Gltf gltf;
    const int places = gltf.points({0, 0, 0, 0.25F, 1, 0, 0, 2, 0});
    const int joints = gltf.bytesOfFour({0, 0, 0, 0, 0, 1, 0, 0, 1, 0, 0, 0});
    const int weights = gltf.fours({1, 0, 0, 0, 0.4F, 0.6F, 0, 0, 1, 0, 0, 0});
    const int inverses = gltf.matrices(
        {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, -1, 0, 1});
    gltf.addPrimitive(places, {{"attributes", {{"JOINTS_0", joints}, {"WEIGHTS_0", weights}}}});
    gltf.json["skins"] = {{{"joints", {1, 2}}, {"inverseBindMatrices", inverses}}};
    json top = armature;
    top["name"] = "Armature";
    top["children"] = {1, 4};
    gltf.json["nodes"] = {top,
                          {{"name", "rig:shoulder"}, {"children", {2}}},
                          {{"name", "elbow"}, {"translation", {0, 1, 0}}, {"children", {3}}},
                          {{"name", "tip"}, {"translation", {0, 1, 0}}},
                          {{"name", "Arm"}, {"mesh", 0}, {"skin", 0}}};
    const int times = gltf.scalars({0, 1});
    const float r = std::sqrt(0.5F);
    json wave = {{"name", "wave:blend"}};
    gltf.animate(wave, 1, "translation", times, gltf.points({0, 0, 0, 3, 0, 0}));
    gltf.animate(wave, 2, "rotation", times, gltf.fours({0, 0, 0, 1, 0, 0, r, r}));
    gltf.json["animations"] = json::array({wave});
    return gltf;
}

TEST(SkeletonImport, SkinFollowsItsHeaviestBoneThroughTheClip) {
    // The armature's own scale and mirror, which bones can't hold, as factors on x and on everything.
    const struct {
        json armature;
        float x, all;
    } kCases[] = {{json::object(), 1, 1},
                  {{{"scale", {0.5, 0.5, 0.5}}}, 1, 0.5F},
                  {{{"scale", {-1, 1, 1}}}, -1, 1},
                  {{{"scale", {-2, 2, 2}}}, -1, 2}};
    for (const auto& entry : kCases) {
        Gltf gltf = arm(entry.armature);
        Imported result(gltf);
        ASSERT_TRUE(result.nodes.count("Arm") == 1 && result.nodes.count("rig:shoulder") == 1 &&
                    result.nodes.count("tip") == 1);
        // A bone's colon makes no layer, and the skeleton is where the mesh is.
        EXPECT_EQ(result.scene.layers.size(), 2U);
        EXPECT_EQ(result.nodes["elbow"]->layer, result.nodes["Arm"]->layer);

        const Clip& clip = result.scene.clips.at(0);
        EXPECT_EQ(clip.name, "wave:blend");
        EXPECT_EQ(clip.end, 30);
        EXPECT_FALSE(clip.enabled);
        int seen = 0;
        for (const auto& [bone, joint] : {std::pair{"rig:shoulder", "rig:shoulder skin"}, {"elbow", "elbow skin"}}) {
            const std::vector<Key>& keys = result.keysOf(0, bone);
            ASSERT_EQ(keys.size(), 31U);
            for (const int32_t vertex : result.nodes[joint]->tendon.at(0).second) {
                const Vec3 bound = result.nodes["Arm"]->polyhedron.vertices[static_cast<size_t>(vertex)];
                const Vec3 local = applyInverse(*result.nodes[bone]->transform, bound);
                const float height = bound[2] / entry.all;
                const float side = -bound[0] / entry.all * entry.x;  // the front is turned
                for (const int frame : {0, 10, 15, 30}) {
                    // Model space first: the shoulder's way, then the elbow's turn about (0, 1, 0).
                    const float way = 3 * frame / 30.0F, turn = std::acos(0.0F) * frame / 30.0F;
                    const bool onElbow = height > 0.5F;
                    const float up = height - (onElbow ? 1 : 0);
                    const float x = onElbow ? way + side * std::cos(turn) - up * std::sin(turn) : way + side;
                    const float y = onElbow ? 1 + side * std::sin(turn) + up * std::cos(turn) : height;
                    const Vec3 at = apply(*keys[static_cast<size_t>(frame)].transform, local);
                    EXPECT_NEAR(at[0], -x * entry.x * entry.all, 1e-5F) << bone << " " << frame;
                    EXPECT_NEAR(at[2], y * entry.all, 1e-5F) << bone << " " << frame;
                    EXPECT_NEAR(at[1], 0, 1e-6F);
                }
                ++seen;
            }
        }
        EXPECT_EQ(seen, 3);
    }
}

// In two seconds the shoulder goes from 0 to 4 and on to 6: as straight lines, in steps, and on a curve whose tangents
// are 0 but for those of the middle key, which are 2 before and -2 after it.
TEST(SkeletonImport, KeysAreJoinedAsTheFileSays) {
    const struct {
        const char* interpolation;
        std::vector<float> values;
        std::map<size_t, float> expected;  // by frame
    } kCases[] = {
        {"LINEAR", {0, 4, 6}, {{0, 0}, {15, 2}, {30, 4}, {45, 5}, {60, 6}}},
        {"STEP", {0, 4, 6}, {{0, 0}, {29, 0}, {30, 4}, {59, 4}, {60, 6}}},
        // A Hermite curve at its middle: the mean of the ends, and an eighth of what the tangents differ by.
        {"CUBICSPLINE", {0, 0, 0, 2, 4, -2, 0, 6, 0}, {{0, 0}, {15, 1.75F}, {30, 4}, {45, 4.75F}, {60, 6}}},
    };
    for (const auto& entry : kCases) {
        Gltf gltf = arm(json::object());
        json walk = {{"name", "walk"}};
        std::vector<float> values;
        for (const float x : entry.values) values.insert(values.end(), {x, 0, 0});
        gltf.animate(walk, 1, "translation", gltf.scalars({0, 1, 2}), gltf.points(values));
        walk["samplers"][0]["interpolation"] = entry.interpolation;
        gltf.json["animations"] = json::array({walk});
        Imported result(gltf);
        const std::vector<Key>& keys = result.keysOf(0, "rig:shoulder");
        ASSERT_EQ(keys.size(), 61U);
        for (const auto& [frame, x] : entry.expected) {
            EXPECT_FLOAT_EQ((*keys[frame].transform)[3], -x) << entry.interpolation << " " << frame;
        }
    }
}

// The elbow turns about z by a cubic curve whose tangents are 0, and keys lie at frames of 24, 25 or none a second.
TEST(SkeletonImport, CurvesOfRotationsAndTheFilesRate) {
    const struct {
        std::vector<float> times;
        float rate;
    } kCases[] = {{{0, 1 / 24.0F, 1}, 24}, {{0, 0.04F, 1}, 25}, {{0, 0.5F, 1}, 30}, {{0, 0.0123F, 1}, 30}};
    for (const auto& entry : kCases) {
        Gltf gltf = arm(json::object());
        const float r = std::sqrt(0.5F);
        json turn = {{"name", "turn"}};
        const std::vector<float> values = {0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                                           0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, r, r, 0, 0, 0, 0};
        gltf.animate(turn, 2, "rotation", gltf.scalars(entry.times), gltf.fours(values));
        turn["samplers"][0]["interpolation"] = "CUBICSPLINE";
        gltf.json["animations"] = json::array({turn});
        Imported result(gltf);
        EXPECT_EQ(result.scene.host.frameRate, entry.rate);
        EXPECT_EQ(result.scene.clips.at(0).end, entry.rate);
        const std::vector<Key>& keys = result.keysOf(0, "elbow");
        const float t = (20 / entry.rate - entry.times[1]) / (1 - entry.times[1]), part = 3 * t * t - 2 * t * t * t;
        const float angle = 2 * std::atan2(part * r, 1 - part + part * r);
        EXPECT_NEAR((*keys.at(20).transform)[0], std::cos(angle), 1e-4F) << entry.times[1];
    }
}

}  // namespace
}  // namespace marrowfen::standin
