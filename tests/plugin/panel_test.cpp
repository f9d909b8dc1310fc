// The panel and its commands in the headless layer.

#include <commctrl.h>
#include <commdlg.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <map>

#include "host/tsxapi.h"
#include "plugin/module.h"
#include "plugin/plugin.h"
#include "plugin/resources/resource.h"
#include "plugin/resources/resource_text.h"
#include "standin/host/host.h"
#include "standin/host/scene_file.h"
#include "standin/windows/headless_user.h"
#include "tests/files.h"
#include "tests/plugin/panel_person.h"

namespace marrowfen::test {

namespace {

namespace fs = std::filesystem;

// Where the cases leave their files. Kept for the comparison with another system when the environment names it.
fs::path workFolder() {
    const char* kept = std::getenv("MARROWFEN_PANEL_FOLDER");
    return kept != nullptr ? fs::path(kept) : fs::path(testing::TempDir()) / ("panel" + std::to_string(getpid()));
}

class HeadlessPerson : public PanelPerson, public headless::HeadlessUser {
public:
    HeadlessPerson(const PanelCase& panelCase, const fs::path& folder, const std::string& directory)
        : folder_(folder),
          host_(*standin::parseScene(sceneText(panelCase, directory), panelCase.name).scene),
          desktop_(*this, headless::readDialogs(plugin::kResourceText)) {
        host_.setMainView(&mainView_);
        if (panelCase.refuseNewLayers) host_.refuseNewLayers();
        EXPECT_EQ(DllMain(desktop_.library(), DLL_PROCESS_ATTACH, nullptr), TRUE);
        EXPECT_EQ(tsxGetData(data.data(), nullptr), 0);
    }
    ~HeadlessPerson() override { tsxDeactivate(); }

    int leftClick() override { return tsxOnLeftClick(); }
    void rightClick() override { tsxOnRightClick(); }
    void deactivate() override { tsxDeactivate(); }
    HWND panel() override { return desktop_.openDialogs().empty() ? nullptr : desktop_.openDialogs().front(); }
    void press(int control) override { SendDlgItemMessageA(panel(), control, BM_CLICK, 0, 0); }
    void closePanel() override { SendMessageA(panel(), WM_CLOSE, 0, 0); }

    std::optional<std::string> savePath(const headless::SaveQuestion& question) override {
        EXPECT_EQ(desktop_.openDialogs().size(), 1U) << "no progress before the file is chosen";
        std::vector<std::string> labels;
        for (const auto& filter : question.filters) labels.push_back(filter.first);
        noteSaveDialog(question.initialPath, labels);
        saveQuestion = question;
        return fileName ? std::optional((folder_ / *fileName).string()) : std::nullopt;
    }

    bool mayOverwrite(const std::string&) override {
        note("replace: yes");
        return true;
    }

    void readMessage(const headless::Message& message) override {
        const bool isOfPanel = message.owner != nullptr && message.owner == panel();
        EXPECT_TRUE(isOfPanel || message.owner == nullptr);
        EXPECT_LE(desktop_.openDialogs().size(), 1U) << "the progress dialog is closed before";
        noteMessage(message.text, message.caption, (message.style & MB_ICONERROR) != 0, isOfPanel);
        EXPECT_TRUE(message.style == (MB_ICONERROR | MB_TASKMODAL) ||
                    message.style == (MB_ICONINFORMATION | MB_TASKMODAL));
    }

    void seeRepaint(HWND dialog) override {
        EXPECT_EQ(desktop_.resourceOf(dialog), IDD_PROGRESS);
        EXPECT_EQ(desktop_.ownerOf(dialog), panel());
        char text[200];
        GetDlgItemTextA(dialog, IDC_PROGRESS_TEXT, text, sizeof text);
        noteProgress(static_cast<int>(SendDlgItemMessageA(dialog, IDC_PROGRESS_BAR, PBM_GETPOS, 0, 0)), text);
    }

    void useModalDialog(HWND dialog) override {
        EXPECT_EQ(desktop_.resourceOf(dialog), IDD_ABOUT);
        EXPECT_EQ(desktop_.ownerOf(dialog), panel());
        note("about \"Dialog\"");
        EXPECT_EQ(SendMessageA(dialog, WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED), 0), 0);
        if (closesAboutByKey) SendDlgItemMessageA(dialog, IDOK, BM_CLICK, 0, 0);
    }

    standin::Host& host() { return host_; }
    headless::Desktop& desktop() { return desktop_; }

    std::array<unsigned char, 100> data{};
    headless::SaveQuestion saveQuestion;
    bool closesAboutByKey = true;

private:
    fs::path folder_;
    int mainView_ = 0;
    standin::Host host_;
    headless::Desktop desktop_;
};

std::vector<std::string> filesIn(const fs::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) {
        if (entry.is_regular_file()) names.push_back("file " + entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

class PanelTest : public testing::TestWithParam<PanelCase> {};

}  // namespace

void PrintTo(const PanelCase& panelCase, std::ostream* stream) { *stream << panelCase.name; }

TEST_P(PanelTest, ShowsAndLeavesWhatIsExpected) {
    const PanelCase& panelCase = GetParam();
    const fs::path folder = workFolder() / panelCase.name;
    fs::remove_all(folder);
    fs::create_directories(folder / "files");
    if (panelCase.list) writeFile(folder / "tsx/marrowfen/node_list.txt", *panelCase.list);

    HeadlessPerson person(panelCase, folder / "files", folder.string());
    person.play(panelCase.steps);
    for (const std::string& file : filesIn(folder / "files")) person.note(file);
    EXPECT_EQ(person.seen, panelCase.seen);
    EXPECT_EQ(person.host().liveHandles(), 0);
    EXPECT_EQ(person.host().faults(), std::vector<std::string>());

    // Kept for the comparison, free of the folder's own name.
    standin::Scene scene = person.host().scene();
    scene.host.directory = "";
    writeFile(folder / "files/after.scene.json", standin::sceneText(scene));
    if (std::getenv("MARROWFEN_PANEL_FOLDER") == nullptr) fs::remove_all(workFolder());
}

INSTANTIATE_TEST_SUITE_P(Case, PanelTest, testing::ValuesIn(panelCases()), [](const auto& c) { return c.param.name; });

namespace {

// A folder of a test's own, and a person at a panel over the usual scene.
struct PanelFixture : testing::Test, TestFolder {
    std::string listShown(const std::string& directory) {
        HeadlessPerson person({}, folder, directory);
        person.play({"left click", "look"});
        EXPECT_TRUE(person.desktop().isRedrawn(GetDlgItem(person.panel(), IDC_NODE_NAME)));
        return person.seen.back();
    }
};

// The panel as the first click opens it.
struct OpenPanel : PanelFixture {
    OpenPanel() { person.play({"left click"}); }
    HeadlessPerson person{{}, folder, ""};
};

}  // namespace

TEST_F(OpenPanel, DataBlockDescribesThePlugin) {
    std::array<unsigned char, 100> expected{};
    std::copy_n("marrowfen", 9, expected.begin());
    std::copy_n("Quelland", 8, expected.begin() + 32);
    expected[96] = 101;
    expected[98] = 1;
    EXPECT_EQ(person.data, expected);
    EXPECT_EQ(tsxGetVersion(), 650);
    EXPECT_EQ(person.desktop().ownerOf(person.panel()), tsxGetMainViewHwnd());
    EXPECT_EQ(person.desktop().focus(), nullptr);
    person.play({"left click"});
    EXPECT_EQ(person.desktop().focus(), person.panel());
    EXPECT_EQ(person.desktop().openDialogs().size(), 1U);
}

TEST_F(OpenPanel, SaveDialogIsAskedAsStated) {
    person.play({"cancel", "press Export"});
    using Filters = std::vector<std::pair<std::string, std::string>>;
    EXPECT_EQ(person.saveQuestion.filters, (Filters{{"DTS Files", "*.dts"}, {"All", "*.*"}}));
    EXPECT_EQ(person.saveQuestion.selectedFilter, 1);
    EXPECT_EQ(person.saveQuestion.defaultExtension, "dts");
    EXPECT_EQ(person.saveQuestion.bufferSize, 500);
    EXPECT_EQ(person.saveQuestion.flags, unsigned{OFN_OVERWRITEPROMPT | OFN_PATHMUSTEXIST | OFN_ENABLESIZING});
    EXPECT_EQ(person.saveQuestion.owner, nullptr);
    EXPECT_EQ(person.saveQuestion.instance, GetModuleHandleA(nullptr));
    EXPECT_FALSE(person.saveQuestion.hasFolder || person.saveQuestion.hasTitle);
    person.play({"press Export DSQ"});
    EXPECT_EQ(person.saveQuestion.filters, (Filters{{"DSQ Files", "*.dsq"}, {"All", "*.*"}}));
    EXPECT_EQ(person.saveQuestion.defaultExtension, "dsq");
}

TEST_F(OpenPanel, AboutBoxEndsByItsCloseBoxToo) {
    person.closesAboutByKey = false;
    person.play({"press About", "press About"});
    EXPECT_EQ(person.desktop().openDialogs().size(), 1U);
}

TEST_F(OpenPanel, PanelThatWentWithTheMainViewOpensAgain) {
    DestroyWindow(person.panel());
    person.play({"left click", "look"});
    EXPECT_EQ(person.seen.back(), "panel: name \"\", animation off, list []");
}

TEST_F(OpenPanel, OtherMessagesOfThePanelAreLeftAlone) {
    constexpr int kDoubleClicked = 5;
    EXPECT_EQ(SendMessageA(person.panel(), WM_COMMAND, MAKEWPARAM(IDC_EXPORT_DTS, kDoubleClicked), 0), FALSE);
    EXPECT_EQ(SendMessageA(person.panel(), WM_COMMAND, MAKEWPARAM(IDC_NODE_NAME, BN_CLICKED), 0), FALSE);
    EXPECT_EQ(SendMessageA(person.panel(), WM_SETFOCUS, 0, 0), FALSE);
    EXPECT_EQ(SendMessageA(person.panel(), WM_COMMAND, MAKEWPARAM(IDC_ADD_NODE, BN_CLICKED), 0), TRUE);
    EXPECT_EQ(person.seen.size(), 1U);
}

TEST_F(OpenPanel, LogOfAnExportHoldsBannerAndEnd) {
    person.play({"save as ship", "press Export"});
    const std::string log = readFile(folder / "ship.dts.log");
    EXPECT_TRUE(log.starts_with("Marrowfen v1.1.0\r\n\r\ntrueSpace major=660 minor=11\r\n\r\nBeginning to scan"));
    EXPECT_TRUE(log.ends_with("\r\nSaving shape...done\r\ndone\r\n\r\nExport Complete\r\n"));
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), std::count(log.begin(), log.end(), '\r'));
}

TEST_F(OpenPanel, FilesThatCannotBeOpenedStopNothing) {
    fs::create_directories(folder / "ship.dts");
    fs::create_directories(folder / "ship.dts.log");
    person.play({"save as ship", "press Export"});
    EXPECT_EQ(person.seen.back(), "message \"Export Complete\" (Marrowfen, information, owner panel)");
}

TEST_F(PanelFixture, NodeListPathThatDoesNotFitIsNoList) {
    const size_t listLength = std::string("/tsx/marrowfen/node_list.txt").size();
    for (const size_t length : {size_t{263}, size_t{264}, size_t{2000}}) {
        std::string directory = folder.string() + "/";
        while (directory.size() + listLength < length) directory += directory.size() % 100 == 0 ? '/' : 'd';
        writeFile(directory + "/tsx/marrowfen/node_list.txt", "eye\n");
        EXPECT_EQ(listShown(directory),
                  std::string("panel: name \"\", animation off, list [") + (length < 264 ? "eye]" : "]"))
            << length;
    }
}

TEST_F(PanelFixture, UnreadableNodeListIsEmpty) {
    const fs::path list = folder / "tsx/marrowfen/node_list.txt";
    fs::create_directories(list);
    EXPECT_EQ(listShown(folder.string()), "panel: name \"\", animation off, list []");
    fs::remove(list);
    ASSERT_EQ(mkfifo(list.c_str(), 0600), 0);
    EXPECT_EQ(listShown(folder.string()), "panel: name \"\", animation off, list []");
}

TEST_F(PanelFixture, MarkerIsATwoColouredCubeOnItsLayer) {
    PanelCase slots;
    slots.layers = R"([null, "Detail", null, "nodesA", "nodes"])";
    HeadlessPerson person(slots, folder, "");
    person.play({"left click", "type eye", "press Add Node", "press Add Node"});
    const standin::Scene scene = person.host().scene();
    ASSERT_EQ(scene.nodes.size(), 4U);
    const standin::Node& marker = scene.nodes[2];
    EXPECT_EQ(marker.name + scene.nodes[3].name, "eyeeye");
    EXPECT_EQ(marker.layer, 3);
    EXPECT_EQ(marker.location, (standin::Vec3{1, 1, 1}));
    for (const standin::Vec3& corner : marker.polyhedron.vertices) {
        for (const float c : corner) EXPECT_EQ(std::abs(c), 0.0625F);
    }
    ASSERT_EQ(marker.polyhedron.faces.size(), 6U);
    const std::map<std::string, standin::HostMaterial> materials(scene.materials.begin(), scene.materials.end());
    for (size_t i = 0; i < 6; ++i) {
        const auto material = static_cast<size_t>(marker.polyhedron.faces[i].material);
        using Color = std::array<uint8_t, 4>;
        EXPECT_EQ(materials.at(*marker.polyhedron.materials.at(material)).color,
                  (i == 4 ? Color{0, 0, 255, 255} : Color{0, 255, 0, 255}))
            << i;
    }
}

TEST_F(OpenPanel, NodeHelperAsksForANameItself) {
    plugin::addNode("");
    EXPECT_EQ(person.seen.back(), "message \"Please enter a name for the node\" (Marrowfen, information, owner panel)");
    EXPECT_EQ(person.desktop().focus(), GetDlgItem(person.panel(), IDC_NODE_NAME));
    EXPECT_EQ(person.host().scene().nodes.size(), 2U);
}

}  // namespace marrowfen::test
