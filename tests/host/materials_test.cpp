#include "host/materials.h"

#include "shape/shape_words.h"
#include "tests/builder/build_scene.h"

namespace marrowfen {
namespace {

// Name, flags, number of the reflectance map and reflection of each.
std::string listing(const std::vector<Shape::Material>& materials) {
    std::ostringstream text;
    for (const Shape::Material& m : materials) {
        text << m.name << " " << flagsText(m.flags, kMaterialFlagWords) << " " << m.reflectance << " " << m.reflection
             << "\n";
    }
    return text.str();
}

TEST(MaterialConversion, SharesWhatIsEqualWithinATolerance) {
    const auto reflecting = [](float reflection, float detailScale = 1, int32_t map = -1) {
        return Shape::Material{"a", 0, map, -1, -1, detailScale, reflection};
    };
    const std::pair<Shape::Material, int32_t> wanted[] = {
        {{"a"}, 0},
        {{"a"}, 0},
        {{"b"}, 1},
        {{"a", Shape::Translucent}, 2},
        {reflecting(0.5F), 3},
        {reflecting(0.5099F), 3},
        {reflecting(0.4901F), 3},
        {reflecting(0.5101F), 4},
        {reflecting(0.4899F), 5},
        {reflecting(0.5F, 1.0099F), 3},
        {reflecting(0.5F, 1.0101F), 6},
        {reflecting(0.5F, 0.9899F), 7},
        {reflecting(0.5F, 1, 3), 3},
        {reflecting(0.5F, 1, 1), 8},
        {{"a", 0, -1, 1}, 9},
        {{"a", 0, -1, -1, 1}, 10},
        {{"a", Shape::ReflectionMapFlag}, 11},
        {{"a", Shape::BumpMapFlag}, 11},  // every map of a name serves for all of them
        {{"b", Shape::DetailMapFlag}, 12},
        {reflecting(0.01F), 13},  // by just as much as the tolerance
        {reflecting(7, 0), 14},
        {reflecting(7, 0.01F), 15},
    };
    std::vector<Shape::Material> materials;
    std::ostringstream log;
    MaterialConversion conversion(materials, log, {});
    for (const auto& [material, number] : wanted) EXPECT_EQ(conversion.findOrAddMaterial(material), number);
    // Whoever comes later finds what is there, and the first of what is alike.
    MaterialConversion another(materials, log, {});
    EXPECT_EQ(another.findOrAddMaterial(reflecting(0.505F)), 3);
    EXPECT_EQ(another.findOrAddMaterial({"a", Shape::BumpMapFlag}), 11);
    EXPECT_EQ(listing(materials),
              "a ( ) 0 0\nb ( ) 1 0\na ( translucent ) 2 0\na ( ) 3 0.5\na ( ) 4 0.5101\na ( ) 5 0.4899\n"
              "a ( ) 6 0.5\na ( ) 7 0.5\na ( ) 1 0.5\na ( ) 9 0\na ( ) 10 0\n"
              "a ( detailmap bumpmap reflectionmap ) -1 0\nb ( detailmap ) -1 0\n"
              "a ( ) 13 0.01\na ( ) 14 7\na ( ) 15 7\n");
}

TEST(MaterialConversion, GivesTexturesTheFlagsThatAreAskedFor) {
    const struct {
        TextureOptions options;
        const char *opaque, *translucent;
    } cases[] = {
        {{}, "a ( ) 0 0\n", "a ( translucent ) 0 0\n"},
        {{true, false, false}, "a ( nomipmap ) 0 0\n", "a ( translucent nomipmap ) 0 0\n"},
        {{false, true, false}, "a ( ) 0 0\n", "a ( translucent nomipmap ) 0 0\n"},
        {{false, false, true}, "a ( ) 0 0\n", "a ( translucent mipmapzeroborder ) 0 0\n"},
    };
    std::ostringstream log;
    for (const auto& [options, opaque, translucent] : cases) {
        std::vector<Shape::Material> first, second;
        MaterialConversion(first, log, options).findOrAddMaterial({"a"});
        MaterialConversion(second, log, options).findOrAddMaterial({"a", Shape::Translucent});
        EXPECT_EQ(listing(first), opaque);
        EXPECT_EQ(listing(second), translucent);
    }
}

#define SHADER(parameters) R"({"texture": "w.bmp", "shader": {"name": "c_envr_map", "parameters": [)" parameters "]}}"
#define MIRROR(factor) R"({"name": "mirror factor", "type": "float", "value": )" #factor "}"
#define AMBIENT(factor) R"({"name": "ambient factor", "type": "float", "value": )" #factor "}"
#define SKY(file) R"({"name": "file name", "type": "text", "value": ")" file "\"}"

TEST(MaterialConversion, ReadsWhatTheHostHas) {
    const std::pair<const char*, const char*> cases[] = {
        {"{}", "Unnamed ( neverenvmap ) 0 0\n"},
        {R"({"texture": "D:\\a.b\\oak.old.bmp"})", "oak.old ( neverenvmap ) 0 0\n"},
        {R"({"color": [0, 0, 0, 175]})", "Unnamed ( neverenvmap ) 0 0\n"},
        {R"({"color": [0, 0, 0, 174]})", "Unnamed ( translucent neverenvmap ) 0 0\n"},
        {R"({"color": [0, 0, 0, 0], "reflection": [1, 1, 0.5, 1]})",
         "Unnamed ( translucent subtractive neverenvmap ) 0 0\n"},
        {R"({"color": [0, 0, 0, 0], "reflection": [0.5, 0.5, 1, 0.5]})",
         "Unnamed ( translucent additive neverenvmap ) 0 0\n"},
        {R"({"color": [0, 0, 0, 0], "reflection": [0.5, 0.5, 1.5, 0.5]})", "Unnamed ( translucent neverenvmap ) 0 0\n"},
        {SHADER(MIRROR(0.25)), "w ( ) 0 0.25\n"},
        {SHADER(MIRROR(0) "," SKY("sky.bmp")), "w ( neverenvmap ) 0 0\n"},
        {SHADER(MIRROR(0.25) "," SKY("D:\\\\sky.bmp")), "sky ( detailmap bumpmap reflectionmap ) -1 1\nw ( ) 0 0.25\n"},
        {SHADER(SKY("w.tga") "," MIRROR(0.25)), "w ( ) 0 0.25\n"},
        {SHADER(AMBIENT(0.1)), "w ( selfilluminating neverenvmap ) 0 0\n"},
        {SHADER(AMBIENT(0)), "w ( neverenvmap ) 0 0\n"},
        {R"({"shader": {"name": "C_envr_map", "parameters": [)" AMBIENT(1) "]}}", "Unnamed ( neverenvmap ) 0 0\n"},
        {R"({"shader": {"name": "c_envr_map", "valid": false, "parameters": [)" AMBIENT(1) "]}}",
         "Unnamed ( neverenvmap ) 0 0\n"},
    };
    for (const auto& [material, expected] : cases) {
        const Build build(sceneOf(std::string(R"("layers": [null, "Detail:no_strip"], "materials": {"m": )") +
                                  material +
                                  R"(}, "nodes": [{"type": "polyhedron", "layer": 1, "materials": ["m", null],
            "vertices": [[0,0,0],[0,1,0],[1,0,0]], "faces": [{"corners": [[0,0],[1,0],[2,0]]},
            {"corners": [[0,0],[1,0],[2,0]]}, {"corners": [[0,0],[1,0],[2,0]], "material": 1}]}])"));
        EXPECT_EQ(listing(build.shape->materials), expected) << material;
        const auto last = static_cast<uint32_t>(build.shape->materials.size() - 1);
        std::vector<uint32_t> words;
        for (const Primitive& primitive : build.shape->meshes.front().primitives) words.push_back(primitive.material);
        EXPECT_EQ(words, (std::vector<uint32_t>{Primitive::Indexed | last, Primitive::Indexed | last,
                                                Primitive::Indexed | Primitive::NoMaterial}))
            << material;
    }
}

TEST(MaterialConversion, LogsOtherShaderParametersOnceAFace) {
    const Build build(sceneOf(
        R"("layers": [null, "Detail:no_strip"], "materials": {"m": {"shader": {"name": "c_envr_map", "parameters": [
            {"name": "smooth", "type": "flag", "value": 1}, {"name": "dull", "type": "flag", "value": 0},
            {"name": "note", "type": "text", "value": "by hand"}, {"name": "depth", "type": "float", "value": 0.5}]}}},
        "nodes": [{"type": "polyhedron", "layer": 1, "materials": ["m"], "vertices": [[0,0,0],[0,1,0],[1,0,0]],
                   "faces": [{"corners": [[0,0],[1,0],[2,0]]}, {"corners": [[0,0],[1,0],[2,0]]}]}])"));
    const std::string lines = "Number of Shader Params: 4\nsmooth: 1\ndull: 0\nnote: by hand\ndepth: 0.5\n";
    EXPECT_NE(build.log.str().find("2 faces\n" + lines + lines + "End export"), std::string::npos) << build.log.str();
}

}  // namespace
}  // namespace marrowfen
