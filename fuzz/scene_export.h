#pragma once

// An export of a scene that a fuzz target came to hold.

#include <sstream>
#include <string>

#include "builder/shape_builder.h"
#include "fuzz/require.h"
#include "shape/shape_check.h"
#include "standin/host/host.h"

namespace marrowfen {

// Clips and meshes of an input that is small but says "sample a million frames" cost more than they show.
inline bool isCheap(const standin::Scene& scene) {
    constexpr float kLongestClip = 100;
    constexpr size_t kMostClips = 8;
    if (scene.clips.size() > kMostClips) return false;
    for (const standin::Clip& clip : scene.clips) {
        if (!(clip.end - clip.start < kLongestClip && clip.length.value_or(0) < kLongestClip)) return false;
    }
    return true;
}

// The file is whole, and its links hold.
inline void checkFile(const Shape& shape, ExportMode mode) {
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

inline void exportScene(const standin::Scene& scene, ExportMode mode) {
    standin::Host host(scene);
    std::ostringstream log;
    {
        const ShapeBuilder builder(log, mode);
        if (!builder.hasError()) checkFile(builder, mode);
    }
    REQUIRE(host.liveHandles() == 0);
    REQUIRE(host.faults().empty());
}

// The export ends in an error or in a whole file, with every handle given back.
inline void exportBoth(const standin::Scene& scene) {
    if (!isCheap(scene)) return;
    exportScene(scene, ExportMode::ShapeWithAnimation);
    exportScene(scene, ExportMode::SequencesOnly);
}

}  // namespace marrowfen
