#pragma once

// Why an export is refused, beside the error text: a kind with the way out as its headline, told with what is in the
// way as its text. Every error that stops a build because of what is in a scene has one.

#include "ground/message.h"

namespace marrowfen {

inline constexpr MessageKind kBoundsObjects = {"BOUNDS_OBJECTS", Severity::Error,
                                               "leave one cube there and move the others to another layer"};
inline constexpr MessageKind kBoundsLayers = {"BOUNDS_LAYERS", Severity::Error,
                                              "leave one cube on one of them and empty the other"};
inline constexpr MessageKind kBoundsShape = {"BOUNDS_SHAPE", Severity::Error,
                                             "put a plain cube with its eight vertices in its place"};
inline constexpr MessageKind kNoMeshes = {
    "NO_MESHES", Severity::Error,
    "put what is to be seen on a layer other than 0 whose name doesn't begin with collision, loscollision, bounds or "
    "nodes"};
inline constexpr MessageKind kAutoLodFirst = {
    "AUTOLOD_FIRST", Severity::Error,
    "give the layer that holds the polyhedra the largest size=, or take autolod= from this one"};
inline constexpr MessageKind kCollisionLayers = {"COLLISION_LAYERS", Severity::Error,
                                                 "join some of them, or tag the last one box or cylinder"};
inline constexpr MessageKind kBadPolyhedron = {"BAD_POLYHEDRON", Severity::Error,
                                               "make it anew, or move it to a layer that isn't exported"};
inline constexpr MessageKind kBadFace = {"BAD_FACE", Severity::Error, "remove the face, or draw it anew"};
inline constexpr MessageKind kNotStripped = {"NOT_STRIPPED", Severity::Error,
                                             "tag it no_strip, or look for faces that lie on one another"};
inline constexpr MessageKind kNotSorted = {"NOT_SORTED", Severity::Error, "take sort from the layer's tags"};
inline constexpr MessageKind kNotDecimated = {"NOT_DECIMATED", Severity::Error,
                                              "give the copy a layer of its own polyhedra instead of autolod="};
inline constexpr MessageKind kLayerTooLarge = {
    "LAYER_TOO_LARGE", Severity::Error,
    "make them lighter, with fewer seams in the texture coordinates or by decimating them"};
inline constexpr MessageKind kUnstrippedTooLarge = {"UNSTRIPPED_TOO_LARGE", Severity::Error,
                                                    "take no_strip from its tags, or decimate its polyhedra"};
inline constexpr MessageKind kCopyTooLarge = {"COPY_TOO_LARGE", Severity::Error, "give autolod= a smaller percentage"};
inline constexpr MessageKind kTooManyCopies = {"TOO_MANY_COPIES", Severity::Error,
                                               "leave out some of the layers with autolod="};
inline constexpr MessageKind kCollisionTooLarge = {
    "COLLISION_TOO_LARGE", Severity::Error,
    "spread its polyhedra over further collision layers, up to eight, or tag the last one box or cylinder"};

}  // namespace marrowfen
