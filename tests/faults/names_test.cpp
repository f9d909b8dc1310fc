// Names that would be obeyed, or taken for something else, by what they reach: terminal, log, JSON, page, file system,
// Make.

#include <algorithm>
#include <cstring>
#include <regex>

#include "tests/import/model_files.h"

namespace marrowfen::test {

namespace {

namespace fs = std::filesystem;
using nlohmann::json;

struct NamesTest : testing::Test, TestFolder {
    NamesTest() : folder(top / "folder") {}

    ProgramResult run(const std::string& arguments) const { return runIn(folder, "../marrowfen " + arguments); }

    // Of layers, nodes, materials, textures and clips.
    void writeScene(const std::string& name) const {
        const json polyhedron = {{"type", "polyhedron"},
                                 {"name", name},
                                 {"layer", 1},
                                 {"vertices", {{0, 0, 0}, {2, 0, 0}, {0, 2, 0}}},
                                 {"faces", {{{"corners", {{0, 0}, {1, 0}, {2, 0}}}}}},
                                 {"materials", json::array({"m"})}};
        const json bone = {
            {"type", "skeleton"}, {"layer", 1}, {"children", {{{"type", "bone"}, {"name", name}, {"layer", 1}}}}};
        const json scene = {
            {"format", "marrowfen-scene"},
            {"version", 1},
            {"layers", {nullptr, "Detail" + name + ":size=9," + name, "collision" + name + ":box", "nodes"}},
            {"materials", {{"m", {{"texture", name + "/../" + name}}}}},
            {"nodes", {polyhedron, bone}},
            {"clips", {{{"name", name + ":" + name}, {"start", 0}, {"end", 2}}}}};
        writeFile(folder / "n.scene.json", scene.dump());
    }

    // With an embedded texture of the name.
    void writeModel(const std::string& name) const {
        const std::string pixel =
            "data:image/"
            "png;base64,iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR42mNk+M9QDwADhgGAWjR9awAAAABJRU5ErkJggg="
            "=";
        standin::Gltf model;
        model.addPrimitive(model.triangle(), {{"material", 0}});
        model.json["meshes"][0]["name"] = name;
        model.json["nodes"] = {{{"name", name}, {"mesh", 0}}};
        model.json["materials"] = {{{"name", name}, {"pbrMetallicRoughness", {{"baseColorTexture", {{"index", 0}}}}}}};
        model.json["textures"] = {{{"source", 0}}};
        model.json["images"] = {{{"name", name}, {"uri", pixel}}};
        writeFile(folder / "g.gltf", model.text());
    }

    const fs::path& top = TestFolder::folder;
    const fs::path folder;
};

// Nothing that a terminal obeys, and no line that isn't the command's.
bool isTame(const std::string& text) {
    static const std::regex kWild(
        "[\\x01-\\x08\\x0B-\\x1F\\x7F]|\xC2[\x80-\x9F]|\xE2\x80[\x8B-\x8F\xA8-\xAE]|\xE2\x81[\xA0-\xAF]");
    return !std::regex_search(text, kWild) && ("\n" + text).find("\nFORGED") == std::string::npos;
}

size_t countOf(const std::string& text, const std::string& what) {
    size_t count = 0;
    for (size_t at = 0; (at = text.find(what, at)) != std::string::npos; ++at) ++count;
    return count;
}

json jsonOfGlb(const std::string& glb) {
    uint32_t size = 0;
    std::memcpy(&size, glb.data() + 12, sizeof size);
    return json::parse(glb.substr(20, size));
}

// As a shell's word.
std::string quoted(const std::string& text) { return "'" + std::regex_replace(text, std::regex("'"), "'\\''") + "'"; }

}  // namespace

TEST_F(NamesTest, AreNamesWhereverTheyGo) {
    using namespace std::string_literals;
    // A page of our own beside a command of our own, as the real one needs more to be built.
    fs::copy_file(MARROWFEN_COMMAND, top / "marrowfen");
    const std::string page = readFile(MARROWFEN_SOURCE_DIR "/view/page/index.html");
    writeFile(top / "viewer.html", page);
    for (const std::string& name :
         {"a\nFORGED: x\r\nFORGED: y"s, "\033[2J\033]0;x\007\x7F\xC2\x9B"s + "31m", "</script><script>x<!--"s,
          "\"'`$(x)${x};&|\\"s, "../../../x"s, "..\\..\\x"s, "/x"s, "C:\\x"s, "a\0b"s,
          "\xE2\x80\xAE\xE2\x81\xA6"s + "fdp.exe", "CON"s, ".."s, "%s%n"s, std::string(10000, 'n')}) {
        writeScene(name.substr(0, name.find('\0')));  // the host's texts end there
        writeModel(name);
        const bool isFileName = name.size() < 200 && name.find_first_of("/\0"s) == std::string::npos;
        const std::string file = isFileName ? "_" + name : "file";
        fs::copy_file(folder / "n.scene.json", folder / (file + ".scene.json"));
        const std::string scene = quoted(file + ".scene.json"), shape = quoted("out/" + file + ".dts");
        for (const std::string& line : std::vector<std::string>{
                 "-vv export " + scene + " g.gltf --out-dir out --with-animation --report r.json", "explain " + scene,
                 "-v import g.gltf g.scene.json", "-vv export g.gltf g.dts --depfile g.d --textures",
                 "-vv export n.scene.json n.dts --depfile n.d", "inspect " + shape, "diff g.dts " + shape,
                 "diff " + shape + " g.dts", "view " + shape + " n.glb", "view " + shape + " n.html"}) {
            const ProgramResult result = run(line);
            EXPECT_EQ(result.code, line.starts_with("diff") ? 1 : 0) << line << "\n" << result.text;
            EXPECT_TRUE(isTame(result.text)) << line << "\n" << result.text;
        }
        EXPECT_TRUE(json::accept(readFile(folder / "r.json"))) << name;
        EXPECT_EQ(json::parse(run("inspect n.dts --json").text)["materials"].size(), 1U) << name;
        EXPECT_EQ(jsonOfGlb(readFile(folder / "n.glb"))["asset"]["version"], "2.0") << name;
        const std::string made = readFile(folder / "n.html");
        for (const char* tag : {"<script", "</script", "<!--", "</title"})
            EXPECT_EQ(countOf(made, tag), countOf(page, tag)) << name;
        EXPECT_EQ(std::count(made.begin(), made.end(), '\n') - std::count(file.begin(), file.end(), '\n'),
                  std::count(page.begin(), page.end(), '\n'));
        for (const char* rule : {"n.d", "g.d"}) {
            EXPECT_TRUE(std::regex_match(readFile(folder / rule), std::regex("[^\n;]+( \\\\\n  [^\n;]+)*\n")))
                << rule << name;
        }
        fs::remove(folder / (file + ".scene.json"));
        fs::remove_all(folder / "out");
        // Written textures lie here, under plain names.
        for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
            EXPECT_TRUE(std::regex_match(entry.path().filename().string(), std::regex("[A-Za-z0-9_-]+(\\.[a-z]+)+")))
                << entry.path();
            if (entry.path().extension() == ".png") fs::remove(entry.path());
        }
        EXPECT_EQ(std::distance(fs::directory_iterator(top), {}), 3) << name;
    }
}

}  // namespace marrowfen::test
