#pragma once

// Builds of scenes that a test writes down in a few lines.

#include <memory>
#include <sstream>
#include <string>

#include "builder/shape_builder.h"
#include "standin/host/host.h"
#include "tests/standin/scene_of.h"

namespace marrowfen {

using standin::sceneOf;

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
