#pragma once

// Damaged versions of a file, numbered and the same on every machine: cut off at every place, and changed in one place.
// Of binary files, words that may be counts, offsets or indices become 0, one more, 2^31 - 1 and -1, and the others
// numbers that aren't finite; of JSON and other texts, tokens are dropped or become another type, numbers out of range,
// bytes that aren't UTF-8, or 100,000 brackets.

#include <cstdint>
#include <string>
#include <vector>

namespace marrowfen::fuzz {

class Damages {
public:
    explicit Damages(std::string seed);

    size_t cuts() const { return seed_.size(); }
    std::string cut(size_t number) const { return seed_.substr(0, number); }

    size_t changes() const { return changes_.size(); }
    std::string change(size_t number) const;

private:
    // A range of bytes and what stands there instead, as a number into the list of those of its kind.
    struct Change {
        enum Kind : uint8_t { Word, Half, Token };

        uint32_t at, length;
        Kind kind;
        uint8_t instead;
    };

    std::string seed_;
    std::vector<Change> changes_;

    bool isGlb() const;
    void addWords();
    void addTokensOfJson(size_t begin, size_t end);
    void addTokensOfText();
    void addToken(size_t at, size_t length);
    std::string insteadOf(const Change& change) const;
};

}  // namespace marrowfen::fuzz
