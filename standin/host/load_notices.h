#pragma once

// What there is to tell about a scene file or a model beside the scene that it becomes: kinds of messages whose text is
// a whole line. All are about something that was dropped or guessed.

#include "ground/message.h"

namespace marrowfen::standin {

namespace load {

inline constexpr MessageKind kFarPlace = {"FAR_PLACE", Severity::Warning, "places too far away for 32-bit floats"};
inline constexpr MessageKind kReaderLoss = {"READER_LOSS", Severity::Warning, "what is left out of files of this kind"};
inline constexpr MessageKind kStickFigure = {"STICK_FIGURE", Severity::Warning, "a skeleton that is drawn"};
inline constexpr MessageKind kNoMeshes = {"NO_MESHES_IN_MODEL", Severity::Warning, "a file for sequences alone"};
inline constexpr MessageKind kFlatTriangle = {"FLAT_TRIANGLE", Severity::Warning, "triangles that are dropped"};
inline constexpr MessageKind kLineOrPoint = {"LINE_OR_POINT", Severity::Warning, "lines and points"};
inline constexpr MessageKind kMeshTurned = {"MESH_TURNED", Severity::Warning, "meshes whose sides were guessed"};
inline constexpr MessageKind kBackFaces = {"BACK_FACES", Severity::Warning, "faces that show from both sides"};
inline constexpr MessageKind kMorph = {"MORPH", Severity::Warning, "animations of vertices"};
inline constexpr MessageKind kVertexColor = {"VERTEX_COLOR", Severity::Warning, "vertex colours"};
inline constexpr MessageKind kMoreUvs = {"MORE_UVS", Severity::Warning, "further texture coordinates"};
inline constexpr MessageKind kFewerTriangles = {"FEWER_TRIANGLES", Severity::Warning, "meshes that were simplified"};
inline constexpr MessageKind kSeveralWeights = {"SEVERAL_WEIGHTS", Severity::Warning, "vertices on several bones"};
inline constexpr MessageKind kBoneLost = {"BONE_LOST", Severity::Warning, "bones that hold nothing"};
inline constexpr MessageKind kBindConflict = {"BIND_CONFLICT", Severity::Warning, "bones bound in several poses"};
inline constexpr MessageKind kRestPose = {"REST_POSE", Severity::Warning, "a rest pose that isn't the bind pose"};
inline constexpr MessageKind kBoneScale = {"BONE_SCALE", Severity::Warning, "bones that change their size"};
inline constexpr MessageKind kStillCollision = {"STILL_COLLISION", Severity::Warning, "collision that should move"};
inline constexpr MessageKind kOtherNodes = {"OTHER_NODES", Severity::Warning, "nodes of only one of model and shape"};
inline constexpr MessageKind kAnimationSkipped = {"ANIMATION_SKIPPED", Severity::Warning, "animations left out"};
inline constexpr MessageKind kMaterialTint = {"MATERIAL_TINT", Severity::Warning, "colours over textures"};
inline constexpr MessageKind kMaterialGlow = {"MATERIAL_GLOW", Severity::Warning, "materials that glow in parts"};
inline constexpr MessageKind kMaterialMask = {"MATERIAL_MASK", Severity::Warning, "materials with holes"};
inline constexpr MessageKind kColorOnly = {"COLOR_ONLY", Severity::Warning, "materials without a texture"};
inline constexpr MessageKind kMissingFile = {"MISSING_FILE", Severity::Warning, "files that aren't beside the model"};
inline constexpr MessageKind kBadImage = {"BAD_IMAGE", Severity::Warning, "images that can't be had"};
inline constexpr MessageKind kExtension = {"EXTENSION", Severity::Warning, "extensions that are ignored"};
inline constexpr MessageKind kMoreScenes = {"MORE_SCENES", Severity::Warning, "further scenes of the file"};
inline constexpr MessageKind kLevelsFound = {"LEVELS_FOUND", Severity::Warning, "levels of detail by name"};
inline constexpr MessageKind kLevelSize = {"LEVEL_SIZE", Severity::Warning, "levels whose size was guessed"};
inline constexpr MessageKind kPatternUnused = {"PATTERN_UNUSED", Severity::Warning, "options that match nothing"};

// All, which are found by their codes where they come from another process.
inline constexpr const MessageKind* kKinds[] = {
    &kFarPlace,       &kReaderLoss,       &kStickFigure,  &kNoMeshes,     &kFlatTriangle, &kLineOrPoint,
    &kMeshTurned,     &kBackFaces,        &kMorph,        &kVertexColor,  &kMoreUvs,      &kFewerTriangles,
    &kSeveralWeights, &kBoneLost,         &kBindConflict, &kRestPose,     &kBoneScale,    &kStillCollision,
    &kOtherNodes,     &kAnimationSkipped, &kMaterialTint, &kMaterialGlow, &kMaterialMask, &kColorOnly,
    &kMissingFile,    &kBadImage,         &kExtension,    &kMoreScenes,   &kLevelsFound,  &kLevelSize,
    &kPatternUnused};

}  // namespace load

// A line about the whole scene.
inline Message aboutScene(const MessageKind& kind, std::string text) {
    return {&kind, Message::Place::Scene, {}, std::move(text)};
}

}  // namespace marrowfen::standin
