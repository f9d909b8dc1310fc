#pragma once

#include <cstdint>

namespace marrowfen {

// Adds the green cube with one blue face by which an artist sees a marker to the scene, at (1, 1, 1) on the layer's
// slot. False when the host makes none.
bool addMarkerCube(const char* name, int16_t layer);

}  // namespace marrowfen
