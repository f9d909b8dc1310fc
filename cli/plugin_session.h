#pragma once

// The plug-in over a scene and without a screen: what the commands do, they do as an artist does it in the panel.

#include <string>
#include <vector>

#include "ground/message.h"
#include "standin/host/host.h"
#include "standin/windows/headless_user.h"

namespace marrowfen::cli {

// Saves nothing, and remembers what was said last.
class MessageUser : public headless::HeadlessUser {
public:
    std::optional<std::string> savePath(const headless::SaveQuestion&) override { return {}; }
    void readMessage(const headless::Message& message) override { message_ = message.text; }

    const std::string& message() const { return message_; }

private:
    std::string message_;
};

class PluginSession {
public:
    // Loads the plug-in into a host with this scene. The user is borrowed and is asked whatever a dialog asks.
    PluginSession(standin::Scene scene, headless::HeadlessUser& user);
    ~PluginSession();
    PluginSession(const PluginSession&) = delete;
    PluginSession& operator=(const PluginSession&) = delete;

    // Left-clicks the plug-in. Without success the user has read why.
    bool openPanel();

    // The panel's controls, by the numbers in plugin/resources/resource.h. What ends there for want of memory, in a
    // box, throws here.
    void press(int control);
    void type(int control, const std::string& text);

    const standin::Host& host() const { return host_; }

    // What the exports of this session had to tell.
    const std::vector<Message>& messages() const { return messages_; }

private:
    void throwIfNoMemory() const;

    standin::Host host_;
    headless::Desktop desktop_;
    HWND panel_ = nullptr;
    std::vector<Message> messages_;
};

}  // namespace marrowfen::cli
