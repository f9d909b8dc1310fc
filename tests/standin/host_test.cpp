#include "standin/host/host.h"

#include <cmath>
#include <cstring>

#include "host/tsxapi.h"
#include "tests/standin/scene_of.h"

namespace marrowfen::standin {
namespace {

template <class T>
T at(const void* record, size_t offset) {
    T value;
    std::memcpy(&value, static_cast<const char*>(record) + offset, sizeof value);
    return value;
}

struct FaceRecord {
    std::vector<Corner> corners;
    int material;

    bool operator==(const FaceRecord&) const = default;
};

// The faces as a plug-in reads them.
std::vector<FaceRecord> facesOf(TsxNode* polyhedron) {
    std::vector<FaceRecord> faces;
    for (int i = 0; i < tsxPolyhGetNbrFaces(polyhedron); ++i) {
        const void* record = tsxPolyhGetFaceptrArray(polyhedron)[i];
        FaceRecord& face = faces.emplace_back(FaceRecord{{}, at<int16_t>(record, TsxFaceMaterial)});
        const char* corners = at<const char*>(record, TsxFaceCorners);
        for (int k = 0; k < at<int16_t>(record, TsxFaceCornerCount); ++k, corners += TsxCornerSize) {
            face.corners.push_back({at<int32_t>(corners, TsxCornerVertex), at<int32_t>(corners, TsxCornerUv)});
        }
    }
    return faces;
}

Vec3 normalOf(TsxNode* polyhedron, int vertex) {
    const float* normal = tsxPolyhGetVxNormalsArray(polyhedron) + 3 * vertex;
    return {normal[0], normal[1], normal[2]};
}

Transform transformOf(TsxNode* node) {
    Transform transform;
    tsxGNodeGetPureTransform(node, transform.data());
    return transform;
}

Vec3 locationOf(TsxNode* node) {
    Vec3 location;
    tsxGNodeGetLocation(node, location.data());
    return location;
}

std::string nameOf(TsxNode* node) {
    char name[128];
    tsxGNodeGetName(node, name, sizeof name);
    return name;
}

// A quad of four vertices and a triangle over the same edge; the second material can't be given.
const char kQuadAndTriangle[] = R"({"type": "polyhedron", "name": "p", "layer": 1, "location": [5, 0, 0],
    "vertices": [[0,0,0],[0,2,0],[2,2,0],[2,0,0],[0,0,3]], "uvs": [[0,0],[1,0.5]], "materials": ["wood", null],
    "faces": [{"corners": [[0,0],[1,0],[2,1],[3,1]]}, {"corners": [[0,0],[4,0],[1,1]], "material": 1}]})";
const char kWood[] = R"(, "materials": {"wood": {"color": [1,2,3,4], "texture": "wood.bmp", "reflection": [1,2,3,4]}})";

TEST(HostMatrix, WithoutAnInverseGivesTheIdentity) {
    const Transform identity{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0};
    for (const Transform& bad : {Transform{}, Transform{1, 2, 3, 0, 2, 4, 6, 0, 0, 0, 1, 0},
                                 Transform{1e30F, 0, 0, 0, 0, 1e30F, 0, 0, 0, 0, 1, 0},
                                 Transform{1e-16F, 0, 0, 1, 0, 1e-16F, 0, 1, 0, 0, 1e-16F, 1},
                                 Transform{NAN, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0}}) {
        Transform inverse;
        tsxInvertMx3f(inverse.data(), bad.data());
        EXPECT_EQ(inverse, identity);
    }
}

TEST(HostPolyhedron, IsHandedOutInRecordsAndCopiedAsFans) {
    Host host(sceneOfNodes(kQuadAndTriangle, kWood));
    TsxNode* polyhedron = tsxSceneGetFirstNode();
    EXPECT_EQ(tsxPolyhGetUVArray(polyhedron)[3], 0.5F);
    EXPECT_EQ(facesOf(polyhedron),
              (std::vector<FaceRecord>{{{{0, 0}, {1, 0}, {2, 1}, {3, 1}}, 0}, {{{0, 0}, {4, 0}, {1, 1}}, 1}}));
    TsxNode* copy = tsxMNodeGetTriangulatedPolyhedron(polyhedron);
    EXPECT_EQ(facesOf(copy),
              (std::vector<FaceRecord>{
                  {{{0, 0}, {1, 0}, {2, 1}}, 0}, {{{0, 0}, {2, 1}, {3, 1}}, 0}, {{{0, 0}, {4, 0}, {1, 1}}, 1}}));
    EXPECT_EQ(std::pair(nameOf(copy), transformOf(copy)[3]), std::pair(std::string("p"), 5.0F));
    EXPECT_EQ(host.liveHandles(), 1);
    tsxPolyhGetVxArray(copy)[0] = 99;
    EXPECT_EQ(tsxPolyhGetVxArray(polyhedron)[0], 0);
    tsxSobjDelete(copy);
    EXPECT_EQ(host.liveHandles(), 0);
}

TEST(HostPolyhedron, NormalsAreSummedOverTheFacesAsWritten) {
    // The quad's crossing has length 4 along -z, the triangle's length 6 along -x.
    Host host(sceneOfNodes(kQuadAndTriangle, kWood));
    TsxNode* copy = tsxMNodeGetTriangulatedPolyhedron(tsxSceneGetFirstNode());
    const float length = std::sqrt(52.0F);
    EXPECT_EQ(normalOf(copy, 0), (Vec3{-6 / length, 0, -4 / length}));
    EXPECT_EQ(normalOf(copy, 2), (Vec3{0, 0, -1}));
    EXPECT_EQ(normalOf(copy, 4), (Vec3{-1, 0, 0}));
    tsxSobjDelete(copy);

    const std::tuple<std::string, std::string, Vec3> cases[] = {
        // vertices, further keys, normal of the first
        {"[0,0,0],[1e-30,0,0],[0,1e-30,0],[9,9,9]", "", {0, 0, 1}},  // no square vanishes
        {"[0,0,0],[1e30,0,0],[0,1e30,0]", "", {0, 0, 1}},            // or overflows
        {"[0,0,0],[1,0,0],[2,0,0]", "", {0, 0, 0}},
        {"[0,0,0],[1,0,0],[0,1,0]", R"(, "normals": [[5,6,7],[0,0,0],[0,0,0]])", {5, 6, 7}},
    };
    for (const auto& [vertices, more, expected] : cases) {
        const Host other(sceneOfNodes(R"({"type": "polyhedron", "vertices": [)" + vertices +
                                      R"(], "faces": [{"corners": [[0,0],[1,0],[2,0]]}])" + more + "}"));
        EXPECT_EQ(normalOf(tsxSceneGetFirstNode(), 0), expected) << vertices;
    }
}

TEST(HostScene, AnswersWhatNoExportShows) {
    const Host host(
        sceneOfNodes(R"({"type": "polyhedron", "name": "axed", "vertices": [], "axes": [1,2,3], "materials": ["m"]},
        {"type": "group", "location": [4,5,6]})",
                     R"(, "materials": {"m": {"reflection": [1,2,3,4]}})"));
    TsxNode* axed = tsxSceneGetFirstNode();
    Vec3 axes, location;
    tsxGNodeGetAxesPosition(axed, axes.data());
    tsxGNodeGetAxesPosition(tsxGNodeGetNext(axed), location.data());
    EXPECT_EQ(std::pair(axes, location), std::pair(Vec3{1, 2, 3}, Vec3{4, 5, 6}));
    char name[4];
    tsxGNodeGetName(axed, name, sizeof name);
    EXPECT_STREQ(name, "axe");
    TsxMaterial* material = nullptr;
    tsxMaterialCreate(&material);
    tsxPolyhGetMaterial(axed, 0, material);
    std::array<float, 4> r{};
    tsxMaterialGetReflectionProps(material, &r[0], &r[1], &r[2], &r[3]);
    EXPECT_EQ(r, (std::array<float, 4>{1, 2, 3, 4}));
    tsxMaterialDestroy(material);
}

// What was read through a scratch material is no longer valid when that has become another one.
TEST(HostMaterial, IsReadThroughAScratchMaterial) {
    Host host(sceneOfNodes(kQuadAndTriangle, R"(, "materials": {"wood": {"shader": {"name": "long",
        "parameters": [{"name": "on", "type": "flag", "value": 1}, {"name": "u", "type": 4, "value": null}]}}})"));
    TsxNode* polyhedron = tsxSceneGetFirstNode();
    TsxMaterial* material = nullptr;
    tsxMaterialCreate(&material);
    for (const short number : {-1, 1, 2}) EXPECT_EQ(tsxPolyhGetMaterial(polyhedron, number, material), 0) << number;
    ASSERT_EQ(tsxPolyhGetMaterial(polyhedron, 0, material), 1);
    EXPECT_EQ(tsxMaterialGetShaderInfo(material, 2), nullptr);
    TsxShaderInfo* shader = tsxMaterialGetShaderInfo(material, 3);
    TsxParameterValue* value = tsxShaderInfoGetParameterValue(shader, 0);
    unsigned char flag = 9;
    tsxParameterValueGetData(tsxShaderInfoGetParameterValue(shader, 1), &flag);
    EXPECT_EQ(flag, 9) << "of an unknown type";
    tsxParameterValueGetData(value, &flag);
    EXPECT_EQ(flag, 1);

    const unsigned char red[4] = {255, 0, 0, 255};
    tsxMaterialSetColor(material, red);
    EXPECT_EQ(tsxShaderInfoGetParametersNumber(shader) + tsxParameterValueGetType(value), 0);
    EXPECT_EQ(host.faults().size(), 2U);
    tsxMaterialDestroy(material);
    EXPECT_EQ(host.liveHandles(), 0);
}

const char kAnimated[] = R"("host": {"activeTime": 2}, "layers": [], "nodes": [{"type": "bone", "name": "arm",
    "location": [9, 0, 0]}, {"type": "polyhedron", "name": "eye", "vertices": []}],
  "clips": [
    {"name": "a:fps=5", "start": 1, "end": 5, "keys": {"arm": [{"frame": 2, "location": [1, 0, 0]},
      {"frame": 4, "location": [2, 0, 0], "transform": [3,0,0,8, 0,1,0,0, 0,0,1,0]}]}},
    {"name": "b", "start": 0, "end": 9, "length": 4, "toggle": 1, "loop": 3, "enabled": false,
      "keys": {"arm": [{"frame": 0, "rotation": [0.5, 0, 0]}], "eye": []}},
    {"name": "a", "start": 100, "end": 0, "enabled": false}])";

TEST(HostAnimation, ClipsPoseTheNodesAtTheActiveTime) {
    Host host(sceneOf(kAnimated));
    TsxScene* scene = tsxGetScene();
    TsxNode* arm = tsxSceneGetFirstNode();
    TsxNode* eye = tsxGNodeGetNext(arm);
    const struct {
        float frame, x, scale, shift;
    } frames[] = {{0, 1, 1, 1}, {4, 2, 3, 8}, {100, 2, 3, 8}, {3, 1.5F, 2, 4.5F}, {2.5F, 1.25F, 1.5F, 2.75F}};
    for (const auto& [frame, x, scale, shift] : frames) {
        tsxAnimSetActiveTimeScene(frame);
        EXPECT_EQ(tsxAnimGetActiveTime(), frame);
        EXPECT_EQ(locationOf(arm), (Vec3{x, 0, 0})) << frame;
        EXPECT_EQ(transformOf(arm)[0], scale) << frame;
        EXPECT_EQ(transformOf(arm)[3], shift) << frame;
    }

    // The later enabled clip wins; its keys default to the node's own pose, not to the other clip's.
    tsxClipsEnableClip(scene, "b");
    Vec3 rotation;
    tsxGNodeGetRotation(arm, rotation.data());
    EXPECT_EQ(rotation, (Vec3{0.5F, 0, 0}));
    EXPECT_EQ(locationOf(arm), (Vec3{9, 0, 0}));
    EXPECT_EQ(locationOf(eye), (Vec3{0, 0, 0}));
    tsxClipsDisableClip(scene, "b");
    EXPECT_EQ(locationOf(arm), (Vec3{1.25F, 0, 0}));
    tsxClipsDisableAllClips(scene);
    EXPECT_EQ(locationOf(arm), (Vec3{9, 0, 0}));
    tsxAnimSetActiveTimeScene(NAN);
    tsxClipsEnableClip(scene, "a");
    EXPECT_EQ(locationOf(arm), (Vec3{2, 0, 0}));
    EXPECT_EQ(host.faults(), std::vector<std::string>());
}

TEST(HostAnimation, CallsAreRecordedAndTheStateIsInTheScene) {
    const Scene before = sceneOf(kAnimated);
    Host host(before);
    tsxAnimSetPlayMode(7);
    host.recordCalls();
    tsxAnimSetPlayMode(tsxAnimGetPlayMode());
    tsxAnimSetActiveTimeScene(2.5F);
    transformOf(tsxSceneGetFirstNode());
    tsxClipsDisableAllClips(tsxGetScene());
    tsxClipsEnableClip(tsxGetScene(), "b");
    EXPECT_EQ(host.calls(), (std::vector<std::string>{"tsxAnimSetPlayMode 7", "tsxAnimSetActiveTimeScene 2.5",
                                                      "tsxGNodeGetPureTransform arm", "tsxClipsDisableAllClips",
                                                      "tsxClipsEnableClip b"}));
    Scene expected = before;
    expected.host.playMode = 7;
    expected.host.activeTime = 2.5F;
    expected.clips[0].enabled = false;
    expected.clips[1].enabled = true;
    EXPECT_EQ(host.scene(), expected);
}

// What a plug-in makes of it, tests/plugin shows.
TEST(HostCube, BecomesANodeOfTheScene) {
    const Scene before = sceneOfNodes(kQuadAndTriangle, R"(, "materials": {"wood": {}, "color-0000ffff": {}})");
    Host host(before);
    host.refuseNewLayers();
    for (const int made : {0, 1}) {
        EXPECT_EQ(tsxAddNewLayerEx(), made);
        EXPECT_EQ(tsxGetNumberOfLayers(), 2 + made);
    }
    tsxSetLayerName(2, "nodes");
    TsxMaterial* paint = nullptr;
    tsxMaterialCreate(&paint);
    const unsigned char blue[4] = {0, 0, 255, 255};
    tsxMaterialSetColor(paint, blue);
    const float location[3] = {1, 1, 1};
    for (const char* name : {"mount0", "mount1"}) {
        TsxNode* made = tsxCreateCube(1, 0.125F, 0.125F, 0.125F);
        tsxPolyhInitializeMaterials(made);
        tsxPolyhPaintFace(made, 4, paint, 0);
        tsxGNodeSetLocation(made, location);
        tsxGNodeSetName(made, name);
        tsxMoveObjectToLayerEx(2, made);
        tsxSceneAddObject(made, 0);
    }
    tsxMaterialDestroy(paint);
    EXPECT_EQ(host.liveHandles(), 0);
    EXPECT_EQ(host.faults(), std::vector<std::string>());

    // Every face is clockwise from outside: the computed normals point inward at all eight corners.
    TsxNode* cube = tsxGNodeGetNext(tsxSceneGetFirstNode());
    EXPECT_EQ(std::tuple(nameOf(cube), locationOf(cube), tsxGetObjectLayerIndex(cube)),
              std::tuple("mount0", Vec3{1, 1, 1}, 2));
    for (int i = 0; i < 8; ++i) {
        const float* vertex = tsxPolyhGetVxArray(cube) + 3 * i;
        for (size_t axis = 0; axis < 3; ++axis) {
            EXPECT_EQ(std::abs(vertex[axis]), 0.0625F);
            EXPECT_NEAR(normalOf(cube, i)[axis] * vertex[axis], -0.0625F / std::sqrt(3.0F), 1e-6F);
        }
    }

    // In the scene only the new layers, nodes and materials are new; equal materials are shared.
    Scene after = host.scene();
    ASSERT_EQ(after.nodes.size(), 3U);
    EXPECT_EQ(after.nodes[1].polyhedron.materials, after.nodes[2].polyhedron.materials);
    EXPECT_EQ(after.nodes[1].polyhedron.materials[1], "color-0000ffff-2");
    EXPECT_EQ(after.nodes[1].polyhedron.faces[4].material, 1);
    EXPECT_EQ(*parseScene(sceneText(after), "after").scene, after);
    ASSERT_EQ(after.materials.size(), 3U);
    after.materials.resize(2);
    after.nodes.resize(1);
    after.layers.resize(2);
    EXPECT_EQ(after, before);
}

// Each misuse is answered harmlessly and leaves one fault.
TEST(HostOwnership, LeaksAndMisuseAreFound) {
    Host host(sceneOfNodes(kQuadAndTriangle, kWood));
    TsxNode* node = tsxSceneGetFirstNode();
    TsxNode* copy = tsxMNodeGetTriangulatedPolyhedron(node);
    TsxNode* cube = tsxCreateCube(2, 1, 1, 1);
    TsxMaterial* material = nullptr;
    tsxMaterialCreate(&material);
    void* block = tsxMalloc(0);
    EXPECT_EQ(host.liveHandles(), 4);

    tsxSceneAddObject(copy, -1);
    tsxSobjDelete(node);
    tsxPolyhPaint(node, material);
    tsxSobjDelete(copy);
    tsxSobjDelete(copy);
    EXPECT_EQ(tsxPolyhGetNbrVxs(copy), 0);
    tsxSobjDelete(cube);
    tsxSceneAddObject(cube, 0);
    tsxMaterialDestroy(material);
    tsxMaterialDestroy(material);
    tsxFree(block);
    tsxFree(block);
    EXPECT_EQ(tsxGNodeGetNext(nullptr), nullptr);
    EXPECT_EQ(tsxSobjGetType(reinterpret_cast<TsxNode*>(&host)), 0);
    EXPECT_EQ(tsxSobjGetType(reinterpret_cast<TsxNode*>(tsxGetScene())), 0);
    EXPECT_EQ(tsxBoneGetFirstJoint(node), nullptr);
    EXPECT_STREQ(tsxGetLayerName(0), "");
    EXPECT_EQ(tsxClipsClipIsEnabled(tsxGetScene(), "walk:fps=5"), 0);

    EXPECT_EQ(host.liveHandles(), 0);
    const std::vector<std::string> expected = {
        "tsxCreateCube: 2 instead of 1",
        "tsxSceneAddObject: -1 instead of 0",
        "tsxSceneAddObject: node \"p\" isn't the caller's to add",
        "tsxSobjDelete: node \"p\" belongs to the scene",
        "tsxPolyhPaint: polyhedron \"p\" isn't one that tsxCreateCube made",
        "tsxSobjDelete: node handle that is no longer valid",
        "tsxPolyhGetNbrVxs: node handle that is no longer valid",
        "tsxSceneAddObject: node handle that is no longer valid",
        "tsxMaterialDestroy: material handle that is no longer valid",
        "tsxFree: not a block that is in use",
        "tsxGNodeGetNext: null instead of a node handle",
        "tsxSobjGetType: not a handle of this host",
        "tsxSobjGetType: scene handle instead of a node handle",
        "tsxBoneGetFirstJoint: node \"p\" is of type 201 instead of 107",
        "tsxGetLayerName: slot 0 holds no layer",
        "tsxClipsClipIsEnabled: no clip is called \"walk:fps=5\"",
    };
    EXPECT_EQ(host.faults(), expected);
}

}  // namespace
}  // namespace marrowfen::standin
