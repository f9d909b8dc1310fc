#include "tests/plugin/panel_cases.h"

namespace marrowfen::test {

namespace {

using Lines = std::vector<std::string>;

const std::string kTooOld =
    "message \"This plug-in requires at least trueSpace 6.5 or 6.6 with Service Pack 2 or gameSpace 1.5.\" "
    "(Marrowfen, information, no owner)";
const std::string kComplete = "message \"Export Complete\" (Marrowfen, information, owner panel)";
const std::string kEmptyPanel = "panel: name \"\", animation off, list []";
const std::string kSaveDts = "save dialog: \"\", DTS Files, All";
const std::string kSaveDsq = "save dialog: \"\", DSQ Files, All";

Lines operator+(Lines a, const Lines& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

const Lines kBuilding = {"progress 0 Beginning export...", "progress 10 Starting log file...",
                         "progress 20 Exploring shape (This may take a while)..."};
const Lines kGood = kBuilding + Lines{"progress 60 Saving shape...", kComplete};

Lines refusal(const std::string& error) {
    return kBuilding + Lines{"message \"" + error + "\" (Marrowfen, error, owner panel)"};
}

PanelCase version(const std::string& major, const std::string& minor, bool accepted) {
    PanelCase result;
    result.name = "version_" + major + "_" + minor;
    result.host = R"("major": )" + major + R"(, "minor": )" + minor;
    result.steps = {"left click", "look"};
    result.seen = accepted ? Lines{"left click: 2", kEmptyPanel} : Lines{kTooOld, "left click: 0", "panel closed"};
    return result;
}

std::vector<PanelCase> makeCases() {
    std::vector<PanelCase> cases;
    for (const auto& [major, minor] : {std::pair{"661", "0"}, {"660", "9"}, {"660", "11"}, {"660", "12"}}) {
        cases.push_back(version(major, minor, true));
    }
    for (const auto& [major, minor] :
         {std::pair{"660", "10"}, {"660", "8"}, {"659", "20"}, {"650", "0"}, {"0", "12"}}) {
        cases.push_back(version(major, minor, false));
    }

    // Opening and closing. Whatever follows begins with a left click.
    cases.push_back({"deactivate_without_panel", {"right click", "deactivate", "look"}, {"panel closed"}});
    const auto add = [&](const char* name, const Lines& steps, const Lines& seen,
                         const char* layers = "") -> PanelCase& {
        return cases.emplace_back(
            PanelCase{name, Lines{"left click"} + steps, Lines{"left click: 2"} + seen, "", layers});
    };
    add("second_click_keeps_the_panel", {"type mast", "left click", "look"},
        {"left click: 2", "panel: name \"mast\", animation off, list []"});
    add("reopening_starts_afresh",
        {"press Animation", "type mast", "look", "close", "look", "left click", "look", "deactivate", "look"},
        {"panel: name \"mast\", animation on, list [eye|mount0]", "panel closed", "left click: 2",
         "panel: name \"\", animation off, list [eye|mount0]", "panel closed"})
        .list = "eye\r\nmount0\r\n";
    add("about_box", {"press About", "look"}, {"about \"Dialog\"", kEmptyPanel});

    // Exports.
    const Lines shape = Lines{kSaveDts} + kGood, sequences = Lines{kSaveDsq} + kGood;
    const Lines shipFiles = {"file ship.dts", "file ship.dts.log"};
    add("cancelled_export_leaves_nothing", {"cancel", "press Export", "press Export DSQ"}, {kSaveDts, kSaveDsq});
    add("export_without_animation", {"save as ship.dts", "press Export"}, shape + shipFiles);
    add("export_with_animation", {"press Animation", "save as ship.dts", "press Export"}, shape + shipFiles);
    add("sequences_whatever_the_check_box_shows",
        {"save as walk", "press Export DSQ", "press Animation", "save as walk2", "press Export DSQ"},
        sequences + sequences + Lines{"file walk.dsq", "file walk.dsq.log", "file walk2.dsq", "file walk2.dsq.log"});
    add("extension_is_added_or_kept", {"save as ship", "press Export", "save as ship.old", "press Export"},
        shape + shape + shipFiles + Lines{"file ship.old", "file ship.old.log"});
    add("second_export_replaces_the_first",
        {"press Animation", "save as ship.dts", "press Export", "press Animation", "press Export"},
        shape + Lines{kSaveDts, "replace: yes"} + kGood + shipFiles);
    add("refused_scene_leaves_a_log_only", {"save as ship", "press Export"},
        Lines{kSaveDts} + refusal("No meshes found to export") + Lines{"file ship.dts.log"},
        R"([null, "collision", "nodes"])");

    // The node helper.
    add("node_on_the_layer_that_is_there", {"type eye", "press Add Node", "type eye", "press Add Node", "look"},
        {"panel: name \"eye\", animation off, list []"}, R"([null, "Layer 1", "NODES"])");
    add("node_on_the_lowest_such_layer", {"type eye", "press Add Node"}, {},
        R"([null, "Detail", null, "nodesA", "nodes"])");
    add("nodes_layer_is_made", {"type eye", "press Add Node"}, {}, R"([null, "Detail", "node"])");
    add("nodes_layer_is_refused", {"type eye", "press Add Node"},
        {"message \"Unable to create node layer.\" (Marrowfen, error, owner panel)"}, R"([null, "Detail"])")
        .refuseNewLayers = true;
    add("empty_name_adds_nothing", {"press Add Node"}, {});
    add("name_is_cut_to_63_bytes", {"type " + std::string(70, 'x'), "press Add Node"}, {});
    add("added_node_is_exported", {"type eye", "press Add Node", "save as ship", "press Export"}, shape + shipFiles);

    // Node lists.
    const auto listCase = [&](const std::string& name, const std::string& list, const std::string& shown) {
        add(("list_" + name).c_str(), {"look"}, {"panel: name \"\", animation off, list [" + shown + "]"}).list = list;
    };
    listCase("empty", "", "");
    listCase("of_line_feeds", "zeta\nalpha\n\n last ", "zeta|alpha|| last ");
    listCase("of_carriage_returns_and_line_feeds", "zeta\r\nalpha\r\n\r\n last \r\n", "zeta|alpha|| last ");
    listCase("of_long_lines", "mount0\n\n" + std::string(63, 'a') + std::string(37, 'b') + "\nend",
             "mount0||" + std::string(63, 'a') + "|" + std::string(37, 'b') + "|end");
    // The line end of a full piece is a piece of its own.
    listCase("of_a_full_piece", std::string(63, 'a') + "\nend\n", std::string(63, 'a') + "||end");
    listCase("cut_within_a_line",
             "ab\x1A"
             "cd\nef\n",
             "ab");
    listCase("of_junk", std::string("ab\0cd\n\xE9t\xE9\r\x01\n\x1Ahidden\n", 20), "ab|\xE9t\xE9\r\x01");
    std::string many;
    for (int i = 0; i < 10000; ++i) many += "node" + std::to_string(i) + "\r\n";
    listCase("of_10000_lines", many, "10000 entries, node0 to node9999");
    return cases;
}

}  // namespace

const std::vector<PanelCase>& panelCases() {
    static const std::vector<PanelCase> cases = makeCases();
    return cases;
}

std::string sceneText(const PanelCase& panelCase, const std::string& directory) {
    std::string escaped;
    for (const char c : directory) escaped += c == '\\' ? "\\\\" : std::string(1, c);
    const std::string layers = panelCase.layers.empty() ? R"([null, "Detail:size=32", "nodes"])" : panelCase.layers;
    const bool hasDetail = layers.find("collision") == std::string::npos;
    // A tetrahedron, a marker that moves, and a clip.
    return R"({"format": "marrowfen-scene", "version": 1, "host": {"directory": ")" + escaped + "\"" +
           (panelCase.host.empty() ? "" : ", ") + panelCase.host + R"(}, "layers": )" + layers +
           R"(, "materials": {"hull": {"texture": "C:\\art\\hull.png"}}, "nodes": [
{"type": "polyhedron", "name": "hull", "layer": 1, "vertices": [[0, 0, 0], [2, 0, 0], [0, 2, 0], [0, 0, 2]],
 "uvs": [[0, 0], [1, 0], [0, 1]], "materials": ["hull"], "faces": [{"corners": [[0, 0], [1, 1], [2, 2]]},
 {"corners": [[0, 0], [3, 1], [1, 2]]}, {"corners": [[0, 0], [2, 1], [3, 2]]}, {"corners": [[1, 0], [3, 1], [2, 2]]}]},
{"type": "polyhedron", "name": "mast", "layer": )" +
           std::string(hasDetail ? "2" : "0") + R"(, "location": [0.1, 0.2, 0.3], "vertices": []}],
"clips": [{"name": "sway:fps=10", "start": 0, "end": 8, "loop": 1, "keys": {"mast": [{"frame": 0},
 {"frame": 8, "location": [1.3, 0, 0.7], "rotation": [0.4, 0, 1.1]}]}}]})";
}

}  // namespace marrowfen::test
