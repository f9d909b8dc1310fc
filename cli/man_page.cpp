// The manual pages, in the language of man.

#include "cli/commands.h"
#include "cli/help.h"
#include "ground/version.h"

namespace marrowfen::cli {

namespace {

// What people know of names; those of the exporter's own tables that a test holds to be the same.
const std::vector<NameRow> kNames = {
    {"layer", "collision", "what the game bumps into; up to eight such layers"},
    {"layer", "loscollision", "what blocks a line of sight; up to eight"},
    {"layer", "bounds", "at most one polyhedron, a cube of eight corners: the shape's bounds"},
    {"layer", "nodes", "markers: each polyhedron becomes a named node where it stands, and isn't drawn"},
    {"detail layer", "size=N", "the level is shown while the shape is at least N pixels high"},
    {"detail layer", "autolod=P", "no geometry of its own: P per cent of the triangles of the largest layer"},
    {"detail layer", "sort", "translucent faces, ordered so that they draw back to front from any side"},
    {"detail layer", "no_strip", "keeps single triangles"},
    {"detail layer", "billboard", "the level turns to the viewer"},
    {"detail layer", "billboardz", "the level turns to the viewer about the upright axis only"},
    {"detail layer", "enormals", "the engine may use the packed normals"},
    {"collision layer", "box", "a box around everything visible"},
    {"collision layer", "cylinder", "a four-sided prism around everything visible"},
    {"bounds layer", "no_mipmap", "no texture gets smaller copies"},
    {"bounds layer", "no_mipmap_trans", "no translucent texture gets smaller copies"},
    {"bounds layer", "no_black_border", "translucent textures fade into nothing at their border"},
    {"clip", "fps=N", "frames a second; without it the scene's rate"},
    {"clip", "priority=N", "which sequence wins where two move one node; 1 without it"},
    {"clip", "blend", "the sequence is added to another pose"},
};

std::string escaped(const std::string& text) {
    std::string result;
    for (const char c : text) {
        if (c == '\\') {
            result += "\\e";
        } else if (c == '-') {
            result += "\\-";
        } else {
            result += c;
        }
    }
    return result.starts_with('.') || result.starts_with('\'') ? "\\&" + result : result;
}

std::string title(const char* name, const char* section) {
    return ".TH " + std::string(name) + " " + section + " \"\" \"marrowfen " + kVersion + "\" \"Marrowfen\"\n";
}

std::string item(const std::string& head, const std::string& text) {
    return ".TP\n.B " + escaped(head) + "\n" + escaped(text) + "\n";
}

std::string optionItems(const std::vector<OptionRow>& rows) {
    std::string text;
    for (const OptionRow& row : rows) {
        const std::string forms = optionForms(row);
        text += item(forms.substr(forms.find_first_not_of(' ')), row.help);
    }
    return text;
}

std::string verbSection(const VerbRow& verb, bool withModels) {
    std::string usage = verb.usage;
    for (size_t i = 0; (i = usage.find('\n', i)) != std::string::npos; i += 2) usage.replace(i, 1, ", ");
    std::string text = ".SS " + escaped(verb.name) + "\n.B " + escaped(verb.name) + "\n" + escaped(usage) + "\n.PP\n" +
                       escaped(verb.does) + ".\n";
    for (const PlaceRow& row : verb.places) text += item(row.name, row.help);
    for (const OptionGroup& group : verb.groups) {
        if (group.title == kModelGroup && !withModels) {
            text += ".PP\nTakes the options for models, too.\n";
        } else {
            text += optionItems(group.rows);
        }
    }
    text += ".PP\nExamples:\n.PP\n.nf\n.RS\n";
    for (const char* example : verb.examples) text += escaped(example) + "\n";
    return text + ".RE\n.fi\n";
}

}  // namespace

const std::vector<NameRow>& nameTable() { return kNames; }

std::string commandPage() {
    std::string text =
        title("MARROWFEN", "1") +
        ".SH NAME\nmarrowfen \\- turns a 3D scene into the DTS and DSQ files of a game engine\n"
        ".SH SYNOPSIS\n.B marrowfen\n.I COMMAND\n.RI [ OPTIONS ]\n.SH DESCRIPTION\n"
        "Exports scene files and models (glTF, FBX, OBJ, ...) as shapes, with a log of everything that "
        "was found on the way, and tells what is in such files.\nArtists steer the export by names: see\n"
        ".BR marrowfen\\-names (7).\n.SH OPTIONS OF ALL COMMANDS\n" +
        optionItems(globalOptions()) + ".SH COMMANDS\n";
    bool withModels = true;
    for (const VerbRow& verb : verbTable()) {
        text += verbSection(verb, withModels);
        withModels = false;
    }
    text += ".SH EXIT STATUS\n";
    for (const ExitRow& row : exitTable()) text += item(std::to_string(row.code), row.meaning);
    return text + ".SH SEE ALSO\n.BR marrowfen\\-names (7)\n";
}

std::string namesPage() {
    std::string text = title("MARROWFEN\\-NAMES", "7") +
                       ".SH NAME\nmarrowfen\\-names \\- names of layers and clips that steer an export\n"
                       ".SH DESCRIPTION\nWhat a layer is depends on how its name begins, and tags follow the first "
                       "colon of a name, with commas between them:\n.B Detail:size=64,billboard\n.br\n"
                       "Capitals don't matter. A layer whose name begins with no word below is a detail level.\n";
    std::string owner;
    for (const NameRow& row : nameTable()) {
        if (owner != row.owner) {
            owner = row.owner;
            text += ".SS " + (owner == "layer" ? "Beginnings of a layer's name" : "Tags of a " + owner) + "\n";
        }
        text += item(row.word, row.does);
    }
    return text + ".SH SEE ALSO\n.BR marrowfen (1)\n";
}

Outcome runMan(const Arguments& arguments, const Session&) {
    const bool isNames = !arguments.places().empty() && arguments.place(0) == "names";
    return printResult(isNames ? namesPage() : commandPage());
}

}  // namespace marrowfen::cli
