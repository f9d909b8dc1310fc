#pragma once

// What can be wrong with a shape file, each kind with a code that programs and people may go by from one version to the
// next. An error is a link that leads nowhere or never ends: whoever follows it leaves a table or never comes back.

#include "ground/message.h"

namespace marrowfen::problem {

inline constexpr MessageKind kRecordName = {"RECORD_NAME", Severity::Error, "record with a name that isn't there"};
inline constexpr MessageKind kNodeCircle = {"NODE_CIRCLE", Severity::Error, "circle of parents"};
inline constexpr MessageKind kNodeParent = {"NODE_PARENT", Severity::Error, "node with a parent that isn't there"};
inline constexpr MessageKind kNodePlaceNumber = {"NODE_PLACE_NUMBER", Severity::Warning,
                                                 "default translation that isn't a finite number"};
inline constexpr MessageKind kNodeRotationUnit = {"NODE_ROTATION_UNIT", Severity::Warning,
                                                  "default rotation that isn't a unit quaternion"};
inline constexpr MessageKind kKeyRotationUnit = {"KEY_ROTATION_UNIT", Severity::Warning,
                                                 "rotation key that isn't a unit quaternion"};
inline constexpr MessageKind kGroundRotationUnit = {"GROUND_ROTATION_UNIT", Severity::Warning,
                                                    "ground rotation that isn't a unit quaternion"};
inline constexpr MessageKind kObjectMeshes = {"OBJECT_MESHES", Severity::Error, "object with meshes that aren't there"};
inline constexpr MessageKind kObjectNode = {"OBJECT_NODE", Severity::Error, "object on a node that isn't there"};
inline constexpr MessageKind kObjectWithoutNode = {"OBJECT_WITHOUT_NODE", Severity::Warning, "object without a node"};
inline constexpr MessageKind kObjectState = {"OBJECT_STATE", Severity::Warning, "object without a default state"};
inline constexpr MessageKind kDecalLinks = {"DECAL_LINKS", Severity::Error,
                                            "decal with meshes or an object that aren't there"};
inline constexpr MessageKind kMaterialLink = {"MATERIAL_LINK", Severity::Error,
                                              "material that names one that isn't there"};
inline constexpr MessageKind kIflSlot = {"IFL_SLOT", Severity::Error, "IFL material for a slot that isn't there"};
inline constexpr MessageKind kSubshapeRange = {"SUBSHAPE_RANGE", Severity::Error,
                                               "subshape of nodes, objects or decals that aren't there"};
inline constexpr MessageKind kLevelSubshape = {"LEVEL_SUBSHAPE", Severity::Error,
                                               "detail level of a subshape that isn't there"};
inline constexpr MessageKind kLevelEmpty = {"LEVEL_EMPTY", Severity::Warning, "detail level without faces"};
inline constexpr MessageKind kLevelNeverShows = {"LEVEL_NEVER_SHOWS", Severity::Warning,
                                                 "detail level that can never show"};
inline constexpr MessageKind kLevelSmallest = {"LEVEL_SMALLEST", Severity::Warning,
                                               "smallest detail level that isn't there"};
inline constexpr MessageKind kCollisionSkin = {"COLLISION_SKIN", Severity::Warning, "collision mesh of type skin"};
inline constexpr MessageKind kTooManyTriangles = {"TOO_MANY_TRIANGLES", Severity::Warning,
                                                  "more triangles than can be counted"};
inline constexpr MessageKind kBoundsEmpty = {"BOUNDS_EMPTY", Severity::Warning, "bounds that hold nothing"};
inline constexpr MessageKind kBoundsFar = {"BOUNDS_FAR", Severity::Warning, "bounds beyond 1000000"};
inline constexpr MessageKind kMeshFrames = {"MESH_FRAMES", Severity::Error, "mesh without frames"};
inline constexpr MessageKind kMeshFrameVertices = {"MESH_FRAME_VERTICES", Severity::Error,
                                                   "mesh whose frames don't have their vertices"};
inline constexpr MessageKind kMeshTextureCount = {"MESH_TEXTURE_COUNT", Severity::Error,
                                                  "mesh whose vertices don't have their texture coordinates"};
inline constexpr MessageKind kMeshRunRange = {"MESH_RUN_RANGE", Severity::Error,
                                              "drawing run of elements that aren't there"};
inline constexpr MessageKind kMeshRunMaterial = {"MESH_RUN_MATERIAL", Severity::Error,
                                                 "drawing run with a material that isn't there"};
inline constexpr MessageKind kMeshRunPart = {"MESH_RUN_PART", Severity::Warning,
                                             "triangle list with a part of a triangle"};
inline constexpr MessageKind kMeshIndexRange = {"MESH_INDEX_RANGE", Severity::Error,
                                                "vertex index that is out of range"};
inline constexpr MessageKind kMeshType = {"MESH_TYPE", Severity::Warning, "mesh of an unknown type"};
inline constexpr MessageKind kMeshParent = {"MESH_PARENT", Severity::Error, "mesh with a parent that isn't there"};
inline constexpr MessageKind kMeshNumber = {"MESH_NUMBER", Severity::Warning,
                                            "mesh with vertices or normals that aren't finite numbers"};
inline constexpr MessageKind kMeshTextureFar = {"MESH_TEXTURE_FAR", Severity::Warning,
                                                "mesh with texture coordinates beyond 1000"};
inline constexpr MessageKind kSkinUnweighted = {"SKIN_UNWEIGHTED", Severity::Warning, "skin without weights"};
inline constexpr MessageKind kSkinWeightSum = {"SKIN_WEIGHT_SUM", Severity::Warning,
                                               "skin with vertices whose weights don't add up to 1"};
inline constexpr MessageKind kSkinBone = {"SKIN_BONE", Severity::Error, "skin with a bone that isn't there"};
inline constexpr MessageKind kSkinWeightLink = {"SKIN_WEIGHT_LINK", Severity::Error,
                                                "weight of a vertex or bone that isn't there"};
inline constexpr MessageKind kSortedClusterLink = {"SORTED_CLUSTER_LINK", Severity::Error,
                                                   "cluster with primitives or a next cluster that aren't there"};
inline constexpr MessageKind kSortedCircle = {"SORTED_CIRCLE", Severity::Error, "circle of clusters"};
inline constexpr MessageKind kSortedNoCluster = {"SORTED_NO_CLUSTER", Severity::Warning,
                                                 "sorted mesh with faces and no cluster"};
inline constexpr MessageKind kSortedUnreached = {"SORTED_UNREACHED", Severity::Warning,
                                                 "sorted mesh with clusters that no walk reaches"};
inline constexpr MessageKind kSortedFrames = {"SORTED_FRAMES", Severity::Error,
                                              "sorted mesh whose frames lie outside its lists"};
inline constexpr MessageKind kSequenceName = {"SEQUENCE_NAME", Severity::Error,
                                              "sequence with a name that isn't there"};
inline constexpr MessageKind kSequenceMembers = {"SEQUENCE_MEMBERS", Severity::Error,
                                                 "sequence of nodes or objects that aren't there"};
inline constexpr MessageKind kSequenceDuration = {"SEQUENCE_DURATION", Severity::Warning,
                                                  "sequence whose duration isn't positive"};
inline constexpr MessageKind kSequenceNoKeys = {"SEQUENCE_NO_KEYS", Severity::Warning, "sequence without key frames"};
inline constexpr MessageKind kSequenceNegativeKeys = {"SEQUENCE_NEGATIVE_KEYS", Severity::Error,
                                                      "sequence with a negative number of key frames"};
inline constexpr MessageKind kSequenceKeysRange = {"SEQUENCE_KEYS_RANGE", Severity::Error,
                                                   "sequence whose keys lie outside their table"};
inline constexpr MessageKind kFileVersion = {"FILE_VERSION", Severity::Warning, "version that isn't known"};
inline constexpr MessageKind kFileSurplus = {"FILE_SURPLUS", Severity::Warning, "bytes that belong to nothing"};

// All kinds.
inline constexpr const MessageKind* kAll[] = {
    &kRecordName,        &kNodeCircle,        &kNodeParent,         &kNodePlaceNumber,
    &kNodeRotationUnit,  &kKeyRotationUnit,   &kGroundRotationUnit, &kObjectMeshes,
    &kObjectNode,        &kObjectWithoutNode, &kObjectState,        &kDecalLinks,
    &kMaterialLink,      &kIflSlot,           &kSubshapeRange,      &kLevelSubshape,
    &kLevelEmpty,        &kLevelNeverShows,   &kLevelSmallest,      &kCollisionSkin,
    &kTooManyTriangles,  &kBoundsEmpty,       &kBoundsFar,          &kMeshFrames,
    &kMeshFrameVertices, &kMeshTextureCount,  &kMeshRunRange,       &kMeshRunMaterial,
    &kMeshRunPart,       &kMeshIndexRange,    &kMeshType,           &kMeshParent,
    &kMeshNumber,        &kMeshTextureFar,    &kSkinUnweighted,     &kSkinWeightSum,
    &kSkinBone,          &kSkinWeightLink,    &kSortedClusterLink,  &kSortedCircle,
    &kSortedNoCluster,   &kSortedUnreached,   &kSortedFrames,       &kSequenceName,
    &kSequenceMembers,   &kSequenceDuration,  &kSequenceNoKeys,     &kSequenceNegativeKeys,
    &kSequenceKeysRange, &kFileVersion,       &kFileSurplus};

}  // namespace marrowfen::problem
