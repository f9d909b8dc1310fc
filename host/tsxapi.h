#pragma once

// The host's extension API: everything that the plug-in knows of the open scene passes through these functions, on the
// host's user-interface thread. On Windows they are imported from tsxapi.dll; elsewhere the stand-in host answers them.
//
// Handles are opaque and, where nothing else is said, borrowed: they belong to the host and stay valid while the
// plug-in runs. Layer indices and version numbers are signed 16-bit. Text is zero-terminated bytes. Positions are in
// scene space, right-handed with Z up; angles are radians. A transform is 12 floats in three rows of four, the fourth
// value of each row being the translation component of that row.

#include <cstddef>

#if defined(_WIN32) && defined(MARROWFEN_IS_TSXAPI)
#define TSXAPI extern "C" __declspec(dllexport)
#elif defined(_WIN32)
#define TSXAPI extern "C" __declspec(dllimport)
#else
#define TSXAPI extern "C"
#endif

struct TsxNode;  // any scene node; a polyhedron node is its polyhedron too
struct TsxScene;
struct TsxMaterial;
struct TsxShaderInfo;
struct TsxParameterValue;
struct TsxMuscle;
struct TsxTendon;

// Type codes of tsxSobjGetType that the plug-in knows.
enum TsxNodeType : int {
    TsxJoint = 103,
    TsxBone = 107,
    TsxPolyhedron = 201,
    TsxGroup = 202,
    TsxIkGroup = 206,
    TsxSkeleton = 210,
};

// Type codes of tsxParameterValueGetType that the plug-in knows.
enum TsxParameterType : int {
    TsxFlagParameter = 1,   // tsxParameterValueGetData stores one byte
    TsxFloatParameter = 7,  // a 32-bit float
    TsxTextParameter = 9,   // a pointer to the host's text
};

// Records that the host hands out by address are read by their byte offsets, since the host's own declarations aren't
// ours. The offsets are the same whatever the size of a pointer.
//
// A face record:
inline constexpr size_t TsxFaceCornerCount = 0;  // signed 16-bit
inline constexpr size_t TsxFaceCorners = 4;      // pointer to the corner records, one behind the other
inline constexpr size_t TsxFaceMaterial = 20;    // material number within the polyhedron, signed 16-bit
// A corner record:
inline constexpr size_t TsxCornerVertex = 0;  // vertex index, 32-bit
inline constexpr size_t TsxCornerUv = 4;      // texture-coordinate index, 32-bit
inline constexpr size_t TsxCornerSize = 20;   // the whole record

// Plug-in and host.
TSXAPI void tsxGetTsVersionNbrs(short* major, short* minor);
TSXAPI void* tsxGetMainViewHwnd();             // an HWND
TSXAPI const char* tsxGetTSDir(int argument);  // 0: the host's installation folder, without a backslash at its end

// Layers. A layer lives in a slot; layer 0 never holds anything.
TSXAPI short tsxGetNumberOfLayers();              // slots
TSXAPI int tsxIsLayerValid(short layer);          // 1: the slot holds a layer
TSXAPI const char* tsxGetLayerName(short layer);  // copy at once
TSXAPI int tsxAddNewLayerEx();                    // 0: failure; the new layer is at the former number of slots
TSXAPI void tsxSetLayerName(short layer, const char* name);
TSXAPI void tsxMoveObjectToLayerEx(short layer, TsxNode* node);

// Scene and nodes. A null handle ends a walk.
TSXAPI TsxScene* tsxGetScene();
TSXAPI TsxNode* tsxSceneGetFirstNode();
TSXAPI TsxNode* tsxGNodeGetNext(TsxNode* node);
TSXAPI TsxNode* tsxGNodeGetFirstChild(TsxNode* node);
TSXAPI int tsxSobjGetType(TsxNode* node);
TSXAPI void tsxGNodeGetName(TsxNode* node, char* buffer, int size);  // cut to size - 1 bytes and terminated
TSXAPI short tsxGetObjectLayerIndex(TsxNode* node);                  // 0 or less: on no layer
TSXAPI void tsxGNodeGetLocation(TsxNode* node, float* xyz);
TSXAPI void tsxGNodeGetRotation(TsxNode* node, float* angles);  // about x, y, z
TSXAPI void tsxGNodeGetAxesPosition(TsxNode* node, float* xyz);
TSXAPI void tsxGNodeGetPureTransform(TsxNode* node, float* transform);   // scene-from-node
TSXAPI TsxNode* tsxCreateCube(int argument, float x, float y, float z);  // the caller's until added to the scene
TSXAPI void tsxGNodeSetLocation(TsxNode* node, const float* xyz);
TSXAPI void tsxGNodeSetName(TsxNode* node, const char* name);
TSXAPI void tsxSceneAddObject(TsxNode* node, int argument);
TSXAPI void tsxSobjDelete(TsxNode* node);  // only for nodes that the caller owns

// Polyhedra. Arrays belong to the polyhedron.
TSXAPI TsxNode* tsxMNodeGetTriangulatedPolyhedron(TsxNode* node);  // a copy, the caller's: tsxSobjDelete
TSXAPI int tsxPolyhGetNbrVxs(TsxNode* polyhedron);
TSXAPI float* tsxPolyhGetVxArray(TsxNode* polyhedron);                 // 3 floats a vertex
TSXAPI float* tsxPolyhGetVxNormalsArray(TsxNode* polyhedron);          // 3 floats a vertex, pointing inward
TSXAPI void tsxPolyhGetVxTxmx(TsxNode* polyhedron, float* transform);  // scene-from-vertices
TSXAPI int tsxPolyhGetNbrUV(TsxNode* polyhedron);
TSXAPI float* tsxPolyhGetUVArray(TsxNode* polyhedron);  // 2 floats an entry, v upward
TSXAPI int tsxPolyhGetNbrFaces(TsxNode* polyhedron);
TSXAPI void** tsxPolyhGetFaceptrArray(TsxNode* polyhedron);  // face records
TSXAPI void tsxPolyhInitializeMaterials(TsxNode* polyhedron);
TSXAPI void tsxPolyhPaint(TsxNode* polyhedron, TsxMaterial* material);
TSXAPI void tsxPolyhPaintFace(TsxNode* polyhedron, int face, TsxMaterial* material, int argument);

// Materials and shaders. A scratch material is the caller's between tsxMaterialCreate and tsxMaterialDestroy; what is
// read through it stays valid until it changes.
TSXAPI int tsxPolyhGetMaterial(TsxNode* polyhedron, short number, TsxMaterial* into);  // 1: copied
TSXAPI void tsxMaterialCreate(TsxMaterial** material);
TSXAPI void tsxMaterialDestroy(TsxMaterial* material);
TSXAPI void tsxMaterialGetColor(TsxMaterial* material, unsigned char* rgba);  // 4 bytes; the fourth is the opacity
TSXAPI void tsxMaterialSetColor(TsxMaterial* material, const unsigned char* rgba);
TSXAPI void tsxMaterialGetTextureFilename(TsxMaterial* material, char* buffer, int size);  // empty: no texture
TSXAPI void tsxMaterialGetReflectionProps(TsxMaterial* material, float* first, float* second, float* third,
                                          float* fourth);
TSXAPI int tsxMaterialIsShaderBoxNull(TsxMaterial* material);   // 0: there is a shader box
TSXAPI int tsxMaterialIsShaderBoxValid(TsxMaterial* material);  // 1: the box is valid
TSXAPI TsxShaderInfo* tsxMaterialGetShaderInfo(TsxMaterial* material, int slot);
TSXAPI int tsxShaderInfoGetShaderName(TsxShaderInfo* shader, char* buffer);  // 32 bytes; 1: success
TSXAPI int tsxShaderInfoGetParametersNumber(TsxShaderInfo* shader);
TSXAPI TsxParameterValue* tsxShaderInfoGetParameterValue(TsxShaderInfo* shader, int index);
TSXAPI const char* tsxShaderInfoGetConstParameterName(TsxShaderInfo* shader, int index);
TSXAPI int tsxParameterValueGetType(TsxParameterValue* value);
TSXAPI void tsxParameterValueGetData(TsxParameterValue* value, void* data);

// Bones, muscles, tendons. The vertex calls give the number of the polyhedron's vertices that the muscle or tendon
// holds, and with an array also fill in their indices.
TSXAPI TsxNode* tsxBoneGetFirstJoint(TsxNode* bone);
TSXAPI TsxNode* tsxBoneGetNextJoint(TsxNode* bone, TsxNode* joint);
TSXAPI TsxMuscle* tsxBoneGetMuscle(TsxNode* bone, TsxNode* joint);
TSXAPI int tsxMuscleGetVertices(TsxMuscle* muscle, TsxNode* polyhedron, int* vertices);
TSXAPI TsxTendon* tsxJointGetTendon(TsxNode* joint);
TSXAPI int tsxTendonGetVertices(TsxTendon* tendon, TsxNode* polyhedron, int* vertices);

// Animation and clips. Times are frames. The clip calls find a clip by the text before the first ':' of its name.
TSXAPI int tsxAnimGetPlayMode();
TSXAPI void tsxAnimSetPlayMode(int mode);
TSXAPI float tsxAnimGetActiveTime();
TSXAPI void tsxAnimSetActiveTimeScene(float frame);               // nodes take their poses at once
TSXAPI float tsxAnimGetBaseFramerate();                           // frames per second
TSXAPI int tsxClipsGetClipNames(TsxScene* scene, char*** names);  // the number of clips; the array is the host's
TSXAPI float tsxClipsGetClipStartEnd(TsxScene* scene, const char* clip, float* start, float* end, int* toggle,
                                     int* loop);  // the length
TSXAPI int tsxClipsClipIsEnabled(TsxScene* scene, const char* clip);
TSXAPI void tsxClipsEnableClip(TsxScene* scene, const char* clip);
TSXAPI void tsxClipsDisableClip(TsxScene* scene, const char* clip);
TSXAPI void tsxClipsDisableAllClips(TsxScene* scene);

// Memory and matrices.
TSXAPI void* tsxMalloc(unsigned int bytes);  // tsxFree
TSXAPI void tsxFree(void* block);
TSXAPI void tsxTransformVecs3f(int count, float* to, const float* from, const float* transform);  // 3 floats a point
TSXAPI void tsxInvertMx3f(float* inverse, const float* transform);
// The product second · first for column vectors, so that (node, inverse of parent, node) gives parent-from-node. The
// product may be one of its own factors.
TSXAPI void tsxXProdMx3f(float* product, const float* second, const float* first);
