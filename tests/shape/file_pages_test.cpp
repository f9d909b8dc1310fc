#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "shape/shape.h"
#include "tests/shape/written.h"

// The files that the format pages work through are those that the writers make.

namespace marrowfen {
namespace {

// The bytes in a page's fenced lines "OFFSET  BYTES  meaning", with each offset checked.
std::string bytesOfPage(const std::string& page) {
    std::ifstream in(std::string(MARROWFEN_SOURCE_DIR "/docs/") + page);
    std::string bytes, line;
    bool inside = false;
    while (std::getline(in, line)) {
        if (line == "```") {
            inside = !inside;
        } else if (inside) {
            EXPECT_EQ(std::stoul(line.substr(0, 4), nullptr, 16), bytes.size()) << line;
            std::istringstream hex(line.substr(6, 35));
            for (unsigned byte; hex >> std::hex >> byte;) bytes.push_back(static_cast<char>(byte));
        }
    }
    return bytes;
}

TEST(FilePages, DtsPageShowsTheBytesOfAShape) {
    Shape shape;
    shape.names = {"Root", "Ball", "Detail2"};
    shape.nodes = {{0}};
    shape.nodeDefRotations.resize(1);
    shape.nodeDefTranslations = {{0, 0, 2}};
    shape.objects = {{1, 1, 0, 0}};
    shape.objectStates.resize(1);
    shape.subshapes = {{0, 0, 0, 1, 1, 0}};
    shape.detailLevels = {{2, 0, 0, 2}};
    shape.meshes = {Mesh(MeshType::Null)};
    shape.materials = {{"red", Shape::SWrap | Shape::TWrap, 0}};
    shape.bounds = {{-0.5F, -0.5F, -0.5F}, {0.5F, 0.5F, 0.5F}};
    shape.radius = shape.tubeRadius = 0.5F;
    shape.setSmallestSize(0);
    EXPECT_EQ(bytesOfPage("dts-file.md"), dts(shape));
}

TEST(FilePages, DsqPageShowsTheBytesOfASequence) {
    Shape shape;
    shape.names = {"Root", "Hand", "nod"};
    shape.nodes = {{0}, {1}};
    shape.nodeRotations = {{}, {0, 0, 0.70711F, 0.70711F}};
    shape.nodeTranslations = {{0, 0, 1}, {0, 0, 1}};
    Shape::Sequence nod;
    nod.nameIndex = 2;
    nod.flags = Shape::UniformScale | Shape::Cyclic;
    nod.numKeyFrames = 2;
    nod.duration = 0.5F;
    nod.rotationMatters.resize(2);
    nod.rotationMatters.set(1);
    nod.translationMatters = nod.rotationMatters;
    shape.sequences = {nod};
    EXPECT_EQ(bytesOfPage("dsq-file.md"), dsq(shape));
}

}  // namespace
}  // namespace marrowfen
