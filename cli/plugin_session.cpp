#include "cli/plugin_session.h"

#include <array>
#include <new>

#include "plugin/export_messages.h"
#include "plugin/plugin.h"
#include "plugin/resources/resource_text.h"

namespace marrowfen::cli {

namespace {

// Those of the plug-in, read once by a process of many sessions.
const std::vector<headless::DialogTemplate>& dialogs() {
    static const auto theDialogs = headless::readDialogs(plugin::kResourceText);
    return theDialogs;
}

}  // namespace

PluginSession::PluginSession(standin::Scene scene, headless::HeadlessUser& user)
    : host_(std::move(scene)), desktop_(user, dialogs()) {
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
    const bool isAccepted = tsxOnLeftClick() != 0;
    throwIfNoMemory();
    if (!isAccepted || desktop_.openDialogs().empty()) return false;
    panel_ = desktop_.openDialogs().front();
    return true;
}

void PluginSession::press(int control) {
    SendDlgItemMessageA(panel_, control, BM_CLICK, 0, 0);
    throwIfNoMemory();
}

void PluginSession::throwIfNoMemory() const {
    for (const Message& message : messages_) {
        if (message.kind == &plugin::kNoMemory) throw std::bad_alloc();
    }
}

void PluginSession::type(int control, const std::string& text) { SetDlgItemTextA(panel_, control, text.c_str()); }

}  // namespace marrowfen::cli
