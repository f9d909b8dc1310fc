#pragma once

#include <assimp/scene.h>

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "standin/import/source_model.h"

namespace marrowfen::standin {

// A file that Assimp has read, on its way to a source model.
struct AssimpReading {
    const aiScene& scene;
    const aiScene* named;  // the same with the names that people see, where they aren't the ones that tell nodes apart
    std::string_view format;
    std::filesystem::path path;
    SourceModel model;
    std::unordered_map<std::string, int32_t> nodeByName;  // the first one
};

// Assimp checks some formats and not others: what the passes below rely on, and Assimp's own. The model's error says
// what is wrong.
void checkScene(AssimpReading& reading);

void addNodes(AssimpReading& reading);                 // fills nodeByName, which the next two ask
void addMesh(AssimpReading& reading, unsigned index);  // fails for a weight that isn't finite
void addClips(AssimpReading& reading);
void addMaterials(AssimpReading& reading);  // with their images

// What the format's reader passes over: taken from the file, or told. After the meshes.
void makeUpForReader(AssimpReading& reading);

int32_t findNode(const AssimpReading& reading, const aiString& name);  // kNone for none
std::string madeUpNumber(const AssimpReading& reading, const std::string& name);
std::optional<int> surfaceKind(const aiMaterial& material);  // of AC3D's: flags of assimp_files.h

inline std::string textOf(const aiString& text) { return cleanText(text.C_Str()); }

}  // namespace marrowfen::standin
