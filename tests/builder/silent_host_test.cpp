// A host that answers a call with nothing: null texts, arrays and handles are empty ones, and no memory is an error.
// The build links each of these calls through here.

#include <algorithm>

#include "host/tsxapi.h"
#include "tests/builder/build_scene.h"

namespace {

std::string theSilentCall;

template <class Result>
Result nothing() {
    return Result();
}

}  // namespace

#define HOST_CALL(Result, name, parameters, arguments)                               \
    extern "C" Result __real_##name parameters;                                      \
    extern "C" Result __wrap_##name parameters {                                     \
        return theSilentCall == #name ? nothing<Result>() : __real_##name arguments; \
    }

HOST_CALL(const char*, tsxGetLayerName, (short layer), (layer))
HOST_CALL(TsxNode*, tsxMNodeGetTriangulatedPolyhedron, (TsxNode * node), (node))
HOST_CALL(float*, tsxPolyhGetVxArray, (TsxNode * node), (node))
HOST_CALL(float*, tsxPolyhGetVxNormalsArray, (TsxNode * node), (node))
HOST_CALL(float*, tsxPolyhGetUVArray, (TsxNode * node), (node))
HOST_CALL(void**, tsxPolyhGetFaceptrArray, (TsxNode * node), (node))
HOST_CALL(void, tsxMaterialCreate, (TsxMaterial * *material), (material))
HOST_CALL(TsxParameterValue*, tsxShaderInfoGetParameterValue, (TsxShaderInfo * shader, int i), (shader, i))
HOST_CALL(const char*, tsxShaderInfoGetConstParameterName, (TsxShaderInfo * shader, int i), (shader, i))
HOST_CALL(void, tsxParameterValueGetData, (TsxParameterValue * value, void* data), (value, data))
HOST_CALL(void*, tsxMalloc, (unsigned int bytes), (bytes))

// Names are counted, but not given.
extern "C" int __real_tsxClipsGetClipNames(TsxScene* scene, char*** names);
extern "C" int __wrap_tsxClipsGetClipNames(TsxScene* scene, char*** names) {
    const int count = __real_tsxClipsGetClipNames(scene, names);
    if (theSilentCall == "tsxClipsGetClipNames") *names = nullptr;
    return count;
}

namespace marrowfen {
namespace {

constexpr const char* kSilentScene = R"("layers": [null, "Hull:size=8"],
    "materials": {"wood": {"texture": "oak.png", "shader": {"name": "c_envr_map", "parameters": [
        {"name": "mirror factor", "type": "float", "value": 0.5}, {"name": "file name", "type": "text", "value": "sky.bmp"}]}}},
    "nodes": [{"type": "polyhedron", "name": "skin", "layer": 1, "vertices": [[0,0,0],[0,1,0],[1,0,0]],
               "uvs": [[0.5,0.5]], "materials": ["wood"],
               "faces": [{"corners": [[0,0],[1,0],[2,0]]}, {"corners": [[2,0],[1,0],[0,0]]}]},
              {"type": "polyhedron", "name": "cap", "layer": 1, "vertices": [[0,0,0],[0,1,0],[1,0,0]],
               "faces": [{"corners": [[0,0],[1,0],[2,0]]}]}],
    "clips": [{"name": "nod", "start": 0, "end": 1}])";

TEST(SilentHost, IsAnEmptyAnswerOrAnError) {
    const struct {
        const char* call;
        const char* error;
        const char* level;
        size_t vertices, materials, sequences;
        const char* inTheWay = "";
    } cases[] = {
        {"", "", "Detail8", 6, 2, 1},
        {"tsxGetLayerName", "", "Detail-1", 6, 2, 1},
        {"tsxMNodeGetTriangulatedPolyhedron", "The host can't triangulate the polyhedron skin.", "", 0, 0, 0,
         "BAD_POLYHEDRON polyhedron skin on layer Hull:size=8"},
        {"tsxPolyhGetVxArray", "Polyhedron 0 has a face with vertex 0 of 0.", "", 0, 2, 0,
         "BAD_FACE triangle 0 of polyhedron skin on layer Hull:size=8"},
        {"tsxPolyhGetVxNormalsArray", "", "Detail8", 6, 2, 1},
        {"tsxPolyhGetUVArray", "", "Detail8", 6, 2, 1},
        {"tsxPolyhGetFaceptrArray", "", "Detail8", 0, 0, 1},
        {"tsxMaterialCreate", "", "Detail8", 6, 0, 1},
        {"tsxShaderInfoGetParameterValue", "", "Detail8", 6, 1, 1},
        {"tsxShaderInfoGetConstParameterName", "", "Detail8", 6, 1, 1},
        {"tsxParameterValueGetData", "", "Detail8", 6, 1, 1},
        {"tsxClipsGetClipNames", "", "Detail8", 6, 2, 0},
        {"tsxMalloc", "The host has no memory for the 3 vertices of the polyhedron skin.", "", 0, 0, 0,
         "BAD_POLYHEDRON polyhedron skin on layer Hull:size=8"},
    };
    const standin::Scene scene = sceneOf(kSilentScene);
    for (const auto& [call, error, level, vertices, materials, sequences, inTheWay] : cases) {
        theSilentCall = call;
        const Build build(scene, ExportMode::ShapeWithAnimation);
        const Shape& shape = *build.shape;
        EXPECT_EQ(shape.error(), error) << call;
        EXPECT_EQ(build.inTheWay, inTheWay) << call;
        EXPECT_EQ(std::count(shape.names.begin(), shape.names.end(), level), *level != '\0' ? 1 : 0) << call;
        EXPECT_EQ(shape.meshes.front().vertexes.size(), vertices) << call;
        EXPECT_EQ(shape.materials.size(), materials) << call;
        EXPECT_EQ(shape.sequences.size(), sequences) << call;
    }
    theSilentCall.clear();
}

// The scan has counted the corners, and the host hands none of them over.
TEST(SilentHost, BoundsWithoutTheirVerticesAreRefused) {
    theSilentCall = "tsxPolyhGetVxArray";
    const Build build(sceneOf(R"("layers": [null, "Hull", "bounds"], "nodes": [
        {"type": "polyhedron", "layer": 1, "vertices": []}, {"type": "polyhedron", "name": "box", "layer": 2,
         "vertices": [[0,0,0],[1,0,0],[0,1,0],[1,1,0],[0,0,1],[1,0,1],[0,1,1],[1,1,1]]}])"));
    theSilentCall.clear();
    EXPECT_EQ(build.inTheWay, "BOUNDS_SHAPE polyhedron box has no vertices");
}

}  // namespace
}  // namespace marrowfen
