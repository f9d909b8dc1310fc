#include <assimp/GltfMaterial.h>
#include <assimp/config.h>
#include <assimp/importerdesc.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <assimp/Importer.hpp>

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <new>
#include <optional>
#include <set>
#include <unordered_map>

#include "ground/ascii.h"
#include "ground/pieces.h"
#include "ground/whole_file.h"
#include "standin/host/large_pages.h"
#include "standin/import/assimp_axes.h"
#include "standin/import/assimp_files.h"
#include "standin/import/model_import.h"
#include "standin/import/own_files.h"
#include "standin/import/polygon_cut.h"
#include "standin/import/source_model.h"

// What Assimp reads, as a source model. Assimp checks some formats and not others, so every index is checked here.

namespace marrowfen::standin {

namespace {

constexpr std::string_view kColladaNameless = "$ColladaAutoName$";
constexpr std::string_view kFbxHelper = "_$AssimpFbx$_";
constexpr std::string_view kObjReader = "Wavefront Object Importer";
constexpr std::string_view kColladaReader = "Collada Importer";
constexpr std::string_view kAc3dReader = "AC3D Importer";
constexpr float kAc3dCrease = 61;  // degrees between faces that its format, which has no normals, leaves smooth
constexpr std::string_view kQuakeReader = "Quake Mesh / 3D GameStudio Mesh Importer";
// They say of every material that it shows from both sides, which their files don't.
constexpr std::string_view kTwoSidedReaders[] = {"Stanford Polygon Library (PLY) Importer", "OFF Importer"};

// What a reader leaves out: of every file, or of those that say they have more of it than the reader takes.
struct ReaderLoss {
    std::string_view reader;
    const char* what;
    std::vector<size_t> countsAt = {};  // where in the file
    uint32_t most = 0;                  // of which nothing is lost
};
constexpr const char* kFirstFrame = "of a file whose animations are of vertices, the first frame alone is read";
const ReaderLoss kReaderLosses[] = {
    {kBlenderReader,
     "a .blend file is read without its modifiers and animations: export glTF from Blender to have what it shows"},
    {"Inter-Quake Model Importer", "of an IQM file the meshes alone are read, without bones and animations", {68, 76}},
    {"Quake II Mesh Importer", kFirstFrame, {40}, 1},
    {"Quake III Mesh Importer", kFirstFrame, {76}, 1},
    {"Return To Castle Wolfenstein Mesh Importer", kFirstFrame, {76}, 1},
    {"Unreal Mesh Importer", kFirstFrame}};
constexpr double kDefaultTicksPerSecond = 25;  // of files that name none

struct AssimpReading {
    const aiScene& scene;
    const aiScene* named;  // the same with the names that people see, where they aren't the ones that tell nodes apart
    std::string_view format;
    std::filesystem::path path;
    SourceModel model;
    std::unordered_map<std::string, int32_t> nodeByName;  // the first one
};

std::string textOf(const aiString& text) { return cleanText(text.C_Str()); }

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

std::string meshName(const aiScene& scene, unsigned mesh) {
    const std::string name = textOf(scene.mMeshes[mesh]->mName);
    return "mesh " + std::to_string(mesh) + (name.empty() ? "" : " (" + name + ")");
}

std::string outOf(size_t index, size_t count) { return std::to_string(index) + " of " + std::to_string(count); }

// What Assimp's own passes and the ones below rely on.
void checkMesh(AssimpReading& reading, unsigned index) {
    SourceModel& model = reading.model;
    const aiMesh* mesh = reading.scene.mMeshes[index];
    if (mesh != nullptr && mesh->mNumFaces == 0 && mesh->mNumVertices == 0) return;
    if (mesh == nullptr || mesh->mVertices == nullptr || (mesh->mNumFaces > 0 && mesh->mFaces == nullptr)) {
        return model.fail("mesh " + std::to_string(index) + " has no vertices or faces");
    }
    const std::string name = meshName(reading.scene, index);
    if (mesh->mMaterialIndex >= reading.scene.mNumMaterials) {
        return model.fail(name + ": material " + outOf(mesh->mMaterialIndex, reading.scene.mNumMaterials));
    }
    for (unsigned f = 0; f < mesh->mNumFaces; ++f) {
        const aiFace& face = mesh->mFaces[f];
        for (unsigned c = 0; c < face.mNumIndices; ++c) {
            if (face.mIndices[c] < mesh->mNumVertices) continue;
            return model.fail(name + ", face " + std::to_string(f) + ": vertex " +
                              outOf(face.mIndices[c], mesh->mNumVertices));
        }
    }
    for (unsigned b = 0; b < mesh->mNumBones; ++b) {
        const aiBone& bone = *mesh->mBones[b];
        for (unsigned w = 0; w < bone.mNumWeights; ++w) {
            if (bone.mWeights[w].mVertexId < mesh->mNumVertices) continue;
            return model.fail(name + ", bone " + textOf(bone.mName) + ": vertex " +
                              outOf(bone.mWeights[w].mVertexId, mesh->mNumVertices));
        }
    }
}

void checkNode(AssimpReading& reading, const aiNode& node, int level) {
    SourceModel& model = reading.model;
    if (level > kDeepestNode) return model.fail("nodes are nested deeper than " + std::to_string(kDeepestNode));
    for (unsigned m = 0; m < node.mNumMeshes; ++m) {
        if (node.mMeshes[m] < reading.scene.mNumMeshes) continue;
        return model.fail("node " + textOf(node.mName) + ": mesh " + outOf(node.mMeshes[m], reading.scene.mNumMeshes));
    }
    for (unsigned c = 0; c < node.mNumChildren && model.error.empty(); ++c) {
        // The reader of RAW files leaves gaps.
        if (node.mChildren[c] != nullptr) checkNode(reading, *node.mChildren[c], level + 1);
    }
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

// The number in what the reader of glTF 1.0 calls a node without a name. It would make the node a layer of markers.
std::string madeUpNumber(const AssimpReading& reading, const std::string& name) {
    if (reading.format.find("glTF") == std::string::npos || !name.starts_with("nodes") || name.size() < 7) return {};
    const bool isBracket = name[5] == '[' && name.back() == ']';
    const std::string number = name.substr(6, name.size() - (isBracket ? 7 : 6));
    const bool isNumber = number.find_first_not_of("0123456789") == std::string::npos;
    return isNumber && (isBracket || name[5] == '_') ? number : std::string();
}

// The reader may name its root after the file; that is no name that an artist gave.
bool isNamedAfterFile(const AssimpReading& reading, const aiNode& root) {
    const std::filesystem::path name(root.mName.C_Str());
    return name.filename() == reading.path.filename() || name.filename() == reading.path.stem();
}

// What a person calls a node. named: the same node with the other names, or null.
std::string nameOf(const aiNode& source, const aiNode* named) {
    const std::string name = named == nullptr ? std::string() : textOf(named->mName);
    return name.empty() || name.starts_with(kColladaNameless) ? textOf(source.mName) : name;
}

void addNode(AssimpReading& reading, const aiNode& source, const aiNode* named, int32_t parent) {
    const auto index = static_cast<int32_t>(reading.model.nodes.size());
    if (named != nullptr && named->mNumChildren != source.mNumChildren) named = nullptr;
    SourceNode node;
    node.parent = parent;
    node.helper = std::string_view(source.mName.C_Str()).find(kFbxHelper) != std::string_view::npos;
    node.name = nameOf(source, named);
    const std::string number = madeUpNumber(reading, node.name);
    // Other readers make up names such as "<STL_BINARY>".
    node.unnamed =
        node.name.empty() || node.name.front() == '<' || !number.empty() || node.name.starts_with(kColladaNameless);
    if (!number.empty()) node.name = "node" + number;
    if (parent == kNone && isNamedAfterFile(reading, source)) node.unnamed = true;
    node.local = Matrix(source.mTransformation);
    for (unsigned m = 0; m < source.mNumMeshes; ++m) node.meshes.push_back(static_cast<int32_t>(source.mMeshes[m]));
    reading.nodeByName.emplace(source.mName.C_Str(), index);
    reading.model.nodes.push_back(std::move(node));
    for (unsigned c = 0; c < source.mNumChildren; ++c) {
        const aiNode* child = named == nullptr ? nullptr : named->mChildren[c];
        if (source.mChildren[c] != nullptr) addNode(reading, *source.mChildren[c], child, index);
    }
}

int32_t findNode(const AssimpReading& reading, const aiString& name) {
    const auto found = reading.nodeByName.find(name.C_Str());
    return found == reading.nodeByName.end() ? kNone : found->second;
}

void addFaces(AssimpReading& reading, const aiMesh& source, SourceMesh& mesh) {
    for (unsigned f = 0; f < source.mNumFaces; ++f) {
        const aiFace& face = source.mFaces[f];
        if (face.mNumIndices < 3) ++reading.model.linesAndPoints;
        const std::vector<uint32_t> corners(face.mIndices, face.mIndices + face.mNumIndices);
        const std::vector<uint32_t> triangles = cutPolygon(mesh.positions, corners);
        mesh.corners.insert(mesh.corners.end(), triangles.begin(), triangles.end());
    }
}

void addBones(AssimpReading& reading, const aiMesh& source, SourceMesh& mesh) {
    std::vector<float> heaviest(source.mNumVertices, 0);
    std::vector<uint8_t> noticed(source.mNumVertices, 0);
    for (unsigned b = 0; b < source.mNumBones; ++b) {
        const aiBone& bone = *source.mBones[b];
        const int32_t node = findNode(reading, bone.mName);
        if (node == kNone) {
            ++reading.model.lostBones;
            continue;
        }
        mesh.holds.resize(source.mNumVertices);
        for (unsigned w = 0; w < bone.mNumWeights; ++w) {
            const unsigned vertex = bone.mWeights[w].mVertexId;
            const float weight = bone.mWeights[w].mWeight;
            if (!std::isfinite(weight)) {
                return reading.model.fail("mesh " + mesh.name + ", bone " + textOf(bone.mName) +
                                          ": a weight isn't finite");
            }
            if (weight > kNoticeableWeight && noticed[vertex]++ > 0) mesh.holds[vertex].several = true;
            if (noticed[vertex] > 1) noticed[vertex] = 1;
            if (!(weight > heaviest[vertex])) continue;
            heaviest[vertex] = weight;
            mesh.holds[vertex].bone = static_cast<int32_t>(mesh.bones.size());
        }
        mesh.bones.push_back({node, Matrix(bone.mOffsetMatrix)});
    }
}

// The set of texture coordinates that the colour's texture uses, else the first.
void addUvs(const aiScene& scene, const aiMesh& source, SourceMesh& mesh) {
    int set = 0;
    const aiMaterial& material = *scene.mMaterials[source.mMaterialIndex];
    if (material.Get(AI_MATKEY_UVWSRC_DIFFUSE(0), set) != aiReturn_SUCCESS || set < 0 ||
        set >= AI_MAX_NUMBER_OF_TEXTURECOORDS || !source.HasTextureCoords(static_cast<unsigned>(set))) {
        set = 0;
    }
    const aiVector3D* uvs = source.mTextureCoords[set];
    for (unsigned v = 0; uvs != nullptr && v < source.mNumVertices; ++v) mesh.uvs.push_back({uvs[v].x, uvs[v].y});
    mesh.hasMoreUvs = source.GetNumUVChannels() > 1;
}

// Of AC3D's materials.
std::optional<int> surfaceKind(const aiMaterial& material) {
    aiString text;
    material.Get(AI_MATKEY_NAME, text);
    const std::string_view name = text.C_Str();
    const size_t mark = name.find(kKindMark);
    if (mark == std::string_view::npos || mark + 1 >= name.size()) return std::nullopt;
    return name[mark + 1] - '0';
}

void addMesh(AssimpReading& reading, unsigned index) {
    const aiMesh& source = *reading.scene.mMeshes[index];
    SourceMesh mesh;
    mesh.name = textOf(source.mName);
    const bool madeUp = mesh.name.starts_with('<') || !madeUpNumber(reading, mesh.name).empty();
    if (madeUp) mesh.name.clear();
    mesh.positions.assign(source.mVertices, source.mVertices + source.mNumVertices);
    if (source.HasNormals()) mesh.normals.assign(source.mNormals, source.mNormals + source.mNumVertices);
    mesh.material = static_cast<int32_t>(source.mMaterialIndex);
    const std::optional<int> kind = surfaceKind(*reading.scene.mMaterials[source.mMaterialIndex]);
    mesh.flat = kind && (*kind & kSmoothSurface) == 0;
    if (mesh.flat) mesh.normals.clear();
    mesh.hasMorphs = source.mNumAnimMeshes > 0;
    mesh.hasColors = source.HasVertexColors(0);
    addUvs(reading.scene, source, mesh);
    addFaces(reading, source, mesh);
    addBones(reading, source, mesh);
    reading.model.meshes.push_back(std::move(mesh));
}

void findAlpha(const aiMaterial& source, SourceMaterial& material) {
    aiString mode;
    // glTF keeps the opacity in the colour, and tells whether it counts.
    if (source.Get(AI_MATKEY_GLTF_ALPHAMODE, mode) == aiReturn_SUCCESS) {
        const std::string_view word = mode.C_Str();
        if (word == "BLEND") material.alpha = SourceMaterial::Alpha::Blend;
        if (word == "MASK") material.alpha = SourceMaterial::Alpha::Mask;
        if (word != "BLEND") material.color[3] = 1;
        return;
    }
    float opacity = 1;
    source.Get(AI_MATKEY_OPACITY, opacity);
    material.color[3] = opacity;
    aiString mask;
    const bool hasMask = source.GetTexture(aiTextureType_OPACITY, 0, &mask) == aiReturn_SUCCESS && mask.length > 0;
    if (opacity < 1 || hasMask) material.alpha = SourceMaterial::Alpha::Blend;
}

void findTexture(const aiScene& scene, const aiMaterial& source, SourceMaterial& material) {
    for (const aiTextureType type : {aiTextureType_DIFFUSE, aiTextureType_BASE_COLOR, aiTextureType_EMISSIVE}) {
        aiString path;
        if (source.GetTexture(type, 0, &path) != aiReturn_SUCCESS || path.length == 0) continue;
        const auto [texture, index] = scene.GetEmbeddedTextureAndIndex(path.C_Str());
        if (texture != nullptr) material.image = index;
        material.texture = textOf(path);
        // What Blender works out has no picture.
        if (material.texture.starts_with("Procedural,num=")) material.texture.clear();
        return;
    }
}

void addMaterial(AssimpReading& reading, const aiMaterial& source) {
    SourceMaterial material;
    aiString name;
    source.Get(AI_MATKEY_NAME, name);
    material.name = textOf(name);
    const std::optional<int> kind = surfaceKind(source);
    if (kind) material.name = cleanText(std::string(name.C_Str(), std::string_view(name.C_Str()).find(kKindMark)));
    // Of a file without meshes, Assimp draws the skeleton.
    if (material.name == "SkeletonMaterial") reading.model.stickFigure = true;
    aiColor4D color(1, 1, 1, 1);
    if (source.Get(AI_MATKEY_BASE_COLOR, color) != aiReturn_SUCCESS) source.Get(AI_MATKEY_COLOR_DIFFUSE, color);
    material.color = {color.r, color.g, color.b, color.a};
    findAlpha(source, material);
    findTexture(reading.scene, source, material);
    aiColor3D emission(0, 0, 0);
    source.Get(AI_MATKEY_COLOR_EMISSIVE, emission);
    material.emission = std::max({emission.r, emission.g, emission.b});
    int twoSided = 0;
    const bool isSaid = std::find(std::begin(kTwoSidedReaders), std::end(kTwoSidedReaders), reading.format) ==
                        std::end(kTwoSidedReaders);
    material.doubleSided = isSaid && source.Get(AI_MATKEY_TWOSIDED, twoSided) == aiReturn_SUCCESS && twoSided != 0;
    if (kind) material.doubleSided = (*kind & kTwoSidedSurface) != 0;
    reading.model.materials.push_back(std::move(material));
}

void addImage(AssimpReading& reading, const aiTexture& source) {
    SourceImage image;
    image.name = textOf(source.mFilename);
    if (!image.name.empty() && image.name[0] == '*') image.name.clear();
    // With a height, it is pixels and not a file's bytes.
    if (source.mHeight == 0 && source.pcData != nullptr) {
        image.bytes.assign(reinterpret_cast<const char*>(source.pcData), source.mWidth);
        const std::string ending = cleanText(source.achFormatHint);
        if (!ending.empty()) image.ending = "." + ending;
    }
    reading.model.images.push_back(std::move(image));
}

template <typename KeyType>
void addKey(const KeyType& key, double ticksPerSecond, SourceTrack& track) {
    track.times.push_back(key.mTime / ticksPerSecond);
    if constexpr (std::is_same_v<KeyType, aiQuatKey>) {
        track.values.insert(track.values.end(), {key.mValue.x, key.mValue.y, key.mValue.z, key.mValue.w});
    } else {
        track.values.insert(track.values.end(), {key.mValue.x, key.mValue.y, key.mValue.z});
    }
}

template <typename KeyType>
SourceTrack trackOf(const KeyType* keys, unsigned count, double ticksPerSecond) {
    SourceTrack track;
    for (unsigned k = 0; keys != nullptr && k < count; ++k) addKey(keys[k], ticksPerSecond, track);
    return track;
}

double lastTime(const SourceTrack& track) { return track.times.empty() ? 0 : track.times.back(); }

void addClip(AssimpReading& reading, const aiAnimation& source) {
    if (source.mNumMorphMeshChannels > 0 || source.mNumMeshChannels > 0) ++reading.model.shapeClips;
    if (source.mNumChannels == 0) return;
    const double ticksPerSecond = source.mTicksPerSecond > 0 ? source.mTicksPerSecond : kDefaultTicksPerSecond;
    SourceClip clip;
    clip.name = textOf(source.mName);
    clip.seconds = source.mDuration / ticksPerSecond;
    double last = 0;
    std::unordered_map<int32_t, size_t> channelOf;
    for (unsigned c = 0; c < source.mNumChannels; ++c) {
        const aiNodeAnim& track = *source.mChannels[c];
        SourceChannel channel;
        channel.node = findNode(reading, track.mNodeName);
        channel.location = trackOf(track.mPositionKeys, track.mNumPositionKeys, ticksPerSecond);
        channel.rotation = trackOf(track.mRotationKeys, track.mNumRotationKeys, ticksPerSecond);
        channel.scale = trackOf(track.mScalingKeys, track.mNumScalingKeys, ticksPerSecond);
        last = std::max({last, lastTime(channel.location), lastTime(channel.rotation), lastTime(channel.scale)});
        if (track.mPostState == aiAnimBehaviour_REPEAT) clip.loops = true;
        if (channel.node == kNone) continue;
        const auto [entry, isNew] = channelOf.try_emplace(channel.node, clip.channels.size());
        if (isNew) {
            clip.channels.push_back(std::move(channel));
        } else {
            clip.channels[entry->second] = std::move(channel);
        }
    }
    if (!(clip.seconds > 0)) clip.seconds = last;
    reading.model.clips.push_back(std::move(clip));
}

// Where keys lie on whole ticks, a tick is a frame.
double frameRateOf(const aiScene& scene) {
    constexpr double kMostFrames = 240;
    for (unsigned a = 0; a < scene.mNumAnimations; ++a) {
        const aiAnimation& animation = *scene.mAnimations[a];
        const double rate = animation.mTicksPerSecond;
        if (!(rate >= 1) || rate > kMostFrames || animation.mNumChannels == 0) continue;
        const aiNodeAnim& track = *animation.mChannels[0];
        if (track.mNumRotationKeys < 2) continue;
        bool whole = true;
        for (unsigned k = 0; k < track.mNumRotationKeys && whole; ++k) {
            const double time = track.mRotationKeys[k].mTime;
            whole = std::fabs(time - std::round(time)) < 1e-3;
        }
        if (whole) return rate;
    }
    return 0;
}

// The reader passes over the unit of an AMF file, and over all volumes of a mesh but one.
void checkAmf(AssimpReading& reading) {
    const std::string text = readWholeFile(reading.path);
    const std::pair<const char*, double> kUnits[] = {
        {"millimeter", 0.001}, {"inch", 0.0254}, {"feet", 0.3048}, {"meter", 1}, {"micrometer", 1e-6}};
    const size_t head = std::min(text.find("<amf"), text.size());
    const std::string opening = text.substr(head, text.find('>', head) - head);
    for (const auto& [name, metres] : kUnits) {
        if (opening.find(std::string("unit=\"") + name + '"') != std::string::npos) reading.model.unit = metres;
    }
    size_t there = 0, read = 0;
    for (size_t at = text.find("<triangle>"); at != std::string::npos; at = text.find("<triangle>", at + 1)) ++there;
    for (const SourceMesh& mesh : reading.model.meshes) read += mesh.corners.size() / 3;
    if (read >= there) return;
    reading.model.remarks.push_back(aboutScene(
        load::kReaderLoss, std::to_string(there - read) +
                               " triangles are lost: of the volumes and materials of an AMF mesh, one is read"));
}

// Assimp passes over a material library that isn't there without a word.
void noteMissingLibraries(AssimpReading& reading) {
    std::ifstream file(reading.path);
    std::set<std::string> told;
    for (std::string line; std::getline(file, line);) {
        const size_t begin = line.starts_with("mtllib ") ? line.find_first_not_of(" \r", 6) : std::string::npos;
        if (begin == std::string::npos) continue;
        std::string name = line.substr(begin);
        while (!name.empty() && std::isspace(static_cast<unsigned char>(name.back())) != 0) name.pop_back();
        const FilePlace place = placeOfFile(reading.path, reading.path.parent_path() / name);
        if (place == FilePlace::There || !told.insert(name).second) continue;
        const char* why = place == FilePlace::Missing ? " isn't found beside the model"
                                                      : " lies outside the model's folder and isn't opened";
        reading.model.remarks.push_back(aboutScene(load::kMissingFile, "material library " + cleanText(name) + why));
    }
}

bool hasLost(const AssimpReading& reading, const ReaderLoss& loss) {
    if (loss.countsAt.empty()) return true;
    std::ifstream file(reading.path, std::ios::binary);
    return std::any_of(loss.countsAt.begin(), loss.countsAt.end(), [&](size_t at) {
        std::array<unsigned char, 4> count{};
        file.seekg(static_cast<std::streamoff>(at));
        file.read(reinterpret_cast<char*>(count.data()), count.size());
        return (count[0] | count[1] << 8 | count[2] << 16 | static_cast<uint32_t>(count[3]) << 24) > loss.most;
    });
}

void convert(AssimpReading& reading) {
    SourceModel& model = reading.model;
    const aiScene& scene = reading.scene;
    addNode(reading, *scene.mRootNode, reading.named == nullptr ? nullptr : reading.named->mRootNode, kNone);
    findAxes(scene, reading.format, model);
    if (reading.format == kColladaReader) takeUnitFromRoot(model);
    model.materialsByMesh = reading.format == kAc3dReader;
    if (reading.format == kObjReader) noteMissingLibraries(reading);
    // Of Half-Life models the reader makes all bones siblings, with poses that are meant relative to parents.
    model.losesSkeleton = reading.format == kQuakeReader && model.nodes[0].name == "<MDL_root>";
    for (unsigned m = 0; m < scene.mNumMeshes && model.error.empty(); ++m) addMesh(reading, m);
    if (reading.format == kAmfReader) checkAmf(reading);
    for (const ReaderLoss& loss : kReaderLosses) {
        if (reading.format == loss.reader && hasLost(reading, loss)) {
            model.remarks.push_back(aboutScene(load::kReaderLoss, loss.what));
        }
    }
    for (unsigned m = 0; m < scene.mNumMaterials; ++m) addMaterial(reading, *scene.mMaterials[m]);
    for (unsigned t = 0; t < scene.mNumTextures; ++t) addImage(reading, *scene.mTextures[t]);
    for (unsigned a = 0; a < scene.mNumAnimations; ++a) addClip(reading, *scene.mAnimations[a]);
    model.frameRate = frameRateOf(scene);
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
    if (scene->mRootNode == nullptr) reading.model.fail("the file holds no nodes");
    for (unsigned m = 0; m < scene->mNumMeshes && reading.model.error.empty(); ++m) checkMesh(reading, m);
    if (reading.model.error.empty()) checkNode(reading, *scene->mRootNode, 1);
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
