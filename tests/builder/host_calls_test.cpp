// What a build does to the host's animation state, call by call.

#include "tests/builder/build_scene.h"

namespace marrowfen {
namespace {

constexpr const char* kScene = R"(
    "host": {"playMode": 1, "activeTime": 4}, "layers": [null, "Detail", "nodes"],
    "nodes": [
        {"type": "polyhedron", "name": "skin", "layer": 1, "vertices": [[0,0,0],[0,1,0],[1,0,0]],
         "faces": [{"corners": [[0,0],[1,0],[2,0]]}]},
        {"type": "skeleton", "layer": 1, "children": [{"type": "bone", "name": "hip", "layer": 1, "muscles": []}]},
        {"type": "polyhedron", "name": "eye", "layer": 2, "vertices": []}],
    "clips": [{"name": "nod:blend", "start": 3, "end": 4, "enabled": false},
              {"name": "wag", "start": 0, "end": 1, "toggle": 1}])";

using Calls = std::vector<std::string>;

const Calls kNodeCreation = {"tsxAnimSetPlayMode 0", "tsxAnimSetActiveTimeScene 0", "tsxGNodeGetPureTransform hip",
                             "tsxGNodeGetLocation eye", "tsxGNodeGetRotation eye"};
const Calls kRestoring = {"tsxAnimSetPlayMode 1", "tsxAnimSetActiveTimeScene 4"};

Calls sampled(const std::string& frame) {
    return {"tsxAnimSetActiveTimeScene " + frame, "tsxGNodeGetPureTransform hip", "tsxGNodeGetLocation eye",
            "tsxGNodeGetRotation eye"};
}

Calls joined(const std::vector<Calls>& parts) {
    Calls all;
    for (const Calls& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

TEST(HostCalls, PlayEachClipByItselfAndRestoreTheArtistsState) {
    const standin::Scene scene = sceneOf(kScene);
    const Calls playing = joined({{"tsxClipsDisableAllClips", "tsxClipsEnableClip nod"},
                                  sampled("3"),
                                  sampled("4"),
                                  {"tsxClipsDisableClip nod", "tsxClipsEnableClip wag"},
                                  sampled("0"),
                                  sampled("1"),
                                  sampled("0"),
                                  {"tsxClipsDisableClip wag", "tsxClipsEnableClip wag"}});
    for (const ExportMode mode : {ExportMode::ShapeWithAnimation, ExportMode::SequencesOnly}) {
        const Build build(scene, mode);
        EXPECT_EQ(build.host.calls(), joined({kNodeCreation, playing, kRestoring}));
        EXPECT_TRUE(build.host.scene() == scene);
    }
}

TEST(HostCalls, LeaveTheClipsAloneWithoutAnimation) {
    const standin::Scene scene = sceneOf(kScene);
    const Build build(scene, ExportMode::ShapeOnly);
    EXPECT_EQ(build.host.calls(), joined({kNodeCreation, kRestoring}));
    EXPECT_TRUE(build.host.scene() == scene);
}

}  // namespace
}  // namespace marrowfen
