#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace marrowfen {

// The candidate that a misspelt word was probably meant to be, letter case ignored: the first of those with the fewest
// letters to add, drop or change. Empty when even that is more than mostChanges, or more than half of the word.
std::string_view nearWord(std::string_view word, const std::vector<std::string_view>& candidates,
                          size_t mostChanges = 3);

}  // namespace marrowfen
