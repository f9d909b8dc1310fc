#pragma once

// Builds of scenes that a test writes down in a few lines.

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>

#include "builder/shape_builder.h"
#include "standin/host/host.h"
#include "standin/host/scene_file.h"

namespace marrowfen {

// members: the keys of the scene file after format and version.
inline standin::Scene sceneOf(const std::string& members) {
    const std::string text = R"({"format": "marrowfen-scene", "version": 1, )" + members + "}";
    standin::LoadResult loaded = standin::parseScene(text, "scene");
    EXPECT_EQ(loaded.error, "");
    return loaded.scene ? *std::move(loaded.scene) : standin::Scene();
}

// A shape and the host that it was built from, which has got back everything that it handed out.
struct Build {
    explicit Build(const standin::Scene& scene, ExportMode mode = ExportMode::ShapeOnly) : host(scene) {
        host.recordCalls();
        shape = std::make_unique<ShapeBuilder>(log, mode, [this](const Message& message) {
            if (message.kind->severity == Severity::Error) inTheWay += message.kind->code + (" " + message.text);
        });
        EXPECT_EQ(inTheWay.empty(), !shape->hasError()) << shape->error();
        EXPECT_EQ(host.liveHandles(), 0);
        EXPECT_TRUE(host.faults().empty()) << host.faults().front();
    }

    standin::Host host;
    std::ostringstream log;
    std::string inTheWay;  // what a refused build told beside its error: code and text
    std::unique_ptr<ShapeBuilder> shape;
};

}  // namespace marrowfen
