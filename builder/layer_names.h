#pragma once

// What a layer's name makes of it.

#include <string_view>

#include "builder/records.h"

namespace marrowfen {

struct RoleWord {
    std::string_view word;  // that the name begins with, in any letter case
    LayerRole role;
};

// The words of all roles but that of detail levels, which is any other name's.
inline constexpr RoleWord kRoleWords[] = {{"collision", LayerRole::Collision},
                                          {"loscollision", LayerRole::LosCollision},
                                          {"bounds", LayerRole::Bounds},
                                          {"nodes", LayerRole::Nodes}};

// Detail for a name that begins with none of the words.
LayerRole roleOfName(std::string_view name);

// The word that a detail level's name was probably meant to begin with: one or two letters are missing, too many or
// wrong, or it is cut in two ("los collision"). Empty for a name that is far from all of them.
std::string_view nearRoleWord(std::string_view name);

}  // namespace marrowfen
