#include "cli/export_report.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <numeric>
#include <sstream>
#include <string_view>

#include "ground/ascii.h"

namespace marrowfen::cli {

namespace {

constexpr std::array<const char*, 15> kTags = {
    "billboard", "billboardz", "enormals", "sort", "no_strip",  "autolod=",        "size=",          "cylinder",
    "box",       "no_mipmap",  "blend",    "fps=", "priority=", "no_mipmap_trans", "no_black_border"};

constexpr size_t kNamesShown = 8;  // of a grouped warning

std::string counted(int64_t count, const std::string& one) {
    return std::to_string(count) + " " + one + (count == 1 ? "" : "s");
}

std::string listed(const std::vector<std::string>& names) {
    std::string text;
    for (size_t i = 0; i < names.size() && i < kNamesShown; ++i) text += (i > 0 ? ", " : "") + names[i];
    if (names.size() > kNamesShown) text += " and " + std::to_string(names.size() - kNamesShown) + " more";
    return text;
}

void addOnce(std::vector<std::string>& list, const std::string& entry) {
    if (std::find(list.begin(), list.end(), entry) == list.end()) list.push_back(entry);
}

// Single-character insertions, removals and replacements between two words, letter case ignored.
size_t editDistance(std::string_view a, std::string_view b) {
    std::vector<size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), size_t{0});
    for (size_t i = 0; i < a.size(); ++i) {
        size_t diagonal = std::exchange(row[0], i + 1);
        for (size_t j = 0; j < b.size(); ++j) {
            const size_t replaced = diagonal + (lowerCase(a[i]) == lowerCase(b[j]) ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, diagonal + 1, row[j] + 1});
        }
    }
    return row.back();
}

// The known tag that an unknown one was probably meant to be, with its value; empty for none.
std::string suggestion(std::string_view tag) {
    const size_t equals = std::min(tag.find('='), tag.size());
    std::string word;
    for (const char c : tag.substr(0, equals)) {
        if (std::isspace(static_cast<unsigned char>(c)) == 0) word += c;
    }
    if (equals < tag.size()) word += '=';
    const auto* best = std::min_element(kTags.begin(), kTags.end(), [&](std::string_view a, std::string_view b) {
        return editDistance(word, a) < editDistance(word, b);
    });
    const size_t distance = editDistance(word, *best);
    if (distance > std::min<size_t>(3, word.size() / 2)) return {};
    const bool takesValue = std::string_view(*best).back() == '=';
    return *best + std::string(takesValue && equals < tag.size() ? tag.substr(equals + 1) : "");
}

std::string quotedTag(const std::string& tag) {
    const std::string meant = suggestion(tag);
    return "\"" + tag + "\"" + (meant.empty() ? "" : " (did you mean \"" + meant + "\"?)");
}

// The part of the line between a beginning and an ending; false when it hasn't both.
bool between(std::string_view line, std::string_view begin, std::string_view end, std::string& part) {
    const bool has = line.size() >= begin.size() + end.size() && line.starts_with(begin) && line.ends_with(end);
    if (has) part = line.substr(begin.size(), line.size() - begin.size() - end.size());
    return has;
}

std::vector<std::string> lines(const std::string& log) {
    std::vector<std::string> result;
    std::istringstream stream(log);
    for (std::string line; std::getline(stream, line);) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        result.push_back(line);
    }
    return result;
}

// By name: a layer without a size tag is as small as a collision level.
bool isCollisionLevel(const Shape& shape, const Shape::DetailLevel& level) {
    const bool hasName = level.name >= 0 && static_cast<size_t>(level.name) < shape.names.size();
    const std::string name = hasName ? shape.names[static_cast<size_t>(level.name)] : "";
    return name.starts_with("Collision-") || name.starts_with("LOS-");
}

}  // namespace

std::string summary(const std::string& output, const Shape& shape, bool isShapeFile, uintmax_t bytes) {
    std::vector<std::string> parts;
    if (isShapeFile) {
        std::string triangles;
        int64_t visible = 0;
        for (const Shape::DetailLevel& level : shape.detailLevels) {
            if (isCollisionLevel(shape, level)) continue;
            triangles += (visible++ > 0 ? ", " : "") + std::to_string(level.polyCount);
        }
        const auto hidden = static_cast<int64_t>(shape.detailLevels.size()) - visible;
        parts.push_back(counted(visible, "detail level") + (visible > 0 ? " (" + triangles + " triangles)" : ""));
        if (hidden > 0) parts.push_back(counted(hidden, "collision level"));
        parts.push_back(counted(static_cast<int64_t>(shape.materials.size()), "material"));
    }
    parts.push_back(counted(static_cast<int64_t>(shape.nodes.size()), "node"));
    parts.push_back(counted(static_cast<int64_t>(shape.sequences.size()), "sequence"));
    parts.push_back(std::to_string(bytes) + " bytes");
    std::string text = output + ": ";
    for (size_t i = 0; i < parts.size(); ++i) text += (i > 0 ? ", " : "") + parts[i];
    return text;
}

std::vector<std::string> logWarnings(const std::string& log) {
    std::vector<std::string> tags, layers, nodes;
    std::string part;
    for (const std::string& line : lines(log)) {
        if (between(line, "  Unknown tag: ", "", part)) addOnce(tags, quotedTag(part));
        if (between(line, "  Layer ", " is being dropped", part)) {
            // "NAME(INDEX)"; a slot that holds no layer has no name, and nothing of it can be missed.
            const std::string name = part.substr(0, part.rfind('('));
            if (!name.empty()) layers.push_back(name);
        }
        // A group holds nothing that could be missed.
        if (between(line, "!\t", " isn't on a layer, skipping it.", part) && !part.starts_with("group ")) {
            nodes.push_back(part);
        }
    }
    std::vector<std::string> warnings;
    if (!tags.empty()) warnings.push_back("unknown tags: " + listed(tags));
    if (!layers.empty()) warnings.push_back("layers without polyhedra, left out: " + listed(layers));
    if (!nodes.empty()) warnings.push_back("on no layer, left out: " + listed(nodes));
    return warnings;
}

int clipsFound(const std::string& log) {
    std::string part;
    for (const std::string& line : lines(log)) {
        if (between(line, "  ", " animation clips found", part)) return std::atoi(part.c_str());
    }
    return 0;
}

}  // namespace marrowfen::cli
