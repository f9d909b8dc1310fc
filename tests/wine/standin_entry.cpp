#include "tests/wine/standin_entry.h"

#include <memory>
#include <string>

#include "standin/host/host.h"
#include "standin/host/scene_file.h"

namespace {

std::unique_ptr<marrowfen::standin::Host> theHost;
std::string theText;

}  // namespace

const char* standinLoad(const char* sceneText, void* mainView, int refusesNewLayers) {
    using namespace marrowfen::standin;
    LoadResult loaded = parseScene(sceneText, "scene");
    if (!loaded.scene) {
        theText = loaded.error;
        return theText.c_str();
    }
    theHost.reset();  // there is one at a time
    theHost = std::make_unique<Host>(std::move(*loaded.scene));
    theHost->setMainView(mainView);
    if (refusesNewLayers != 0) theHost->refuseNewLayers();
    return "";
}

const char* standinUnload() {
    using namespace marrowfen::standin;
    Scene scene = theHost->scene();
    scene.host.directory = "";
    theText = sceneText(scene);
    if (theHost->liveHandles() != 0 || !theHost->faults().empty()) theText = "handles were misused";
    theHost.reset();
    return theText.c_str();
}
