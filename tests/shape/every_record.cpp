#include "tests/shape/every_record.h"

namespace marrowfen {
namespace {

Mesh skin() {
    Mesh mesh(MeshType::Skin);
    mesh.vertexes = {{1, 2, 3}};
    mesh.texturevertexes = {{0.5F, 1}};
    mesh.normals = {{6, 7, 8}};
    mesh.encodedNormals = {200};
    mesh.primitives = {{1, 3, Primitive::Strip | Primitive::Indexed | 7, 99}};
    mesh.indices = {10, 40000};
    mesh.mindices = {13};
    mesh.boneSlot(5);
    mesh.boneSlot(4);
    mesh.initialTransforms[0].m[0][3] = 9;
    mesh.vindex = {14};
    mesh.vbone = {15};
    mesh.vweight = {0.75F};
    mesh.bounds = {{16, 17, 18}, {19, 20, 21}};
    mesh.center = {22, 23, 24};
    mesh.radius = 3.5F;
    mesh.numFrames = 25;
    mesh.matFrames = 26;
    mesh.parent = 27;
    mesh.vertsPerFrame = 28;
    mesh.flags = Billboard | EncodedNormals;
    return mesh;
}

Mesh sorted() {
    Mesh mesh(MeshType::Sorted);
    mesh.clusters = {{1, 2, {3, 4, 5}, 6, 7, -1}};
    mesh.frameStartCluster = {10};
    mesh.frameFirstVertex = {11, 12};
    mesh.frameVertexCount = {13};
    mesh.frameFirstTexVertex = {14};
    mesh.radius = 1e30F;
    return mesh;
}

Shape::Sequence sequence() {
    Shape::Sequence s;
    s.flags = Shape::Cyclic | Shape::UniformScale | 0x100;
    int32_t next = 3;
    for (int32_t* value :
         {&s.nameIndex, &s.numKeyFrames, &s.priority, &s.firstGroundFrame, &s.numGroundFrames, &s.baseRotation,
          &s.baseTranslation, &s.baseScale, &s.baseObjectState, &s.baseDecalState, &s.firstTrigger, &s.numTriggers}) {
        *value = next++;
    }
    s.duration = 0.5F;
    s.toolBegin = 0.25F;
    size_t size = 33;
    for (IndexSet* set : {&s.rotationMatters, &s.translationMatters, &s.scaleMatters, &s.decalMatters, &s.iflMatters,
                          &s.visMatters, &s.frameMatters, &s.matFrameMatters}) {
        set->resize(--size);
        set->set(0);
        set->set(size - 1);
    }
    s.frameMatters.resize(0);
    return s;
}

}  // namespace

Shape everyRecord() {
    Shape shape;
    shape.names = {"Root", "Ball", "Detail64", "walk", ""};
    shape.nodes = {{0, -1, 2, 3, 4}, {1, 0}, {9}};  // the last one has no name
    shape.objects = {{1, 2, 3, 4, 5, 6}};
    shape.decals = {{1, 2, 3, 4, -1}};
    shape.IFLmaterials = {{0, 1, 2, 3, 4}};
    shape.subshapes = {{1, 2, 3, 4, 5, 6}, {11, 12, 13, 14, 15, 16}};
    shape.nodeDefRotations = {{}, {0.5F, -0.5F, 0.25F, 1e-7F}, {}};
    shape.nodeDefTranslations = {{}, {1, 2.5F, -1234567}, {}};
    shape.nodeRotations = {{0.25F, 0, 0, 1}};
    shape.nodeTranslations = {{1, 2, 3}};
    shape.nodeScalesUniform = {0.25F, 1};
    shape.nodeScalesAligned = {{1, 1, 2}};
    shape.nodeScalesArbitrary = {{3, 4, 5}};
    shape.nodeScaleRotsArbitrary = {{0, 0.25F, 0, 1}};
    shape.groundTranslations = {{6, 7, 8}};
    shape.groundRotations = {{0, 0, 0.25F, 1}};
    shape.objectStates = {{0.5F, 1, 2}};
    shape.decalStates = {{3}};
    shape.triggers = {{0x80000001, 0.75F}};
    shape.detailLevels = {{2, 0, 1, 64, -2, -1, 12}};
    shape.materials = {
        {"skin", Shape::SWrap | Shape::Translucent | Shape::ReflectionMapFlag | 0x200, 0, -1, 2, 1, 0.5F},
        {std::string(300, 'x'), 0, 3, 4, 5, 0.75F, 0.25F}};
    shape.bounds = {{-1, -2, -3}, {4, 5, 6}};
    shape.center = {1.5F, 7, 8};
    shape.radius = 2.5F;
    shape.tubeRadius = 2;
    shape.smallestSize = 2.9F;
    shape.smallestDetailLevel = 1;
    shape.meshes = {skin(), sorted(), Mesh(MeshType::Null)};
    shape.sequences = {sequence()};
    return shape;
}

Shape newRecords() {
    const auto begin = [](auto&... tables) { (tables.resize(1), ...); };
    Shape shape;
    begin(shape.names, shape.nodes, shape.objects, shape.decals, shape.IFLmaterials, shape.subshapes,
          shape.nodeDefRotations, shape.nodeDefTranslations, shape.objectStates, shape.decalStates, shape.triggers,
          shape.detailLevels, shape.materials, shape.sequences);
    shape.meshes = {Mesh(), Mesh(MeshType::Sorted)};
    begin(shape.meshes[0].primitives, shape.meshes[1].clusters);
    return shape;
}

}  // namespace marrowfen
