// Reads the dialogs of a resource script, so that the headless windows are made of the same text as the real ones.
// The script is split into words, numbers, quoted texts and single signs; everything that isn't part of a dialog is
// passed over.

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

std::vector<Token> split(std::string_view script) {
    std::vector<Token> tokens;
    for (size_t i = 0; i < script.size();) {
        size_t end = i + 1;
        if (script.substr(i, 2) == "//") {
            i = std::min(script.find('\n', i), script.size());
            continue;
        }
        if (script[i] == '"') {
            end = std::min(script.find('"', end), script.size() - 1) + 1;
            tokens.push_back({std::string(script.substr(i + 1, end - i - 2)), true});
        } else if (isWordCharacter(script[i])) {
            while (end < script.size() && isWordCharacter(script[end])) ++end;
            tokens.push_back({std::string(script.substr(i, end - i))});
        } else if (std::isspace(static_cast<unsigned char>(script[i])) == 0) {
            tokens.push_back({std::string(1, script[i])});
        }
        i = end;
    }
    return tokens;
}

class Reader {
public:
    explicit Reader(std::string_view script) : tokens_(split(script)) {}

    std::vector<DialogTemplate> readAll() {
        std::vector<DialogTemplate> dialogs;
        for (; next_ < tokens_.size(); ++next_) {
            if (peek() == "define") {
                numbers_[peek(1)] = number(peek(2));
            } else if (peek(1) == "DIALOGEX") {
                dialogs.push_back(readDialog());
            }
        }
        return dialogs;
    }

private:
    const std::string& peek(size_t ahead = 0) const {
        static const std::string kNone;
        return next_ + ahead < tokens_.size() ? tokens_[next_ + ahead].text : kNone;
    }

    bool isQuoted() const { return next_ < tokens_.size() && tokens_[next_].quoted; }

    bool take(std::string_view text) {
        const bool found = peek() == text;
        if (found) ++next_;
        return found;
    }

    int number(const std::string& word) const {
        const auto known = numbers_.find(word);
        return known != numbers_.end() ? known->second : std::atoi(word.c_str());
    }

    // A number or a name of one, and the comma after it.
    int takeNumber() {
        const int result = number(peek());
        ++next_;
        take(",");
        return result;
    }

    std::string takeText() {
        std::string result = peek();
        ++next_;
        take(",");
        return result;
    }

    std::vector<std::string> takeStyles() {
        std::vector<std::string> styles = {takeText()};
        while (take("|")) styles.push_back(takeText());
        return styles;
    }

    DialogTemplate readDialog() {
        DialogTemplate dialog;
        dialog.id = takeNumber();
        take("DIALOGEX");
        takeNumber(), takeNumber();  // the place on the screen
        dialog.width = takeNumber();
        dialog.height = takeNumber();
        while (next_ < tokens_.size() && !take("BEGIN")) readSetting(dialog);
        while (next_ < tokens_.size() && peek() != "END") dialog.controls.push_back(readControl());
        return dialog;
    }

    void readSetting(DialogTemplate& dialog) {
        if (take("STYLE") || take("EXSTYLE")) {
            for (auto& style : takeStyles()) dialog.styles.push_back(std::move(style));
        } else if (take("CAPTION")) {
            dialog.caption = takeText();
        } else if (take("FONT")) {
            dialog.fontSize = takeNumber();
            dialog.font = takeText();
        } else {
            ++next_;
        }
    }

    // KIND ["text",] id, x, y, width, height [, styles]  or  CONTROL "text" or resource, id, "class", styles, x, ...
    Control readControl() {
        Control control;
        control.kind = takeText();
        const bool isGeneral = control.kind == "CONTROL";
        if (isGeneral || isQuoted()) control.text = takeText();
        control.id = takeNumber();
        if (isGeneral) {
            control.kind = takeText();
            control.styles = takeStyles();
        }
        for (int* value : {&control.x, &control.y, &control.width}) *value = takeNumber();
        control.height = number(peek());
        ++next_;
        if (take(",")) control.styles = takeStyles();
        return control;
    }

    std::vector<Token> tokens_;
    size_t next_ = 0;
    std::map<std::string, int> numbers_ = {{"IDOK", IDOK}, {"IDCANCEL", IDCANCEL}};
};

}  // namespace

std::vector<DialogTemplate> readDialogs(std::string_view script) { return Reader(script).readAll(); }

}  // namespace marrowfen::headless
