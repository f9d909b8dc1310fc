// A host on a real screen: loads scenes and the plug-in, and drives the panel as a person would.
//   panel_driver PLUGIN FOLDER                          plays every panel case, each in a folder of its own
//   panel_driver PLUGIN FOLDER SCENE NAME [animation]   exports a scene to the file FOLDER\NAME
// With MARROWFEN_SHOTS set to a folder, pictures of the windows go there. Answers 0 when all is as expected.

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <thread>

#include "tests/wine/screen_person.h"
#include "tests/wine/standin_entry.h"

namespace marrowfen::test {
namespace {

namespace fs = std::filesystem;

LRESULT CALLBACK mainViewProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == ScreenPerson::kRunMessage) {
        (*reinterpret_cast<const std::function<void()>*>(lParam))();
        return 0;
    }
    return DefWindowProcA(window, message, wParam, lParam);
}

HWND makeMainView() {
    WNDCLASSA mainViewClass{};
    mainViewClass.lpfnWndProc = mainViewProc;
    mainViewClass.lpszClassName = "MainView";
    mainViewClass.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_APPWORKSPACE + 1);
    RegisterClassA(&mainViewClass);
    return CreateWindowA("MainView", "Host", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 640, 460, nullptr, nullptr,
                         nullptr, nullptr);
}

std::string shotFolder() {
    const char* folder = std::getenv("MARROWFEN_SHOTS");
    return folder != nullptr ? folder : "";
}

std::string joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) text += "    " + line + "\n";
    return text;
}

// What is seen when the case is played; the files stay.
std::vector<std::string> play(const PanelCase& panelCase, const std::string& scene, HWND mainView,
                              const std::string& plugin, const fs::path& files) {
    fs::create_directories(files);
    const std::string error = standinLoad(scene.c_str(), mainView, panelCase.refuseNewLayers ? 1 : 0);
    if (!error.empty()) return {error};
    std::vector<std::string> seen;
    {
        ScreenPerson person(mainView, plugin, files.string(), shotFolder());
        person.play(panelCase.steps);
        seen = person.seen;
    }
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(files)) names.push_back("file " + entry.path().filename().string());
    std::sort(names.begin(), names.end());
    seen.insert(seen.end(), names.begin(), names.end());
    return seen;
}

bool runCase(const PanelCase& panelCase, HWND mainView, const std::string& plugin, const fs::path& folder) {
    if (panelCase.list) {
        fs::create_directories(folder / "tsx/marrowfen");
        std::ofstream(folder / "tsx/marrowfen/node_list.txt", std::ios::binary) << *panelCase.list;
    }
    const fs::path files = folder / "files";
    const auto seen = play(panelCase, sceneText(panelCase, folder.string()), mainView, plugin, files);
    std::ofstream(files / "after.scene.json", std::ios::binary) << standinUnload();
    const bool good = seen == panelCase.seen;
    std::printf("%s %s\n", good ? "ok    " : "FAILED", panelCase.name.c_str());
    if (!good) std::printf("  expected\n%s  seen\n%s", joined(panelCase.seen).c_str(), joined(seen).c_str());
    std::fflush(stdout);
    return good;
}

bool runExport(int argc, char** argv, HWND mainView) {
    const std::string name = argv[4];
    PanelCase single;
    single.name = name;
    single.steps = {"left click", "save as " + name};
    if (argc > 5) single.steps.push_back("press Animation");
    single.steps.push_back(name.ends_with(".dsq") ? "press Export DSQ" : "press Export");
    std::ifstream file(argv[3], std::ios::binary);
    std::ostringstream scene;
    scene << file.rdbuf();
    const auto seen = play(single, scene.str(), mainView, argv[1], argv[2]);
    standinUnload();
    std::printf("%s\n%s", name.c_str(), joined(seen).c_str());
    return std::any_of(seen.begin(), seen.end(),
                       [](const std::string& line) { return line.find("Export Complete") != std::string::npos; });
}

int run(int argc, char** argv, HWND mainView) {
    if (argc > 4) return runExport(argc, argv, mainView) ? 0 : 1;
    int failed = 0;
    for (const PanelCase& panelCase : panelCases()) {
        if (!runCase(panelCase, mainView, argv[1], fs::path(argv[2]) / panelCase.name)) ++failed;
    }
    std::printf("%d of %d panel cases failed\n", failed, static_cast<int>(panelCases().size()));
    return failed == 0 ? 0 : 1;
}

}  // namespace
}  // namespace marrowfen::test

int main(int argc, char** argv) {
    if (argc < 3) return 2;
    HWND mainView = marrowfen::test::makeMainView();
    std::thread person([&] { ExitProcess(static_cast<UINT>(marrowfen::test::run(argc, argv, mainView))); });
    person.detach();
    MSG message;
    while (GetMessageA(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
    return 3;
}
