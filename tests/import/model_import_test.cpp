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

TEST(ModelImport, DamagedFilesAreOneErrorThatNamesThem) {
    const std::string triangle = "v 0 0 0\nv 1 0 0\nv 0 1 0\n";
    const std::string plyHead = "ply\nformat ascii 1.0\nelement vertex ";
    const std::string plyBody = "\nproperty float x\nproperty float y\nproperty float z\n";
    const std::string plyFaces = "element face 1\nproperty list uchar int vertex_indices\nend_header\n";
    Gltf missing;
    missing.json["buffers"] = {{{"byteLength", 36}, {"uri", "gone.bin"}}};
    const auto gltfWith = [](const char* key, const nlohmann::json& value) {
        Gltf gltf;
        gltf.addPrimitive(gltf.triangle());
        gltf.text();
        gltf.json[key] = value;
        return gltf.json.dump();
    };
    const nlohmann::json accessor = {{"bufferView", 0}, {"componentType", 5126}, {"count", 4}, {"type", "VEC3"}};
    const struct {
        const char* name;
        std::string content;
        const char* says;
    } kCases[] = {
        {"deep.gltf", gltfWith("extras", 1).replace(0, 1, "{\n\"extras\":" + std::string(100000, '[')),
         ": 2:4105: arrays"},
        {"range.gltf", R"({"asset": {"version": "2.0"}, "nodes": [{"translation": [1e999, 0, 0]}]})", ": 1:"},
        {"extension.gltf", gltfWith("extensionsRequired", {"ACME_shapes"}), "needs the glTF extension ACME_shapes"},
        {"outside.gltf", gltfWith("buffers", {{{"byteLength", 36}, {"uri", "../b.bin"}}}),
         "outside the model's folder"},
        {"root.gltf", gltfWith("buffers", {{{"byteLength", 36}, {"uri", "/etc/hosts"}}}), "outside the model's folder"},
        {"escaped.gltf", gltfWith("buffers", {{{"byteLength", 36}, {"uri", "a/%2E%2E/../b"}}}), "outside the model's"},
        {"count.gltf", gltfWith("accessors", nlohmann::json::array({accessor})),
         "accessor 0: ends beyond its buffer view"},
        {"sparse.gltf", gltfWith("accessors", nlohmann::json::parse(R"([{"bufferView": 0, "componentType": 5126,
             "count": 3, "type": "VEC3", "sparse": {"count": 1, "indices": {"bufferView": 0, "byteOffset": 22,
             "componentType": 5121}, "values": {"bufferView": 0}}}])")),
         "replaces element 128 of 3"},
        {"sparser.gltf", gltfWith("accessors", nlohmann::json::parse(R"([{"bufferView": 0, "componentType": 5126,
             "count": 3, "type": "VEC3", "sparse": {"count": 4, "indices": {"bufferView": 0, "componentType": 5121},
             "values": {"bufferView": 0}}}])")),
         "sparse elements end beyond"},
        {"view.gltf", gltfWith("bufferViews", {{{"buffer", 0}, {"byteOffset", 4}, {"byteLength", 36}}}), "ends beyond"},
        {"loop.gltf", gltfWith("nodes", nlohmann::json::parse(R"([{"mesh": 0, "children": [0]}])")),
         "hangs in two places"},
        {"empty.obj", "", ""},
        {"text.xyz", "hello", "of its kind aren't read"},
        {"points.obj", triangle + "p 1 2 3\n", "no triangles"},
        {"range.obj", triangle + "f 1 2 9\n", ""},
        {"nan.ply", plyHead + "3" + plyBody + plyFaces + "0 0 0\n1 0 nan\n0 1 0\n3 0 1 2\n", "isn't finite"},
        {"range.ply", plyHead + "3" + plyBody + plyFaces + "0 0 0\n1 0 0\n0 1 0\n3 0 1 7\n", ""},
        {"huge.off", "OFF\n4000000000 4000000000 0\n0 0 0\n", ""},
        {"cut.glb", std::string("glTF\2\0\0\0\xFF\0\0\0", 12), ""},
        {"missing.gltf", missing.json.dump(), ""},
        {"cut.cob", "Caligari V00.01ALH\nGrou V0.01 Id 1 Parent 0 Size 99\nName", ""},
        {"cut.ply", plyHead + "99999999" + plyBody + plyFaces + "0 0 0\n", ""},
        {"deep.ply", plyHead + "1\nproperty list uchar", ""},
    };
    const ModelFolder folder;
    ImportOptions options;
    options.cpuSeconds = 1;
    for (const auto& entry : kCases) {
        const std::string path = folder.write(entry.name, entry.content);
        const LoadResult result = importModel(path, options);
        EXPECT_FALSE(result.scene.has_value()) << entry.name;
        EXPECT_EQ(result.error.rfind(path + ": ", 0), 0U) << result.error;
        EXPECT_EQ(result.error.find('\n'), std::string::npos) << result.error;
        EXPECT_NE(result.error.find(entry.says), std::string::npos) << result.error;
    }
    // No line of a depfile comes out of a name.
    const std::string forger =
        folder.write("forger.gltf", gltfWith("buffers", {{{"byteLength", 36}, {"uri", "a%0Aall:"}}}));
    EXPECT_EQ(importModel(forger, {}).files.size(), 1U);
    // A link is where it leads, but for the model's own.
    const ModelFolder links;
    const auto link = [&](const std::string& to, const char* from) {
        std::filesystem::create_symlink(to, links.pathOf(from));
    };
    link(folder.write("b.bin", std::string(36, '\0')), "b.bin");
    link(folder.write("a.obj", triangle + "f 1 2 3\n"), "a.obj");
    const std::string linked = links.write("a.gltf", gltfWith("buffers", {{{"byteLength", 36}, {"uri", "b.bin"}}}));
    EXPECT_NE(importModel(linked, {}).error.find("outside the model's folder"), std::string::npos);
    EXPECT_EQ(importModel(links.pathOf("a.obj"), {}).error, "");
    EXPECT_EQ(importModel("/nowhere/a.obj", {}).error, "/nowhere/a.obj: No such file or directory");
    EXPECT_EQ(importModel("/tmp", {}).error, "/tmp: is a folder");
}

}  // namespace
}  // namespace marrowfen::standin
