#pragma once

// The words of a scene file, and the forms that limits on its values have.

#include <cstdint>
#include <limits>

#include "host/tsxapi.h"

namespace marrowfen::standin {

inline constexpr char kSceneFormat[] = "marrowfen-scene";
inline constexpr int32_t kSceneVersion = 1;

struct TypeWord {
    const char* word;
    int32_t code;
};

inline constexpr TypeWord kNodeTypes[] = {{"polyhedron", TsxPolyhedron}, {"group", TsxGroup},
                                          {"skeleton", TsxSkeleton},     {"bone", TsxBone},
                                          {"joint", TsxJoint},           {"ikgroup", TsxIkGroup}};
inline constexpr TypeWord kParameterTypes[] = {
    {"flag", TsxFlagParameter}, {"float", TsxFloatParameter}, {"text", TsxTextParameter}};

// Of a whole number, the bounds included.
struct WholeBounds {
    int32_t lowest = std::numeric_limits<int32_t>::min();
    int32_t highest = std::numeric_limits<int32_t>::max();
};

// How many entries a list has.
struct CountBounds {
    size_t fewest = 0;
    size_t most = std::numeric_limits<size_t>::max();
    const char* owner = "";  // what has so many, in errors
};

}  // namespace marrowfen::standin
