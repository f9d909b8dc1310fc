#pragma once

#include <string>
#include <string_view>

namespace marrowfen {

// Appends to a list that people read: "a, b, c".
inline void addToList(std::string& list, std::string_view word) {
    if (!list.empty()) list += ", ";
    list += word;
}

// Of anything that holds texts.
template <class Words>
std::string commaList(const Words& words) {
    std::string list;
    for (const auto& word : words) addToList(list, word);
    return list;
}

}  // namespace marrowfen
