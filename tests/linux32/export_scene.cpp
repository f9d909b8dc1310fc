// Exports a scene file through the panel: export_scene SCENE OUTPUT [animation]. What `marrowfen export` does, without
// all that a 32-bit build has no libraries for.

#include <cstdio>

#include "cli/plugin_session.h"
#include "plugin/resources/resource.h"
#include "standin/host/scene_file.h"

namespace {

class Exporter : public marrowfen::headless::HeadlessUser {
public:
    explicit Exporter(std::string path) : path_(std::move(path)) {}

    std::optional<std::string> savePath(const marrowfen::headless::SaveQuestion&) override { return path_; }
    void readMessage(const marrowfen::headless::Message& message) override { std::puts(message.text.c_str()); }

private:
    std::string path_;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) return 2;
    auto loaded = marrowfen::standin::readSceneFile(argv[1]);
    if (!loaded.scene) return std::puts(loaded.error.c_str()), 3;
    const std::string output = argv[2];
    Exporter user(output);
    marrowfen::cli::PluginSession plugin(std::move(*loaded.scene), user);
    if (!plugin.openPanel()) return 1;
    if (argc > 3) plugin.press(IDC_WITH_ANIMATION);
    plugin.press(output.ends_with(".dsq") ? IDC_EXPORT_DSQ : IDC_EXPORT_DTS);
    return 0;
}
