// `marrowfen export` and `marrowfen add-node` as a person runs them: exit codes, texts, and what is left on disk.

#include <algorithm>
#include <regex>

#include "tests/files.h"
#include "tests/standin/scene_of.h"

namespace marrowfen::test {

namespace {

namespace fs = std::filesystem;

// A tetrahedron on the first of the layers, a marker that moves on the second, and a clip.
std::string tetrahedron(const std::string& layers, const std::string& host = "", const std::string& nodes = "") {
    return standin::sceneWith(R"("host": {)" + host + R"(}, "layers": [null, )" + layers + R"(],
"materials": {"hull": {"texture": "hull.png"}}, "nodes": [
{"type": "polyhedron", "layer": 1, "vertices": [[0, 0, 0], [2, 0, 0], [0, 2, 0], [0, 0, 2]], "materials": ["hull"], "faces": [
 {"corners": [[0, 0], [1, 0], [2, 0]]}, {"corners": [[0, 0], [3, 0], [1, 0]]},
 {"corners": [[0, 0], [2, 0], [3, 0]]}, {"corners": [[1, 0], [3, 0], [2, 0]]}]},
{"type": "polyhedron", "name": "mast", "layer": 2, "vertices": []})" +
                              nodes + R"(],
"clips": [{"name": "sway:fps=10", "start": 0, "end": 8, "keys": {"mast": [{"frame": 0}, {"frame": 8, "location": [1, 0, 0]}]}}])");
}

struct CommandTest : testing::Test, TestFolder {
    CommandTest() {
        const std::string usual = R"("Detail:size=32", "nodes")";
        write("good.scene.json", tetrahedron(usual));
        write("refused.scene.json", tetrahedron(R"("collision", "nodes")"));
        write("odd.scene.json", tetrahedron(R"("Hull:siez=64,sort,frob", "nodes", "Spare")", "",
                                            R"(, {"type": "skeleton", "name": "lost"})"));
        write("old.scene.json", tetrahedron(usual, R"("minor": 10)"));
        write("still.scene.json", std::regex_replace(tetrahedron(usual), std::regex("\"end\": 8"), "\"end\": -1"));
        write("broken.scene.json", "{");
        std::string large = R"(, {"type": "polyhedron", "layer": 1, "vertices": [[0,0,0],[0,1,0],[1,0,0]], "faces": [)";
        for (int uv = 0; uv < 21846; ++uv) {
            const std::string n = std::to_string(uv);
            large += (uv > 0 ? "," : "") + (R"({"corners": [[0,)" + n + "],[1," + n + "],[2," + n + "]]}");
        }
        write("feed.scene.json", tetrahedron(R"("Det\nail:no_strip", "nodes")", "", large + "]}"));
    }

    void write(const std::string& name, const std::string& content) { writeFile(folder / name, content); }

    // before: a shell command in front.
    ProgramResult run(const std::string& arguments, const std::string& before = "true") const {
        return runIn(folder, before + " && exec " MARROWFEN_COMMAND " " + arguments);
    }

    std::string files() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder)) {
            const std::string name = entry.path().filename().string();
            if (!name.ends_with(".scene.json")) names.push_back(name);
        }
        std::sort(names.begin(), names.end());
        std::string all;
        for (const std::string& name : names) all += (all.empty() ? "" : " ") + name;
        return all;
    }
};

}  // namespace

TEST_F(CommandTest, EndsAsTheSituationAsks) {
    fs::create_directories(folder / "folder.dts");
    fs::create_directories(folder / "folder.d");
    fs::create_directories(folder / "log.dts.log");
    fs::create_directories(folder / "name with blanks \xC3\xA9");
    const std::string longName(250, 'd');
    fs::create_directories(folder / longName / longName.substr(0, 240));
    const std::string deep = longName + "/" + longName.substr(0, 240) + "/s.dts";
    struct Case {
        std::string arguments;
        int code;
        std::string text;  // somewhere in what is printed
    };
    for (const Case& c : std::vector<Case>{
             {"export good.scene.json a.dts", 0,
              "a.dts: 1 detail level (4 triangles), 1 material, 2 nodes, 0 sequences, "},
             {"export good.scene.json a.dts", 0, "1 animation isn't in the file"},
             {"export good.scene.json A.DTS --with-animation", 0,
              "A.DTS: 1 detail level (4 triangles), 1 material, 2 nodes, 1 sequence, "},
             {"export good.scene.json a.dsq --strict", 0, "a.dsq: 2 nodes, 1 sequence, "},
             {"export good.scene.json 'name with blanks \xC3\xA9/\xC3\xA4 b.dts'", 0, "\xC3\xA4 b.dts: 1 detail level"},
             {"-q export odd.scene.json q.dts", 0, ""},
             {"-v export good.scene.json v.dts", 0, "20% Exploring shape (This may take a while)..."},
             {"export odd.scene.json o.dts", 0,
              "warning: unknown tags: \"siez=64\" (did you mean \"size=64\"?), \"frob\"\n"
              "warning: layers without polyhedra, left out: Spare\nwarning: on no layer, left out: skeleton lost\n"},
             {"export odd.scene.json o.dts --strict", 5, "o.dts: 1 detail level"},
             {"export refused.scene.json r.dts", 1,
              "error: refused.scene.json: No meshes found to export\nhint: no layer is a detail level: put what "},
             {"export old.scene.json a.dts", 1, "error: old.scene.json: This plug-in requires at least trueSpace 6.5"},
             {"import good.scene.json a.dts", 2, "import makes a scene file; export makes a.dts"},
             {"export good.scene.json a.txt", 2, "a.txt ends neither in .dts nor in .dsq"},
             {"export good.scene.json .dts", 2, "neither"},
             {"export good.scene.json folder.d/.dts", 0, "folder.d/.dts: 1 detail level"},
             {"export good.scene.json ./.dsq", 0, "./.dsq: 2 nodes"},
             {"export good.scene.json log.dts", 4, "error: log.dts.log: Is a directory\n"},
             {"export feed.scene.json f.dts", 1,
              "error: feed.scene.json: Layer Det\\nail:no_strip has 65542 vertices, a mesh holds at most 65535.\nhint: "
              "layer "},
             {"dump a.dts >/dev/full", 4, "error: standard output: No space left on device\n"},
             {"export good.scene.json", 2, "OUTPUT"},
             {"export broken.scene.json a.dts", 3, "error: broken.scene.json"},
             {"export none.scene.json a.dts", 3, "none.scene.json"},
             {"export good.scene.json missing/a.dts", 4, "error: missing/a.dts: No such file or directory\n"},
             {"export good.scene.json folder.dts", 4, "error: folder.dts: Is a directory\n"},
             {"export good.scene.json " + deep, 4, "the path is longer than the 499 characters of the save dialog"},
             {"explain good.scene.json", 0, "clip \""},
             {"explain odd.scene.json", 0,
              "layer 1 \"Hull:siez=64,sort,frob\": detail level, no size, sorted\n  polyhedra: "},
             {"explain odd.scene.json", 0,
              "  tags understood: sort\n  tags not understood: siez=64, frob\n  warning: unknown tags: \"siez=64\" "
              "(did "},
             {"explain odd.scene.json", 0, "layer 3 \"Spare\": left out\n"},
             {"explain odd.scene.json", 0, "\nwarning: on no layer, left out: skeleton lost\n"},
             {"explain still.scene.json", 0,
              "clip \"sway:fps=10\": left out\n  tags understood: fps=10\n  warning: clips that were skipped: sway "},
             {"explain refused.scene.json", 0, "an export of the shape is refused: No meshes found to export\n"},
             {"explain old.scene.json", 1, "error: old.scene.json: This plug-in requires at least trueSpace 6.5"},
             {"explain broken.scene.json", 3, "error: broken.scene.json"},
             {"add-node good.scene.json", 2, "NAME"},
             {"add-node good.scene.json ''", 2, "a node needs a name"},
             {"add-node good.scene.json " + std::string(64, 'n'), 2, "the name has 64 bytes; the panel takes 63"},
             {"add-node model.obj eye", 2, "only a scene file can take a node"},
             {"add-node none.scene.json eye", 3, "none.scene.json"},
             {"add-node good.scene.json eye -o missing/b.scene.json", 4, "missing/b.scene.json"},
         }) {
        const ProgramResult result = run(c.arguments);
        EXPECT_EQ(result.code, c.code) << c.arguments << "\n" << result.text;
        EXPECT_NE(result.text.find(c.text), std::string::npos) << c.arguments << "\n" << result.text;
        if (c.text.empty()) {
            EXPECT_EQ(result.text, "");
        }
        if (c.code == 4 || c.code == 3) {
            EXPECT_EQ(std::count(result.text.begin(), result.text.end(), '\n'), 1) << result.text;
        }
        EXPECT_EQ(files().find(".marrowfen"), std::string::npos) << c.arguments;
    }
}

TEST_F(CommandTest, RefusedSceneLeavesTheOldFileAndItsOwnLog) {
    write("r.dts", "old");
    EXPECT_EQ(run("export refused.scene.json r.dts").code, 1);
    EXPECT_EQ(readFile(folder / "r.dts"), "old");
    EXPECT_TRUE(readFile(folder / "r.dts.log").ends_with("\r\nError: No meshes found to export"));
    EXPECT_EQ(files(), "r.dts r.dts.log");
}

TEST_F(CommandTest, SymbolicLinkIsWrittenThrough) {
    fs::create_directories(folder / "real");
    for (const auto& [link, target] : {std::pair("a.dts", "b.dts"), std::pair("c.dsq", "no-ending")}) {
        fs::create_symlink(std::string("real/") + target, folder / link);
        const ProgramResult result = run(std::string("export good.scene.json ") + link);
        EXPECT_EQ(result.code, 0) << result.text;
        EXPECT_TRUE(fs::is_symlink(folder / link));
        EXPECT_TRUE(fs::is_regular_file(folder / "real" / target));
        EXPECT_TRUE(fs::is_regular_file(folder / (std::string(link) + ".log")));
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(folder / "real"), {}), 2);
}

TEST_F(CommandTest, MarkersAreNeverAddedToLayer0) {
    for (const char* layers : {R"("nodes")", R"("nodes", null, "Nodes")", ""}) {
        write("n.scene.json", R"({"format": "marrowfen-scene", "version": 1, "layers": [)" + std::string(layers) +
                                  R"(], "nodes": []})");
        ASSERT_EQ(run("add-node n.scene.json eye").code, 0);
        const auto scene = standin::readSceneFile((folder / "n.scene.json").string()).scene.value();
        const auto layer = static_cast<size_t>(scene.nodes.at(0).layer);
        ASSERT_GE(layer, 1U) << layers;
        EXPECT_EQ(scene.layers.size(), layer + 1) << layers;
        if (*layers != '\0') {
            EXPECT_EQ(scene.layers[0], "nodes");
        }
    }
}

TEST_F(CommandTest, AddNodeChangesNothingElse) {
    ASSERT_EQ(run("add-node good.scene.json mount0 -o b.scene.json").code, 0);
    ASSERT_EQ(run("add-node b.scene.json mount0").code, 0);
    const auto before = standin::readSceneFile((folder / "good.scene.json").string()).scene.value();
    auto after = standin::readSceneFile((folder / "b.scene.json").string()).scene.value();
    ASSERT_EQ(after.nodes.size(), before.nodes.size() + 2);
    EXPECT_EQ(after.nodes.back().name, "mount0");
    EXPECT_EQ(after.nodes.back().layer, 2);
    after.nodes.resize(before.nodes.size());
    ASSERT_GE(after.materials.size(), before.materials.size());
    after.materials.resize(before.materials.size());  // the cube's two colours come behind
    EXPECT_EQ(after, before);
}

}  // namespace marrowfen::test
