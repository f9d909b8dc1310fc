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

    // Opening and closing.
    cases.push_back({"deactivate_without_panel", {"right click", "deactivate", "look"}, {"panel closed"}});
    cases.push_back({"second_click_keeps_the_panel",
                     {"left click", "type mast", "left click", "look"},
                     {"left click: 2", "left click: 2", "panel: name \"mast\", animation off, list []"}});
    cases.push_back({"reopening_starts_afresh",
                     {"left click", "press Animation", "type mast", "look", "close", "look", "left click", "look",
                      "deactivate", "look"},
                     {"left click: 2", "panel: name \"mast\", animation on, list [eye|mount0]", "panel closed",
                      "left click: 2", "panel: name \"\", animation off, list [eye|mount0]", "panel closed"},
                     {},
                     {},
                     {},
                     "eye\r\nmount0\r\n"});
    cases.push_back(
        {"about_box", {"left click", "press About", "look"}, {"left click: 2", "about \"Dialog\"", kEmptyPanel}});

    // Exports.
    cases.push_back({"cancelled_export_leaves_nothing",
                     {"left click", "cancel", "press Export", "press Export DSQ"},
                     {"left click: 2", kSaveDts, kSaveDsq}});
    cases.push_back({"export_without_animation",
                     {"left click", "save as ship.dts", "press Export"},
                     Lines{"left click: 2", kSaveDts} + kGood + Lines{"file ship.dts", "file ship.dts.log"}});
    cases.push_back({"export_with_animation",
                     {"left click", "press Animation", "save as ship.dts", "press Export"},
                     Lines{"left click: 2", kSaveDts} + kGood + Lines{"file ship.dts", "file ship.dts.log"}});
    cases.push_back(
        {"sequences_whatever_the_check_box_shows",
         {"left click", "save as walk", "press Export DSQ", "press Animation", "save as walk2", "press Export DSQ"},
         Lines{"left click: 2", kSaveDsq} + kGood + Lines{kSaveDsq} + kGood +
             Lines{"file walk.dsq", "file walk.dsq.log", "file walk2.dsq", "file walk2.dsq.log"}});
    cases.push_back({"extension_is_added_or_kept",
                     {"left click", "save as ship", "press Export", "save as ship.old", "press Export"},
                     Lines{"left click: 2", kSaveDts} + kGood + Lines{kSaveDts} + kGood +
                         Lines{"file ship.dts", "file ship.dts.log", "file ship.old", "file ship.old.log"}});
    cases.push_back(
        {"second_export_replaces_the_first",
         {"left click", "press Animation", "save as ship.dts", "press Export", "press Animation", "press Export"},
         Lines{"left click: 2", kSaveDts} + kGood + Lines{kSaveDts, "replace: yes"} + kGood +
             Lines{"file ship.dts", "file ship.dts.log"}});
    cases.push_back(
        {"refused_scene_leaves_a_log_only",
         {"left click", "save as ship", "press Export"},
         Lines{"left click: 2", kSaveDts} + refusal("No meshes found to export") + Lines{"file ship.dts.log"},
         {},
         R"([null, "collision", "nodes"])"});

    // The node helper.
    cases.push_back({"node_on_the_layer_that_is_there",
                     {"left click", "type eye", "press Add Node", "type eye", "press Add Node", "look"},
                     {"left click: 2", "panel: name \"eye\", animation off, list []"},
                     {},
                     R"([null, "Layer 1", "NODES"])"});
    cases.push_back({"node_on_the_lowest_such_layer",
                     {"left click", "type eye", "press Add Node"},
                     {"left click: 2"},
                     {},
                     R"([null, "Detail", null, "nodesA", "nodes"])"});
    cases.push_back({"nodes_layer_is_made",
                     {"left click", "type eye", "press Add Node"},
                     {"left click: 2"},
                     {},
                     R"([null, "Detail", "node"])"});
    cases.push_back({"nodes_layer_is_refused",
                     {"left click", "type eye", "press Add Node"},
                     {"left click: 2", "message \"Unable to create node layer.\" (Marrowfen, error, owner panel)"},
                     {},
                     R"([null, "Detail"])",
                     {},
                     {},
                     true});
    cases.push_back({"empty_name_adds_nothing", {"left click", "press Add Node"}, {"left click: 2"}});
    cases.push_back({"name_is_cut_to_63_bytes",
                     {"left click", "type " + std::string(70, 'x'), "press Add Node"},
                     {"left click: 2"}});
    cases.push_back({"added_node_is_exported",
                     {"left click", "type eye", "press Add Node", "save as ship", "press Export"},
                     Lines{"left click: 2", kSaveDts} + kGood + Lines{"file ship.dts", "file ship.dts.log"}});

    // Node lists.
    const auto listCase = [&](const std::string& name, const std::string& list, const std::string& shown) {
        cases.push_back({"list_" + name,
                         {"left click", "look"},
                         {"left click: 2", "panel: name \"\", animation off, list [" + shown + "]"},
                         {},
                         {},
                         {},
                         list});
    };
    listCase("empty", "", "");
    listCase("of_line_feeds", "zeta\nalpha\n\n last ", "zeta|alpha|| last ");
    listCase("of_carriage_returns_and_line_feeds", "zeta\r\nalpha\r\n\r\n last \r\n", "zeta|alpha|| last ");
    listCase("of_long_lines", "mount0\n\n" + std::string(63, 'a') + std::string(37, 'b') + "\nend",
             "mount0||" + std::string(63, 'a') + "|" + std::string(37, 'b') + "|end");
    // The line end of a full piece is a piece of its own.
    listCase("of_a_full_piece", std::string(63, 'a') + "\nend\n", std::string(63, 'a') + "||end");
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
           std::string(hasDetail ? "2" : "0") + R"(, "location": [0.1, 0.2, 0.3], "vertices": []})" + panelCase.nodes +
           R"(],
"clips": [{"name": "sway:fps=10", "start": 0, "end": 8, "loop": 1, "keys": {"mast": [{"frame": 0},
 {"frame": 8, "location": [1.3, 0, 0.7], "rotation": [0.4, 0, 1.1]}]}}]})";
}

}  // namespace marrowfen::test
