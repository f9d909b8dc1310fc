#pragma once

// The words of a command line, read by the table of verbs and options.

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "cli/option_table.h"

namespace marrowfen::cli {

class Arguments {
public:
    // The words that are no options, in the order of the table.
    const std::vector<std::string>& places() const { return places_; }
    const std::string& place(size_t index) const { return places_.at(index); }

    // Options by the names that the table has; asking for another one is a mistake of the caller.
    size_t count(const char* option) const;
    bool has(const char* option) const { return count(option) > 0; }
    std::string text(const char* option, const std::string& otherwise = {}) const;  // the last one given
    double number(const char* option, double otherwise) const;
    const std::vector<std::string>& all(const char* option) const;

    // What was given, in the order of the names: the same for the same options however they were typed.
    const std::map<std::string, std::vector<std::string>>& given() const { return given_; }

private:
    friend class LineReader;
    const VerbRow* verb_ = nullptr;
    std::map<std::string, std::vector<std::string>> given_;
    std::vector<std::string> places_;
};

struct CommandLine {
    const VerbRow* verb = nullptr;  // none where the first fault comes before it, or with --help and --version alone
    Arguments arguments;
    Outcome fault;  // of the first word that is wrong, in the order that was typed
};

// words: without the program's name.
CommandLine readCommandLine(const std::vector<std::string>& words);

// A hint at the candidate that a word was probably meant to be; empty when none is near.
std::string didYouMean(const std::string& word, const std::vector<std::string_view>& candidates);

}  // namespace marrowfen::cli
