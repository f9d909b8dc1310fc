#include "cli/help.h"

#include <algorithm>

#include "ground/pieces.h"

namespace marrowfen::cli {

namespace {

constexpr size_t kColumns = 100;
constexpr size_t kWidestForm = 26;  // of an option that shares a line with its help

// The words in lines that begin with an indent.
std::string wrapped(const std::string& text, size_t indent, size_t used) {
    std::string all, line(used < indent ? indent - used : 0, ' ');
    size_t column = std::max(used, indent);
    for (const std::string& word : piecesOf(text, ' ')) {
        if (column + word.size() > kColumns && column > indent) {
            all += line + "\n";
            line = std::string(indent, ' ');
            column = indent;
        }
        const bool isFirst = column == indent;
        line += (isFirst ? "" : " ") + word;
        column += word.size() + (isFirst ? 0 : 1);
    }
    return all + line + "\n";
}

std::string entry(const std::string& form, const std::string& help) {
    std::string text = "  " + form;
    if (text.size() + 2 <= kWidestForm + 4) return text + wrapped(help, kWidestForm + 4, text.size());
    return text + "\n" + wrapped(help, kWidestForm + 4, 0);
}

std::string groupText(std::string_view title, const std::vector<OptionRow>& rows) {
    std::string text = "\n" + std::string(title) + ":\n";
    for (const OptionRow& row : rows) text += entry(optionForms(row), row.help);
    return text;
}

std::string usageLines(const VerbRow& verb) {
    std::string text;
    for (const std::string& line : piecesOf(verb.usage, '\n')) {
        text += "  marrowfen " + std::string(verb.name) + " " + line + "\n";
    }
    return text.empty() ? "  marrowfen " + std::string(verb.name) + "\n" : text;
}

}  // namespace

std::string optionForms(const OptionRow& row) {
    std::string text = row.letter == '\0' ? "    " : std::string("-") + row.letter + ", ";
    text += row.name;
    return row.takes == Takes::Nothing ? text : text + " " + row.value;
}

std::vector<std::string> firstLines() {
    return {"Marrowfen turns a 3D scene into the DTS and DSQ files that a game engine loads.",
            "",
            "  marrowfen export ship.glb ship.dts          make a shape of a model or scene, with a log beside it",
            "  marrowfen export *.fbx --out-dir shapes     the same for many",
            "  marrowfen explain ship.scene.json           how its layers, nodes and clips are read",
            "  marrowfen inspect ship.dts                  what is in a shape, and what is wrong with it",
            "  marrowfen view ship.dts ship.html           look at it in a browser",
            "  marrowfen formats                           what can be read",
            "",
            "marrowfen --help lists all commands, marrowfen COMMAND --help the options of one."};
}

std::string commandHelp() {
    std::string text =
        "marrowfen - turns a 3D scene into the DTS and DSQ files that a game engine loads\n\nExamples:\n";
    for (const char* name : {"export", "inspect"}) {
        for (const VerbRow& verb : verbTable()) {
            if (verb.name == std::string(name)) text += "  " + std::string(verb.examples.front()) + "\n";
        }
    }
    text += "\nCommands:\n";
    for (const VerbRow& verb : verbTable()) text += entry(verb.name, verb.does);
    text += groupText("Options of all commands", globalOptions()) + "\nExit codes:\n";
    for (const ExitRow& row : exitTable()) text += entry(std::to_string(row.code), row.meaning);
    return text + "\nmarrowfen COMMAND --help has the options of one.\n";
}

std::string verbHelp(const VerbRow& verb) {
    std::string text = "marrowfen " + std::string(verb.name) + " - " + verb.does + "\n\nExamples:\n";
    for (const char* example : verb.examples) text += "  " + std::string(example) + "\n";
    text += "\nUsage:\n" + usageLines(verb);
    if (!verb.places.empty()) text += "\n";
    for (const PlaceRow& row : verb.places) text += entry(row.name, row.help);
    for (const OptionGroup& group : verb.groups) text += groupText(group.title, group.rows);
    return text + groupText("Options of all commands", globalOptions());
}

}  // namespace marrowfen::cli
