#include <assimp/config.h>
#include <assimp/importerdesc.h>
#include <assimp/postprocess.h>
#include <assimp/Importer.hpp>

#include <algorithm>
#include <cmath>
#include <new>
#include <optional>

#include "ground/ascii.h"
#include "ground/pieces.h"
#include "standin/host/large_pages.h"
#include "standin/import/assimp_axes.h"
#include "standin/import/assimp_files.h"
#include "standin/import/assimp_reading.h"
#include "standin/import/model_import.h"

// What Assimp reads, as a source model.

namespace marrowfen::standin {

namespace {

constexpr std::string_view kColladaReader = "Collada Importer";
constexpr std::string_view kAc3dReader = "AC3D Importer";
constexpr float kAc3dCrease = 61;  // degrees between faces that its format, which has no normals, leaves smooth
constexpr std::string_view kQuakeReader = "Quake Mesh / 3D GameStudio Mesh Importer";

std::string readerName(const Assimp::Importer& importer) {
    const aiImporterDesc* description =
        importer.GetImporterInfo(static_cast<size_t>(importer.GetPropertyInteger("importerIndex", -1)));
    return description != nullptr && description->mName != nullptr ? description->mName : "";
}

// Assimp's own words, as one line.
std::string oneLine(const char* text) {
    std::string line = cleanText(text);
    std::replace(line.begin(), line.end(), '\t', ' ');
    return line.empty() ? "the file can't be read" : line;
}

// The reader puts the file's unit into the root's transform; the unit is applied where all formats' units are.
void takeUnitFromRoot(SourceModel& model) {
    Matrix& root = model.nodes[0].local;
    const double unit = scaleOf(root).x;
    if (!(unit > 0) || !std::isfinite(unit)) return;
    for (unsigned row = 0; row < 3; ++row) {
        for (unsigned column = 0; column < 3; ++column) root[row][column] /= unit;
    }
    model.unit = unit;
}

void convert(AssimpReading& reading) {
    SourceModel& model = reading.model;
    addNodes(reading);
    findAxes(reading.scene, reading.format, model);
    if (reading.format == kColladaReader) takeUnitFromRoot(model);
    model.materialsByMesh = reading.format == kAc3dReader;
    // Of Half-Life models the reader makes all bones siblings, with poses that are meant relative to parents.
    model.losesSkeleton = reading.format == kQuakeReader && model.nodes[0].name == "<MDL_root>";
    for (unsigned m = 0; m < reading.scene.mNumMeshes && model.error.empty(); ++m) addMesh(reading, m);
    makeUpForReader(reading);
    addMaterials(reading);
    addClips(reading);
}

const aiScene* readFile(Assimp::Importer& importer, const std::string& path) {
    importer.SetIOHandler(new ModelFiles(path));
    return importer.ReadFile(path, 0);
}

const std::vector<LookedFor>& filesOf(const Assimp::Importer& importer) {
    return static_cast<const ModelFiles*>(importer.GetIOHandler())->lookedFor();
}

// A reader may take a file for its own whose ending it doesn't know, and then say what is wrong with it.
std::string whyUnread(const Assimp::Importer& importer, const std::string& path) {
    const std::string ending = std::filesystem::path(path).extension().string();
    if (equalIgnoringCase(ending, ".glb")) return "is a binary glTF 1.0 file, which isn't read: make glTF 2.0 of it";
    if (!importer.IsExtensionSupported(ending))
        return "files of its kind aren't read (marrowfen formats lists those that are)";
    const std::string fault = oneLine(importer.GetErrorString());
    return equalIgnoringCase(ending, ".blend") ? fault + "; export glTF from Blender instead" : fault;
}

// A Collada file's scene with the nodes' names for their identifiers. Several nodes may have one name, so animations
// and skins are found by the identifiers.
const aiScene* readNames(Assimp::Importer& importer, const std::string& path) {
    importer.SetPropertyBool(AI_CONFIG_IMPORT_COLLADA_USE_COLLADA_NAMES, true);
    return readFile(importer, path);
}

}  // namespace

SourceModel readWithAssimp(const std::string& path) {
    putBlockOnLargePages(16 << 20);  // which the reader of OBJ files takes, and clears, for the smallest file
    Assimp::Importer importer;
    std::optional<Assimp::Importer> names;
    SourceModel model;
    const aiScene* scene = readFile(importer, path);
    if (scene == nullptr) {
        model.files = filesOf(importer);
        model.fail(whyUnread(importer, path));
        return model;
    }
    const std::string format = readerName(importer);
    AssimpReading reading{*scene, nullptr, format, path, {}, {}};
    checkScene(reading);
    // Mappings other than coordinates, and texture transforms, are worked into the coordinates.
    unsigned passes = aiProcess_GenUVCoords | aiProcess_TransformUVCoords;
    if (format == kAc3dReader) {
        importer.SetPropertyFloat(AI_CONFIG_PP_GSN_MAX_SMOOTHING_ANGLE, kAc3dCrease);
        passes |= aiProcess_GenSmoothNormals;
    }
    if (reading.model.error.empty() && importer.ApplyPostProcessing(passes) == nullptr) {
        reading.model.fail(oneLine(importer.GetErrorString()));
    }
    if (format == kColladaReader) reading.named = readNames(names.emplace(), path);
    if (reading.model.error.empty()) convert(reading);
    reading.model.files = filesOf(importer);
    return std::move(reading.model);
}

std::vector<std::string> otherEndings() {
    std::string list;
    Assimp::Importer().GetExtensionList(list);  // "*.3ds;*.obj"
    if (list.empty()) throw std::bad_alloc();   // which the library keeps to itself
    std::vector<std::string> endings;
    for (const std::string& entry : piecesOf(list, ';')) endings.push_back(entry.substr(1));
    std::sort(endings.begin(), endings.end());
    return endings;
}

}  // namespace marrowfen::standin
