// Shapes with anything in every table, as no exporter fills them: what is written reads back whole.

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

#include "ground/at.h"
#include "ground/byte_order.h"
#include "tests/shape/written.h"

namespace marrowfen {
namespace {

class AnyShape {
public:
    explicit AnyShape(uint32_t seed) : random_(seed) {
        Shape& s = shape;
        fill(s.names, s.decals, s.IFLmaterials, s.subshapes, s.objects, s.nodes, s.objectStates, s.decalStates,
             s.triggers, s.detailLevels, s.nodeRotations, s.nodeTranslations, s.nodeScalesUniform, s.nodeScalesAligned,
             s.nodeScalesArbitrary, s.groundTranslations, s.meshes, s.sequences, s.materials);
        fillTo(s.nodes.size(), s.nodeDefRotations, s.nodeDefTranslations);
        fillTo(s.nodeScalesArbitrary.size(), s.nodeScaleRotsArbitrary);
        fillTo(s.groundTranslations.size(), s.groundRotations);
        any(s.bounds.min, s.bounds.max, s.center, s.radius, s.tubeRadius, s.smallestDetailLevel);
        s.smallestSize = static_cast<float>(below(99));
    }

    Shape shape;

private:
    uint32_t below(uint32_t n) { return static_cast<uint32_t>(random_() % n); }

    template <class... Values>
    void any(Values&... values) {
        (one(values), ...);
    }
    template <class... Lists>
    void fill(Lists&... lists) {
        (fillTo(below(4), lists), ...);
    }
    template <class... Lists>
    void fillTo(size_t size, Lists&... lists) {
        ((lists.resize(size), any(lists)), ...);
    }
    template <class T>
    void one(std::vector<T>& list) {
        for (T& value : list) one(value);
    }

    // Small numbers and any bits at all; of floats, those that are equal to themselves.
    void one(uint32_t& value) { value = below(2) == 0 ? below(10) : static_cast<uint32_t>(random_()); }
    void one(uint8_t& value) { value = static_cast<uint8_t>(below(256)); }
    void one(int32_t& value) { value = static_cast<int32_t>(below(2) == 0 ? below(10) - 1 : random_()); }
    void one(float& value) {
        do value = floatFromBits(static_cast<uint32_t>(random_()));
        while (value != value);
    }
    // What a file's 16 bits of a component can be.
    void one(Quaternion& q) {
        for (float* value : {&q.x, &q.y, &q.z, &q.w})
            *value = static_cast<float>(int32_t(below(65535)) - 32767) / 32767;
    }
    void one(Point2D& p) { any(p.x, p.y); }
    void one(Point3& p) { any(p.x, p.y, p.z); }
    void one(Matrix44& matrix) {
        for (auto& row : matrix.m) {
            for (float& value : row) one(value);
        }
    }
    void one(std::string& text) {
        text.resize(below(4) == 0 ? below(255) : below(9));
        for (char& c : text) c = static_cast<char>(1 + below(255));
    }
    void one(IndexSet& set) {
        set.resize(below(3) * 32);  // a file has them in whole words, without empty ones at the end
        for (size_t i = 0; i < set.size(); ++i) set.set(i, below(2) == 0 || i % 32 == 31);
    }
    void one(Shape::Node& n) { any(n.name, n.parent, n.firstObject, n.firstChild, n.nextSibling); }
    void one(Shape::Object& o) { any(o.name, o.numMeshes, o.firstMesh, o.node, o.nextSibling, o.firstDecal); }
    void one(Shape::Decal& d) { any(d.name, d.numMeshes, d.firstMesh, d.object, d.sibling); }
    void one(Shape::IflMaterial& m) { any(m.name, m.slot, m.firstFrame, m.time, m.numFrames); }
    void one(Shape::SubShape& s) {
        any(s.firstNode, s.firstObject, s.firstDecal, s.numNodes, s.numObjects, s.numDecals);
    }
    void one(Shape::ObjectState& s) { any(s.vis, s.frame, s.matFrame); }
    void one(Shape::DecalState& s) { any(s.frame); }
    void one(Shape::Trigger& t) { any(t.state, t.pos); }
    void one(Shape::DetailLevel& d) {
        any(d.name, d.subshape, d.objectDetail, d.size, d.avgError, d.maxError, d.polyCount);
    }
    void one(Shape::Material& m) { any(m.name, m.flags, m.reflectance, m.bump, m.detail, m.detailScale, m.reflection); }
    void one(Shape::Sequence& s) {
        any(s.nameIndex, s.flags, s.numKeyFrames, s.duration, s.priority, s.firstGroundFrame, s.numGroundFrames,
            s.baseRotation, s.baseTranslation, s.baseScale, s.baseObjectState, s.baseDecalState, s.firstTrigger,
            s.numTriggers, s.toolBegin, s.rotationMatters, s.translationMatters, s.scaleMatters, s.decalMatters,
            s.iflMatters, s.visMatters, s.frameMatters, s.matFrameMatters);
    }
    void one(Primitive& p) {
        p.firstElement = below(65536);
        p.numElements = below(65536);
        one(p.material);
    }
    void one(Cluster& c) {
        any(c.startPrimitive, c.endPrimitive, c.planeNormal, c.planeConstant, c.frontCluster, c.backCluster);
    }
    void one(Mesh& mesh) {
        mesh = Mesh(static_cast<MeshType>(below(5)));
        if (mesh.type == MeshType::Null) return;
        fill(mesh.vertexes, mesh.texturevertexes, mesh.primitives);
        fillTo(mesh.vertexes.size(), mesh.normals, mesh.encodedNormals);
        any(mesh.numFrames, mesh.matFrames, mesh.parent, mesh.bounds.min, mesh.bounds.max, mesh.center,
            mesh.vertsPerFrame, mesh.flags);
        mesh.radius = static_cast<float>(below(1000));  // a file has it in whole units
        for (auto* list : {&mesh.indices, &mesh.mindices}) {
            list->resize(below(9));
            for (uint32_t& index : *list) index = below(65536);
        }
        if (mesh.type == MeshType::Skin) {
            fill(mesh.vindex, mesh.nodeIndex);
            fillTo(mesh.vindex.size(), mesh.vbone, mesh.vweight);
            fillTo(mesh.nodeIndex.size(), mesh.initialTransforms);
        }
        if (mesh.type == MeshType::Sorted) {
            fill(mesh.clusters, mesh.frameStartCluster, mesh.frameFirstVertex, mesh.frameVertexCount,
                 mesh.frameFirstTexVertex);
        }
    }

    std::mt19937 random_;
};

using Read = Shape (*)(const std::string&, std::string*);

Shape readBack(const std::string& file, Read read) {
    std::string surplus;
    Shape back = read(file, &surplus);
    EXPECT_EQ(back.error() + surplus, "");
    return back;
}

// The number of shapes can be raised from outside.
TEST(AnyShape, ReadsBackAsItWasWritten) {
    const char* count = std::getenv("MARROWFEN_ANY_SHAPES");
    for (uint32_t seed = 0; seed < (count == nullptr ? 1000U : static_cast<uint32_t>(std::atoi(count))); ++seed) {
        Shape shape = AnyShape(seed).shape;
        const std::string file = dts(shape);
        const Shape back = readBack(file, readDts);
        ASSERT_EQ(dumpOf(back), dumpOf(shape)) << "seed " << seed;
        ASSERT_TRUE(dts(back) == file) << "seed " << seed;

        // A sequence file names things by text, and its objects by their number alone.
        shape.names.emplace_back("last");
        for (Shape::Node& node : shape.nodes) node.name = count32(shape.names) - 1;
        for (Shape::Sequence& sequence : shape.sequences) sequence.nameIndex = 0;
        shape.objects.clear();
        const std::string sequences = dsq(shape);
        ASSERT_TRUE(dsq(readBack(sequences, readDsq)) == sequences) << "seed " << seed;
    }
}

}  // namespace
}  // namespace marrowfen
