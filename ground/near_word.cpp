#include "ground/near_word.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "ground/ascii.h"

namespace marrowfen {

namespace {

// Letters to add, drop or change to make one word of the other, row by row of the table of all beginnings.
size_t editDistance(std::string_view a, std::string_view b) {
    std::vector<size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), size_t{0});
    for (size_t i = 0; i < a.size(); ++i) {
        size_t diagonal = std::exchange(row[0], i + 1);
        for (size_t j = 0; j < b.size(); ++j) {
            const size_t changed = diagonal + (lowerCase(a[i]) == lowerCase(b[j]) ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, diagonal + 1, row[j] + 1});
        }
    }
    return row.back();
}

}  // namespace

std::string_view nearWord(std::string_view word, const std::vector<std::string_view>& candidates, size_t mostChanges) {
    std::string_view nearest;
    size_t fewest = std::min(mostChanges, word.size() / 2) + 1;
    for (const std::string_view candidate : candidates) {
        // So many letters more or less can't be few changes, however long the word.
        if (std::max(word.size(), candidate.size()) - std::min(word.size(), candidate.size()) >= fewest) continue;
        const size_t changes = editDistance(word, candidate);
        if (changes >= fewest) continue;
        nearest = candidate;
        fewest = changes;
    }
    return nearest;
}

}  // namespace marrowfen
