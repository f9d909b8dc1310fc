#pragma once

// Shape: one exported shape as flat tables of small records that refer to one another by index, -1 for "none". Every
// `name` and `nameIndex` is an index into Shape::names, except a material's.

#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ground/math.h"
#include "mesh/mesh.h"
#include "shape/index_set.h"

namespace marrowfen {

class Shape {
public:
    struct Node {
        int32_t name = 0;
        int32_t parent = -1;  // -1 for a root
        int32_t firstObject = -1;
        int32_t firstChild = -1;
        int32_t nextSibling = -1;
    };

    // A mesh group: meshes firstMesh to firstMesh + numMeshes - 1, one per detail level.
    struct Object {
        int32_t name = 0;
        int32_t numMeshes = 0;
        int32_t firstMesh = 0;
        int32_t node = -1;
        int32_t nextSibling = -1;
        int32_t firstDecal = -1;
    };

    struct Decal {
        int32_t name = 0;
        int32_t numMeshes = 0;
        int32_t firstMesh = 0;
        int32_t object = -1;
        int32_t sibling = -1;
    };

    struct IflMaterial {
        int32_t name = 0;
        int32_t slot = 0;  // index of the material that the animated texture replaces
        int32_t firstFrame = 0;
        int32_t time = 0;
        int32_t numFrames = 0;
    };

    struct SubShape {
        int32_t firstNode = 0;
        int32_t firstObject = 0;
        int32_t firstDecal = 0;
        int32_t numNodes = 0;
        int32_t numObjects = 0;
        int32_t numDecals = 0;
    };

    struct ObjectState {
        float vis = 1;
        int32_t frame = 0;
        int32_t matFrame = 0;
    };

    struct DecalState {
        int32_t frame = 0;
    };

    struct Trigger {
        uint32_t state = 0;
        float pos = 0;  // within its sequence
    };

    struct DetailLevel {
        int32_t name = 0;
        int32_t subshape = 0;
        int32_t objectDetail = 0;  // this level's mesh within each object
        float size = 0;            // pixels
        float avgError = -1;
        float maxError = -1;
        int32_t polyCount = 0;
    };

    struct Material {
        std::string name;  // texture file name without folder and extension; a file holds 255 bytes of it
        uint32_t flags = 0;
        int32_t reflectance = -1;  // material that serves as reflectance map; an ordinary material names itself
        int32_t bump = -1;
        int32_t detail = -1;
        float detailScale = 1;
        float reflection = 0;
    };

    // Bits of Material::flags.
    enum MaterialFlag : uint32_t {
        SWrap = 0x00000001,
        TWrap = 0x00000002,
        Translucent = 0x00000004,
        Additive = 0x00000008,
        Subtractive = 0x00000010,
        SelfIlluminating = 0x00000020,
        NeverEnvMap = 0x00000040,
        NoMipMap = 0x00000080,
        MipMapZeroBorder = 0x00000100,
        IflMaterialFlag = 0x08000000,
        IflFrame = 0x10000000,
        DetailMapFlag = 0x20000000,
        BumpMapFlag = 0x40000000,
        ReflectionMapFlag = 0x80000000,
    };

    // Bits of Sequence::flags.
    enum SequenceFlag : uint32_t {
        UniformScale = 0x01,
        AlignedScale = 0x02,
        ArbitraryScale = 0x04,
        Blend = 0x08,
        Cyclic = 0x10,
        MakePath = 0x20,
        IflInit = 0x40,
        HasTranslucency = 0x80,
    };

    // The key of the i-th node of rotationMatters at key frame j is entry baseRotation + i * numKeyFrames + j of
    // nodeRotations; translations likewise.
    struct Sequence {
        int32_t nameIndex = 0;
        uint32_t flags = 0;
        int32_t numKeyFrames = 0;
        float duration = 1;  // seconds
        int32_t priority = 1;
        int32_t firstGroundFrame = 0;
        int32_t numGroundFrames = 0;
        int32_t baseRotation = 0;
        int32_t baseTranslation = 0;
        int32_t baseScale = 0;
        int32_t baseObjectState = 0;
        int32_t baseDecalState = 0;
        int32_t firstTrigger = 0;
        int32_t numTriggers = 0;
        float toolBegin = 0;

        IndexSet rotationMatters;     // nodes
        IndexSet translationMatters;  // nodes
        IndexSet scaleMatters;        // nodes
        IndexSet decalMatters;        // decals
        IndexSet iflMatters;          // IFL materials
        IndexSet visMatters;          // objects
        IndexSet frameMatters;        // objects
        IndexSet matFrameMatters;     // objects
    };

    std::vector<Node> nodes;
    std::vector<Object> objects;
    std::vector<Decal> decals;
    std::vector<SubShape> subshapes;
    std::vector<IflMaterial> IFLmaterials;
    std::vector<Material> materials;
    std::vector<Quaternion> nodeDefRotations;  // relative to the parent, one per node
    std::vector<Point3> nodeDefTranslations;   // relative to the parent, one per node
    std::vector<Quaternion> nodeRotations;     // animation keys of all sequences
    std::vector<Point3> nodeTranslations;      // animation keys of all sequences
    std::vector<float> nodeScalesUniform;
    std::vector<Point3> nodeScalesAligned;
    std::vector<Point3> nodeScalesArbitrary;
    std::vector<Quaternion> nodeScaleRotsArbitrary;  // one per entry of nodeScalesArbitrary
    std::vector<Quaternion> groundRotations;         // one per entry of groundTranslations
    std::vector<Point3> groundTranslations;
    std::vector<ObjectState> objectStates;
    std::vector<DecalState> decalStates;
    std::vector<Trigger> triggers;
    std::vector<DetailLevel> detailLevels;  // largest size first
    std::vector<Mesh> meshes;
    std::vector<Sequence> sequences;
    std::vector<std::string> names;

    Box bounds;
    float smallestSize = 0;           // pixels, a whole number
    int32_t smallestDetailLevel = 0;  // first level smaller than smallestSize, or the number of levels
    float radius = 0;                 // about center
    float tubeRadius = 0;             // about the vertical axis through center
    Point3 center;

    // The first error of the export; empty for none. Later ones are dropped.
    const std::string& error() const { return error_; }
    bool hasError() const { return !error_.empty(); }
    void setError(const std::string& text);

    // Index of the name in names, ASCII letter case ignored; appended when it isn't there.
    int32_t findOrAddName(const std::string& name);

    struct Pose {
        Quaternion rotation;
        Point3 translation;
    };
    // The node's default pose in shape space: a point v of the node is at rotate(rotation, v) + translation.
    Pose nodeWorldTransform(int32_t node) const;

    // Finishing passes, in this order, each once the geometry that it measures is complete. Without objects the
    // bounds stay as they are.
    void computeBounds();
    void computeCenter();
    void computeRadius();
    void computeTubeRadius();
    void setSmallestSize(int32_t pixels);  // below 1 counts as 1

    // Merges vertices of the mesh that are equal within a small tolerance and have the same group, renumbers what
    // points at them and recomputes the normals. groups: one per vertex of a frame, shrinks with the vertices.
    // remap: the new number of each old vertex. (shape/vertex_collapse.cpp)
    void collapseVertices(Mesh& mesh, std::vector<int32_t>& groups, std::vector<int32_t>& remap);

    // One normal per vertex from the single triangles of the primitives; positions that coincide share a normal
    // where their groups do. mindices may be empty. (shape/vertex_normals.cpp)
    void computeNormals(const std::vector<Primitive>& primitives, const std::vector<uint32_t>& indices,
                        const std::vector<Point3>& vertexes, std::vector<Point3>& normals,
                        const std::vector<int32_t>& groups, int32_t vertsPerFrame, int32_t numFrames,
                        const std::vector<uint32_t>& mindices);

    // Sorts a translucent mesh into clusters, merges its vertices and leaves one encoded normal per vertex.
    void sortMesh(Mesh& mesh);

    // Writes a DTS file of version 24. Write failures show in the stream's state. (shape/dts_file.cpp)
    void writeDts(std::ostream& stream, bool includeSequences) const;

    // Fills this empty shape from a DTS file of version 19 to 24, or a newer one that reads like 24 (VersionWord of
    // ground/block_stream.h). A fault is recorded with setError, as
    // "offset N: ...", and leaves the shape empty otherwise. Links between records are taken as they are:
    // findProblems() of shape/shape_check.h tells what is wrong with them. surplus, if given, receives a line about
    // bytes of the file that belong to nothing, or stays empty. (shape/dts_file.cpp)
    void readDts(std::istream& stream, std::string* surplus = nullptr);

    // Writes a DSQ file of version 24 and the debug listing of the translation keys. (shape/dsq_file.cpp)
    void writeDsq(std::ostream& stream) const;

    // Fills this empty shape from a DSQ file of version 24, with faults and surplus as readDts has them. The nodes have
    // names and nothing else; a sequence's index sets have a member for each. (shape/dsq_file.cpp)
    void readDsq(std::istream& stream, std::string* surplus = nullptr);

    // How many bytes of a DTS file each part takes, in the order of the file; without the file's header and the few
    // bytes that fill up a block. (shape/dts_file.cpp)
    struct PartSize {
        std::string part;
        size_t bytes = 0;
    };
    std::vector<PartSize> partSizes() const;

    // Writes every table as indented text, or the one that is called so in it. (shape/text_dump.cpp)
    void dumpText(std::ostream& stream, std::string_view only = {}) const;

private:
    std::string error_;
};

}  // namespace marrowfen
