#pragma once

// The command's verbs, places and options as data. The parser, --help, the manual page and the completions of the
// shells are all made of this table.

#include <string>
#include <string_view>
#include <vector>

#include "cli/command.h"

namespace marrowfen::cli {

class Arguments;

enum class Takes { Nothing, Text, File, Folder, Number, Count, Word };

struct OptionRow {
    const char* name;             // "--scale"
    char letter;                  // of its short form, '\0' for none
    Takes takes;                  // Nothing for a flag
    const char* value;            // what the help calls its value
    const char* choices;          // words, or the endings of files, with blanks between; empty for any
    double least, most;           // of a number or count
    const char* help;             // no full stop at its end
    bool isMoreEachTime = false;  // a flag that says more when it is given twice
};

// A word that isn't an option.
struct PlaceRow {
    const char* name;
    Takes takes;
    const char* choices;  // as those of an option
    const char* help;
    bool isMany = false;  // one or more
    bool isOptional = false;
};

// Titles: of what decides what an export makes, and of what only models take.
inline constexpr std::string_view kMadeGroup = "What is made";
inline constexpr std::string_view kModelGroup = "Models";

struct OptionGroup {
    std::string_view title;
    std::vector<OptionRow> rows;
};

struct VerbRow {
    const char* name;
    const char* usage;  // what stands behind the name, a line a way to call it
    const char* does;   // one line
    std::vector<const char*> examples;
    std::vector<PlaceRow> places;
    std::vector<OptionGroup> groups;
    Outcome (*run)(const Arguments& arguments, const Session& session);
    const char* more = "";  // further sentences of the help
};

const std::vector<VerbRow>& verbTable();
const std::vector<OptionRow>& globalOptions();

// The words of a row's choices.
std::vector<std::string> choicesOf(const char* choices);

// What people know of a layer's or clip's name, for the page about names: the word and what it does, by who has it.
struct NameRow {
    const char* owner;
    const char* word;
    const char* does;
};
const std::vector<NameRow>& nameTable();

// What the exit codes mean.
struct ExitRow {
    ExitCode code;
    const char* meaning;
};
const std::vector<ExitRow>& exitTable();

}  // namespace marrowfen::cli
