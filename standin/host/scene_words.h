#pragma once

// The words of a scene file that its reader and its writer share.

#include <cstdint>

namespace marrowfen::standin {

inline constexpr char kSceneFormat[] = "marrowfen-scene";
inline constexpr int32_t kSceneVersion = 1;

struct TypeWord {
    const char* word;
    int32_t code;
};

inline constexpr TypeWord kNodeTypes[] = {{"polyhedron", 201}, {"group", 202}, {"skeleton", 210},
                                          {"bone", 107},       {"joint", 103}, {"ikgroup", 206}};
inline constexpr TypeWord kParameterTypes[] = {{"flag", 1}, {"float", 7}, {"text", 9}};

}  // namespace marrowfen::standin
