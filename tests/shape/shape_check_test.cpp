#include "shape/shape_check.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

namespace marrowfen {
namespace {

Mesh triangle(MeshType type) {
    Mesh mesh(type);
    mesh.vertexes = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    mesh.texturevertexes = {{0, 0}, {1000, 0}, {0, -1000}};
    mesh.normals.resize(3, {0, 0, 1});
    mesh.encodedNormals.resize(3);
    mesh.primitives = {{0, 3, Primitive::Indexed}};
    mesh.indices = {0, 1, 2};
    mesh.setNumFrames(1);
    return mesh;
}

// A shape without a fault: two levels, a skin of one bone and a sorted mesh, a collision mesh and a sequence.
Shape goodShape() {
    Shape shape;
    shape.names = {"bone", "Root", "ShapeObject", "Detail64", "Detail8", "Collision-1", "walk"};
    shape.nodes = {{0, 1}, {1, -1}};
    shape.nodeDefRotations = {{0.5F, 0.5F, 0.5F, 0.5F}, {}};
    shape.nodeDefTranslations.resize(2);
    shape.objects = {{2, 3, 0, 1}};
    shape.objectStates.resize(1);
    shape.subshapes = {{0, 0, 0, 2, 1, 0}};
    shape.detailLevels = {{3, 0, 0, 64}, {4, 0, 1, 8}, {5, 0, 2, -1}};
    shape.materials.resize(1);
    shape.meshes = {triangle(MeshType::Skin), triangle(MeshType::Sorted), triangle(MeshType::Standard)};
    shape.meshes[0].boneSlot(0);
    shape.meshes[0].vindex = {0, 1, 2};
    shape.meshes[0].vbone = {0, 0, 0};
    shape.meshes[0].vweight = {1, 1, 1};
    shape.meshes[1].clusters = {{0, 1, {}, 0, 1, 1}, {1, 1, {}, 0, -1, -1}};
    shape.meshes[1].frameStartCluster = {0};
    shape.meshes[1].frameFirstVertex = {0};
    shape.meshes[1].frameVertexCount = {3};
    shape.meshes[1].frameFirstTexVertex = {0};
    shape.meshes[1].vertsPerFrame = 0;
    shape.bounds = {{0, 0, 0}, {1, 1, 0}};
    shape.nodeRotations.resize(8);
    shape.nodeTranslations.resize(8);
    Shape::Sequence walk;
    walk.nameIndex = 6;
    walk.numKeyFrames = 4;
    walk.baseRotation = 4;
    for (IndexSet* set : {&walk.rotationMatters, &walk.translationMatters}) {
        set->resize(32);
        set->set(0);
    }
    shape.sequences = {walk};
    return shape;
}

std::string problemText(const Shape& shape, ShapeFileKind kind = ShapeFileKind::Dts) {
    std::string text;
    for (const ShapeProblem& problem : findProblems(shape, kind)) {
        text += (problem.isError() ? "broken " : "odd ") + problem.text() + "\n";
    }
    return text;
}

#define AFTER(...) []([[maybe_unused]] Shape& s) { __VA_ARGS__; }

TEST(ShapeCheck, EachFaultOfAShapeIsTold) {
    const struct {
        std::function<void(Shape&)> damage;
        const char* problem;
    } cases[] = {
        {AFTER(), ""},
        {AFTER(s.nodes[1].name = 7), "broken record with a name that isn't there: nodes[1].name: 7"},
        {AFTER(s.nodes[0].parent = 2), "broken node with a parent that isn't there: nodes[0].parent: 2"},
        {AFTER(s.nodes[0].parent = -2), "broken node with a parent that isn't there: nodes[0].parent: -2"},
        {AFTER(s.nodes[1].parent = 0), "broken circle of parents: nodes[0]"},
        {AFTER(s.nodes[1].parent = 1), "broken circle of parents: nodes[1]"},
        {AFTER(s.nodeDefRotations[1].w = 0.99F),
         "odd default rotation that isn't a unit quaternion: nodes[1].length: 0.99"},
        {AFTER(s.nodeDefRotations[1].w = 32766.0F / 32767), ""},
        {AFTER(s.nodeRotations.assign(8, {0, 0, 0, 0})),
         "odd rotation key that isn't a unit quaternion: nodeRotations[0].length: 0, nodeRotations[1].length: 0, "
         "nodeRotations[2].length: 0 and 5 more"},
        {AFTER(s.nodeDefTranslations[0].y = NAN), "odd default translation that isn't a finite number: nodes[0]"},
        {AFTER(s.objects[0].numMeshes = 4), "broken object with meshes that aren't there: objects[0].firstMesh: 0"},
        {AFTER(s.objects[0].node = 2), "broken object on a node that isn't there: objects[0].node: 2"},
        {AFTER(s.objects[0].node = -1), "odd object without a node: objects[0]"},
        {AFTER(s.objectStates.clear()), "odd object without a default state: objects[0]"},
        {AFTER(s.decals = {{0, 1, 2, 5}}), "broken decal with meshes or an object that aren't there: decals[0]"},
        {AFTER(s.decals = {{0, 1, 2, 0}}), ""},
        {AFTER(s.decals = {{0, 1, 3, 0}}), "broken decal with meshes or an object that aren't there: decals[0]"},
        {AFTER(s.materials[0].bump = 1), "broken material that names one that isn't there: materials[0].material: 1"},
        {AFTER(s.IFLmaterials = {{0, 9}}), "broken IFL material for a slot that isn't there: IFLmaterials[0].slot: 9"},
        {AFTER(s.subshapes.push_back({0, 0, 0, 3, 1, 0})),
         "broken subshape of nodes, objects or decals that aren't there: subshapes[1]"},
        {AFTER(s.detailLevels[1].subshape = 1),
         "broken detail level of a subshape that isn't there: detailLevels[1].subshape: 1"},
        {AFTER(s.detailLevels[1].objectDetail = 3), "odd detail level without faces: detailLevels[1]"},
        {AFTER(s.detailLevels[1].size = 64), "odd detail level that can never show: detailLevels[1].size: 64"},
        {AFTER(s.detailLevels[1].size = -1), "odd detail level that can never show: detailLevels[1].size: -1"},
        {AFTER(s.smallestDetailLevel = 4), "odd smallest detail level that isn't there: 4"},
        {AFTER(s.bounds.min.x = 2), "odd bounds that hold nothing: shape"},
        {AFTER(s.meshes[2].type = MeshType{7}), "odd mesh of an unknown type: meshes[2].type: 7"},
        {AFTER(s.meshes[2].parent = 3), "broken mesh with a parent that isn't there: meshes[2].parent: 3"},
        {AFTER(s.meshes[2].numFrames = 0), "broken mesh without frames: meshes[2]"},
        {AFTER(s.meshes[2].numFrames = 2), "broken mesh whose frames don't have their vertices: meshes[2]"},
        {AFTER(s.meshes[2].numFrames = 2; s.meshes[2].vertexes.resize(6); s.meshes[2].normals.resize(6)), ""},
        {AFTER(s.meshes[2].matFrames = 2; s.meshes[2].texturevertexes.resize(6)), ""},
        {AFTER(s.meshes[2].texturevertexes.clear()),
         "broken mesh whose vertices don't have their texture coordinates: meshes[2]"},
        {AFTER(s.meshes[2].normals[0].x = INFINITY),
         "odd mesh with vertices or normals that aren't finite numbers: meshes[2]"},
        {AFTER(s.meshes[2].primitives[0].firstElement = 1),
         "broken drawing run of elements that aren't there: meshes[2].primitives[0].firstElement: 1"},
        {AFTER(s.meshes[2].primitives[0].material = 0; s.meshes[2].indices.clear()), ""},
        {AFTER(s.meshes[2].primitives[0].material |= 1),
         "broken drawing run with a material that isn't there: meshes[2].primitives[0].material: 1"},
        {AFTER(s.meshes[2].primitives[0].numElements = 2), "odd triangle list with a part of a triangle: meshes[2]"},
        {AFTER(s.meshes[2].indices[0] = 3), "broken vertex index that is out of range: meshes[2].indices[0]: 3 of 3"},
        {AFTER(s.meshes[0].nodeIndex = {2}), "broken skin with a bone that isn't there: meshes[0]"},
        {AFTER(s.meshes[0].vbone[0] = 1), "broken weight of a vertex or bone that isn't there: meshes[0]"},
        {AFTER(s.meshes[0].vindex.clear(); s.meshes[0].vbone.clear(); s.meshes[0].vweight.clear()),
         "odd skin without weights: meshes[0]"},
        {AFTER(s.meshes[2].primitives.assign(17'000'000, {0, 3, Primitive::Indexed})),
         "odd more triangles than can be counted: shape"},
        {AFTER(s.meshes[0].vweight[1] = 0.5F), "odd skin with vertices whose weights don't add up to 1: meshes[0]"},
        {AFTER(s.meshes[1].clusters[1].endPrimitive = 2),
         "broken cluster with primitives or a next cluster that aren't there: meshes[1]"},
        {AFTER(s.meshes[1].clusters[0].frontCluster = 2),
         "broken cluster with primitives or a next cluster that aren't there: meshes[1]"},
        {AFTER(s.meshes[1].clusters[0].backCluster = 2),
         "broken cluster with primitives or a next cluster that aren't there: meshes[1]"},
        {AFTER(s.meshes[1].clusters[1].backCluster = 0), "broken circle of clusters: meshes[1]"},
        {AFTER(s.meshes[1].frameVertexCount = {-1}),
         "broken sorted mesh whose frames lie outside its lists: meshes[1]"},
        {AFTER(s.meshes[1].clusters.clear()), "odd sorted mesh with faces and no cluster: meshes[1]"},
        {AFTER(s.meshes[1].clusters.resize(4)),
         "odd sorted mesh with clusters that no walk reaches: meshes[1].clusters: 2"},
        {AFTER(s.meshes[1].texturevertexes[2].y = -1001), "odd mesh with texture coordinates beyond 1000: meshes[1]"},
        {AFTER(s.meshes[0].texturevertexes[1].x = NAN), "odd mesh with texture coordinates beyond 1000: meshes[0]"},
        {AFTER(s.detailLevels[0].name = 5), "odd collision mesh of type skin: meshes[0]"},
        {AFTER(s.bounds.min.y = -1e6F), ""},
        {AFTER(s.bounds.min.y = -1.1e6F), "odd bounds beyond 1000000: shape"},
        {AFTER(s.sequences[0].nameIndex = -1), "broken sequence with a name that isn't there: sequences[0].name: -1"},
        {AFTER(s.sequences[0].duration = 0), "odd sequence whose duration isn't positive: sequences[0].duration: 0"},
        {AFTER(s.sequences[0].numKeyFrames = 0), "odd sequence without key frames: sequences[0]"},
        {AFTER(s.sequences[0].baseRotation = 5),
         "broken sequence whose keys lie outside their table: sequences[0].rotations"},
        {AFTER(s.sequences[0].baseScale = s.sequences[0].baseObjectState = s.sequences[0].baseDecalState = 9), ""},
        {AFTER(s.sequences[0].scaleMatters.resize(1); s.sequences[0].scaleMatters.set(0)),
         "broken sequence whose keys lie outside their table: sequences[0].scales"},
        {AFTER(s.sequences[0].numTriggers = 1),
         "broken sequence whose keys lie outside their table: sequences[0].triggers"},
        {AFTER(s.sequences[0].visMatters.resize(1); s.sequences[0].visMatters.set(0)),
         "broken sequence whose keys lie outside their table: sequences[0].object states"},
    };
    for (const auto& [damage, problem] : cases) {
        Shape shape = goodShape();
        damage(shape);
        EXPECT_EQ(problemText(shape), *problem == '\0' ? "" : std::string(problem) + "\n");
    }
}

TEST(ShapeCheck, EverySetOfASequenceNamesWhatIsThere) {
    using Sequence = Shape::Sequence;
    for (const auto set :
         {&Sequence::rotationMatters, &Sequence::translationMatters, &Sequence::scaleMatters, &Sequence::decalMatters,
          &Sequence::iflMatters, &Sequence::visMatters, &Sequence::frameMatters, &Sequence::matFrameMatters}) {
        Shape shape = goodShape();
        (shape.sequences[0].*set).resize(32);
        (shape.sequences[0].*set).set(2);
        EXPECT_TRUE(problemText(shape).starts_with("broken sequence of nodes or objects that aren't there"));
    }
}

TEST(ShapeCheck, DsqFilesAreCheckedForWhatTheyHold) {
    Shape shape = goodShape();
    shape.objects.clear();
    shape.meshes.clear();
    shape.sequences[0].visMatters.resize(32);
    shape.sequences[0].visMatters.set(5);
    EXPECT_EQ(problemText(shape, ShapeFileKind::Dsq), "");
    shape.nodeTranslations.clear();
    EXPECT_EQ(problemText(shape, ShapeFileKind::Dsq),
              "broken sequence whose keys lie outside their table: sequences[0].translations\n");
}

}  // namespace
}  // namespace marrowfen
