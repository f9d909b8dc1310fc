// Reads the dialogs of a resource script, so that the headless windows are made of the same text as the real ones. A
// dialog is known by its numbers, texts and kinds of controls; where they stand and how they look is for a screen.

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <map>

#include "standin/windows/headless_user.h"

namespace marrowfen::headless {

namespace {

struct Token {
    std::string text;
    bool quoted = false;
};

bool isWordCharacter(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || c == '-'; }

// The words, numbers and quoted texts of a line up to its comment; signs between them say nothing more.
std::vector<Token> split(std::string_view line) {
    std::vector<Token> tokens;
    line = line.substr(0, line.find("//"));
    for (size_t i = 0; i < line.size();) {
        size_t end = i + 1;
        if (line[i] == '"') {
            end = std::min(line.find('"', end), line.size());
            tokens.push_back({std::string(line.substr(i + 1, end - i - 1)), true});
            ++end;
        } else if (isWordCharacter(line[i])) {
            while (end < line.size() && isWordCharacter(line[end])) ++end;
            tokens.push_back({std::string(line.substr(i, end - i))});
        }
        i = end;
    }
    return tokens;
}

class Reader {
public:
    std::vector<DialogTemplate> dialogs;

    void readLine(const std::vector<Token>& line) {
        const auto is = [&](size_t i, const char* word) { return i < line.size() && line[i].text == word; };
        if (is(0, "define") && line.size() > 2) {
            numbers_[line[1].text] = number(line[2].text);
        } else if (is(1, "DIALOGEX")) {
            dialogs.emplace_back().id = number(line[0].text);
            part_ = Settings;
        } else if (is(0, "END")) {
            part_ = Outside;
        } else if (part_ == Settings && is(0, "CAPTION") && line.size() > 1) {
            dialogs.back().caption = line[1].text;
        } else if (part_ == Settings && is(0, "BEGIN")) {
            part_ = Controls;
        } else if (part_ == Controls && line.size() > 3) {
            dialogs.back().controls.push_back(controlOf(line));
        }
    }

private:
    enum Part { Outside, Settings, Controls };  // of a dialog

    Part part_ = Outside;
    std::map<std::string, int> numbers_ = {{"IDOK", IDOK}, {"IDCANCEL", IDCANCEL}};

    int number(const std::string& word) const {
        const auto known = numbers_.find(word);
        return known != numbers_.end() ? known->second : std::atoi(word.c_str());
    }

    // KIND ["text",] id, ...  or  CONTROL "text" or resource, id, "class", ...
    Control controlOf(const std::vector<Token>& line) const {
        const bool isGeneral = line[0].text == "CONTROL";
        const bool hasText = isGeneral || line[1].quoted;
        Control control;
        control.kind = line[isGeneral ? 3 : 0].text;
        if (hasText) control.text = line[1].text;
        control.id = number(line[hasText ? 2 : 1].text);
        return control;
    }
};

}  // namespace

std::vector<DialogTemplate> readDialogs(std::string_view script) {
    Reader reader;
    while (!script.empty()) {
        const std::string_view line = script.substr(0, script.find('\n'));
        reader.readLine(split(line));
        script.remove_prefix(std::min(line.size() + 1, script.size()));
    }
    return std::move(reader.dialogs);
}

}  // namespace marrowfen::headless
