#include "cli/plugin_session.h"

#include <array>

#include "plugin/export_messages.h"
#include "plugin/plugin.h"
#include "plugin/resources/resource_text.h"

namespace marrowfen::cli {

PluginSession::PluginSession(standin::Scene scene, headless::HeadlessUser& user)
    : host_(std::move(scene)), desktop_(user, headless::readDialogs(plugin::kResourceText)) {
    DllMain(desktop_.library(), DLL_PROCESS_ATTACH, nullptr);
    std::array<char, plugin::kDataBlockSize> description;
    tsxGetData(description.data(), nullptr);
    plugin::listenToExports([this](const Message& message) { messages_.push_back(message); });
}

PluginSession::~PluginSession() {
    plugin::listenToExports({});
    tsxDeactivate();
}

bool PluginSession::openPanel() {
    if (tsxOnLeftClick() == 0 || desktop_.openDialogs().empty()) return false;
    panel_ = desktop_.openDialogs().front();
    return true;
}

void PluginSession::press(int control) { SendDlgItemMessageA(panel_, control, BM_CLICK, 0, 0); }

void PluginSession::type(int control, const std::string& text) { SetDlgItemTextA(panel_, control, text.c_str()); }

}  // namespace marrowfen::cli
