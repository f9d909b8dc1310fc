#include "standin/import/scene_transfer.h"

#include <gtest/gtest.h>

#include <cmath>

namespace marrowfen::standin {
namespace {

// Every record, and both states of what may be left out.
Scene fullScene() {
    Scene scene;
    scene.host = {700, 2, "C:\\ts", 25, 1, 0.5F};
    scene.layers = {std::nullopt, "Detail:size=64"};
    const Shader shader{"glass", false, {{"on", 1, true}, {"mirror", 7, 0.4F}, {"file", 9, "sky"}, {"odd", 4, "[1]"}}};
    scene.materials = {{"wood", {{1, 2, 3, 4}, "wood.bmp", {1, 2, 3, 4}, std::nullopt}},
                       {"glass", {{}, "", {}, shader}}};
    scene.nodes.resize(2);
    Node& hull = scene.nodes[0];
    hull.id = "hull";
    hull.transform = Transform{1, 2, 3};
    hull.polyhedron = {{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}},
                       {{{0, 0, 1}, {0, 0, 1}, {0, 0, 1}}},
                       {{0.5F, 1}},
                       {{{{0, 0}, {1, 0}, {2, 0}}, -7}},
                       {"wood", std::nullopt},
                       Transform{}};
    Node& bone = scene.nodes[1];
    bone.type = TsxBone;
    bone.muscles = {{"joint", {{"hull", {2, 0}}}}};
    Node& joint = bone.children.emplace_back();
    joint.type = TsxJoint;
    joint.name = "joint";
    joint.tendon = {{"hull", {1}}};
    scene.clips = {{"walk", 1, 9, 7.0F, 1, 2, false, {{"hull", {{1, {}, Vec3{1, 2, 3}, {}}, {2, {}, {}, {}}}}}}};
    return scene;
}

const std::string kFull = packResult({fullScene(), {}, {"one", "two"}});

std::string errorOf(const Scene& scene) { return unpackResult(packResult({scene, {}, {}}), "m").error; }

TEST(SceneTransfer, GivesBackWhatWasPacked) {
    const LoadResult good = unpackResult(kFull, "m");
    EXPECT_EQ(good.error, "");
    EXPECT_EQ(good.scene, fullScene());
    EXPECT_EQ(good.warnings, (std::vector<std::string>{"one", "two"}));
    const LoadResult bad = unpackResult(packResult({{}, "m: no mesh", {}}), "m");
    EXPECT_FALSE(bad.scene);
    EXPECT_EQ(bad.error, "m: no mesh");
}

// Whatever the bytes are, it ends in a scene that says the same again or in an error; under the sanitizers no less.
TEST(SceneTransfer, DamagedBytesAreRefusedOrRead) {
    for (size_t i = 0; i < kFull.size(); ++i) {
        EXPECT_EQ(unpackResult(kFull.substr(0, i), "m").error, "m: makes the reader crash") << i;
        for (const char byte : {'\0', '\1', '\2', '\x7f', '\x80', '\xff'}) {
            std::string bytes = kFull;
            bytes[i] = byte;
            const LoadResult result = unpackResult(bytes, "m");
            ASSERT_NE(result.scene.has_value(), !result.error.empty()) << i;
            if (result.scene) {
                EXPECT_EQ(packResult(result), bytes) << i;
            }
        }
    }
    EXPECT_EQ(unpackResult(kFull + '\0', "m").error, "m: makes the reader crash");
    EXPECT_EQ(unpackResult(packResult({}), "m").error, "m: makes the reader crash");
    EXPECT_EQ(unpackResult(packResult({fullScene(), "m: both", {}}), "m").error, "m: makes the reader crash");
}

// The bytes of an outer node end with the number of its children, and their bytes follow.
TEST(SceneTransfer, DeepNestingIsRefused) {
    const std::string one(1, '\1'), tail(24, '\0');  // clips, error and warnings
    Scene scene;
    const std::string none = packResult({scene, {}, {}});
    scene.nodes.resize(1);
    const std::string single = packResult({scene, {}, {}});
    const std::string leaf = single.substr(none.size() - 24, single.size() - none.size());
    const std::string outer = leaf.substr(0, leaf.size() - 8) + one + std::string(7, '\0');
    const auto nested = [&](int depth) {
        std::string bytes = none.substr(0, none.size() - 32) + one + std::string(7, '\0');
        for (int i = 1; i < depth; ++i) bytes += outer;
        return bytes + leaf + tail;
    };
    EXPECT_EQ(unpackResult(nested(1000), "m").error, "");
    for (const int depth : {1001, 100000}) {
        EXPECT_EQ(unpackResult(nested(depth), "m").error, "m: nodes are nested more than 1000 deep");
    }
}

TEST(SceneTransfer, ValuesThatNoSceneHasAreRefused) {
    const struct {
        void (*spoil)(Scene&);
        const char* error;
    } cases[] = {
        {[](Scene& s) { s.host.frameRate = INFINITY; }, "m: host.frameRate: a number that isn't finite"},
        {[](Scene& s) { s.nodes[0].polyhedron.vertices[1][2] = INFINITY; },
         "m: nodes[0].vertices[1]: a number that isn't finite"},
        {[](Scene& s) { s.nodes[0].name += '\0'; },
         "m: nodes[0].name: a zero byte inside a text, which the host's texts end with"},
        {[](Scene& s) { s.nodes[0].polyhedron.faces[0].corners.pop_back(); },
         "m: nodes[0].faces[0].corners: 2 corners, a face has 3 to 32767"},
        {[](Scene& s) { s.nodes[0].polyhedron.faces[0].material = 40000; },
         "m: nodes[0].faces[0].material: number 40000 is outside -32768 to 32767"},
        {[](Scene& s) { s.nodes[0].polyhedron.faces[0].corners[1].vertex = 3; },
         "m: nodes[0].faces[0].corners[1]: vertex 3 of 3"},
        {[](Scene& s) { s.layers.resize(40000); }, "m: layers: 40000 layers, a host has at most 32767"},
    };
    for (const auto& [spoil, error] : cases) {
        Scene scene = fullScene();
        spoil(scene);
        EXPECT_EQ(errorOf(scene), error);
    }
}

}  // namespace
}  // namespace marrowfen::standin
