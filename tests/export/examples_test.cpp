// The built command on the examples: what `marrowfen inspect` tells about each exported file is compared with
// EXAMPLE.facts beside this test, which MARROWFEN_REGENERATE writes anew as in export_test.cpp.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "shape/shape.h"

namespace marrowfen {
namespace {

namespace fs = std::filesystem;

const fs::path kSource = MARROWFEN_SOURCE_DIR;

std::string fileText(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// A folder of its own for each test, gone with it.
class ExamplesOf : public testing::TestWithParam<const char*> {
protected:
    ExamplesOf() : folder_(fs::path(testing::TempDir()) / ("marrowfen-" + std::to_string(getpid()))) {
        fs::create_directories(folder_);
    }
    ~ExamplesOf() override { fs::remove_all(folder_); }

    // Runs the command in the folder; both of its streams go into output.
    int run(const std::string& arguments, std::string& output) const {
        const std::string line =
            "cd '" + folder_.string() + "' && " MARROWFEN_COMMAND " " + arguments + " >output.txt 2>&1";
        const int status = std::system(line.c_str());
        output = fileText(folder_ / "output.txt");
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    static std::string scene() { return "'" + (kSource / "examples" / GetParam()).string() + ".scene.json'"; }

    fs::path folder_;
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
    std::string output, facts;
    ASSERT_EQ(run("export -q " + scene() + " out.dts --with-animation", output), 0) << output;
    ASSERT_EQ(run("inspect out.dts", facts), 0) << facts;

    const fs::path expectedFile = kSource / "tests/export" / (std::string(GetParam()) + ".facts");
    if (std::getenv("MARROWFEN_REGENERATE") != nullptr) std::ofstream(expectedFile, std::ios::binary) << facts;
    EXPECT_EQ(fileText(expectedFile), facts);
}

TEST_P(ExamplesOf, LookOutwardInTheFile) {
    std::string output;
    ASSERT_EQ(run("export -q " + scene() + " out.dts", output), 0) << output;
    std::ifstream file(folder_ / "out.dts", std::ios::binary);
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

TEST_P(ExamplesOf, LeaveTheOldOutputWhenTheSceneIsRefused) {
    std::string output;
    ASSERT_EQ(run("export -q " + scene() + " out.dsq", output), 0) << output;
    const std::string old = fileText(folder_ / "out.dsq");
    ASSERT_FALSE(old.empty());

    std::string refused = fileText(kSource / "examples" / (std::string(GetParam()) + ".scene.json"));
    const size_t bounds = refused.find("\"nodes\"");
    ASSERT_NE(bounds, std::string::npos);
    refused.replace(bounds, 7, "\"bounds again\"");
    std::ofstream(folder_ / "refused.scene.json", std::ios::binary) << refused;
    EXPECT_EQ(run("export refused.scene.json out.dsq", output), 1) << output;
    EXPECT_NE(output.find("More than one bounds"), std::string::npos) << output;
    EXPECT_EQ(fileText(folder_ / "out.dsq"), old);
}

INSTANTIATE_TEST_SUITE_P(Examples, ExamplesOf, testing::Values("lighthouse", "greenhouse", "creature"));

}  // namespace
}  // namespace marrowfen
