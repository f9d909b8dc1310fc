#pragma once

// The first pass: what is in the host's scene, and which role each layer has.

#include <vector>

#include "builder/notices.h"
#include "builder/records.h"

namespace marrowfen {

SceneScan scanScene(Notices& notices);

// Parts of it with a file of their own.

// The host's clips with what their tags ask for (builder/scan_clips.cpp).
std::vector<ClipInfo> scanClips(Notices& notices);

// The bones of the skeletons on these layers, list by list and layer by layer. The vertices of a layer's polyhedra are
// bound to the bones that hold them (builder/scan_bones.cpp).
std::vector<BoneInfo> scanBones(const std::vector<std::vector<LayerInfo>*>& layerLists, Notices& notices);

}  // namespace marrowfen
