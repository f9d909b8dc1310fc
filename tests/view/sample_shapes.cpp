#include "sample_shapes.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "ground/at.h"
#include "shape/shape_check.h"
#include "tests/shape/written.h"

namespace marrowfen::test {

namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

Quaternion turn(Point3 axis, float angle) {
    const Point3 a = normalized(axis) * std::sin(angle / 2);
    return {a.x, a.y, a.z, std::cos(angle / 2)};
}

void addObject(Shape& shape, const std::string& name, int32_t node, const std::vector<Mesh>& meshes) {
    shape.objects.push_back({shape.findOrAddName(name), count32(meshes), count32(shape.meshes), node});
    shape.meshes.insert(shape.meshes.end(), meshes.begin(), meshes.end());
    shape.objectStates.emplace_back();
}

void addMaterial(Shape& shape, const std::string& name, uint32_t flags) { shape.materials.push_back({name, flags}); }

void bind(Shape& shape, Mesh& mesh, int32_t vertex, int32_t node, float weight) {
    mesh.vindex.push_back(vertex);
    mesh.vbone.push_back(mesh.boneSlot(node));
    mesh.vweight.push_back(weight);
    const Shape::Pose pose = shape.nodeWorldTransform(node);
    mesh.setInitialTransform(mesh.vbone.back(), pose.translation, pose.rotation);
}

// A sequence that turns and moves every node but the last.
void addSequence(Shape& shape, const std::string& name, uint32_t flags, int32_t keys) {
    Shape::Sequence s;
    s.nameIndex = shape.findOrAddName(name);
    s.flags = flags;
    s.numKeyFrames = keys;
    s.duration = static_cast<float>(keys) / 10;
    s.baseRotation = count32(shape.nodeRotations);
    s.baseTranslation = count32(shape.nodeTranslations);
    const size_t moved = shape.nodes.size() - 1;
    s.rotationMatters.resize(moved);
    s.translationMatters.resize(moved);
    for (size_t n = 0; n < moved; ++n) {
        s.rotationMatters.set(n);
        s.translationMatters.set(n);
        for (int32_t key = 0; key < keys; ++key) {
            const auto k = static_cast<float>(key);
            shape.nodeRotations.push_back(shape.nodeDefRotations[n] * turn({1, 2, 0.5F}, 0.9F * k));
            shape.nodeTranslations.push_back(shape.nodeDefTranslations[n] + Point3{0, 0.25F * k, 0});
        }
    }
    shape.sequences.push_back(s);
}

void finish(Shape& shape) {
    shape.subshapes.push_back({0, 0, 0, count32(shape.nodes), count32(shape.objects), 0});
    shape.computeBounds();
    shape.computeCenter();
    shape.computeRadius();
    shape.computeTubeRadius();
    shape.setSmallestSize(0);
}

}  // namespace

int32_t addNode(Shape& shape, const std::string& name, int32_t parent, Quaternion rotation, Point3 translation) {
    shape.nodes.push_back({shape.findOrAddName(name), parent});
    shape.nodeDefRotations.push_back(rotation);
    shape.nodeDefTranslations.push_back(translation);
    return count32(shape.nodes) - 1;
}

void addLevel(Shape& shape, const std::string& name, float size) {
    shape.detailLevels.push_back({shape.findOrAddName(name), 0, count32(shape.detailLevels), size});
}

namespace {

// Two triangles in the XZ plane that face along -Y, clockwise from there.
//   1---2
//   | / |
//   0---3
Mesh quadMesh(MeshType type, float half, uint32_t drawType) {
    Mesh mesh(type);
    mesh.vertexes = {{-half, 0, -half}, {-half, 0, half}, {half, 0, half}, {half, 0, -half}};
    mesh.texturevertexes = {{0, 1}, {0, 0}, {1, 0}, {1, 1}};
    mesh.normals.assign(4, {0, -1, 0});
    mesh.encodedNormals.assign(4, 0);
    if (drawType == Primitive::Strip) mesh.indices = {1, 2, 0, 3};
    if (drawType == Primitive::Fan) mesh.indices = {0, 1, 2, 3};
    if (drawType == Primitive::Triangles) mesh.indices = {0, 1, 2, 0, 2, 3};
    mesh.primitives = {{0, static_cast<uint32_t>(mesh.indices.size()), drawType | Primitive::Indexed, 0}};
    mesh.setNumFrames(1);
    mesh.computeBounds();
    mesh.computeCenter();
    mesh.computeRadius();
    return mesh;
}

}  // namespace

Shape riggedShape() {
    Shape shape;
    addMaterial(shape, "hide", Shape::SWrap | Shape::TWrap);
    addMaterial(shape, "glow", Shape::SelfIlluminating | Shape::Translucent | Shape::Additive);
    const int32_t hip = addNode(shape, "hip", -1, turn({0, 0, 1}, 0.7F), {1, 2, 3});
    const int32_t knee = addNode(shape, "knee", hip, turn({1, 1, 0}, -1.2F), {0, 0, -1});
    const int32_t foot = addNode(shape, "foot", knee, turn({0, 1, 1}, 2.8F), {0.5F, 0, -1});
    addNode(shape, "mount0", -1, turn({1, 0, 0}, 0.5F), {0, 0, 4});
    const int32_t root = addNode(shape, "Root", -1, {}, {});

    Mesh fine = quadMesh(MeshType::Skin, 2, Primitive::Strip);
    fine.primitives[0].material |= 1;
    Mesh coarse = quadMesh(MeshType::Skin, 2, Primitive::Triangles);
    for (Mesh* mesh : {&fine, &coarse}) {
        int32_t vertex = 0;
        for (const int32_t bone : {foot, hip, knee, foot}) bind(shape, *mesh, vertex++, bone, 1);
    }
    addObject(shape, "ShapeObject", root, {fine, coarse});
    Mesh box = quadMesh(MeshType::Standard, 3, Primitive::Strip);
    box.primitives[0].material |= Primitive::NoMaterial;
    const Mesh none(MeshType::Null);
    addObject(shape, "CollisionObject", root, {none, none, box});
    addObject(shape, "LosCollisionObject", foot, {none, none, none, box});
    addLevel(shape, "Detail64", 64);
    addLevel(shape, "Detail8", 8);
    addLevel(shape, "Collision-1", -1);
    addLevel(shape, "LOS-9", -1);
    addSequence(shape, "walk", Shape::UniformScale | Shape::Cyclic, 4);
    addSequence(shape, "look:blend", Shape::UniformScale | Shape::Blend, 1);
    finish(shape);
    return shape;
}

Shape oddShape() {
    Shape shape;
    addMaterial(shape, "caf\xE9 <b>\"&", Shape::Subtractive);
    const int32_t twisted = addNode(shape, "twisted", -1, {0, 0, 0, 0}, {kNan, 1, kInfinity});
    addNode(shape, "", twisted, {3, 0, 0, -4}, {0, 0, 1});
    Mesh mesh = quadMesh(MeshType::Skin, 1, Primitive::Fan);
    mesh.vertexes.push_back({kNan, 0, 0});
    mesh.vertexes.push_back({1e30F, -1e30F, 0});
    mesh.normals = {{0, 0, 0}, {kNan, 0, 0}, {1e30F, 0, 0}, {1e-30F, 0, 0}, {0, 3, 4}, {0, 0, 1}};
    mesh.encodedNormals.resize(6);
    mesh.texturevertexes = {{kInfinity, 0}, {1e30F, 0}, {}, {}, {}, {}};
    mesh.setNumFrames(1);
    mesh.indices.insert(mesh.indices.end(), {0, 1, 4, 2, 2, 2, 3, 5, 0});
    constexpr uint32_t kBare = Primitive::Indexed | Primitive::NoMaterial;
    for (const Primitive& p : {Primitive{4, 6, Primitive::Strip | Primitive::Indexed},
                               {10, 3, kBare},
                               {0, 3, 0},
                               {0, 0, Primitive::Fan | Primitive::Indexed}})
        mesh.primitives.push_back(p);
    for (int32_t node = 0; node < 2; ++node) bind(shape, mesh, 0, node, 0.3F);
    bind(shape, mesh, 0, 1, 0.3F);
    bind(shape, mesh, 1, 0, kNan);
    bind(shape, mesh, 2, 0, -1);
    mesh.initialTransforms[0].m[3][3] = 2;
    mesh.initialTransforms[1].m[0][0] = kInfinity;
    addObject(shape, "object", -1, {mesh, quadMesh(MeshType::Decal, 1, Primitive::Fan)});
    addLevel(shape, "", kNan);
    addLevel(shape, "detail", 1e30F);
    addSequence(shape, "still", 0, 3);
    addSequence(shape, "never", 0, 0);
    shape.sequences[0].duration = -1;
    shape.sequences[0].numTriggers = 1;
    shape.triggers.resize(1);
    finish(shape);
    shape.nodeRotations.assign(shape.nodeRotations.size(), {0, 0, kNan, 0});
    return shape;
}

Shape damagedShape(std::mt19937& random) {
    const std::string files[] = {dts(riggedShape()), dts(oddShape())};
    for (;;) {
        Shape shape = readDts(changed(files[random() % 2], random));
        const auto problems = findProblems(shape, ShapeFileKind::Dts);
        const auto isBroken = [](const ShapeProblem& problem) { return problem.isError(); };
        if (!shape.hasError() && std::none_of(problems.begin(), problems.end(), isBroken)) return shape;
    }
}

}  // namespace marrowfen::test
