// Any text as a scene file: a fault or a scene. A scene reads back from its own text, and an export of it ends in an
// error or in a whole file, with every handle given back.

#include <sstream>
#include <string>

#include "builder/shape_builder.h"
#include "fuzz/require.h"
#include "shape/shape_check.h"
#include "standin/host/host.h"
#include "standin/host/scene_file.h"

using namespace marrowfen;

namespace {

// Clips and meshes of an input that is small but says "sample a million frames" cost more than they show.
constexpr float kLongestClip = 100;
constexpr size_t kMostClips = 8;

bool isCheap(const standin::Scene& scene) {
    if (scene.clips.size() > kMostClips) return false;
    for (const standin::Clip& clip : scene.clips) {
        if (!(clip.end - clip.start < kLongestClip && clip.length.value_or(0) < kLongestClip)) return false;
    }
    return true;
}

// The file is whole, and its links hold.
void checkFile(const Shape& shape, ExportMode mode) {
    std::stringstream file;
    std::string surplus;
    Shape back;
    if (mode == ExportMode::SequencesOnly) {
        shape.writeDsq(file);
        back.readDsq(file, &surplus);
    } else {
        shape.writeDts(file, true);
        back.readDts(file, &surplus);
    }
    REQUIRE(!back.hasError() && surplus.empty());
    const bool sequences = mode == ExportMode::SequencesOnly;
    REQUIRE(!anyBroken(findProblems(back, sequences ? ShapeFileKind::Dsq : ShapeFileKind::Dts)));
}

void exportScene(const standin::Scene& scene, ExportMode mode) {
    standin::Host host(scene);
    std::ostringstream log;
    {
        const ShapeBuilder builder(log, mode);
        if (!builder.hasError()) checkFile(builder, mode);
    }
    REQUIRE(host.liveHandles() == 0);
    REQUIRE(host.faults().empty());
}

}  // namespace

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

    if (!isCheap(*loaded.scene)) return 0;
    exportScene(*loaded.scene, ExportMode::ShapeWithAnimation);
    exportScene(*loaded.scene, ExportMode::SequencesOnly);
    return 0;
}
