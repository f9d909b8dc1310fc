#pragma once

#include <random>

#include "ground/byte_order.h"
#include "shape/shape.h"

namespace marrowfen {

// Shapes with every table filled with nonsense of the right form: what a file can hold, whether it makes sense or not.
class RandomShape {
public:
    explicit RandomShape(uint32_t seed) : random_(seed) {}

    Shape make() {
        Shape shape;
        for (auto& name : list(shape.names)) name = std::string(below(6), static_cast<char>('a' + below(26)));
        for (auto& n : list(shape.nodes)) n = {any(), any(), any(), any(), any()};
        for (auto& o : list(shape.objects)) o = {any(), any(), any(), any(), any(), any()};
        for (auto& d : list(shape.decals)) d = {any(), any(), any(), any(), any()};
        for (auto& i : list(shape.IFLmaterials)) i = {any(), any(), any(), any(), any()};
        for (auto& s : list(shape.subshapes)) s = {any(), any(), any(), any(), any(), any()};
        for (auto& s : list(shape.objectStates)) s = {real(), any(), any()};
        for (auto& s : list(shape.decalStates)) s = {any()};
        for (auto& t : list(shape.triggers)) t = {bits(), real()};
        for (auto& l : list(shape.detailLevels)) l = {any(), any(), any(), real(), real(), real(), any()};
        for (auto& m : list(shape.materials)) {
            m = {std::string(below(2) * 255, 'm'), bits(), any(), any(), any(), real(), real()};
        }
        shape.nodeDefRotations.resize(shape.nodes.size());
        for (auto& q : shape.nodeDefRotations) q = rotation();
        shape.nodeDefTranslations.resize(shape.nodes.size());
        for (auto& p : shape.nodeDefTranslations) p = point();
        fillKeys(shape);
        for (auto& mesh : list(shape.meshes)) mesh = makeMesh();
        for (auto& sequence : list(shape.sequences)) sequence = makeSequence();
        shape.bounds = {point(), point()};
        shape.center = point();
        shape.radius = real();
        shape.tubeRadius = real();
        shape.smallestSize = static_cast<float>(below(1000));
        shape.smallestDetailLevel = any();
        return shape;
    }

private:
    uint32_t bits() { return static_cast<uint32_t>(random_()); }
    uint32_t below(uint32_t n) { return bits() % n; }
    int32_t any() { return static_cast<int32_t>(below(4) == 0 ? bits() : below(8)) - 1; }
    float real() { return below(4) == 0 ? floatFromBits(bits()) : static_cast<float>(below(100)); }
    Point3 point() { return {real(), real(), real()}; }
    float unit() { return static_cast<float>(below(65535)) / 32767.0F - 1; }
    Quaternion rotation() { return {unit(), unit(), unit(), unit()}; }

    template <class Entry>
    std::vector<Entry>& list(std::vector<Entry>& entries) {
        entries.resize(below(4));
        return entries;
    }

    void fillPoints(std::vector<Point3>& points, size_t count) {
        for (size_t i = 0; i < count; ++i) points.push_back(point());
    }

    void fillKeys(Shape& shape) {
        fillPoints(shape.nodeTranslations, below(4));
        for (auto& q : list(shape.nodeRotations)) q = rotation();
        for (auto& s : list(shape.nodeScalesUniform)) s = real();
        fillPoints(shape.nodeScalesAligned, below(4));
        for (auto& q : list(shape.nodeScaleRotsArbitrary)) q = rotation();
        fillPoints(shape.nodeScalesArbitrary, shape.nodeScaleRotsArbitrary.size());
        for (auto& q : list(shape.groundRotations)) q = rotation();
        fillPoints(shape.groundTranslations, shape.groundRotations.size());
    }

    Mesh makeMesh() {
        Mesh mesh(static_cast<MeshType>(below(6)));
        if (mesh.type == MeshType::Null) return mesh;
        fillPoints(mesh.vertexes, below(4));
        for (auto& t : list(mesh.texturevertexes)) t = {real(), real()};
        fillPoints(mesh.normals, mesh.vertexes.size());
        mesh.encodedNormals.resize(mesh.vertexes.size(), static_cast<uint8_t>(bits()));
        for (auto& p : list(mesh.primitives)) p = {below(65536), below(65536), bits()};
        for (auto& i : list(mesh.indices)) i = below(65536);
        for (auto& i : list(mesh.mindices)) i = below(65536);
        mesh.numFrames = any();
        mesh.matFrames = any();
        mesh.parent = any();
        mesh.bounds = {point(), point()};
        mesh.center = point();
        mesh.radius = static_cast<float>(below(1000));
        mesh.vertsPerFrame = any();
        mesh.flags = bits();
        if (mesh.type == MeshType::Skin) fillSkin(mesh);
        if (mesh.type == MeshType::Sorted) fillClusters(mesh);
        return mesh;
    }

    void fillSkin(Mesh& mesh) {
        for (auto& v : list(mesh.vindex)) v = any();
        mesh.vbone.resize(mesh.vindex.size(), any());
        mesh.vweight.resize(mesh.vindex.size(), real());
        for (auto& n : list(mesh.nodeIndex)) n = any();
        mesh.initialTransforms.resize(mesh.nodeIndex.size());
        for (auto& t : mesh.initialTransforms) t.m[below(4)][below(4)] = real();
    }

    void fillClusters(Mesh& mesh) {
        for (auto& c : list(mesh.clusters)) c = {any(), any(), point(), real(), any(), any()};
        for (auto* frames :
             {&mesh.frameStartCluster, &mesh.frameFirstVertex, &mesh.frameVertexCount, &mesh.frameFirstTexVertex}) {
            for (auto& i : list(*frames)) i = any();
        }
    }

    Shape::Sequence makeSequence() {
        Shape::Sequence s;
        for (int32_t* value : {&s.nameIndex, &s.numKeyFrames, &s.priority, &s.firstGroundFrame, &s.numGroundFrames,
                               &s.baseRotation, &s.baseTranslation, &s.baseScale, &s.baseObjectState, &s.baseDecalState,
                               &s.firstTrigger, &s.numTriggers}) {
            *value = any();
        }
        s.flags = bits();
        s.duration = real();
        s.toolBegin = real();
        for (IndexSet* set : {&s.rotationMatters, &s.translationMatters, &s.scaleMatters, &s.decalMatters,
                              &s.iflMatters, &s.visMatters, &s.frameMatters, &s.matFrameMatters}) {
            set->resize(below(70));
            for (size_t i = 0; i < set->size(); ++i) set->set(i, below(2) == 0);
        }
        return s;
    }

    std::mt19937 random_;
};

}  // namespace marrowfen
