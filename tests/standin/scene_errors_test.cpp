#include <string>

#include "tests/standin/scene_of.h"

namespace marrowfen::standin {
namespace {

std::string errorOf(const std::string& text) {
    const LoadResult result = parseScene(text, "s");
    EXPECT_NE(result.scene.has_value(), !result.error.empty());
    return result.error;
}

std::string repeated(const std::string& text, int times) {
    std::string result;
    for (int i = 0; i < times; ++i) result += text;
    return result;
}

std::string nestedNodes(int depth) {
    return sceneWith(R"("layers": [], "nodes": [)" + repeated(R"({"type": "group", "children": [)", depth) +
                     repeated("]}", depth) + "]");
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
    {NODES("") R"(, "clip": [])", R"(unknown key "clip", did you mean "clips"?)"},
    {NODES("") R"(, "extras": {"clip": 1})", R"(unknown key "extras")"},
    {NODES("") R"(, "layers": [])", R"(key "layers" is there twice)"},
    {MATERIAL("") R"(, "host": {"fps": 30})", R"(host: unknown key "fps")"},
    {NODES("") R"(, "materials": {"a b": {"x": 1}})", R"(materials["a b"]: unknown key "x")"},
    {NODES("") R"(, "materials": {"": {}, "": {}})", R"(materials: key "" is there twice)"},
    {NODES(R"({"type": "group", "vertices": []})"), R"(nodes[0]: unknown key "vertices")"},
    {NODES(R"({"type": "polyhedron"})"), R"(nodes[0]: key "vertices" is missing)"},
    // Types and lengths.
    {R"("layers": {}, "nodes": [])", "layers: expected an array, found an object"},
    {R"("layers": [null, 5], "nodes": [])", "layers[1]: expected a text, found a number"},
    {NODES(R"({"type": "group", "name": "a\u0000b"})"),
     "nodes[0].name: a zero byte inside a text, which the host's texts end with"},
    {NODES("") R"(, "materials": {"a\u0000": {}})", R"(materials["a\u0000"]: a zero byte inside a key)"},
    {NODES(R"({"type": "group", "location": [1, 2]})"), "nodes[0].location: expected 3 entries, found 2"},
    {NODES(R"({"type": "group", "transform": null})"), "nodes[0].transform: expected an array, found null"},
    {NODES(R"({"type": "bones"})"),
     R"(nodes[0].type: unknown type "bones", expected polyhedron, group, skeleton, bone, joint, ikgroup or a whole )"
     "number"},
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

// The place is the last byte that was read.
const struct {
    std::string text, error;
} kBadTexts[] = {
    {"[]", ": expected an object, found an array"},
    {R"({"version": 1, "layers": [], "nodes": []})", R"(: key "format" is missing)"},
    {R"({"format": "gltf", "version": 1})", R"(: format: "gltf" instead of "marrowfen-scene")"},
    {R"({"format": "marrowfen-scene", "version": 2})", ": version: version 2 instead of 1"},
    {sceneWith(R"("nodes": [], "layers": [null)" + repeated(", null", 32767) + "]"),
     ": layers: 32768 layers, a host has at most 32767"},
    {"", ":1:1: syntax error while parsing value - unexpected end of input; expected '[', '{', or a literal"},
    {"{\"format\": tru}", ":1:15: syntax error while parsing value - invalid literal; last read: '\"format\": tru}'"},
    {"{\n\"layers\": [1 2]}", ":2:14: syntax error while parsing array - unexpected number literal; expected ']'"},
    {"{} {}", ":1:4: syntax error while parsing value - unexpected '{'; expected end of input"},
    {"{\"a\": NaN}", ":1:7: syntax error while parsing value - invalid literal; last read: '\"a\": N'"},
    {"{\"a\": \"\xff\"}",
     ":1:8: syntax error while parsing value - invalid string: ill-formed UTF-8 byte; last read: '\"\xff'"},
    {"{\"a\":\n 1e999}", ":2:6: number overflow parsing '1e999'"},
    {"[\n\"[\\\"[\", {}, " + std::string(100000, '['), ":2:4108: arrays and objects are nested more than 4096 deep"},
    {nestedNodes(1001), ": nodes[0]" + repeated(".children[0]", 9) + "..." + repeated(".children[0]", 10) +
                            ": nodes are nested more than 1000 deep"},
    {nestedNodes(1000), ""},
};

TEST(SceneErrors, NameThePlaceTheValueAndTheLimit) {
    for (const BadScene& bad : kBadScenes) EXPECT_EQ(errorOf(sceneWith(bad.members)), "s: " + std::string(bad.error));
    for (const auto& [text, error] : kBadTexts) {
        EXPECT_EQ(errorOf(text), error.empty() ? "" : "s" + error) << text.substr(0, 200);
    }
    EXPECT_LT(errorOf("[\"" + std::string(100000, 'x')).size(), 300U);
}

TEST(SceneErrors, OfFilesThatCannotBeRead) {
    const struct {
        std::string path, error;
    } cases[] = {
        {"/no/such.scene.json", "can't be opened: No such file or directory"},
        {"/", "is a folder, not a scene file"},
        {"/dev/zero", "is larger than 256 MiB"},
        {"/proc/self/mem", "can't be read to its end"},
    };
    for (const auto& [path, error] : cases) EXPECT_EQ(readSceneFile(path).error, path + ": " + error);
}

// Beyond 1e18, squares of distances are no 32-bit floats.
TEST(SceneWarnings, OfPlacesTooFarToMeasure) {
    const struct {
        std::string node;
        std::vector<std::string> warnings;
    } cases[] = {
        {R"({"type": "group", "location": [1e18, 0, -1e18], "rotation": [1e20, 0, 0]})", {}},
        {R"({"type": "group", "location": [0, 1e20, 0]})",
         {"nodes[0].location: 1e+20 is beyond 1e+18, where distances don't fit 32-bit floats"}},
        {R"({"type": "polyhedron", "vertices": [[0,0,0],[2e18,0,0]], "vertexTransform": [1,0,0,-3e30,0,1,0,0,0,0,1,0]})",
         {"nodes[0].vertexTransform: -3e+30 is beyond 1e+18, where distances don't fit 32-bit floats (2 such "
          "numbers)"}},
    };
    for (const auto& [node, warnings] : cases) {
        std::vector<std::string> texts;
        for (const Message& warning : parseScene(sceneWith(R"("layers": [], "nodes": [)" + node + "]"), "s").warnings) {
            texts.push_back(warning.text);
        }
        EXPECT_EQ(texts, warnings) << node;
    }
}

}  // namespace
}  // namespace marrowfen::standin
