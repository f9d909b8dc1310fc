// Any text as a scene file: a fault or a scene. A scene reads back from its own text, and an export of it ends in an
// error or in a whole file, with every handle given back.

#include <string>

#include "fuzz/require.h"
#include "fuzz/scene_export.h"
#include "standin/host/scene_file.h"

using namespace marrowfen;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const standin::LoadResult loaded = standin::parseScene(text, "fuzz.scene.json");
    if (!loaded.scene) {
        REQUIRE(!loaded.error.empty() && loaded.error.find('\n') == std::string::npos);
        return 0;
    }
    const std::string again = standin::sceneText(*loaded.scene);
    const standin::LoadResult reloaded = standin::parseScene(again, "again.scene.json");
    REQUIRE(reloaded.scene == loaded.scene);
    REQUIRE(standin::sceneText(*reloaded.scene) == again);
    exportBoth(*loaded.scene);
    return 0;
}
