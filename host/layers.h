#pragma once

// The host's layers. A layer lives in a slot; slot 0 never holds anything.

#include <cstdint>
#include <optional>
#include <string>

namespace marrowfen {

// As many as the host says; slots are numbered from 0.
int16_t numberOfLayerSlots();

// The name of the slot's layer, none for a slot without one.
std::optional<std::string> layerName(int16_t slot);

// A new layer of that name behind the others: its slot, or -1 when the host refuses.
int16_t addLayer(const char* name);

}  // namespace marrowfen
