#include "plugin/plugin.h"

#include <windows.h>

#include <array>
#include <cstring>

#include "plugin/module.h"
#include "plugin/resources/resource.h"

namespace marrowfen::plugin {

Module theModule;

namespace {

constexpr int32_t kInterfaceVersion = 650;
constexpr int32_t kClickAccepted = 2;
constexpr int32_t kClickRefused = 0;

constexpr std::array<char, kDataBlockSize> kDataBlock = [] {
    constexpr char kName[] = "marrowfen";
    constexpr char kMaker[] = "Quelland";
    constexpr size_t kMakerOffset = 32, kIconOffset = 96, kOneOffset = 98;
    std::array<char, kDataBlockSize> block{};
    for (size_t i = 0; i + 1 < sizeof kName; ++i) block[i] = kName[i];
    for (size_t i = 0; i + 1 < sizeof kMaker; ++i) block[kMakerOffset + i] = kMaker[i];
    block[kIconOffset] = IDB_ICON;
    block[kOneOffset] = 1;
    return block;
}();

// trueSpace 6.5 reports 660/9, gameSpace 1.5 and trueSpace 6.6 with Service Pack 2 report 660/11.
bool isSupportedHost(const HostVersion& host) {
    return host.major > 660 || (host.major == 660 && (host.minor == 9 || host.minor >= 11));
}

}  // namespace

void showMessage(const char* text, UINT icon) { MessageBoxA(theModule.panel, text, kCaption, icon | MB_TASKMODAL); }

}  // namespace marrowfen::plugin

using marrowfen::plugin::theModule;

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD, LPVOID) {
    theModule.instance = instance;
    return TRUE;
}

int32_t tsxGetVersion() { return marrowfen::plugin::kInterfaceVersion; }

int32_t tsxGetData(void* destination, void* secondWord) {
    using marrowfen::plugin::kDataBlock;
    std::memcpy(destination, kDataBlock.data(), kDataBlock.size());
    theModule.secondWord = secondWord;
    theModule.mainView = static_cast<HWND>(marrowfen::hostMainView());
    return 0;
}

int32_t tsxOnLeftClick() {
    using namespace marrowfen::plugin;
    theModule.host = marrowfen::hostVersion();
    if (!isSupportedHost(theModule.host)) {
        showMessage("This plug-in requires at least trueSpace 6.5 or 6.6 with Service Pack 2 or gameSpace 1.5.",
                    MB_ICONINFORMATION);
        return kClickRefused;
    }
    openPanel();
    return kClickAccepted;
}

void tsxOnRightClick() {}

void tsxDeactivate() { marrowfen::plugin::closePanel(); }
