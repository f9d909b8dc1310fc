#include "host/layers.h"

#include "host/host_text.h"
#include "host/tsxapi.h"

namespace marrowfen {

int16_t numberOfLayerSlots() { return tsxGetNumberOfLayers(); }

std::optional<std::string> layerName(int16_t slot) {
    if (tsxIsLayerValid(slot) != 1) return std::nullopt;
    return hostText(tsxGetLayerName(slot));
}

int16_t addLayer(const char* name) {
    const int16_t slot = tsxGetNumberOfLayers();
    if (tsxAddNewLayerEx() == 0) return -1;
    tsxSetLayerName(slot, name);
    return slot;
}

}  // namespace marrowfen
