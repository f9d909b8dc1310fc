#include "cli/arguments.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "ground/comma_list.h"
#include "ground/near_word.h"

namespace marrowfen::cli {

namespace {

const OptionRow* findOption(const VerbRow* verb, const auto& isIt) {
    for (const OptionRow& row : globalOptions()) {
        if (isIt(row)) return &row;
    }
    if (verb == nullptr) return nullptr;
    for (const OptionGroup& group : verb->groups) {
        for (const OptionRow& row : group.rows) {
            if (isIt(row)) return &row;
        }
    }
    return nullptr;
}

std::string numberText(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.9g", value);
    return text;
}

// Why the value can't be taken, empty if it can.
std::string valueFault(const std::string& value, Takes takes, const char* choices, double least, double most) {
    if (takes == Takes::Word) {
        const std::vector<std::string> words = choicesOf(choices);
        if (std::find(words.begin(), words.end(), value) != words.end()) return {};
        return "\"" + value + "\" isn't one of " + commaList(words);
    }
    if (takes != Takes::Number && takes != Takes::Count) return value.empty() ? "needs a value" : "";
    char* end = nullptr;
    const double number = std::strtod(value.c_str(), &end);
    const bool isNumber = end != value.c_str() && *end == '\0' && std::isfinite(number);
    const bool isWhole = takes == Takes::Number || number == std::floor(number);
    if (isNumber && isWhole && number >= least && number <= most) return {};
    return "\"" + value + (takes == Takes::Count ? "\" isn't a whole number from " : "\" isn't a number from ") +
           numberText(least) + " to " + numberText(most);
}

bool needsPlaces(const Arguments& arguments) { return !arguments.has("--help") && !arguments.has("--version"); }

}  // namespace

std::string didYouMean(const std::string& word, const std::vector<std::string_view>& candidates) {
    const std::string_view near = nearWord(word, candidates);
    return near.empty() ? "" : "did you mean " + std::string(near) + "?";
}

size_t Arguments::count(const char* option) const { return all(option).size(); }

std::string Arguments::text(const char* option, const std::string& otherwise) const {
    return has(option) ? all(option).back() : otherwise;
}

double Arguments::number(const char* option, double otherwise) const {
    return has(option) ? std::strtod(all(option).back().c_str(), nullptr) : otherwise;
}

const std::vector<std::string>& Arguments::all(const char* option) const {
    static const std::vector<std::string> none;
    assert(findOption(verb_, [&](const OptionRow& row) { return std::string_view(row.name) == option; }) != nullptr);
    const auto found = given_.find(option);
    return found == given_.end() ? none : found->second;
}

// Takes the words one by one, up to the first that is wrong.
class LineReader {
public:
    explicit LineReader(const std::vector<std::string>& words) : words_(words) {}

    CommandLine read() {
        bool areOptions = true;
        for (; next_ < words_.size() && line_.fault.good(); ++next_) {
            const std::string& word = words_[next_];
            if (areOptions && word == "--") {
                areOptions = false;
            } else if (areOptions && word.starts_with("--")) {
                takeLong(word);
            } else if (areOptions && word.size() > 1 && word[0] == '-') {
                takeLetters(word);
            } else {
                takePlace(word);
            }
        }
        if (line_.fault.good() && line_.verb != nullptr && needsPlaces(line_.arguments)) checkPlaces();
        return std::move(line_);
    }

private:
    void fail(const std::string& text, const std::string& hint = {}) {
        const std::string verb = line_.verb == nullptr ? "" : std::string(line_.verb->name) + ": ";
        line_.fault = {WrongUsage, verb + text, hint};
    }

    void failUnknown(const std::string& option) {
        std::vector<std::string_view> names;
        findOption(line_.verb, [&](const OptionRow& row) {
            names.emplace_back(row.name);
            return false;
        });
        const std::string near = didYouMean(option, names);
        const std::string all = line_.verb == nullptr ? "" : std::string(line_.verb->name) + " ";
        fail("there is no option " + option, near.empty() ? "marrowfen " + all + "--help lists all" : near);
    }

    void takeLong(const std::string& word) {
        const size_t equal = word.find('=');
        const std::string name = word.substr(0, equal);
        const OptionRow* row = findOption(line_.verb, [&](const OptionRow& r) { return name == r.name; });
        if (row == nullptr) return failUnknown(name);
        if (row->takes == Takes::Nothing) {
            if (equal != std::string::npos) return fail(name + " takes no value");
            return add(*row, "");
        }
        if (equal != std::string::npos) return add(*row, word.substr(equal + 1));
        takeNext(*row);
    }

    // -v, -qv, -j 4, -j4
    void takeLetters(const std::string& word) {
        for (size_t i = 1; i < word.size() && line_.fault.good(); ++i) {
            const OptionRow* row =
                findOption(line_.verb, [&](const OptionRow& r) { return r.letter != '\0' && r.letter == word[i]; });
            if (row == nullptr) return failUnknown(i == 1 ? word : std::string("-") + word[i]);
            if (row->takes == Takes::Nothing) {
                add(*row, "");
            } else if (i + 1 < word.size()) {
                return add(*row, word.substr(i + 1));
            } else {
                return takeNext(*row);
            }
        }
    }

    void takeNext(const OptionRow& row) {
        if (next_ + 1 >= words_.size()) return fail(std::string(row.name) + " needs a value: " + row.value);
        add(row, words_[++next_]);
    }

    void add(const OptionRow& row, const std::string& value) {
        const std::string fault =
            row.takes == Takes::Nothing ? "" : valueFault(value, row.takes, row.choices, row.least, row.most);
        if (!fault.empty()) return fail(std::string(row.name) + ": " + fault);
        line_.arguments.given_[row.name].push_back(value);
    }

    void takePlace(const std::string& word) {
        if (line_.verb == nullptr) return takeVerb(word);
        const std::vector<PlaceRow>& rows = line_.verb->places;
        std::vector<std::string>& places = line_.arguments.places_;
        const bool isMany = !rows.empty() && rows.back().isMany;
        if (places.size() >= rows.size() && !isMany) return fail("\"" + word + "\" is one word too many");
        const PlaceRow& row = rows[std::min(places.size(), rows.size() - 1)];
        if (row.takes == Takes::Word) {
            const std::string fault = valueFault(word, row.takes, row.choices, 0, 0);
            if (!fault.empty()) return fail(std::string(row.name) + ": " + fault);
        }
        places.push_back(word);
    }

    void takeVerb(const std::string& word) {
        std::vector<std::string_view> names;
        for (const VerbRow& row : verbTable()) {
            if (word == row.name) line_.arguments.verb_ = line_.verb = &row;
            names.emplace_back(row.name);
        }
        if (line_.verb != nullptr) return;
        const std::string near = didYouMean(word, names);
        fail("there is no command \"" + word + "\"", near.empty() ? "marrowfen --help lists all" : near);
    }

    void checkPlaces() {
        const size_t count = line_.arguments.places_.size();
        if (count >= line_.verb->places.size() || line_.verb->places[count].isOptional) return;
        fail(std::string(line_.verb->places[count].name) + " is missing",
             "marrowfen " + std::string(line_.verb->name) + " --help has examples");
    }

    const std::vector<std::string>& words_;
    size_t next_ = 0;
    CommandLine line_;
};

CommandLine readCommandLine(const std::vector<std::string>& words) { return LineReader(words).read(); }

}  // namespace marrowfen::cli
