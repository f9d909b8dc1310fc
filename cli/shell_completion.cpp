// The completions of three shells, each a script made of the table.

#include <algorithm>
#include <sstream>

#include "cli/commands.h"
#include "cli/help.h"

namespace marrowfen::cli {

namespace {

template <class Use>
void forEachOption(const VerbRow& verb, Use use) {
    for (const OptionGroup& group : verb.groups) {
        for (const OptionRow& row : group.rows) use(row);
    }
    for (const OptionRow& row : globalOptions()) use(row);
}

std::string verbNames() {
    std::string names;
    for (const VerbRow& verb : verbTable()) names += (names.empty() ? "" : " ") + std::string(verb.name);
    return names;
}

// "dts|dsq", of the endings of files.
std::string alternatives(const char* endings) {
    std::string text;
    for (const std::string& ending : choicesOf(endings)) text += (text.empty() ? "" : "|") + ending.substr(1);
    return text;
}

// A text between single quotes of a POSIX shell.
std::string quoted(const std::string& text) {
    std::string result = "'";
    for (const char c : text) result += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return result + "'";
}

// Bash.

std::string bashCall(Takes takes, const char* choices) {
    switch (takes) {
        case Takes::Word:
            return "_marrowfen_words '" + std::string(choices) + "'";
        case Takes::File:
            return "_marrowfen_files '" + alternatives(choices) + "'";
        case Takes::Folder:
            return "_marrowfen_files /";
        default:
            return "return 0";
    }
}

std::string optionWords(const VerbRow& verb) {
    std::string words;
    forEachOption(verb, [&](const OptionRow& row) { words += (words.empty() ? "" : " ") + std::string(row.name); });
    return words;
}

std::string bashVerb(const VerbRow& verb) {
    std::string text = "        " + std::string(verb.name) + ")\n            case $last in\n";
    forEachOption(verb, [&](const OptionRow& row) {
        if (row.takes == Takes::Nothing) return;
        text += "                " + std::string(row.name) +
                (row.letter != '\0' ? std::string("|-") + row.letter : "") + ") " + bashCall(row.takes, row.choices) +
                "; return 0 ;;\n";
    });
    text += "            esac\n            if [[ $word == -* ]]; then _marrowfen_words '" + optionWords(verb) +
            "'; return 0; fi\n            case $place in\n";
    for (size_t i = 0; i < verb.places.size(); ++i) {
        const PlaceRow& row = verb.places[i];
        text += "                " + (row.isMany ? "*" : std::to_string(i)) + ") " + bashCall(row.takes, row.choices) +
                " ;;\n";
    }
    return text + "            esac ;;\n";
}

// The case of all options that are followed by a value, which is no place.
std::string valueTakers() {
    std::vector<std::string> names;
    for (const VerbRow& verb : verbTable()) {
        forEachOption(verb, [&](const OptionRow& row) {
            if (row.takes == Takes::Nothing) return;
            names.emplace_back(row.name);
            if (row.letter != '\0') names.push_back(std::string("-") + row.letter);
        });
    }
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
    std::string text;
    for (const std::string& name : names) text += (text.empty() ? "" : "|") + name;
    return text;
}

// Zsh.

std::string zshAction(Takes takes, const char* choices) {
    switch (takes) {
        case Takes::Word:
            return "(" + std::string(choices) + ")";
        case Takes::File:
            return *choices == '\0' ? "_files" : "_files -g \"*.(" + alternatives(choices) + ")(-.)\"";
        case Takes::Folder:
            return "_files -/";
        default:
            return " ";
    }
}

// A text inside what _arguments is told of an option.
std::string zshEscaped(const std::string& text) {
    std::string result;
    for (const char c : text) {
        if (c == '[' || c == ']' || c == ':' || c == '\\') result += '\\';
        result += c;
    }
    return result;
}

std::string zshOption(const OptionRow& row) {
    const std::string help = "[" + zshEscaped(row.help) + "]";
    const std::string value =
        row.takes == Takes::Nothing ? "" : ":" + zshEscaped(row.value) + ":" + zshAction(row.takes, row.choices);
    std::string text = "            " + quoted("*" + std::string(row.name) + help + value) + " \\\n";
    if (row.letter != '\0') {
        text += "            " + quoted(std::string("*-") + row.letter + help + value) + " \\\n";
    }
    return text;
}

std::string zshVerb(const VerbRow& verb) {
    std::string text = "    " + std::string(verb.name) + ")\n        _arguments -s \\\n";
    forEachOption(verb, [&](const OptionRow& row) { text += zshOption(row); });
    for (const PlaceRow& row : verb.places) {
        text += "            " +
                quoted((row.isMany       ? "*:"
                        : row.isOptional ? "::"
                                         : ":") +
                       std::string(row.name) + ":" + zshAction(row.takes, row.choices)) +
                " \\\n";
    }
    return text + "            && return 0 ;;\n";
}

// Fish.

std::string fishAction(Takes takes, const char* choices) {
    switch (takes) {
        case Takes::Word:
            return " -a " + quoted(choices);
        case Takes::File:
            return *choices == '\0' ? " -F" : " -a \"(__marrowfen_files " + std::string(choices) + ")\"";
        case Takes::Folder:
            return " -a \"(__fish_complete_directories (commandline -ct))\"";
        default:
            return "";
    }
}

std::string fishVerb(const VerbRow& verb) {
    const std::string name = verb.name;
    const std::string here = "complete -c marrowfen -n '__fish_seen_subcommand_from " + name + "'";
    std::string text = "complete -c marrowfen -n __fish_use_subcommand -a " + name + " -d " + quoted(verb.does) + "\n";
    for (const OptionGroup& group : verb.groups) {
        for (const OptionRow& row : group.rows) {
            text += here + " -l " + (row.name + 2) + (row.letter != '\0' ? std::string(" -s ") + row.letter : "") +
                    (row.takes == Takes::Nothing ? "" : " -x" + fishAction(row.takes, row.choices)) + " -d " +
                    quoted(row.help) + "\n";
        }
    }
    for (const PlaceRow& row : verb.places) text += here + fishAction(row.takes, row.choices) + "\n";
    return text;
}

}  // namespace

std::string bashCompletion() {
    std::string text = R"(# Completions of marrowfen for bash, from marrowfen completion bash.

_marrowfen_words() { COMPREPLY=($(compgen -W "$1" -- "$word")); }

# Folders, and the files with these endings; / for folders alone, nothing for all.
_marrowfen_files() {
    local IFS=$'\n' name
    compopt -o filenames
    COMPREPLY=($(compgen -d -- "$word"))
    [[ $1 == / ]] && return
    for name in $(compgen -f -- "$word"); do
        if [[ ! -d $name && ( -z $1 || $name =~ \.(${1//./\\.})$ ) ]]; then COMPREPLY+=("$name"); fi
    done
}

_marrowfen() {
    local word=${COMP_WORDS[COMP_CWORD]} last=${COMP_WORDS[COMP_CWORD - 1]} verb= place=0 i
    COMPREPLY=()
    for ((i = 1; i < COMP_CWORD; ++i)); do
        case ${COMP_WORDS[i]} in
            )" + valueTakers() +
                       R"() ((++i)) ;;
            -*) ;;
            *) if [[ $verb ]]; then ((++place)); else verb=${COMP_WORDS[i]}; fi ;;
        esac
    done
    case $verb in
        '')
            if [[ $last == --color ]]; then _marrowfen_words 'auto always never'
            elif [[ $word == -* ]]; then _marrowfen_words ')";
    for (const OptionRow& row : globalOptions()) text += std::string(row.name) + " ";
    text += "'\n            else _marrowfen_words '" + verbNames() + "'; fi ;;\n";
    for (const VerbRow& verb : verbTable()) text += bashVerb(verb);
    return text + "    esac\n    return 0\n}\n\ncomplete -F _marrowfen marrowfen\n";
}

std::string zshCompletion() {
    std::string text =
        "#compdef marrowfen\n# Completions of marrowfen for zsh, from marrowfen completion zsh.\n\n"
        "_marrowfen() {\n    local curcontext=$curcontext state line\n    _arguments -C -s \\\n";
    for (const OptionRow& row : globalOptions()) text += zshOption(row);
    text +=
        "            '1:command:->verb' '*::word:->words' && return 0\n    case $state in\n    verb)\n"
        "        local -a verbs=(\n";
    for (const VerbRow& verb : verbTable()) {
        text += "            " + quoted(std::string(verb.name) + ":" + zshEscaped(verb.does)) + "\n";
    }
    text += "        )\n        _describe command verbs ;;\n    words)\n    case $line[1] in\n";
    for (const VerbRow& verb : verbTable()) text += zshVerb(verb);
    return text +
           "    esac ;;\n    esac\n}\n\nif [[ $funcstack[1] == _marrowfen ]]; then _marrowfen \"$@\"; else compdef "
           "_marrowfen marrowfen; fi\n";
}

std::string fishCompletion() {
    std::string text =
        R"(# Completions of marrowfen for fish, from marrowfen completion fish.

# Folders, and the files with these endings.
function __marrowfen_files
    set -l word (string unescape -- (commandline -ct))
    for name in $word*/
        echo $name
    end
    for name in $word*
        for ending in $argv
            string match -q -- "*$ending" $name; and test -f $name; and echo $name
        end
    end
end

complete -c marrowfen -f
)";
    for (const OptionRow& row : globalOptions()) {
        text += "complete -c marrowfen -l " + std::string(row.name + 2) +
                (row.letter != '\0' ? std::string(" -s ") + row.letter : "") +
                (row.takes == Takes::Nothing ? "" : " -x" + fishAction(row.takes, row.choices)) + " -d " +
                quoted(row.help) + "\n";
    }
    for (const VerbRow& verb : verbTable()) text += fishVerb(verb);
    return text;
}

Outcome runCompletion(const Arguments& arguments, const Session&) {
    const std::string& shell = arguments.place(0);
    return printResult(shell == "bash" ? bashCompletion() : shell == "zsh" ? zshCompletion() : fishCompletion());
}

}  // namespace marrowfen::cli
