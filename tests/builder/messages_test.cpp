// What the builder tells an artist: the records, beside the log's lines that say the same.

#include "tests/builder/build_scene.h"

namespace marrowfen {
namespace {

// A line a message: its code, the kind of place, the place's name and the text.
std::string messagesOf(const std::string& members, std::ostream& log, ExportMode mode = ExportMode::ShapeOnly) {
    standin::Host host(sceneOf(members));
    std::string told;
    ShapeBuilder(log, mode, [&](const Message& m) {
        const char* const places[] = {"scene", "layer", "node", "clip"};
        told +=
            std::string(m.kind->code) + " " + places[static_cast<int>(m.place)] + " " + m.name + ": " + m.text + "\n";
    });
    return told;
}

#define FACE R"("vertices": [[0,0,0],[0,1,0],[1,0,0]], "faces": [{"corners": [[0,0],[1,0],[2,0]]}]})"
#define TRIANGLE_CALLED(name, layer) R"({"type": "polyhedron", "name": ")" name R"(", "layer": )" #layer ", " FACE

TEST(Messages, SayWhereAndWhat) {
    std::ostringstream log;
    EXPECT_EQ(messagesOf(R"("layers": [null, "Hull:siez = 9, box,,frob,size=2", "bounds:no_mipmop", "Spare", null],
        "nodes": [)" TRIANGLE_CALLED("skin", 1) R"(,
                  {"type": "skeleton", "name": "lost", "layer": 9}, {"type": "group", "name": "all"}],
        "clips": [{"name": "run:bled", "start": 0, "end": 1}])",
                         log),
              "NODE_ON_NO_LAYER node lost: skeleton lost\n"
              "UNKNOWN_TAG layer Hull:siez = 9, box,,frob,size=2: \"siez = 9\" (did you mean \"size= 9\"?)\n"
              "TAG_OF_OTHER_ROLE layer Hull:siez = 9, box,,frob,size=2: \"box\" in Hull:siez = 9, box,,frob,size=2 "
              "is for collision layers\n"
              "UNKNOWN_TAG layer Hull:siez = 9, box,,frob,size=2: \"frob\"\n"
              "UNKNOWN_TAG layer bounds:no_mipmop: \"no_mipmop\" (did you mean \"no_mipmap\"?)\n"
              "LAYER_DROPPED layer Spare: Spare\n"
              "UNKNOWN_TAG clip run: \"bled\" (did you mean \"blend\"?)\n"
              "CLIP_LEFT_OUT clip run: run\n");
    for (const char* line :
         {"!\tskeleton lost isn't on a layer, skipping it.\n", "  Unknown tag: siez = 9\n", "  Unknown tag: box\n",
          "  Layer Spare(3) is being dropped\n", "  Layer (4) is being dropped\n"}) {
        EXPECT_NE(log.str().find(line), std::string::npos) << line;
    }
}

#define ROTATED_RIG                                                                                           \
    R"({"type": "skeleton", "layer": 1, "children": [{"type": "bone", "name": "b", "layer": 1, "rotation": )" \
    R"([0, 0, 0.1], "muscles": [{"joint": "j", "vertices": {"hull": [0, 1, 2]}}], "children": )"              \
    R"([{"type": "joint", "name": "j", "layer": 1, "tendon": {"hull": [0]}}]}]})"

const struct {
    const char* layers;
    const char* nodes;
    const char* messages;
    const char* clips = "";
} kTold[] = {
    {R"("hull:size=4")", TRIANGLE_CALLED("hull", 1), ""},
    {R"("superstructure:size=4")", TRIANGLE_CALLED("hull", 1), ""},
    {R"("hull")", TRIANGLE_CALLED("hull", 1), "NEVER_SHOWS layer hull: hull has no size\n"},
    {R"("a:size=4", "b:size=4", "c:size=0", "d:size=0", "e:size=-5")",
     TRIANGLE_CALLED("hull", 1) "," TRIANGLE_CALLED("hull", 2) "," TRIANGLE_CALLED("hull", 3) "," TRIANGLE_CALLED(
         "hull", 4) "," TRIANGLE_CALLED("hull", 5),
     "NEVER_SHOWS layer b:size=4: b:size=4 is hidden by one of its size\n"
     "NEVER_SHOWS layer d:size=0: d:size=0 is hidden by one of its size\n"
     "NEVER_SHOWS layer e:size=-5: e:size=-5 has a size below 0\n"},
    {R"("hull:size=big")", TRIANGLE_CALLED("hull", 1), "TAG_VALUE layer hull:size=big: \"size=big\" is read as 0\n"},
    {R"("colision:size=4")", TRIANGLE_CALLED("hull", 1),
     "NEAR_ROLE layer colision:size=4: colision:size=4 (did you mean \"collision\"?)\n"},
    {R"("los collision:size=4", "ColisionMesh:size=3", "boundary:size=2")",
     TRIANGLE_CALLED("hull", 1) "," TRIANGLE_CALLED("hull", 2) "," TRIANGLE_CALLED("hull", 3),
     "NEAR_ROLE layer los collision:size=4: los collision:size=4 (did you mean \"loscollision\"?)\n"
     "NEAR_ROLE layer ColisionMesh:size=3: ColisionMesh:size=3 (did you mean \"collision\"?)\n"},
    {R"("hull:size=99999999999")", TRIANGLE_CALLED("hull", 1),
     "TAG_VALUE layer hull:size=99999999999: \"size=99999999999\" is read as 2147483647\n"},
    {R"("hull:size=4", "collision:box", "Collision B")", TRIANGLE_CALLED("hull", 1) "," TRIANGLE_CALLED("hull", 3),
     "OVERRULED_COLLISION layer collision:box: collision:box (the last one is Collision B)\n"},
    {R"("hull:size=4")",
     TRIANGLE_CALLED("hull", 1) R"(, {"type": "skeleton", "layer": 1, "children": [{"type": "bone", "name": "b"}]})"
                                R"(, {"type": "bone", "name": "lost"})",
     "NODE_ON_NO_LAYER node lost: bone lost\n"},
    {R"("modern:size=4", "nodes:box")", TRIANGLE_CALLED("hull", 1),
     "TAG_OF_OTHER_ROLE layer nodes:box: \"box\" in nodes:box is for collision layers\n"},
    {R"("hull:size=4,sort", "low:size=2,autolod=50")", TRIANGLE_CALLED("hull", 1),
     "SORT_WITH_AUTOLOD layer low:size=2,autolod=50: low:size=2,autolod=50 is a copy of a sorted layer, and "
     "unsorted\n"},
    {R"("hull:size=4,sort")",
     R"({"type": "polyhedron", "layer": 1, "vertices": [[29999, -2, 0], [29999, 2, 0.1], [30002, 0, 0.3],
         [30000, 0, -2], [30000.3, 0.2, 2], [30001, -0.7, 0.5]],
        "faces": [{"corners": [[0, 0], [1, 0], [2, 0]]}, {"corners": [[3, 0], [4, 0], [5, 0]]}]})",
     "SORTED_AREA_LOST layer hull:size=4,sort: hull:size=4,sort (13.1 %)\n"},
    {R"("hull:size=4")", TRIANGLE_CALLED("hull", 1) "," ROTATED_RIG,
     "NORMALS_NOT_TURNED layer hull:size=4: hull:size=4\n"},
    {R"("hull:size=4")",
     R"({"type": "polyhedron", "layer": 1, "transform": [1e30, 0, 0, 0, 0, 1e30, 0, 0, 0, 0, 1, 2e6],
        "vertices": [[0, 0, 0], [1e17, 0, 0], [0, 1e17, 0]], "faces": [{"corners": [[0, 0], [1, 0], [2, 0]]}]})",
     "NOT_FINITE layer hull:size=4: hull:size=4\nFAR_FROM_ORIGIN scene : 2e+06 units\n"},
    {R"("hull:size=4", "nodes")",
     TRIANGLE_CALLED("hull", 1) "," TRIANGLE_CALLED("gun", 2) "," TRIANGLE_CALLED("GUN", 2),
     "SHARED_NAME node gun: gun\n"},
    {R"("hull:size=4", "collision:box")", R"({"type": "polyhedron", "layer": 1, "vertices": []})",
     "EMPTY_COLLISION layer collision:box: collision:box\nFAR_FROM_ORIGIN scene : 1e+31 units\n"},
    {R"("hull:size=4")", TRIANGLE_CALLED("hull", 1),
     "FRAME_RATE clip c: c: 0 isn't positive, using 30\nCLIP_SKIPPED clip d: d has no frames\n",
     R"({"name": "c:fps=0", "start": 0, "end": 1}, {"name": "d", "start": 5, "end": 1, "length": 5})"},
    {R"("hull:size=4")", TRIANGLE_CALLED("hull", 1), "SHARED_CLIP_NAME clip walk: walk\n",
     R"({"name": "walk", "start": 0, "end": 1}, {"name": "walk:fps=9", "start": 5, "end": 6})"},
};

TEST(Messages, TellWhatComesOutOtherThanMeant) {
    for (const auto& [layers, nodes, messages, clips] : kTold) {
        std::ostringstream log;
        EXPECT_EQ(messagesOf(std::string(R"("layers": [null, )") + layers + R"(], "nodes": [)" + nodes +
                                 R"(], "clips": [)" + clips + "]",
                             log, ExportMode::ShapeWithAnimation),
                  messages)
            << layers << " " << nodes;
    }
}

TEST(LayerTags, AreFlagsOfTheMesh) {
    for (const auto& [tag, flags] : {std::pair("billboard", uint32_t{Billboard}),
                                     {"billboardz", Billboard | BillboardZ},
                                     {"enormals", uint32_t{EncodedNormals}}}) {
        const Build build(sceneOf(R"("layers": [null, "hull:)" + std::string(tag) + R"("], "nodes": [)" +
                                  TRIANGLE_CALLED("hull", 1) + "]"));
        EXPECT_EQ(build.shape->meshes.front().flags, flags) << tag;
    }
}

}  // namespace
}  // namespace marrowfen
