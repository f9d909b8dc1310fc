#include "builder/layer_names.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include "ground/ascii.h"
#include "ground/near_word.h"

namespace marrowfen {

namespace {

constexpr size_t kMostChanges = 2;
constexpr size_t kShortWord = 6;  // letters; two changes make another word of so few

bool isLetter(char c) { return lowerCase(c) >= 'a' && lowerCase(c) <= 'z'; }

std::string_view nearRole(std::string_view word, const std::vector<std::string_view>& roles) {
    return nearWord(word, roles, word.size() <= kShortWord ? 1 : kMostChanges);
}

}  // namespace

LayerRole roleOfName(std::string_view name) {
    for (const RoleWord& known : kRoleWords) {
        if (beginsWithIgnoringCase(name, known.word)) return known.role;
    }
    return LayerRole::Detail;
}

std::string_view nearRoleWord(std::string_view name) {
    name = name.substr(0, name.find(':'));
    std::string letters;
    std::copy_if(name.begin(), name.end(), std::back_inserter(letters), isLetter);
    const std::string_view firstWord(name.begin(), std::find_if_not(name.begin(), name.end(), isLetter));
    std::vector<std::string_view> words;
    for (const RoleWord& known : kRoleWords) words.push_back(known.word);
    for (const std::string_view word : {firstWord, std::string_view(letters)}) {
        if (const std::string_view role = nearRole(word, words); !role.empty()) return role;
    }
    // A long word may go on as another one, "ColisionMesh".
    for (const std::string_view role : words) {
        for (size_t length = role.size() - 1; role.size() > kShortWord && length <= role.size() + 1; ++length) {
            if (length < letters.size() && !nearRole({letters.data(), length}, {role}).empty()) return role;
        }
    }
    return {};
}

}  // namespace marrowfen
