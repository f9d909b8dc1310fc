#include <string>

#include "tests/standin/scene_of.h"

namespace marrowfen::standin {
namespace {

std::string errorOf(const std::string& text) {
    const LoadResult result = parseScene(text, "s");
    EXPECT_NE(result.scene.has_value(), !result.error.empty());
    return result.error;
}

struct BadScene {
    const char* members;  // after format and version
    const char* error;    // without the file's name
};

// A polyhedron "p" of four vertices, with more keys after them.
#define POLY(keys) R"({"type": "polyhedron", "name": "p", "vertices": [[0,0,0],[1,0,0],[0,1,0],[0,0,1]])" keys "}"
#define NODES(nodes) R"("layers": [], "nodes": [)" nodes "]"
#define JOINT R"({"type": "joint", "name": "j"}, )"
#define CLIP(keys) NODES(JOINT POLY("")) R"(, "clips": [{"name": "c", "start": 0, "end": 1)" keys "}]"
#define MATERIAL(keys) NODES("") R"(, "materials": {"wood": {)" keys "}}"

const BadScene kBadScenes[] = {
    // Keys.
    {R"("layers": [])", R"(key "nodes" is missing)"},
    {R"("nodes": [])", R"(key "layers" is missing)"},
    {NODES("") R"(, "clip": [])", R"(unknown key "clip", did you mean "clips"?)"},
    {NODES("") R"(, "extras": {"clip": 1})", R"(unknown key "extras")"},
    {NODES("") R"(, "layers": [])", R"(key "layers" is there twice)"},
    {MATERIAL("") R"(, "host": {"fps": 30})", R"(host: unknown key "fps")"},
    {MATERIAL(R"("colour": [1,2,3,4])"), R"(materials.wood: unknown key "colour", did you mean "color"?)"},
    {NODES("") R"(, "materials": {"a b": {"x": 1}})", R"(materials["a b"]: unknown key "x")"},
    {NODES("") R"(, "materials": {"": {}, "": {}})", R"(materials: key "" is there twice)"},
    {NODES(R"({"name": "n"})"), R"(nodes[0]: key "type" is missing)"},
    {NODES(R"({"type": "group", "vertices": []})"), R"(nodes[0]: unknown key "vertices")"},
    {NODES(R"({"type": "polyhedron"})"), R"(nodes[0]: key "vertices" is missing)"},
    // Types and lengths.
    {R"("layers": {}, "nodes": [])", "layers: expected an array, found an object"},
    {R"("layers": [null, 5], "nodes": [])", "layers[1]: expected a text, found a number"},
    {NODES("[]"), "nodes[0]: expected an object, found an array"},
    {NODES(R"({"type": "group", "location": [1, 2]})"), "nodes[0].location: expected 3 entries, found 2"},
    {NODES(R"({"type": "group", "transform": null})"), "nodes[0].transform: expected an array, found null"},
    {NODES(R"({"type": "bones"})"),
     R"(nodes[0].type: unknown type "bones", expected polyhedron, group, skeleton, bone, joint, ikgroup or a whole )"
     "number"},
    {NODES(R"({"type": "group", "name": "a\u0000b"})"),
     "nodes[0].name: a zero byte inside a text, which the host's texts end with"},
    {CLIP(R"(, "enabled": 1)"), "clips[0].enabled: expected true or false, found a number"},
    // Numbers.
    {NODES(R"({"type": "group", "location": [0, 1e39, 0]})"),
     "nodes[0].location[1]: number 1e+39 doesn't fit a 32-bit float"},
    {NODES(R"({"type": "group", "layer": 32768})"), "nodes[0].layer: number 32768 is outside -32768 to 32767"},
    {NODES(R"({"type": 201.5})"), "nodes[0].type: number 201.5 isn't whole"},
    {NODES(R"({"type": 1e300})"), "nodes[0].type: number 1e+300 is outside -2147483648 to 2147483647"},
    {MATERIAL(R"("color": [0, 0, 0, 256])"), "materials.wood.color[3]: number 256 is outside 0 to 255"},
    {MATERIAL(R"("shader": {"name": "s", "parameters": [{"name": "f", "type": "flag", "value": 2}]})"),
     "materials.wood.shader.parameters[0].value: number 2 is outside 0 to 1"},
    {MATERIAL(R"("shader": {"name": "s", "parameters": [{"name": "f", "type": "text", "value": 2}]})"),
     "materials.wood.shader.parameters[0].value: expected a text, found a number"},
    // Polyhedra.
    {NODES(R"({"type": "group", "children": [)" POLY(R"(, "faces": [{"corners": [[0,0],[1,0],[12,0]]}])") "]}"),
     "nodes[0].children[0].faces[0].corners[2]: vertex 12 of 4"},
    {NODES(POLY(R"(, "faces": [{"corners": [[0,0],[-1,0],[2,0]]}])")), "nodes[0].faces[0].corners[1]: vertex -1 of 4"},
    {NODES(POLY(R"(, "uvs": [[0,0]], "faces": [{"corners": [[0,0],[1,1],[2,0]]}])")),
     "nodes[0].faces[0].corners[1]: uv 1 of 1"},
    {NODES(POLY(R"(, "faces": [{"corners": [[0,0],[1,0]]}])")),
     "nodes[0].faces[0].corners: 2 corners, a face has 3 to 32767"},
    {NODES(POLY(R"(, "faces": [{"corners": [[0,0],[1,0],[2,0]], "material": 40000}])")),
     "nodes[0].faces[0].material: number 40000 is outside -32768 to 32767"},
    {NODES(POLY(R"(, "normals": [[0,0,1]])")), "nodes[0].normals: 1 normals for 4 vertices"},
    {NODES(POLY(R"(, "materials": [null, "wood"])")), R"(nodes[0].materials[1]: no material has the key "wood")"},
    // References.
    {NODES(JOINT R"({"type": "bone", "muscles": [{"joint": "k"}]})"),
     R"(nodes[1].muscles[0].joint: no node has the id "k")"},
    {NODES(POLY("") R"(, {"type": "bone", "muscles": [{"joint": "p"}]})"),
     R"(nodes[1].muscles[0].joint: node "p" is no joint)"},
    {NODES(JOINT R"({"type": "bone", "muscles": [{"joint": "j"}, {"joint": "j"}]})"),
     R"(nodes[1].muscles[1].joint: joint "j" is there twice, it has one muscle with the bone)"},
    {NODES(JOINT R"({"type": "joint", "tendon": {"j": [0]}})"), R"(nodes[1].tendon.j: node "j" is no polyhedron)"},
    {NODES(POLY("") R"(, {"type": "joint", "tendon": {"p": [3, 4]}})"), "nodes[1].tendon.p[1]: vertex 4 of 4"},
    {NODES(POLY("") ", " POLY("") R"(, {"type": "joint", "tendon": {"p": [0]}})"),
     R"(nodes[2].tendon.p: 2 nodes have the id "p")"},
    {CLIP(R"(, "keys": {"arm": []})"), R"(clips[0].keys.arm: no node has the id "arm")"},
    {CLIP(R"(, "keys": {"p": [{"frame": 1}, {"frame": 2}, {"frame": 2}]})"),
     "clips[0].keys.p[2].frame: frame 2 after frame 2"},
    {CLIP(R"(, "keys": {"p": [{"location": [0,0,0]}]})"), R"(clips[0].keys.p[0]: key "frame" is missing)"},
};

TEST(SceneErrors, NameThePlaceTheValueAndTheLimit) {
    for (const BadScene& bad : kBadScenes) EXPECT_EQ(errorOf(sceneWith(bad.members)), "s: " + std::string(bad.error));
}

TEST(SceneErrors, OfTheWholeText) {
    const std::string tail = R"(, "layers": [], "nodes": []})";
    const struct {
        std::string text, error;
    } cases[] = {
        {"[]", "s: expected an object, found an array"},
        {R"({"version": 1)" + tail, R"(s: key "format" is missing)"},
        {R"({"format": "gltf", "version": 1)" + tail, R"(s: format: "gltf" instead of "marrowfen-scene")"},
        {R"({"format": "marrowfen-scene", "version": 2)" + tail, "s: version: version 2 instead of 1"},
    };
    for (const auto& [text, error] : cases) EXPECT_EQ(errorOf(text), error);
}

TEST(SceneErrors, OfSyntaxNameLineAndColumn) {
    const char* cases[][2] = {
        {"", "s:1:1: "},
        {"{\"format\": tru}", "s:1:15: "},
        {"{\n\"layers\": [1 2]}", "s:2:14: "},
        {"{\"format\": \"marrowfen", "s:1:22: "},
        {"{} {}", "s:1:4: "},
        {"{\"a\": NaN}", "s:1:7: "},
        {"{\"a\": \"\xff\"}", "s:1:8: "},
        {"{\"a\": 1e400}", "s: number overflow parsing '1e400'"},
    };
    for (const auto& [text, start] : cases) {
        const std::string error = errorOf(text);
        EXPECT_EQ(error.substr(0, std::string(start).size()), start) << error;
        EXPECT_EQ(error.find('\n'), std::string::npos);
    }
    EXPECT_LT(errorOf("[\"" + std::string(100000, 'x')).size(), 300U);
}

TEST(SceneErrors, OfDeepNestingAreNoStackOverflow) {
    const auto nestedNodes = [](int depth) {
        std::string opening, closing;
        for (int i = 0; i < depth; ++i) {
            opening += R"({"type": "group", "children": [)";
            closing += "]}";
        }
        return sceneWith(R"("layers": [], "nodes": [)" + opening + closing + "]");
    };
    EXPECT_EQ(errorOf(nestedNodes(1000)), "");
    const std::string error = errorOf(nestedNodes(1001));
    EXPECT_EQ(error.substr(0, 32), "s: nodes[0].children[0].children") << error;
    EXPECT_NE(error.find(": nodes are nested more than 1000 deep"), std::string::npos) << error;
    EXPECT_EQ(errorOf(std::string(1000000, '[')), "s: arrays and objects are nested more than 4096 deep");
}

TEST(SceneErrors, OfFilesThatCannotBeRead) {
    EXPECT_EQ(readSceneFile("/no/such.scene.json").error,
              "/no/such.scene.json: can't be opened: No such file or directory");
    EXPECT_EQ(readSceneFile("/").error, "/: is a folder, not a scene file");
}

}  // namespace
}  // namespace marrowfen::standin
