#pragma once

// A model as its file says it, whatever reader it came through: flat lists, indices instead of names, times in seconds.
// The readers fill it; the passes of model.h make a scene of it. Numbers are as the file has them: they needn't be
// finite, but indices into the lists of this record hold.

#include <assimp/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "standin/host/load_notices.h"
#include "standin/host/scene.h"
#include "standin/import/pose.h"

namespace marrowfen::standin {

struct ImportOptions;

inline constexpr int32_t kNone = -1;
inline constexpr float kNoticeableWeight = 0.001F;  // a second weight below it is rounding

struct SourceNode {
    std::string name;                     // one line of UTF-8
    int32_t parent = kNone;               // a lower index; only the first node has none
    Matrix local;                         // parent-from-node
    std::optional<TransformParts> parts;  // the same as the file says it, where it does so in parts
    std::vector<int32_t> meshes;
    int32_t lod = kNone;   // the level of detail that the file says it is
    bool unnamed = false;  // without a name that a person gave
    bool helper = false;   // one of the nodes that the FBX reader splits a node's transform into
};

struct SourceBone {
    int32_t node = kNone;
    Matrix boneFromMesh;  // when it was bound
};

// What a vertex hangs on.
struct VertexHold {
    int32_t bone = kNone;  // the heaviest of the mesh's bones, the first of equal ones
    bool several = false;  // others hold it noticeably
};

struct SourceMesh {
    std::string name;  // empty for none
    std::vector<aiVector3D> positions;
    std::vector<aiVector3D> normals;  // one per position or none
    std::vector<Vec2> uvs;            // one per position or none; v upward; of the colour's texture
    std::vector<uint32_t> corners;    // three a triangle, anticlockwise seen from outside
    int32_t material = 0;
    bool flat = false;  // without normals, every face has its own
    std::vector<SourceBone> bones;
    std::vector<VertexHold> holds;  // one per position, or none
    bool hasMorphs = false;
    bool hasColors = false;
    bool hasMoreUvs = false;
};

struct SourceMaterial {
    enum class Alpha { Opaque, Mask, Blend };

    std::string name;                           // empty for none
    std::array<float, 4> color = {1, 1, 1, 1};  // with the opacity
    float emission = 0;
    std::string texture;    // path of the colour's texture as the file has it, empty for none
    int32_t image = kNone;  // the embedded one
    Alpha alpha = Alpha::Opaque;
    bool tintsTexture = false;  // the colour is multiplied with the texture's
    bool doubleSided = false;
};

// A picture inside the model's file.
struct SourceImage {
    std::string name;    // empty for none
    std::string ending;  // ".png"
    std::string bytes;
};

enum class Interpolation { Linear, Step, Cubic };

struct SourceTrack {
    Interpolation interpolation = Interpolation::Linear;
    std::vector<double> times;  // seconds, not falling
    std::vector<float> values;  // three a key, of rotations four (x, y, z, w); of cubic tracks tangent, value, tangent
};

struct SourceChannel {
    int32_t node = kNone;
    SourceTrack location, rotation, scale;  // without keys where the node keeps its own
};

struct SourceClip {
    std::string name;
    double seconds = 0;
    bool loops = false;
    std::vector<SourceChannel> channels;  // at most one a node
};

struct SourceModel {
    std::vector<SourceNode> nodes;  // parents before children; the first one is the file as a whole
    std::vector<SourceMesh> meshes;
    std::vector<SourceMaterial> materials;
    std::vector<SourceImage> images;
    std::vector<SourceClip> clips;

    Matrix upright;                // turns the file's right axis to X and its up axis to Z
    bool facesFront = true;        // the file's front (-Y once it is upright) is to be turned to +Y
    bool nodesUpright = false;     // a node that isn't turned has Z up already
    double unit = 0;               // metres, 0 for formats without one
    double frameRate = 0;          // 0 for files without one
    bool skinsStandAlone = false;  // a skinned mesh's own node has no say in where it is
    bool materialsByMesh = false;  // the reader makes a material anew for each mesh that uses it
    bool losesSkeleton = false;    // the reader gets the skeletons of this format wrong
    bool stickFigure = false;      // the reader has drawn the skeleton of a file without meshes

    size_t linesAndPoints = 0;
    size_t lostBones = 0;          // bones whose node isn't there
    size_t shapeClips = 0;         // animations of vertices
    std::vector<LookedFor> files;  // that were asked for
    std::vector<Message> remarks;  // what the reader has left out
    std::string error;             // the first one, without the file's name

    void fail(const std::string& text) {
        if (error.empty()) error = text;
    }
};

// What goes on behind the animation's name.
inline Message skippedAnimation(const std::string& name, const std::string& what) {
    return {&load::kAnimationSkipped, Message::Place::Clip, name, "animation " + name + what};
}

// A text as the scene holds it: one line of UTF-8.
std::string cleanText(std::string_view text);

// The number in what some glTF exporters write out for a node without a name, because their reader made it up:
// "nodes[3]", "nodes_3". Taken for a name it would make the node a layer of markers. Empty for other names.
std::string madeUpNumber(std::string_view name);

// Finds damage that the readers let pass: numbers that aren't finite, and clips that are left out for it.
void checkSource(SourceModel& source);

// Any format that Assimp reads.
SourceModel readWithAssimp(const std::string& path);

// glTF 2.0 as text or as GLB.
bool isGltf2(const std::string& path);
SourceModel readGltf(const std::string& path);

}  // namespace marrowfen::standin
