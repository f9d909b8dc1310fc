// Scenes that the builder refuses, each with the error that an artist reads. Whatever the error, the host is left as it
// was found.

#include "builder/passes.h"
#include "tests/builder/build_scene.h"

namespace marrowfen {
namespace {

#define TRIANGLE(layer)                                                                                   \
    R"({"type": "polyhedron", "layer": )" #layer R"(, "vertices": [[0,0,0],[0,1,0],[1,0,0]], "faces": [)" \
    R"({"corners": [[0,0],[1,0],[2,0]]}]})"
#define POINTS(layer, points) R"({"type": "polyhedron", "name": "p", "layer": )" #layer R"(, "vertices": [)" points "]}"
#define FACES(layer, faces)                                     \
    R"({"type": "polyhedron", "name": "fan", "layer": )" #layer \
    R"(, "vertices": [[0,0,0],[0,1,0],[1,0,0],[1,1,0]], "faces": [)" faces "]}"
#define SIX "[0,0,0],[1,0,0],[0,1,0],[1,1,0],[0,0,1],[1,0,1]"
#define EIGHT SIX ",[0,1,1],[1,1,1]"

struct Refused {
    const char* layers;
    const char* nodes;
    const char* error;
    const char* inTheWay;
    ExportMode mode = ExportMode::ShapeOnly;
};

const Refused kRefused[] = {
    {R"("hull", "bounds")", TRIANGLE(1) "," POINTS(2, EIGHT) "," POINTS(2, EIGHT),
     "More than one bounds object found, there can be only one!", "BOUNDS_OBJECTS layer bounds holds p, p"},
    {R"("bounds", "BOUNDS of it")", POINTS(1, EIGHT) "," POINTS(2, EIGHT),
     "More than one bounds layers found, there can be only one!",
     "BOUNDS_LAYERS layer BOUNDS of it holds p, and an earlier bounds layer p"},
    {R"("bounds", "bounds")", POINTS(1, EIGHT) "," POINTS(2, SIX),
     "More than one bounds layers found, there can be only one!",
     "BOUNDS_LAYERS layer bounds holds p, and an earlier bounds layer p"},
    {R"("hull", "bounds")", TRIANGLE(1) "," POINTS(2, SIX), "Bounds object can only be a cube.",
     "BOUNDS_SHAPE polyhedron p on layer bounds has 6 vertices"},
    {R"("hull", "bounds")", POINTS(2, ""), "Bounds object can only be a cube.",
     "BOUNDS_SHAPE polyhedron p on layer bounds has 0 vertices", ExportMode::SequencesOnly},
    {R"("hull", "collision")", TRIANGLE(2), "No meshes found to export", "NO_MESHES no layer is a detail level"},
    {R"("collision a")", "", "No meshes found to export", "NO_MESHES no layer is a detail level",
     ExportMode::ShapeWithAnimation},
    {R"("hull:autolod=50")", TRIANGLE(1), "Highest size mesh cannot be autolod mesh",
     "AUTOLOD_FIRST layer hull:autolod=50 is a copy and comes first, no layer having a size"},
    {R"("hull:size=8", "ghost:size=9,autolod=50")", TRIANGLE(1), "Highest size mesh cannot be autolod mesh",
     "AUTOLOD_FIRST layer ghost:size=9,autolod=50 is a copy and comes first, with a size of 9"},
    {R"("hull", "collision", "collision:box", "collision", "collision", "collision", "collision", "collision",)"
     R"( "collision", "collision")",
     TRIANGLE(1), "The DTS format only supports up to 8 collision meshes.",
     "COLLISION_LAYERS there are 9 such layers, the last being collision"},
    {R"("hull", "loscollision", "loscollision", "loscollision", "loscollision", "loscollision", "loscollision",)"
     R"( "loscollision", "loscollision", "loscollision")",
     TRIANGLE(1), "The DTS format only supports up to 8 LOS collision meshes.",
     "COLLISION_LAYERS there are 9 such layers, the last being loscollision", ExportMode::ShapeWithAnimation},
    {R"("hull")", FACES(1, R"({"corners": [[0,0],[1,0],[2,0]]}, {"corners": [[2,0],[1,0],[1,0],[3,0]]})"),
     "Assertion failed when stripping (5)", "BAD_FACE face 1 of polyhedron fan on layer hull names vertex 1 twice"},
    {R"("hull:size=3", "low:autolod=100")", FACES(1, R"({"corners": [[2,0],[3,0],[1,0],[1,0]]})"),
     "Assertion failed when stripping (5)",
     "BAD_FACE face 0 of polyhedron fan on layer hull:size=3 names vertex 1 twice"},
};

constexpr const char* kAnimated = R"("host": {"playMode": 3, "activeTime": 12.5}, "clips": [
    {"name": "on", "start": 0, "end": 2}, {"name": "off:fps=2", "start": 0, "end": 2, "enabled": false}], )";

TEST(RefusedScene, IsTheStatedErrorAndLeavesTheHostAsItWas) {
    for (const Refused& refused : kRefused) {
        const standin::Scene scene = sceneOf(std::string(kAnimated) + R"("layers": [null, )" + refused.layers +
                                             R"(], "nodes": [)" + refused.nodes + "]");
        const Build build(scene, refused.mode);
        EXPECT_EQ(build.shape->error(), refused.error) << refused.layers;
        EXPECT_EQ(build.inTheWay, refused.inTheWay) << refused.layers;
        EXPECT_TRUE(build.host.scene() == scene) << refused.layers;
    }
}

TEST(AcceptedScene, SkipsAClipOfMoreKeysThanAnExportHolds) {
    const standin::Scene scene = sceneOf(
        R"("layers": [], "nodes": [], "clips": [{"name": "short", "start": 0, "end": 1, "enabled": false},)"
        R"( {"name": "endless:fps=10", "start": 0, "end": 1, "length": 3e9}, {"name": "last", "start": 0, "end": 1}])");
    const Build build(scene, ExportMode::SequencesOnly);
    EXPECT_EQ(build.shape->error(), "");
    EXPECT_NE(build.log.str().find("  Clip endless has 2147483647 keyframes for each of 1 nodes, an export holds at "
                                   "most 1048576 keys, skipping it\n"),
              std::string::npos);
    EXPECT_EQ(build.shape->sequences.size(), 2U);
    EXPECT_EQ(build.shape->nodeRotations.size(), 4U);
    EXPECT_TRUE(build.host.scene() == scene);
}

TEST(AcceptedScene, HoldsAMillionKeysOfAllClips) {
    std::ostringstream log;
    const MessageListener nobody;
    Notices notices(log, nobody);
    ClipInfo half, rest;
    half.length = 1 << 19, rest.length = half.length + 1;
    EXPECT_EQ(playableClips({half, half}, 1, notices).size(), 2U);
    EXPECT_EQ(playableClips({half, rest, half}, 1, notices).size(), 2U);
    EXPECT_EQ(playableClips({half, half}, 2, notices).size(), 1U);
}

TEST(AcceptedScene, NeedsNoMeshInADsqExport) {
    const Build build(sceneOf(R"("layers": [null, "a:autolod=5"], "nodes": [])"), ExportMode::SequencesOnly);
    EXPECT_EQ(build.shape->error(), "");
    EXPECT_TRUE(build.shape->objects.empty() && build.shape->meshes.empty() && build.shape->subshapes.empty());
}

}  // namespace
}  // namespace marrowfen
