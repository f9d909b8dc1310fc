#pragma once

// How the builder reads the host's scene, of which it makes nothing.

#include <string>
#include <vector>

#include "builder/records.h"
#include "ground/message.h"

namespace marrowfen {

struct SceneReading {
    SceneScan scan;
    std::string error;              // why an export of a shape would be refused before anything is made of it
    std::vector<Message> messages;  // what an export would tell of the scene's names, layers and clips
};

SceneReading readScene();

}  // namespace marrowfen
