#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>

#include "ground/ascii.h"
#include "ground/comma_list.h"
#include "ground/whole_file.h"
#include "standin/import/assimp_axes.h"
#include "standin/import/gltf_reading.h"

// glTF 2.0 as a source model: the nodes of the scene that the file opens with, and what hangs on them.

namespace marrowfen::standin {

namespace {

void noteExtensions(GltfReading& reading) {
    constexpr std::string_view kCarriedOver[] = {"EXT_mesh_gpu_instancing",
                                                 "EXT_texture_avif",
                                                 "EXT_texture_webp",
                                                 "KHR_texture_basisu",
                                                 "MSFT_texture_dds",
                                                 "KHR_mesh_quantization",
                                                 "KHR_texture_transform",
                                                 "KHR_draco_mesh_compression",
                                                 "EXT_meshopt_compression",
                                                 "KHR_materials_unlit",
                                                 "KHR_materials_pbrSpecularGlossiness",
                                                 "MSFT_lod"};
    std::set<std::string> others;
    for (const std::string& extension : reading.file().extensionsUsed) {
        if (std::find(std::begin(kCarriedOver), std::end(kCarriedOver), extension) == std::end(kCarriedOver)) {
            others.insert(cleanText(extension));
        }
    }
    if (!others.empty()) {
        reading.model.remarks.push_back(aboutScene(
            load::kExtension,
            (others.size() == 1 ? "extension is ignored: " : "extensions are ignored: ") + commaList(others)));
    }
}

}  // namespace

bool isGltf2(const std::string& path) {
    const std::string ending = std::filesystem::path(path).extension().string();
    if (equalIgnoringCase(ending, ".vrm")) return true;
    if (!equalIgnoringCase(ending, ".gltf") && !equalIgnoringCase(ending, ".glb")) return false;
    // Version 1 is another format, which Assimp reads.
    std::ifstream file(path, std::ios::binary);
    std::string head(8, '\0');
    file.read(head.data(), static_cast<std::streamsize>(head.size()));
    if (head.starts_with("glTF")) return head[4] != 1;
    const std::string text = readWholeFile(path);
    return text.find("\"version\":\"1.") == std::string::npos && text.find("\"version\": \"1.") == std::string::npos;
}

SourceModel readGltf(const std::string& path) {
    GltfReading reading{GltfDocument(path), {}, {}, {}, {}, {}, {}};
    SourceModel& model = reading.model;
    model.error = reading.document.error();
    model.files = reading.document.files();
    if (!model.error.empty()) return model;
    model.upright = uprightFrom(0, 1, 1, 1);
    model.unit = 1;
    model.skinsStandAlone = true;
    noteExtensions(reading);
    addNodes(reading);
    if (model.error.empty()) addMaterials(reading);
    if (model.error.empty()) addSkins(reading);
    if (model.error.empty()) addMeshes(reading);
    if (model.error.empty()) addClips(reading);
    return std::move(model);
}

}  // namespace marrowfen::standin
