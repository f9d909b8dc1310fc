#pragma once

// A model between its file and the host scene: what the passes of the import share. runPasses in model_reader.cpp has
// their order; each may set the error, which ends the import.

#include <functional>
#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "standin/host/scene.h"
#include "standin/import/model_import.h"
#include "standin/import/pose.h"
#include "standin/import/source_model.h"

namespace marrowfen::standin {

inline constexpr int32_t kNoNode = kNone;
inline constexpr int16_t kNoLayer = 0;

struct ModelNode {
    const SourceNode* source = nullptr;
    int32_t parent = kNoNode;  // always a lower index
    std::string name;
    Matrix world;              // scene-from-node as the model stands: turned to Z up and scaled
    std::string layerName;     // of the nearest node at or above that names one, empty for none
    bool belowNodes = false;   // below the node of a "nodes" layer
    int16_t layer = kNoLayer;  // of nodes with meshes and of markers
    bool marker = false;

    // Skeleton.
    bool skinned = false;  // part of the skeleton that a skin needs
    bool bone = false;
    bool bound = false;  // a skin says where it was
    Matrix bind;         // scene-from-node when the skin was bound; the world matrix of nodes that no skin knows
};

// What was dropped or guessed, counted while the passes run.
struct ModelNotes {
    size_t degenerateFaces = 0;
    size_t turnedMeshes = 0;   // meshes whose faces and normals disagreed
    size_t lightVertices = 0;  // vertices with further weights than the heaviest one
    size_t bindConflicts = 0;  // bones that two meshes bind in different poses
    size_t scaledBones = 0;    // bones whose scale an animation changes
    size_t morphs = 0;         // meshes with morph targets
    size_t vertexColors = 0;   // meshes with them
    size_t moreUvs = 0;        // meshes with several sets of texture coordinates
    size_t cutOuts = 0;        // materials whose texture's alpha cuts holes
    size_t backs = 0;          // faces that were doubled for their backs
    size_t backsWithout = 0;   // meshes without normals whose backs are left out
    size_t stillCollisions = 0;
    size_t tinted = 0;            // materials whose colour tints their texture
    bool restsElsewhere = false;  // bones rest in another pose than they were bound in
    std::set<std::string> missingTextures;
    std::vector<std::string> plainMaterials;  // keys of those without a texture
    std::vector<Message> others;
};

struct Model {
    SourceModel source;
    std::string path;
    ImportOptions options;

    std::vector<ModelNode> nodes;
    Matrix modelFromUpright;  // a node's own axes from those that stand upright; see poseInScene
    std::unordered_map<std::string, int16_t> layerByName;
    bool usesDefaultLayer = false;                             // something visible is on no layer of its own
    int16_t firstLevel = kNoLayer;                             // the detail layer with the largest size
    size_t levelsFound = 0;                                    // that the model has by its own nodes, "_LOD0" and so on
    std::vector<std::string> materialKeys;                     // one per material of the source
    std::map<std::pair<int32_t, int32_t>, Matrix> skinPlaces;  // scene-from-mesh of skinned meshes, by node and mesh
    std::map<int32_t, std::vector<std::string>> boneIds;       // of each bone, one a skeleton that has it
    std::map<int32_t, std::string> imageNames;                 // file names of embedded textures
    std::set<std::string> textureBases;                        // without endings, in small letters
    Scene scene;
    std::vector<std::pair<std::string, std::string>> textures;  // file names and bytes
    ModelNotes notes;
    std::string error;  // the first one, without the file's name

    void fail(const std::string& text) {
        if (error.empty()) error = text;
    }
};

// True when the node's name begins with a layer's role.
bool namesRole(const ModelNode& node);

// Scene-from-model: turns the model's up axis to Z and its front to +Y, and scales it to metres.
Matrix sceneFromModel(const Model& model);

// Finds modelFromUpright.
void findNodeFrame(Model& model);

// The pose of a node whose scene-from-node matrix is given, without scale. In a Y-up file a node that isn't turned has
// its own Y axis up; in the scene it is one that isn't turned either, with its Z axis up, since that is what the host
// and the engine take for upright. Files that were turned to Y up by their root or their top nodes have upright nodes
// already.
Matrix poseInScene(const Model& model, const Matrix& sceneFromNode);

// What the two above have done, for a person.
std::string axesText(const Model& model);

// Fills nodes, parents before children, in the model's order.
void listNodes(Model& model);

// Marks the nodes that skins need as bones and finds their bind poses.
void findSkinBones(Model& model);

// Gives nodes their layers and fills the scene's layers.
void assignLayers(Model& model);

// False for layers of the other roles, whose geometry follows no bones.
bool isDetailLayer(const Model& model, int16_t layer);

// True when a channel takes its node away from its rest pose.
bool isMoving(const ModelNode& node, const SourceChannel& channel);

// Marks the nodes as bones whose animation moves a mesh as a whole.
void findMovingBones(Model& model);

// Fills the scene's materials, and materialKeys.
void convertMaterials(Model& model);

// Where the scene shows a mesh of a node: where it rests, or where it was bound.
Matrix sceneFromMesh(const Model& model, int32_t node, int32_t mesh);

// The scene's ids while the scene is built; shortenIds replaces them.
std::string nodeId(int32_t node);
std::string boneId(int32_t node, int16_t layer);

// The vertices that each bone holds, by layer and bone, on each polyhedron.
using BoneVertices = std::map<std::pair<int16_t, int32_t>, HeldVertices>;

// Makes the polyhedra of a node's meshes; notes which bone holds which vertex.
Polyhedron convertMeshes(Model& model, int32_t node, BoneVertices& held);

// Fills the scene's nodes: groups, polyhedra, markers.
void placeNodes(Model& model, BoneVertices& held);

// Adds the levels of detail that the options ask for, and keeps to the count of triangles that they allow.
void addLevels(Model& model, BoneVertices& held);

// Gives bones the names that the nodes of the shape have which the clips are for.
void nameBonesAsShape(Model& model);

// True when a name matches a pattern of *, ? and [...], whatever the case of its letters.
bool matches(const std::string& pattern, const std::string& name);

// Adds a skeleton for each layer whose vertices hang on bones.
void addSkeletons(Model& model, const BoneVertices& held);

// Adds the scene's clips.
void convertAnimations(Model& model);

// Leaves ids out where a name says the same, and makes the others readable.
void shortenIds(Scene& scene);

// Calls act for each node of the scene, parents before their children.
void eachNode(std::vector<Node>& nodes, const std::function<void(Node&)>& act);

// The nearest bone at or above a node, and the nearest above it, or kNoNode.
int32_t boneAbove(const Model& model, int32_t node);
int32_t parentBone(const Model& model, int32_t node);

// Reads a model in this process.
ImportResult readModel(const std::string& path, const ImportOptions& options);

}  // namespace marrowfen::standin
