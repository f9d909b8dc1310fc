#include <algorithm>

#include "ground/at.h"
#include "ground/comma_list.h"
#include "ground/counted.h"
#include "standin/import/model.h"

// The import in one view: a reader makes a source model of the file, the passes of model.h turn it into a scene.

namespace marrowfen::standin {

namespace {

constexpr float kUsualFrameRate = 30;

size_t triangleCount(const std::vector<Node>& nodes) {
    size_t count = 0;
    for (const Node& node : nodes) count += node.polyhedron.faces.size() + triangleCount(node.children);
    return count;
}

void noteWhatIsLost(Model& model) {
    for (const SourceMesh& mesh : model.source.meshes) {
        if (mesh.hasMorphs) ++model.notes.morphs;
        if (mesh.hasColors) ++model.notes.vertexColors;
        if (mesh.hasMoreUvs) ++model.notes.moreUvs;
    }
}

// A file with bones and animations alone is one for sequences.
void dropMeshes(SourceModel& source) {
    source.stickFigure = false;
    source.meshes.clear();
    for (SourceNode& node : source.nodes) node.meshes.clear();
}

float frameRateOf(const Model& model) {
    if (model.options.frameRate > 0) return model.options.frameRate;
    return model.source.frameRate > 0 ? static_cast<float>(model.source.frameRate) : kUsualFrameRate;
}

void runPasses(Model& model) {
    checkSource(model.source);
    model.error = model.source.error;
    if (!model.error.empty()) return;
    model.scene.host.frameRate = frameRateOf(model);
    listNodes(model);
    findNodeFrame(model);
    if (model.error.empty()) findSkinBones(model);
    if (model.error.empty()) assignLayers(model);
    if (model.error.empty()) findMovingBones(model);
    if (model.error.empty()) nameBonesAsShape(model);
    if (model.error.empty()) convertMaterials(model);
    BoneVertices held;
    if (model.error.empty()) placeNodes(model, held);
    if (model.error.empty() && triangleCount(model.scene.nodes) == 0 && model.source.clips.empty()) {
        model.fail("the file holds no triangles");
    }
    if (model.error.empty()) addLevels(model, held);
    if (model.error.empty()) addSkeletons(model, held);
    if (model.error.empty()) convertAnimations(model);
    if (model.error.empty()) shortenIds(model.scene);
    noteWhatIsLost(model);
}

// What is lost in numbers.
struct Line {
    size_t (*count)(const Model& model);
    const MessageKind& kind;
    const char* one;
    const char* many;
};

const Line kLines[] = {
    {[](const Model& m) { return m.notes.degenerateFaces; }, load::kFlatTriangle,
     "triangle with two corners at one place is dropped", "triangles with two corners at one place are dropped"},
    {[](const Model& m) { return m.source.linesAndPoints; }, load::kLineOrPoint, "line or point is dropped",
     "lines and points are dropped"},
    {[](const Model& m) { return m.notes.turnedMeshes; }, load::kMeshTurned,
     "mesh has faces and normals on opposite sides; what encloses no volume is turned round",
     "meshes have faces and normals on opposite sides; what encloses no volume is turned round"},
    {[](const Model& m) { return m.notes.lightVertices; }, load::kSeveralWeights,
     "vertex follows only the heaviest of several bones", "vertices follow only the heaviest of several bones"},
    {[](const Model& m) { return m.source.lostBones; }, load::kBoneLost, "bone of a mesh has no node and holds nothing",
     "bones of meshes have no node and hold nothing"},
    {[](const Model& m) { return m.notes.bindConflicts; }, load::kBindConflict,
     "bone is bound in different poses by several meshes; the first one's is taken",
     "bones are bound in different poses by several meshes; the first one's is taken"},
    {[](const Model& m) { return m.notes.stillCollisions; }, load::kStillCollision,
     "collision mesh hangs on a moving node but stays where it is",
     "collision meshes hang on moving nodes but stay where they are"},
    {[](const Model& m) { return m.notes.scaledBones; }, load::kBoneScale,
     "bone changes its size in an animation, which is dropped",
     "bones change their size in an animation, which is dropped"},
    {[](const Model& m) { return m.source.shapeClips; }, load::kMorph, "animation of vertices (morphing) is skipped",
     "animations of vertices (morphing) are skipped"},
    {[](const Model& m) { return m.notes.morphs; }, load::kMorph, "mesh loses its morph targets",
     "meshes lose their morph targets"},
    {[](const Model& m) { return m.notes.vertexColors; }, load::kVertexColor, "mesh loses its vertex colours",
     "meshes lose their vertex colours"},
    {[](const Model& m) { return m.notes.moreUvs; }, load::kMoreUvs, "mesh loses its further texture coordinates",
     "meshes lose their further texture coordinates"},
    {[](const Model& m) { return m.notes.cutOuts; }, load::kMaterialMask,
     "material is cut out by its texture's alpha and comes out translucent",
     "materials are cut out by their textures' alpha and come out translucent"},
    {[](const Model& m) { return m.notes.backs; }, load::kBackFaces,
     "face shows from both sides and is doubled; --single-sided leaves its back out",
     "faces show from both sides and are doubled; --single-sided leaves their backs out"},
    {[](const Model& m) { return m.notes.tinted; }, load::kMaterialTint,
     "material tints its texture, which the engine shows in its own colours",
     "materials tint their textures, which the engine shows in their own colours"},
    {[](const Model& m) { return m.notes.backsWithout; }, load::kBackFaces,
     "mesh shows from both sides but has no normals, and keeps its front only",
     "meshes show from both sides but have no normals, and keep their fronts only"},
};

std::vector<Message> warningsOf(const Model& model) {
    const ModelNotes& notes = model.notes;
    std::vector<Message> told;
    const auto tell = [&](const MessageKind& kind, std::string text) {
        told.push_back(aboutScene(kind, std::move(text)));
    };
    if (model.source.stickFigure) {
        tell(load::kStickFigure, "the file has no meshes; its skeleton is drawn as a stick figure");
    }
    for (const Line& line : kLines) {
        const size_t count = line.count(model);
        if (count > 0) tell(line.kind, counted(count, line.one, line.many));
    }
    if (notes.restsElsewhere) {
        tell(load::kRestPose,
             "the model rests in another pose than its skin was bound in; the shape shows the bind pose");
    }
    if (!notes.missingTextures.empty()) {
        tell(load::kMissingFile, counted(notes.missingTextures.size(), "texture isn't", "textures aren't") +
                                     " found beside the model: " + commaList(notes.missingTextures));
    }
    if (!notes.plainMaterials.empty()) {
        tell(load::kColorOnly,
             counted(notes.plainMaterials.size(), "material has", "materials have") +
                 " a colour only; the engine will look for a texture of that name: " + commaList(notes.plainMaterials));
    }
    told.insert(told.end(), model.source.remarks.begin(), model.source.remarks.end());
    told.insert(told.end(), notes.others.begin(), notes.others.end());
    return told;
}

// The first of each path.
std::vector<LookedFor> withoutCopies(std::vector<LookedFor> files) {
    std::set<std::string> known;
    std::erase_if(files, [&](const LookedFor& file) { return !known.insert(file.path).second; });
    return files;
}

}  // namespace

ImportResult readModel(const std::string& path, const ImportOptions& options) {
    Model model;
    model.path = path;
    model.options = options;
    model.source = isGltf2(path) ? readGltf(path) : readWithAssimp(path);
    if (model.source.stickFigure && !model.source.clips.empty()) dropMeshes(model.source);
    if (model.source.meshes.empty() && model.source.clips.empty()) {
        std::string fault = model.source.linesAndPoints > 0 ? "the file holds lines and points, but no triangles"
                                                            : "the file holds no meshes";
        for (const Message& remark : model.source.remarks) {
            if (remark.kind == &load::kReaderLoss) fault += "; " + remark.text;
        }
        model.source.fail(fault);
    }
    model.error = model.source.error;
    if (model.error.empty()) runPasses(model);
    ImportResult result;
    model.source.files.insert(model.source.files.begin(), {path, true});
    result.files = withoutCopies(std::move(model.source.files));
    if (!model.error.empty()) {
        result.error = path + ": " + model.error;
        return result;
    }
    result.scene = std::move(model.scene);
    result.warnings = warningsOf(model);
    result.details.push_back(axesText(model));
    result.textures = std::move(model.textures);
    return result;
}

}  // namespace marrowfen::standin
