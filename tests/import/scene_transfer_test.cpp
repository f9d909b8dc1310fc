#include "standin/import/scene_transfer.h"

#include <gtest/gtest.h>

#include <cmath>

#include "standin/host/load_notices.h"
#include "tests/standin/every_field.h"

namespace marrowfen::standin {
namespace {

const std::string kFull = packResult({everyField(), {}, {{&load::kMorph, Message::Place::Clip, "walk", "one"}}});

std::string errorOf(const Scene& scene) { return unpackResult(packResult({scene, {}, {}}), "m").error; }

TEST(SceneTransfer, GivesBackWhatWasPacked) {
    const LoadResult good = unpackResult(kFull, "m");
    EXPECT_EQ(good.error, "");
    EXPECT_EQ(good.scene, everyField());
    ASSERT_EQ(good.warnings.size(), 1U);
    EXPECT_EQ(good.warnings[0].kind, &load::kMorph);
    EXPECT_EQ(good.warnings[0].place, Message::Place::Clip);
    EXPECT_EQ(good.warnings[0].name + good.warnings[0].text, "walkone");
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
                EXPECT_TRUE(unpackResult(packResult(result), "m").scene == result.scene) << i;
            }
        }
    }
    EXPECT_EQ(unpackResult(kFull + '\0', "m").error, "m: makes the reader crash");
    EXPECT_EQ(unpackResult(packResult({}), "m").error, "m: makes the reader crash");
    EXPECT_EQ(unpackResult(packResult({everyField(), "m: both", {}}), "m").error, "m: makes the reader crash");
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
        {[](Scene& s) { s.nodes[0].polyhedron.faces[0].corners.resize(2); },
         "m: nodes[0].faces[0].corners: 2 corners, a face has 3 to 32767"},
        {[](Scene& s) { s.nodes[0].polyhedron.faces[0].material = 40000; },
         "m: nodes[0].faces[0].material: number 40000 is outside -32768 to 32767"},
        {[](Scene& s) { s.nodes[0].polyhedron.faces[0].corners[1].vertex = 4; },
         "m: nodes[0].faces[0].corners[1]: vertex 4 of 4"},
        {[](Scene& s) { s.layers.resize(40000); }, "m: layers: 40000 layers, a host has at most 32767"},
    };
    for (const auto& [spoil, error] : cases) {
        Scene scene = everyField();
        spoil(scene);
        EXPECT_EQ(errorOf(scene), error);
    }
}

}  // namespace
}  // namespace marrowfen::standin
