#pragma once

#include <assimp/scene.h>

#include <string_view>

#include "standin/import/source_model.h"

namespace marrowfen::standin {

// Rotates the right axis to X and the up axis (0 to 2 each, with a sign) to Z.
Matrix uprightFrom(int right, int rightSign, int up, int upSign);

// Readers as Assimp calls them.
inline constexpr std::string_view kFbxReader = "Autodesk FBX Importer";
inline constexpr std::string_view kBlenderReader = "Blender 3D Importer (http://www.blender3d.org)";
inline constexpr std::string_view kAmfReader = "Additive manufacturing file format(AMF) Importer";

// Which way is up and front in what a reader hands over, and the unit where the reader tells it.
void findAxes(const aiScene& scene, std::string_view reader, SourceModel& model);

}  // namespace marrowfen::standin
