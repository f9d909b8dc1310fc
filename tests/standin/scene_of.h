#pragma once

#include <gtest/gtest.h>

#include <string>

#include "standin/host/scene_file.h"

namespace marrowfen::standin {

// The text of a scene file with these members after format and version.
inline std::string sceneWith(const std::string& members) {
    return R"({"format": "marrowfen-scene", "version": 1, )" + members + "}";
}

inline Scene sceneOf(const std::string& members) {
    LoadResult result = parseScene(sceneWith(members), "scene");
    EXPECT_EQ(result.error, "");
    return result.scene.value_or(Scene{});
}

// The scene whose only layer is number 1 and that has these nodes.
inline Scene sceneOfNodes(const std::string& nodes, const std::string& more = "") {
    return sceneOf(R"("layers": [null, "Detail"], "nodes": [)" + nodes + "]" + more);
}

}  // namespace marrowfen::standin
