#include <gtest/gtest.h>

#include "mesh/normal_encoding.h"
#include "shape/shape.h"
#include "tests/plain/mesh_makers.h"

namespace marrowfen {
namespace {

Mesh translucent(Mesh mesh) {
    mesh.type = MeshType::Sorted;
    mesh.texturevertexes.resize(mesh.vertexes.size());
    mesh.normals.resize(mesh.vertexes.size());
    mesh.encodedNormals.resize(mesh.vertexes.size());
    return mesh;
}

TEST(SortPass, LeavesOneEncodedNormalPerVertex) {
    Mesh mesh = translucent(makers::soup(60, 60, 60));
    Shape shape;
    shape.sortMesh(mesh);
    EXPECT_EQ(shape.error(), "");
    EXPECT_GT(mesh.clusters.size(), 1U);
    EXPECT_EQ(mesh.vertsPerFrame, 0);
    ASSERT_EQ(mesh.encodedNormals.size(), mesh.normals.size());
    for (size_t i = 0; i < mesh.normals.size(); ++i) {
        EXPECT_NEAR(length(mesh.normals[i]), 1, 1e-5);
        EXPECT_EQ(mesh.encodedNormals[i], encodeNormal(mesh.normals[i]));
    }
}

// Splitting makes the same vertices once for each face along a cut.
TEST(SortPass, MergesTheVerticesOfNeighbouringPieces) {
    Mesh sorted = translucent(makers::noisy(makers::grid(8, 8), 0.5F, 1)), merged = sorted;
    sorted.sort();
    Shape shape;
    shape.sortMesh(merged);
    EXPECT_LT(merged.vertexes.size(), sorted.vertexes.size());
    EXPECT_EQ(merged.indices.size(), sorted.indices.size());
    ASSERT_EQ(merged.clusters.size(), sorted.clusters.size());
}

TEST(SortPass, RefusedMeshStopsTheShape) {
    Mesh mesh = translucent(makers::soup(3, 3, 3));
    mesh.indices[4] = 99;
    Shape shape;
    shape.sortMesh(mesh);
    EXPECT_NE(shape.error(), "");

    Mesh untouched = translucent(makers::soup(3, 3, 3));
    shape.sortMesh(untouched);
    EXPECT_TRUE(untouched.clusters.empty());
}

}  // namespace
}  // namespace marrowfen
