#include <assimp/importerdesc.h>
#include <assimp/postprocess.h>
#include <assimp/Importer.hpp>

#include <algorithm>
#include <cmath>

#include "standin/import/model.h"

// The import in one view: Assimp reads the file, the passes of model.h turn it into a scene.

namespace marrowfen::standin {

namespace {

std::string readerName(const Assimp::Importer& importer) {
    const aiImporterDesc* description =
        importer.GetImporterInfo(static_cast<size_t>(importer.GetPropertyInteger("importerIndex", -1)));
    return description != nullptr && description->mName != nullptr ? description->mName : "";
}

// Assimp's own words, as one line.
std::string oneLine(const char* text) {
    std::string line = cleanText(aiString(text));
    std::replace(line.begin(), line.end(), '\t', ' ');
    return line.empty() ? "the file can't be read" : line;
}

// Polygons are cut into triangles here, where concave ones are cut right; the host would cut them as fans. Mappings
// other than coordinates, and texture transforms, are worked into the coordinates.
bool prepare(Assimp::Importer& importer) {
    return importer.ApplyPostProcessing(aiProcess_Triangulate | aiProcess_GenUVCoords | aiProcess_TransformUVCoords) !=
           nullptr;
}

size_t triangleCount(const std::vector<Node>& nodes) {
    size_t count = 0;
    for (const Node& node : nodes) count += node.polyhedron.faces.size() + triangleCount(node.children);
    return count;
}

void noteWhatIsLost(Model& model) {
    const aiScene& source = *model.source;
    for (unsigned m = 0; m < source.mNumMeshes; ++m) {
        if (source.mMeshes[m]->mNumAnimMeshes > 0) ++model.notes.morphs;
        if (source.mMeshes[m]->HasVertexColors(0)) ++model.notes.vertexColors;
    }
    for (unsigned m = 0; m < source.mNumMaterials; ++m) {
        // Of a file without meshes, Assimp draws the skeleton.
        aiString name;
        source.mMaterials[m]->Get(AI_MATKEY_NAME, name);
        if (std::string_view(name.C_Str()) == "SkeletonMaterial") model.notes.stickFigure = true;
    }
}

void runPasses(Model& model) {
    listNodes(model);
    findNodeFrame(model);
    if (model.error.empty()) findSkinBones(model);
    if (model.error.empty()) assignLayers(model);
    if (model.error.empty()) findMovingBones(model);
    if (model.error.empty()) convertMaterials(model);
    BoneVertices held;
    if (model.error.empty()) placeNodes(model, held);
    if (model.error.empty() && triangleCount(model.scene.nodes) == 0) model.fail("the file holds no triangles");
    if (model.error.empty()) addSkeletons(model, held);
    if (model.error.empty()) convertAnimations(model);
    if (model.error.empty()) shortenIds(model.scene);
    noteWhatIsLost(model);
}

struct Line {
    size_t count;
    const char* one;
    const char* many;
};

// A few of the names, so that a line stays one.
std::string firstFew(const std::vector<std::string>& names) {
    constexpr size_t kFew = 3;
    std::string text;
    for (size_t i = 0; i < std::min(names.size(), kFew); ++i) text += (i > 0 ? ", " : "") + names[i];
    return names.size() > kFew ? text + ", ..." : text;
}

std::vector<std::string> warningLines(const ModelNotes& notes) {
    const Line kLines[] = {
        {notes.degenerateFaces, "triangle with two corners at one place is dropped",
         "triangles with two corners at one place are dropped"},
        {notes.linesAndPoints, "line or point is dropped", "lines and points are dropped"},
        {notes.turnedMeshes, "mesh has faces and normals on opposite sides; what encloses no volume is turned round",
         "meshes have faces and normals on opposite sides; what encloses no volume is turned round"},
        {notes.lightVertices, "vertex follows only the heaviest of several bones",
         "vertices follow only the heaviest of several bones"},
        {notes.lostBones, "bone of a mesh has no node and holds nothing",
         "bones of meshes have no node and hold nothing"},
        {notes.bindConflicts, "bone is bound in different poses by several meshes; the first one's is taken",
         "bones are bound in different poses by several meshes; the first one's is taken"},
        {notes.stillCollisions, "collision mesh hangs on a moving node but stays where it is",
         "collision meshes hang on moving nodes but stay where they are"},
        {notes.scaledBones, "bone changes its size in an animation, which is dropped",
         "bones change their size in an animation, which is dropped"},
        {notes.shapeAnimations, "animation of vertices (morphing) is skipped",
         "animations of vertices (morphing) are skipped"},
        {notes.morphs, "mesh loses its morph targets", "meshes lose their morph targets"},
        {notes.vertexColors, "mesh loses its vertex colours", "meshes lose their vertex colours"},
        {notes.alphaTextures, "material blends by its texture's alpha alone and comes out opaque",
         "materials blend by their texture's alpha alone and come out opaque"},
        {notes.embeddedTextures, "embedded texture is referred to by name and not written out",
         "embedded textures are referred to by name and not written out"},
    };
    std::vector<std::string> lines;
    if (notes.stickFigure) lines.emplace_back("the file has no meshes; its skeleton is drawn as a stick figure");
    for (const Line& line : kLines) {
        if (line.count > 0)
            lines.push_back(std::to_string(line.count) + " " + (line.count == 1 ? line.one : line.many));
    }
    if (!notes.missingTextures.empty()) {
        lines.push_back(std::to_string(notes.missingTextures.size()) +
                        (notes.missingTextures.size() == 1 ? " texture isn't" : " textures aren't") +
                        " found beside the model: " + firstFew(notes.missingTextures));
    }
    lines.insert(lines.end(), notes.others.begin(), notes.others.end());
    return lines;
}

}  // namespace

LoadResult readModel(const std::string& path, const ImportOptions& options) {
    LoadResult result;
    Assimp::Importer importer;
    Model model;
    model.path = path;
    model.options = options;
    model.source = importer.ReadFile(path, 0);
    if (model.source == nullptr) return {{}, path + ": " + oneLine(importer.GetErrorString()), {}};
    model.format = readerName(importer);
    checkModel(model);
    if (model.error.empty() && !prepare(importer)) model.fail(oneLine(importer.GetErrorString()));
    if (model.error.empty()) {
        model.scene.host.frameRate = options.frameRate;
        runPasses(model);
    }
    if (!model.error.empty()) return {{}, path + ": " + model.error, {}};
    return {std::move(model.scene), {}, warningLines(model.notes)};
}

}  // namespace marrowfen::standin
