// The built command on the examples: what `marrowfen inspect` tells about each exported file is compared with
// EXAMPLE.facts beside this test.

#include "shape/drawn_triangles.h"
#include "tests/files.h"
#include "tests/shape/written.h"

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

TEST_P(ExamplesOf, GiveTheExpectedFacts) {
    const test::ProgramResult facts =
        run("export -q " + scene() + " out.dts --with-animation && " MARROWFEN_COMMAND " inspect out.dts");
    ASSERT_EQ(facts.code, 0) << facts.text;

    test::expectReviewed(kSource / "tests/cli" / (std::string(GetParam()) + ".facts"), facts.text);
}

TEST_P(ExamplesOf, LookOutwardInTheFile) {
    const test::ProgramResult exported = run("export -q " + scene() + " out.dts");
    ASSERT_EQ(exported.code, 0) << exported.text;
    const Shape shape = readDts(test::readFile(folder / "out.dts"));
    ASSERT_EQ(shape.error(), "");
    // The most detailed mesh: a decimated one keeps the normals of the surface that it was. A sorted one has those of
    // the first triangle of each run only.
    const Mesh& mesh = shape.meshes[static_cast<size_t>(shape.objects.front().firstMesh)];
    if (mesh.type == MeshType::Sorted) return;
    int agree = 0, disagree = 0;
    for (const TriangleRun& run : trianglesOf(mesh)) {
        for (const auto& [a, b, c] : run.triangles) {
            const std::vector<Point3>& v = mesh.vertexes;
            const Point3 normal = mesh.normals[a] + mesh.normals[b] + mesh.normals[c];
            ++(dot(cross(v[c] - v[a], v[b] - v[a]), normal) > 0 ? agree : disagree);
        }
    }
    // Where a sharp edge is smoothed, a normal may lean away from a sliver beside it.
    EXPECT_LE(disagree * 50, agree) << disagree << " triangles look inward";
}

INSTANTIATE_TEST_SUITE_P(Examples, ExamplesOf, testing::Values("lighthouse", "greenhouse", "creature"));

}  // namespace
}  // namespace marrowfen
