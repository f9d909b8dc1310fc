#include "standin/import/model_import.h"

#include <gtest/gtest.h>

#include "standin/import/polygon_cut.h"
#include "standin/import/source_model.h"
#include "tests/import/model_files.h"

namespace marrowfen::standin {
namespace {

TEST(ModelImport, PolygonsAreCutWithinThemselves) {
    //   3---2      5---4       4---3  the notch       1   3  crosses itself
    //   |   |      |   3---2    \  2                  | x |
    //   0---1      0-------1    0---1                 0   2
    const struct {
        std::vector<aiVector3D> corners;
        float area;
    } kCases[] = {{{{0, 0, 0}, {0, 0, 2}, {2, 0, 2}, {2, 0, 0}}, 4},
                  {{{0, 0, 1}, {3, 0, 1}, {3, 1, 1}, {1, 1, 1}, {1, 2, 1}, {0, 2, 1}}, 4},
                  {{{0, 0, 0}, {0, 0, 3}, {0, 1, 1}, {0, 3, 3}, {0, 3, 0}}, 6},
                  {{{0, 0, 0}, {0, 2, 0}, {2, 0, 0}, {2, 2, 0}}, -1},
                  {{{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {2, 2, 0}, {1, 2, 0}, {0, 2, 0}}, 4},
                  {{{0, 0, 0}, {0, 0, 0}, {0, 0, 0}, {0, 0, 0}}, 0}};
    for (const auto& entry : kCases) {
        const auto& at = entry.corners;
        for (size_t first = 0; first < at.size(); ++first) {
            std::vector<uint32_t> corners;
            for (size_t c = 0; c < at.size(); ++c) corners.push_back(static_cast<uint32_t>((first + c) % at.size()));
            const std::vector<uint32_t> cut = cutPolygon(at, corners);
            ASSERT_EQ(cut.size(), (at.size() - 2) * 3);
            aiVector3D whole;
            for (size_t c = 0; c < at.size(); ++c) whole += at[c] ^ at[(c + 1) % at.size()];
            float area = 0;
            for (size_t c = 0; c < cut.size(); c += 3) {
                const aiVector3D turned = (at[cut[c + 1]] - at[cut[c]]) ^ (at[cut[c + 2]] - at[cut[c]]);
                EXPECT_TRUE(entry.area < 0 || turned * whole >= 0) << at.size() << " from " << first;
                area += turned.Length() / 2;
            }
            if (entry.area >= 0) {
                EXPECT_FLOAT_EQ(area, entry.area) << at.size() << " from " << first;
            }
        }
    }
}

// Texts that no scene can hold become ones that it can, letter by letter.
TEST(ModelImport, NamesAreOneLineOfUtf8) {
    const std::pair<const char*, const char*> kCases[] = {
        {"plain", "plain"},
        {"a\nb\tc\x7F", "a_b_c_"},
        {"\x1F \x7E", "_ ~"},
        {"\xC2\x80\xDF\xBF", "\xC2\x80\xDF\xBF"},
        {"\xE0\xA0\x80\xED\x9F\xBF\xEF\xBF\xBF", "\xE0\xA0\x80\xED\x9F\xBF\xEF\xBF\xBF"},
        {"\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"},
        {"\x80z\xC1\x80\xC3", "?z???"},
        {"\xE0\x9F\x80\xED\xA0\x80\xE2\x82", "????????"},
        {"\xF0\x8F\x80\x80\xF4\x90\x80\x80\xF5\x80\x80\x80", "????????????"}};
    for (const auto& [given, expected] : kCases) EXPECT_EQ(cleanText(given), expected);
}

std::string gltfOfBuffer(const char* uri) {
    Gltf gltf;
    gltf.addPrimitive(gltf.triangle());
    gltf.text();
    gltf.json["buffers"] = {{{"byteLength", 36}, {"uri", uri}}};
    return gltf.json.dump();
}

TEST(ModelImport, FilesThatCannotBeReadAreOneErrorThatNamesThem) {
    EXPECT_EQ(importModel("/nowhere/a.obj", {}).error, "/nowhere/a.obj: No such file or directory");
    EXPECT_EQ(importModel("/tmp", {}).error, "/tmp: is a folder");
    const ModelFolder folder, links;
    // What ends these depends on the limits, which are others under the sanitizers.
    ImportOptions options;
    options.cpuSeconds = 1;
    const std::string ply = "ply\nformat ascii 1.0\nelement vertex 99999999\nproperty float x\nend_header\n0\n";
    for (const auto& [name, text] : {std::pair("huge.off", "OFF\n4000000000 4000000000 0\n0 0 0\n"),
                                     {"cut.ply", ply.c_str()},
                                     {"deep.ply", "ply\nformat ascii 1.0\nelement vertex 1\nproperty list uchar"}}) {
        const std::string path = folder.write(name, text), error = importModel(path, options).error;
        EXPECT_TRUE(error.starts_with(path + ": ") && error.find('\n') == std::string::npos) << error;
    }
    const std::string deep = folder.write("deep.gltf", "{\n\"extras\":" + std::string(100000, '['));
    EXPECT_EQ(importModel(deep, {}).error.find(deep + ": 2:4105: arrays"), 0U);
    // No line of a depfile comes out of a name.
    EXPECT_EQ(importModel(folder.write("forger.gltf", gltfOfBuffer("a%0Aall:")), {}).files.size(), 1U);
    // A link is where it leads, but for the model's own.
    const auto link = [&](const std::string& to, const char* from) {
        std::filesystem::create_symlink(to, links.pathOf(from));
    };
    link(folder.write("b.bin", std::string(36, '\0')), "b.bin");
    link(folder.write("a.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n"), "a.obj");
    const std::string linked = links.write("a.gltf", gltfOfBuffer("b.bin"));
    EXPECT_NE(importModel(linked, {}).error.find("outside the model's folder"), std::string::npos);
    EXPECT_EQ(importModel(links.pathOf("a.obj"), {}).error, "");
}

}  // namespace
}  // namespace marrowfen::standin
