// The built command on the examples: what `marrowfen inspect` tells about each exported file is compared with
// EXAMPLE.facts beside this test, which MARROWFEN_REGENERATE writes anew as in export_test.cpp.

#include <cstdlib>

#include "shape/shape.h"
#include "tests/files.h"

namespace marrowfen {
namespace {

namespace fs = std::filesystem;

const fs::path kSource = MARROWFEN_SOURCE_DIR;

class ExamplesOf : public testing::TestWithParam<const char*>, protected test::TestFolder {
protected:
    test::ProgramResult run(const std::string& arguments) const {
        return test::runIn(folder, MARROWFEN_COMMAND " " + arguments);
    }

    static std::string scene() { return "'" + (kSource / "examples" / GetParam()).string() + ".scene.json'"; }
};

// Calls visit(a, b, c) with the vertex numbers of each triangle, strips unrolled and their turning points left out.
template <class Visit>
void forEachTriangle(const Mesh& mesh, Visit visit) {
    for (const Primitive& p : mesh.primitives) {
        const bool isStrip = (p.material & Primitive::Strip) != 0;
        for (uint32_t e = 0; e + 2 < p.numElements; e += isStrip ? 1 : 3) {
            const uint32_t* i = &mesh.indices[p.firstElement + e];
            const bool isTurned = isStrip && e % 2 != 0;
            if (i[0] == i[1] || i[1] == i[2] || i[2] == i[0]) continue;
            visit(i[0], i[isTurned ? 2 : 1], i[isTurned ? 1 : 2]);
        }
    }
}

TEST_P(ExamplesOf, GiveTheExpectedFacts) {
    const test::ProgramResult facts =
        run("export -q " + scene() + " out.dts --with-animation && " MARROWFEN_COMMAND " inspect out.dts");
    ASSERT_EQ(facts.code, 0) << facts.text;

    const fs::path expectedFile = kSource / "tests/export" / (std::string(GetParam()) + ".facts");
    if (std::getenv("MARROWFEN_REGENERATE") != nullptr) test::writeFile(expectedFile, facts.text);
    EXPECT_EQ(test::readFile(expectedFile), facts.text);
}

TEST_P(ExamplesOf, LookOutwardInTheFile) {
    const test::ProgramResult exported = run("export -q " + scene() + " out.dts");
    ASSERT_EQ(exported.code, 0) << exported.text;
    std::ifstream file(folder / "out.dts", std::ios::binary);
    Shape shape;
    shape.readDts(file);
    ASSERT_EQ(shape.error(), "");
    // The most detailed mesh: a decimated one keeps the normals of the surface that it was. A sorted one has those of
    // the first triangle of each run only.
    const Mesh& mesh = shape.meshes[static_cast<size_t>(shape.objects.front().firstMesh)];
    if (mesh.type == MeshType::Sorted) return;
    int agree = 0, disagree = 0;
    forEachTriangle(mesh, [&](uint32_t a, uint32_t b, uint32_t c) {
        const std::vector<Point3>& v = mesh.vertexes;
        const Point3 face = cross(v[c] - v[a], v[b] - v[a]);
        const Point3 normal = mesh.normals[a] + mesh.normals[b] + mesh.normals[c];
        ++(dot(face, normal) > 0 ? agree : disagree);
    });
    // Where a sharp edge is smoothed, a normal may lean away from a sliver beside it.
    EXPECT_LE(disagree * 50, agree) << disagree << " triangles look inward";
}

INSTANTIATE_TEST_SUITE_P(Examples, ExamplesOf, testing::Values("lighthouse", "greenhouse", "creature"));

}  // namespace
}  // namespace marrowfen
