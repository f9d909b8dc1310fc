#include "standin/import/model_import.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <functional>
#include <map>
#include <set>

#include "standin/host/scene_file.h"
#include "standin/import/polygon_cut.h"
#include "standin/import/source_model.h"
#include "tests/import/model_files.h"

namespace marrowfen::standin {
namespace {

Vec3 cross(const Vec3& a, const Vec3& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
float dot(const Vec3& a, const Vec3& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

// A box of Y-up files from (0, 0, 0) to (1, 2, 3), with split corners: every face has vertices of its own.
std::string boxObj(bool normalsInward = false, bool facesInward = false) {
    std::string text = "o box\n";
    const char* quads[] = {"0 0 3  1 0 3  1 2 3  0 2 3", "1 0 0  0 0 0  0 2 0  1 2 0", "1 0 3  1 0 0  1 2 0  1 2 3",
                           "0 0 0  0 0 3  0 2 3  0 2 0", "0 2 3  1 2 3  1 2 0  0 2 0", "0 0 0  1 0 0  1 0 3  0 0 3"};
    const char* normals[] = {"0 0 1", "0 0 -1", "1 0 0", "-1 0 0", "0 1 0", "0 -1 0"};
    if (normalsInward) {
        for (int k = 0; k < 6; k += 2) std::swap(normals[k], normals[k + 1]);
    }
    text += "vt 0 0\nvt 1 0\nvt 1 0.25\nvt 0 0.25\n";
    for (const char* normal : normals) text += std::string("vn ") + normal + "\n";
    for (int q = 0; q < 6; ++q) {
        std::istringstream numbers(quads[q]);
        std::string x, y, z, corners;
        for (int c = 1; numbers >> x >> y >> z; ++c) {
            text += "v " + x + " " + y + " " + z + "\n";
            const std::string corner =
                " " + std::to_string(q * 4 + c) + "/" + std::to_string(c) + "/" + std::to_string(q + 1);
            corners = facesInward ? corner + corners : corners + corner;
        }
        text += "f" + corners + "\n";
    }
    return text;
}

Scene importScene(const std::string& path, const ImportOptions& options = {}) {
    LoadResult result = importModel(path, options);
    EXPECT_EQ(result.error, "");
    if (!result.scene) return {};
    // Whatever an import gives, a scene file can say, to the last bit.
    EXPECT_EQ(parseScene(sceneText(*result.scene), path).scene, result.scene);
    return *result.scene;
}

Scene importText(const std::string& name, const std::string& text, const ImportOptions& options = {}) {
    const ModelFolder folder;
    return importScene(folder.write(name, text), options);
}

// Faces clockwise seen from outside the box, and normals pointing inward at every corner.
void expectLooksOutward(const Polyhedron& box, const Vec3& middle) {
    ASSERT_TRUE(box.normals.has_value());
    for (const Face& face : box.faces) {
        const auto at = [&](size_t c) { return box.vertices[static_cast<size_t>(face.corners[c].vertex)]; };
        const Vec3 outward = cross(minus(at(2), at(0)), minus(at(1), at(0)));
        EXPECT_GT(dot(outward, minus(at(0), middle)), 0);
        for (const Corner& corner : face.corners) {
            EXPECT_LT(dot(outward, (*box.normals)[static_cast<size_t>(corner.vertex)]), 0);
        }
    }
}

TEST(ModelImport, YUpBoxIsTurnedJoinedAndFacesOutward) {
    const Scene scene = importText("a.obj", boxObj());
    ASSERT_EQ(scene.nodes.size(), 1U);
    EXPECT_EQ(scene.nodes[0].name, "box");
    const Polyhedron& box = scene.nodes[0].polyhedron;
    EXPECT_EQ(box.vertices.size(), 24U);
    EXPECT_EQ(box.faces.size(), 12U);
    for (const Vec3& v : box.vertices) {
        EXPECT_TRUE((v[0] == 0 || v[0] == -1) && (v[1] == 0 || v[1] == 3) && (v[2] == 0 || v[2] == 2));
    }
    expectLooksOutward(box, {-0.5F, 1.5F, 1});
    // Every face of the box is flat.
    EXPECT_EQ(std::set<Vec3>(box.normals->begin(), box.normals->end()).size(), 6U);
    // v upward, as the file has it, each value once.
    EXPECT_EQ(box.uvs.size(), 4U);
    for (const Vec2& uv : box.uvs) EXPECT_TRUE(uv[1] == 0 || uv[1] == 0.25F);
    EXPECT_EQ(scene.layers, (std::vector<std::optional<std::string>>{std::nullopt, "Detail:size=1"}));
}

TEST(ModelImport, ScaleMirrorAndMissingNormals) {
    ImportOptions options;
    options.scale = 0.5F;
    const Scene half = importText("a.obj", boxObj(), options);
    expectLooksOutward(half.nodes[0].polyhedron, {-0.25F, 0.75F, 0.5F});
    float top = 0;
    for (const Vec3& v : half.nodes[0].polyhedron.vertices) top = std::max(top, v[2]);
    EXPECT_EQ(top, 1);

    // Winding follows a mirrored node. Readers' names for nodes that have none make no "nodes" layer.
    Gltf gltf;
    gltf.addPrimitive(gltf.triangle());
    gltf.json["nodes"] = {{{"name", "plain"}, {"mesh", 0}},
                          {{"name", "mirrored"}, {"mesh", 0}, {"scale", {-1, 1, 1}}},
                          {{"mesh", 0}},
                          {{"name", "nodes_1"}, {"mesh", 0}},
                          {{"name", "nodes[2]"}, {"mesh", 0}}};
    const Scene scene = importText("a.gltf", gltf.text());
    ASSERT_EQ(scene.nodes.size(), 5U);
    EXPECT_EQ(scene.layers, (std::vector<std::optional<std::string>>{std::nullopt, "Detail:size=1"}));
    for (const Node& node : scene.nodes) {
        // Without normals of its own a glTF file means flat faces; the host's normals point inward.
        EXPECT_EQ(node.polyhedron.normals, (std::vector<Vec3>(3, Vec3{0, 0, -1})));
        const std::vector<Vec3>& v = node.polyhedron.vertices;
        const std::vector<Corner>& c = node.polyhedron.faces[0].corners;
        const auto at = [&](size_t k) { return v[static_cast<size_t>(c[k].vertex)]; };
        // The front of the triangle looks up in the file, and so do both here.
        EXPECT_GT(cross(minus(at(2), at(0)), minus(at(1), at(0)))[2], 0) << node.name;
    }
}

TEST(ModelImport, FacesAndNormalsThatDisagreeArePutRight) {
    for (const bool normalsInward : {false, true}) {
        const ModelFolder folder;
        const LoadResult result = importModel(folder.write("a.obj", boxObj(normalsInward, !normalsInward)), {});
        ASSERT_TRUE(result.scene.has_value()) << result.error;
        expectLooksOutward(result.scene->nodes[0].polyhedron, {-0.5F, 1.5F, 1});
        EXPECT_EQ(warningsOf(result).size(), 1U);
    }
    // A room looks inward on purpose.
    const Polyhedron room = importText("a.obj", boxObj(true, true)).nodes[0].polyhedron;
    const Vec3 middle = {-0.5F, 1.5F, 1};
    for (size_t v = 0; v < room.vertices.size(); ++v) {
        EXPECT_GT(dot((*room.normals)[v], minus(room.vertices[v], middle)), 0);
    }
}

// Two triangles over the edge from (1, 0, 0) to (0, 1, 0), with the given normals at their ends.
std::string ridgeObj(const std::string& group, const std::string& firstNormal, const std::string& secondNormal) {
    return "g " + group + "\nv 0 0 0\nv 1 0 0\nv 0 1 0\nv 1 1 0\nvn " + firstNormal + "\nvn " + secondNormal +
           "\nf 1//1 2//1 3//1\nf 4//2 3//2 2//2\n";
}

TEST(ModelImport, VerticesAreJoinedWhereNoEdgeIsHard) {
    const struct {
        const char *group, *first, *second;
        size_t vertices;
    } kCases[] = {{"a", "0 0 1", "0 0 1", 4},
                  {"a", "0 0 1", "0 0.001 1", 4},  // a difference that nobody meant
                  {"a", "0 0 1", "0 0.02 1", 6},
                  {"collision", "0 0 1", "1 0 0", 4},
                  {"bounds", "0 0 1", "0 0 -1", 4}};
    for (const auto& entry : kCases) {
        const Polyhedron ridge =
            importText("a.obj", ridgeObj(entry.group, entry.first, entry.second)).nodes[0].polyhedron;
        EXPECT_EQ(ridge.vertices.size(), entry.vertices) << entry.group << " " << entry.second;
        EXPECT_EQ(ridge.normals.has_value(), entry.group == std::string("a"));
    }
}

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

TEST(ModelImport, TextsOfTwoBytesALetter) {
    const std::string text = "o t\xFCr\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n";
    for (const bool isBig : {false, true}) {
        std::string wide = isBig ? "\xFE\xFF" : "\xFF\xFE";
        for (const char c : text) wide += isBig ? std::string{'\0', c} : std::string{c, '\0'};
        EXPECT_EQ(importText("a.obj", wide).nodes.at(0).name, "t\xC3\xBCr");
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

// A buffer beside the model and one in its text, by names and bytes that are coded; images of all kinds.
TEST(ModelImport, BuffersAndImagesAreFoundByTheirUris) {
    const ModelFolder folder;
    const float points[] = {0, 0, 0, 0, 0, 1, 1, 0, 0};
    const std::string bytes(reinterpret_cast<const char*>(points), sizeof points);
    folder.write("b/a b%.bin", "xx" + bytes);
    std::string coded;
    for (const char c : bytes) {
        const char* kDigits = "0123456789aBCDEf";
        const auto byte = static_cast<unsigned char>(c);
        coded += std::string("%") + kDigits[byte >> 4] + kDigits[byte & 15];
    }
    for (const std::string& uri : {std::string("b/../b/a%20b%25.bin"), "data:,xx" + coded}) {
        Gltf gltf;
        const int places = gltf.triangle();
        for (const int material : {0, 1}) gltf.addPrimitive(places, {{"material", material}});
        gltf.text();
        gltf.json["bufferViews"][0]["byteOffset"] = 2;
        gltf.json["buffers"] = {{{"byteLength", 38}, {"uri", uri}}};
        gltf.json["images"] = {{{"uri", "data:image/bmp;base64,eHl6"}, {"name", "b"}}, {{"uri", "wood%20x.png"}}};
        gltf.json["textures"] = {{{"source", 0}}, {{"source", 1}}};
        gltf.json["materials"] = {{{"pbrMetallicRoughness", {{"baseColorTexture", {{"index", 0}}}}}},
                                  {{"pbrMetallicRoughness", {{"baseColorTexture", {{"index", 1}}}}}}};
        const ImportResult result = importModel(folder.write("m.gltf", gltf.json.dump()), {});
        ASSERT_TRUE(result.scene.has_value()) << result.error;
        const std::vector<Vec3>& found = result.scene->nodes[0].polyhedron.vertices;
        EXPECT_EQ(std::set<Vec3>(found.begin(), found.end()), (std::set<Vec3>{{0, 0, 0}, {0, 1, 0}, {-1, 0, 0}}));
        EXPECT_EQ(result.textures, (std::vector<std::pair<std::string, std::string>>{{"b.bmp", "xyz"}}));
        EXPECT_EQ(result.scene->materials[1].second.texture, "wood x.png");
    }
}

TEST(ModelImport, BacksOfASheetStayApart) {
    const std::string sheet =
        "v 0 0 0\nv 1 0 0\nv 0 1 0\nvn 0 0 1\nvn 0 0 -1\nf 1//1 2//1 3//1\nf 1//2 3//2 2//2\nl 1 2\nf 1//1 1//1 2//1\n";
    const ModelFolder folder;
    const LoadResult result = importModel(folder.write("a.obj", sheet), {});
    ASSERT_TRUE(result.scene.has_value()) << result.error;
    EXPECT_EQ(result.scene->nodes.front().polyhedron.vertices.size(), 6U);
    EXPECT_EQ(warningsOf(result), (std::vector<std::string>{"1 triangle with two corners at one place is dropped",
                                                            "1 line or point is dropped"}));
}

TEST(ModelImport, NamesMakeLayersAndMarkers) {
    // 0 Hull; 1 Collision:box with 2 skin; 3 Nodes with marker 4 (turned a quarter about the model's up axis) and 5
    // below it; 6 far:size=10 with 7 and 9, which say that they
    // are pieces of its mesh; 8 bounds without anything.
    Gltf gltf;
    gltf.addPrimitive(gltf.triangle());
    const float r = std::sqrt(0.5F);
    gltf.json["nodes"] = {{{"name", "Hull"}, {"mesh", 0}},
                          {{"name", "Collision:box"}, {"children", {2}}},
                          {{"name", "skin"}, {"mesh", 0}},
                          {{"name", "Nodes"}, {"children", {4}}},
                          {{"name", "eye"}, {"translation", {1, 2, 3}}, {"rotation", {0, r, 0, r}}, {"children", {5}}},
                          {{"name", "tip"}, {"translation", {1, 0, 0}}},
                          {{"name", "far:size=10"}, {"children", {7}}},
                          {{"name", "far:size=10_2"}, {"mesh", 0}, {"children", {9}}},
                          {{"name", "bounds:no_mipmap"}},
                          {{"name", "far:size=10.1"}, {"mesh", 0}}};
    const Scene scene = importText("a.gltf", gltf.text());
    EXPECT_EQ(scene.layers, (std::vector<std::optional<std::string>>{std::nullopt, "Detail:size=64", "Collision:box",
                                                                     "Nodes", "far:size=10", "bounds:no_mipmap"}));
    ASSERT_EQ(scene.nodes.size(), 4U);
    EXPECT_EQ(scene.nodes[0].layer, 1);
    EXPECT_EQ(scene.nodes[1].children[0].layer, 2);
    const Node& eye = scene.nodes[2].children[0];
    EXPECT_EQ(eye.type, 201);
    EXPECT_EQ(eye.layer, 3);
    EXPECT_EQ(eye.location, (Vec3{-1, 3, 2}));
    // About the model's up axis is about the scene's, anticlockwise, which the host writes as Rz(-az).
    for (size_t k = 0; k < 3; ++k) EXPECT_NEAR(eye.rotation[k], k == 2 ? -std::acos(0.0F) : 0, 1e-6F);
    ASSERT_EQ(eye.children.size(), 1U);
    EXPECT_NEAR(eye.children[0].location[1], 2, 1e-6F);
    EXPECT_EQ(scene.nodes[3].children[0].layer, 4);
    EXPECT_EQ(scene.nodes[3].children[0].children[0].layer, 4);
}

TEST(ModelImport, Materials) {
    const ModelFolder folder;
    folder.write("wood.grain.png", "not looked at");
    folder.write("a.mtl",
                 "newmtl board\nKd 1 0.5 0\nmap_Kd textures\\wood.grain.png\n"
                 "newmtl glass.001\nd 0.5\nNs 500\nnewmtl lamp\nKe 0 0.75 0\nmap_Kd gone.png\nnewmtl unused\n");
    const std::string model = folder.write("a.obj",
                                           "mtllib a.mtl\nmtllib gone.mtl \nmtllib gone.mtl\nmtllib ../out.mtl\nv 0 0 "
                                           "0\nv 1 0 0\nv 0 1 0\nv 0 0 1\nusemtl board\nf 1 2 3\n"
                                           "usemtl glass.001\nf 1 2 4\nusemtl lamp\nf 2 3 4\n");
    const LoadResult result = importModel(model, {});
    ASSERT_TRUE(result.scene.has_value()) << result.error;
    std::map<std::string, HostMaterial> found(result.scene->materials.begin(), result.scene->materials.end());
    ASSERT_EQ(found.size(), 3U);
    EXPECT_EQ(found["board"].texture, "wood.grain.png");
    EXPECT_EQ(found["board"].color, (std::array<uint8_t, 4>{255, 128, 0, 255}));
    EXPECT_FALSE(found["board"].shader.has_value());
    // The last full stop is where the exporter cuts a name.
    EXPECT_EQ(found["glass.001"].texture, "glass.001.");
    EXPECT_EQ(found["glass.001"].color[3], 128);
    ASSERT_TRUE(found["lamp"].shader.has_value());
    EXPECT_EQ(found["lamp"].shader->name, "c_envr_map");
    EXPECT_EQ(found["lamp"].shader->parameters, (std::vector<ShaderParameter>{{"ambient factor", 7, 0.75F}}));
    EXPECT_EQ(warningsOf(result), (std::vector<std::string>{
                                      "1 texture isn't found beside the model: gone.png",
                                      "material library gone.mtl isn't found beside the model",
                                      "material library ../out.mtl lies outside the model's folder and isn't opened"}));
}

TEST(ModelImport, MaterialsOfGltf) {
    const struct {
        const char* material;
        std::array<uint8_t, 4> color;
        float emission;
        const char* texture;  // none for a name made of the material's number
    } kCases[] = {
        {"{}", {255, 255, 255, 255}, 0, ""},
        {R"({"pbrMetallicRoughness": {"baseColorFactor": [0.2, 0.4, 1, 0.5]}})", {51, 102, 255, 255}, 0, ""},
        {R"({"pbrMetallicRoughness": {"baseColorFactor": [0, 0.5, 7, 0.5]}, "alphaMode": "BLEND"})",
         {0, 128, 255, 128},
         0,
         ""},
        {R"({"emissiveFactor": [0, 0.5, 0.25]})", {255, 255, 255, 255}, 0.5F, ""},
        {R"({"emissiveFactor": [0, 0, 1], "emissiveTexture": {"index": 0}})", {255, 255, 255, 255}, 1, "a.png"},
        {R"({"emissiveFactor": [0, 0, 1], "emissiveTexture": {"index": 0},
             "pbrMetallicRoughness": {"baseColorTexture": {"index": 1}}})",
         {255, 255, 255, 255},
         0,
         "b.png"},
        {R"({"emissiveFactor": [0, 0, 1], "emissiveTexture": {"index": 1},
             "pbrMetallicRoughness": {"baseColorTexture": {"index": 1}}})",
         {255, 255, 255, 255},
         1,
         "b.png"},
        {R"({"extensions": {"KHR_materials_unlit": {}}})", {255, 255, 255, 255}, 1, ""},
        {R"({"extensions": {"KHR_materials_pbrSpecularGlossiness": {"diffuseFactor": [0, 0.4, 0, 1],
             "diffuseTexture": {"index": 0}}}})",
         {0, 102, 0, 255},
         0,
         "a.png"},
        {R"({"extensions": {"KHR_materials_pbrSpecularGlossiness": {}}})", {255, 255, 255, 255}, 0, ""},
    };
    Gltf gltf;
    const int places = gltf.triangle();
    gltf.json["images"] = {{{"uri", "a.png"}}, {{"uri", "b.png"}}};
    gltf.json["textures"] = {{{"source", 0}}, {{"source", 1}}};
    for (const auto& entry : kCases) {
        gltf.addPrimitive(places, {{"material", gltf.json["materials"].size()}});
        gltf.json["materials"].push_back(nlohmann::json::parse(entry.material));
    }
    const ModelFolder folder;
    const LoadResult result = importModel(folder.write("a.gltf", gltf.text()), {});
    ASSERT_TRUE(result.scene.has_value()) << result.error;
    ASSERT_EQ(result.scene->materials.size(), std::size(kCases));
    for (size_t m = 0; m < std::size(kCases); ++m) {
        const HostMaterial& material = result.scene->materials[m].second;
        EXPECT_EQ(material.color, kCases[m].color) << kCases[m].material;
        EXPECT_EQ(material.texture, *kCases[m].texture ? kCases[m].texture : "material " + std::to_string(m));
        const float emission = material.shader ? std::get<float>(material.shader->parameters[0].value) : 0;
        EXPECT_EQ(emission, kCases[m].emission) << kCases[m].material;
    }
    EXPECT_EQ(warningsOf(result),
              (std::vector<std::string>{"1 material tints its texture, which the engine shows in its own colours",
                                        "2 textures aren't found beside the model: a.png, b.png",
                                        "1 material glows in parts only, which isn't carried over"}));
}

TEST(ModelImport, AlphaModesAndEmbeddedTextures) {
    const std::string png("\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\0\1\0\0\0\1\x08\x06", 26);
    std::string opaquePng = png;
    opaquePng[25] = 2;
    const std::string jpeg = "\xFF\xD8\xFF\xE0 rest";
    // Images: "../leaf.png" with alpha, one without a name, another without, "LEAF" as a JPEG.
    Gltf gltf;
    const int places = gltf.triangle();
    const std::pair<const char*, std::string> kImages[] = {
        {"../leaf.png", png}, {"", opaquePng}, {"", jpeg}, {"LEAF", jpeg}};
    for (const auto& [name, bytes] : kImages) {
        gltf.json["images"].push_back({{"name", name}, {"bufferView", gltf.view(bytes)}});
        gltf.json["textures"].push_back({{"source", gltf.json["images"].size() - 1}});
    }
    const struct {
        const char* mode;
        float alpha;
        int texture;
        const char* name;
        int opacity;
    } kCases[] = {{"OPAQUE", 0.5F, 0, "leaf.png", 255}, {"MASK", 1, 0, "leaf.png", 174},
                  {"MASK", 1, 1, "a_1.png", 255},       {"BLEND", 1, 0, "leaf.png", 174},
                  {"BLEND", 1, 2, "a_2.jpg", 255},      {"BLEND", 0.9F, 3, "LEAF_2.jpg", 174},
                  {"BLEND", 0.5F, -1, "", 128}};
    for (const auto& entry : kCases) {
        nlohmann::json material = {{"alphaMode", entry.mode},
                                   {"pbrMetallicRoughness", {{"baseColorFactor", {1, 1, 1, entry.alpha}}}}};
        if (entry.texture >= 0) material["pbrMetallicRoughness"]["baseColorTexture"]["index"] = entry.texture;
        gltf.addPrimitive(places, {{"material", gltf.json["materials"].size()}});
        gltf.json["materials"].push_back(material);
    }
    const ModelFolder folder;
    const ImportResult result = importModel(folder.write("a.gltf", gltf.text()), {});
    ASSERT_TRUE(result.scene.has_value()) << result.error;
    ASSERT_EQ(result.scene->materials.size(), std::size(kCases));
    for (size_t m = 0; m < std::size(kCases); ++m) {
        const HostMaterial& material = result.scene->materials[m].second;
        EXPECT_EQ(material.color[3], kCases[m].opacity) << m;
        EXPECT_EQ(material.texture, kCases[m].texture < 0 ? "material 6" : kCases[m].name);
    }
    EXPECT_EQ(result.textures,
              (std::vector<std::pair<std::string, std::string>>{
                  {"leaf.png", png}, {"a_1.png", opaquePng}, {"a_2.jpg", jpeg}, {"LEAF_2.jpg", jpeg}}));
}

TEST(ModelImport, BacksOfDoubleSidedFacesAreFacesOfTheirOwn) {
    // A tetrahedron, and with a face less.
    for (const size_t faces : {4U, 3U}) {
        Gltf gltf;
        const int places = gltf.points({0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1});
        std::vector<uint8_t> corners = {0, 2, 1, 0, 1, 3, 0, 3, 2, 1, 2, 3};
        corners.resize(faces * 3);
        gltf.json["materials"] = {{{"name", "m"}, {"doubleSided", true}}};
        gltf.addPrimitive(places, {{"indices", gltf.list(corners, "SCALAR", 5121, 1)}, {"material", 0}});
        const Polyhedron open = importText("a.gltf", gltf.text()).nodes[0].polyhedron;
        EXPECT_EQ(open.faces.size(), faces == 4 ? 4U : 6U);
        for (const Face& face : open.faces) {
            const auto at = [&](size_t c) { return open.vertices[static_cast<size_t>(face.corners[c].vertex)]; };
            const Vec3 outward = cross(minus(at(2), at(0)), minus(at(1), at(0)));
            EXPECT_LT(dot(outward, (*open.normals)[static_cast<size_t>(face.corners[0].vertex)]), 0);
        }
        ImportOptions options;
        options.singleSided = true;
        EXPECT_EQ(importText("a.gltf", gltf.text(), options).nodes[0].polyhedron.faces.size(), faces);
    }
}

// One triangle in ways that glTF has to say it; the models of foreign_models.facts have others.
TEST(ModelImport, FormsOfGltfNumbersAreAllTheSame) {
    const struct {
        const char* what;
        std::function<void(Gltf&)> fill;
    } kCases[] = {
        {"strip",
         [](Gltf& gltf) {
             const int places = gltf.triangle();
             gltf.addPrimitive(places,
                               {{"mode", 5}, {"indices", gltf.list<uint16_t>({2, 2, 1, 0}, "SCALAR", 5123, 1)}});
         }},
        {"sparse",
         [](Gltf& gltf) {
             const float moved[] = {0, 0, 1, 1, 0, 0};
             const int of = gltf.view("\1\2"), with = gltf.view({reinterpret_cast<const char*>(moved), sizeof moved});
             gltf.json["accessors"] = {{{"componentType", 5126}, {"count", 3}, {"type", "VEC3"}}};
             gltf.json["accessors"][0]["sparse"] = {{"count", 2},
                                                    {"indices", {{"bufferView", of}, {"componentType", 5121}}},
                                                    {"values", {{"bufferView", with}}}};
             gltf.addPrimitive(0);
         }},
        {"normalised shorts",
         [](Gltf& gltf) {
             gltf.list<int16_t>({0, 0, 0, 0, 0, 32767, 32767, 0, 0}, "VEC3", 5122, 3);
             gltf.list<uint16_t>({0, 65535, 65535, 65535, 0, 65535}, "VEC2", 5123, 2);
             for (nlohmann::json& accessor : gltf.json["accessors"]) accessor["normalized"] = true;
             gltf.addPrimitive(0, {{"attributes", {{"TEXCOORD_0", 1}}}});
         }},
    };
    for (const auto& entry : kCases) {
        Gltf gltf;
        entry.fill(gltf);
        const Polyhedron mesh = importText("a.gltf", gltf.text()).nodes.at(0).polyhedron;
        ASSERT_EQ(mesh.faces.size(), 1U) << entry.what;
        EXPECT_EQ(std::set<Vec3>(mesh.vertices.begin(), mesh.vertices.end()),
                  (std::set<Vec3>{{0, 0, 0}, {0, 1, 0}, {-1, 0, 0}}))
            << entry.what;
        EXPECT_EQ(mesh.normals, (std::vector<Vec3>(3, Vec3{0, 0, -1}))) << entry.what;
        const bool hasUvs = entry.what == std::string("normalised shorts");
        EXPECT_EQ(mesh.uvs, hasUvs ? (std::vector<Vec2>{{0, 0}, {1, 0}}) : std::vector<Vec2>()) << entry.what;
    }
}

// A node's mesh in two places, each twice as large.
TEST(ModelImport, CopiesOfAGltfMesh) {
    Gltf gltf;
    const int points = gltf.points({0, 0, 0, 0, 0, 1, 1, 0, 0});
    const int places = gltf.points({5, 0, 0, 0, 7, 0}), sizes = gltf.points({2, 2, 2, 2, 2, 2});
    gltf.json["meshes"] = {{{"primitives", {{{"attributes", {{"POSITION", points}}}}}}}};
    gltf.json["nodes"] = {{{"name", "tree"}, {"mesh", 0}}};
    gltf.json["nodes"][0]["extensions"]["EXT_mesh_gpu_instancing"]["attributes"] = {{"TRANSLATION", places},
                                                                                    {"SCALE", sizes}};
    gltf.json["extensionsUsed"] = gltf.json["extensionsRequired"] = {"EXT_mesh_gpu_instancing"};
    gltf.json["scenes"] = {{{"nodes", {0}}}};
    const ModelFolder folder;
    const LoadResult result = importModel(folder.write("a.gltf", gltf.text()), {});
    ASSERT_TRUE(result.scene.has_value()) << result.error;
    std::set<Vec3> vertices;
    ASSERT_EQ(result.scene->nodes.size(), 1U);
    for (const Node& node : result.scene->nodes[0].children) {
        vertices.insert(node.polyhedron.vertices.begin(), node.polyhedron.vertices.end());
    }
    EXPECT_EQ(vertices, (std::set<Vec3>{{-5, 0, 0}, {-5, 2, 0}, {-7, 0, 0}, {0, 0, 7}, {0, 2, 7}, {-2, 0, 7}}));
    EXPECT_TRUE(warningsOf(result).empty());
}

// Surfaces say whether they are smooth and whether they show from both sides; one material serves all.
TEST(ModelImport, SurfacesOfAc3d) {
    std::string text =
        "AC3Db\nMATERIAL \"red\" rgb 1 0 0 amb 0 0 0 emis 0 0 0 spec 0 0 0 shi 0 trans 0\nOBJECT world\nkids 1\n"
        "OBJECT poly\nname \"roof\"\nnumvert 4\n0 0 0\n1 0 0\n0 1 0.2\n1 1 0\nnumsurf 2\n";
    const std::string ends[] = {"mat 0\nrefs 3\n0 0 0\n1 0 0\n2 0 0\n", "mat 0\nrefs 3\n1 0 0\n3 0 0\n2 0 0\n"};
    const struct {
        const char *first, *second;
        size_t faces, vertices;  // vertices are joined where faces are smooth
    } kCases[] = {{"0x00", "0x00", 2, 6}, {"0x10", "0x10", 2, 4}, {"0x20", "0x20", 4, 12}, {"0x30", "0x00", 3, 9}};
    for (const auto& entry : kCases) {
        const Scene scene = importText("a.ac", text + "SURF " + entry.first + "\n" + ends[0] + "SURF " + entry.second +
                                                   "\n" + ends[1] + "kids 0\n");
        ASSERT_EQ(scene.materials.size(), 1U) << entry.first;
        EXPECT_EQ(scene.materials[0].first, "red");
        size_t faces = 0, vertices = 0;
        for (const Node& node : scene.nodes) {
            faces += node.polyhedron.faces.size(), vertices += node.polyhedron.vertices.size();
        }
        EXPECT_EQ(faces, entry.faces) << entry.first;
        EXPECT_EQ(vertices, entry.vertices) << entry.first;
    }
}

// A triangle whose frames end with the file; of one frame nothing is lost, and its skin has no ending.
TEST(ModelImport, QuakeModelsOfOneFrame) {
    for (const int32_t frames : {1, 2}) {
        const int32_t frameSize = 40 + 3 * 4, skins = 68, uvs = skins + 64, faces = uvs + 12, first = faces + 12;
        const std::array<int32_t, 17> head = {0x32504449,
                                              8,
                                              64,
                                              64,
                                              frameSize,
                                              1,
                                              3,
                                              3,
                                              1,
                                              0,
                                              frames,
                                              skins,
                                              uvs,
                                              faces,
                                              first,
                                              first,
                                              first + frames * frameSize};
        std::string bytes(static_cast<size_t>(head[16]), '\0');
        std::copy_n(reinterpret_cast<const char*>(head.data()), sizeof head, bytes.data());
        bytes.replace(skins, 5, ".skin");
        const std::array<uint16_t, 6> corners = {0, 2, 1, 0, 2, 1};
        std::copy_n(reinterpret_cast<const char*>(corners.data()), sizeof corners, bytes.data() + faces);
        const std::array<float, 3> sizes = {1, 1, 1};
        for (int32_t f = 0; f < frames; ++f) {
            char* frame = bytes.data() + first + f * frameSize;
            std::copy_n(reinterpret_cast<const char*>(sizes.data()), sizeof sizes, frame);
            frame[44] = frame[49] = 1;
        }
        const ModelFolder folder;
        const std::string skin = folder.write("skin.tga", "");
        const LoadResult result = importModel(folder.write("a.md2", bytes), {});
        ASSERT_TRUE(result.scene.has_value()) << result.error;
        EXPECT_EQ(result.scene->materials[0].second.texture, "skin");
        EXPECT_EQ(warningsOf(result).size(), frames == 1 ? 0U : 1U);
    }
}

// A bumpy square of side * side quads with a node for each name.
std::string bumps(const std::vector<std::string>& nodes) {
    constexpr int kSide = 12;
    std::string text;
    for (int y = 0; y <= kSide; ++y) {
        for (int x = 0; x <= kSide; ++x) {
            text += "v " + std::to_string(x) + " " + std::to_string(0.1 * ((x * 7 + y * 3) % 5)) + " " +
                    std::to_string(y) + "\n";
        }
    }
    for (const std::string& node : nodes) {
        text += "o " + node + "\n";
        for (int y = 0; y < kSide; ++y) {
            for (int x = 1; x <= kSide; ++x) {
                const int at = y * (kSide + 1) + x, below = at + kSide + 1;
                text += "f " + std::to_string(at) + " " + std::to_string(below) + " " + std::to_string(below + 1) +
                        " " + std::to_string(at + 1) + "\n";
            }
        }
    }
    return text;
}

TEST(ModelImport, LayersAndLevelsThatTheOptionsAskFor) {
    const struct {
        std::vector<std::string> nodes;
        std::vector<LayerOption> layers;
        std::vector<LevelOption> levels;
        size_t mostTriangles;
        std::vector<std::pair<std::string, size_t>> expected;  // layers and about how many triangles they have
    } kCases[] = {
        {{"hut", "hut_col1"},
         {{"collision:box", "*_COL*"}, {"Detail:size=3", "h*"}},
         {},
         0,
         {{"Detail:size=3", 288}, {"collision:box", 288}}},
        {{"hut"},
         {},
         {{64, 100}, {32, 50}, {16, 25}},
         0,
         {{"Detail1:size=64", 288}, {"Detail2:size=32", 144}, {"Detail3:size=16", 72}}},
        {{"hut_LOD0", "hut_LOD1"},
         {},
         {{90, 100}, {30, 50}, {10, 25}},
         0,
         {{"Detail1:size=90", 288}, {"Detail2:size=30", 288}, {"Detail3:size=10", 72}}},
        {{"hut_LOD0"}, {}, {}, 0, {{"Detail:size=1", 288}}},
        {{"hut"}, {}, {}, 100, {{"Detail:size=1", 100}}},
        {{"Detail", "Detail20.001", "rig:hut", "detailed", "far:size=9,sort"},
         {},
         {},
         0,
         {{"Detail:size=64", 864}, {"Detail20.001:size=20", 288}, {"far:size=9,sort", 288}}},
    };
    for (const auto& entry : kCases) {
        ImportOptions options;
        options.layers = entry.layers;
        options.levels = entry.levels;
        options.mostTriangles = entry.mostTriangles;
        const Scene scene = importText("a.obj", bumps(entry.nodes), options);
        std::map<std::string, size_t> triangles;
        for (const Node& node : scene.nodes) {
            triangles[*scene.layers[static_cast<size_t>(node.layer)]] += node.polyhedron.faces.size();
        }
        ASSERT_EQ(triangles.size(), entry.expected.size()) << entry.nodes[0];
        for (const auto& [layer, count] : entry.expected) {
            EXPECT_LE(triangles[layer], count) << layer;
            EXPECT_GE(triangles[layer], count * 8 / 10) << layer;
        }
    }
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
