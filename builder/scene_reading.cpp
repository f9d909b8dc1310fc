#include "builder/scene_reading.h"

#include <ostream>

#include "builder/passes.h"
#include "builder/scan.h"
#include "ground/at.h"
#include "host/animation.h"

namespace marrowfen {

SceneReading readScene() {
    const StoppedPlayback playback;
    std::ostream noLog(nullptr);
    SceneReading reading;
    const MessageListener listener = [&](const Message& message) { reading.messages.push_back(message); };
    Notices notices(noLog, listener);
    reading.scan = scanScene(notices);
    Shape shape;
    shape.setError(reading.scan.error);
    if (!shape.hasError()) {
        checkDetailLayers(reading.scan.detailLayers, shape, notices);
        tellUselessLayers(reading.scan.detailLayers, notices);
        createNodes(reading.scan.bones, reading.scan.markers, shape, notices);
        for (const auto* layers : {&reading.scan.collisionLayers, &reading.scan.losCollisionLayers}) {
            tellOverruledLayers(*layers, notices);
        }
        playableClips(reading.scan.clips, count32(shape.nodes), notices);
    }
    reading.error = shape.error();
    return reading;
}

}  // namespace marrowfen
