// A host on a real screen: loads scenes and the plug-in, and drives the panel as a person would.
//   panel_driver PLUGIN FOLDER cases | exports LIST | host | hands REQUESTS       (tests/wine/driver.h)

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <sstream>

#include "tests/wine/driver.h"
#include "tests/wine/screen_person.h"
#include "tests/wine/standin_entry.h"

namespace marrowfen::test {
namespace {

namespace fs = std::filesystem;

std::string joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) text += "    " + line + "\n";
    return text;
}

std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return std::move(content).str();
}

void load(const Stage& stage, const std::string& scene, bool refusesNewLayers) {
    const std::string error = standinLoad(scene.c_str(), stage.host.mainView(), refusesNewLayers ? 1 : 0);
    if (error.empty()) return;
    std::printf("%s\n", error.c_str());
    std::fflush(stdout);
    ExitProcess(4);
}

// What is seen when the steps are played; the files stay.
std::vector<std::string> play(const Stage& stage, const std::vector<std::string>& steps, const fs::path& files) {
    ScreenPerson person(stage.host, stage.plugin, files.string());
    person.play(steps);
    return person.seen;
}

bool runCase(const Stage& stage, const PanelCase& panelCase) {
    const fs::path folder = stage.folder / panelCase.name, files = folder / "files";
    fs::create_directories(files);
    if (panelCase.list) {
        fs::create_directories(folder / "tsx/marrowfen");
        std::ofstream(folder / "tsx/marrowfen/node_list.txt", std::ios::binary) << *panelCase.list;
    }
    load(stage, sceneText(panelCase, folder.string()), panelCase.refuseNewLayers);
    std::vector<std::string> seen = play(stage, panelCase.steps, files);
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(files)) names.push_back("file " + entry.path().filename().string());
    std::sort(names.begin(), names.end());
    seen.insert(seen.end(), names.begin(), names.end());
    std::ofstream(files / "after.scene.json", std::ios::binary) << standinUnload();
    if (seen == panelCase.seen) return true;
    std::printf("FAILED %s\n  expected\n%s  seen\n%s", panelCase.name.c_str(), joined(panelCase.seen).c_str(),
                joined(seen).c_str());
    return false;
}

void exportScene(const Stage& stage, const std::string& scene, const std::string& name, bool withAnimation) {
    constexpr char kListing[] = "c:\\temp.txt";
    const bool isDsq = name.ends_with(".dsq");
    std::vector<std::string> steps = {"left click", "save as " + name};
    if (withAnimation) steps.emplace_back("press Animation");
    steps.emplace_back(isDsq ? "press Export DSQ" : "press Export");
    load(stage, readFile(scene), false);
    DeleteFileA(kListing);
    play(stage, steps, stage.folder);
    if (isDsq) CopyFileA(kListing, (stage.folder / (name + ".temp.txt")).string().c_str(), FALSE);
    standinUnload();
}

bool run(int argc, char** argv, HostThread& host) {
    const Stage stage = {host, argv[1], argv[2]};
    const std::string what = argv[3];
    fs::create_directories(stage.folder);
    if (what == "cases") return playPanelCases(stage);
    if (what == "exports" && argc > 4) return exportScenes(stage, argv[4]);
    if (what == "host") return tryHost(stage);
    return what == "hands" && argc > 4 && tryHands(stage, Hands(argv[4]));
}

}  // namespace

void openScene(const Stage& stage, const PanelCase& panelCase) {
    load(stage, sceneText(panelCase, stage.folder.string()), false);
}

bool playPanelCases(const Stage& stage) {
    size_t good = 0;
    for (const PanelCase& panelCase : panelCases()) good += runCase(stage, panelCase) ? 1 : 0;
    std::printf("%zu of %zu panel cases are good\n", good, panelCases().size());
    return good == panelCases().size();
}

bool exportScenes(const Stage& stage, const std::string& list) {
    std::istringstream lines(readFile(list));
    std::string line;
    while (std::getline(lines, line)) {
        std::istringstream fields(line);
        std::string scene, name, flag;
        std::getline(fields, scene, '\t');
        std::getline(fields, name, '\t');
        std::getline(fields, flag, '\t');
        exportScene(stage, scene, name, !flag.empty());
    }
    return true;
}

}  // namespace marrowfen::test

int main(int argc, char** argv) {
    if (argc < 4) return 2;
    SetProcessDPIAware();
    marrowfen::test::HostThread host;
    const bool good = marrowfen::test::run(argc, argv, host);
    std::fflush(stdout);
    ExitProcess(good ? 0 : 1);
}
