// What the builder tells an artist: the records, beside the log's lines that say the same.

#include "tests/builder/build_scene.h"

namespace marrowfen {
namespace {

TEST(Messages, SayWhereAndWhat) {
    standin::Host host(sceneOf(R"("layers": [null, "Hull:siez = 9, box,,frob", "bounds:no_mipmop", "Spare", null],
        "nodes": [{"type": "polyhedron", "name": "skin", "layer": 1, "vertices": [[0,0,0],[0,1,0],[1,0,0]],
                   "faces": [{"corners": [[0,0],[1,0],[2,0]]}]},
                  {"type": "skeleton", "name": "lost", "layer": 9}, {"type": "group", "name": "all"}],
        "clips": [{"name": "run:bled", "start": 0, "end": 1}])"));
    std::ostringstream log;
    std::string told;
    ShapeBuilder(log, ExportMode::ShapeOnly, [&](const Message& m) {
        const char* const places[] = {"scene", "layer", "node", "clip"};
        told +=
            std::string(m.kind->code) + " " + places[static_cast<int>(m.place)] + " " + m.name + ": " + m.text + "\n";
    });
    EXPECT_EQ(told,
              "NODE_ON_NO_LAYER node lost: skeleton lost\n"
              "UNKNOWN_TAG layer Hull:siez = 9, box,,frob: \"siez = 9\" (did you mean \"size= 9\"?)\n"
              "UNKNOWN_TAG layer Hull:siez = 9, box,,frob: \"box\" (did you mean \"box\"?)\n"
              "UNKNOWN_TAG layer Hull:siez = 9, box,,frob: \"frob\"\n"
              "UNKNOWN_TAG layer bounds:no_mipmop: \"no_mipmop\" (did you mean \"no_mipmap\"?)\n"
              "LAYER_DROPPED layer Spare: Spare\n"
              "UNKNOWN_TAG clip run: \"bled\" (did you mean \"blend\"?)\n"
              "CLIP_LEFT_OUT clip run: run\n");
    for (const char* line : {"!\tskeleton lost isn't on a layer, skipping it.\n", "  Unknown tag: siez = 9\n",
                             "  Layer Spare(3) is being dropped\n", "  Layer (4) is being dropped\n"}) {
        EXPECT_NE(log.str().find(line), std::string::npos) << line;
    }
}

}  // namespace
}  // namespace marrowfen
