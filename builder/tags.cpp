#include "builder/tags.h"

#include <algorithm>
#include <functional>
#include <string_view>
#include <vector>

#include "ground/ascii.h"
#include "shape/shape.h"

namespace marrowfen {

namespace {

constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";

// A row of a tag set: a flag matches the whole tag, a value row what begins with its prefix ("size=").
struct Tag {
    std::string_view text;
    std::string_view found;             // logged when the row matches
    std::string_view valueLabel;        // logged before the value; empty for a flag
    std::function<void(int32_t)> take;  // a flag is given 0

    bool isFlag() const { return valueLabel.empty(); }
    bool matches(std::string_view tag) const {
        return isFlag() ? equalIgnoringCase(tag, text) : beginsWithIgnoringCase(tag, text);
    }
};

std::string_view trimmed(std::string_view text) {
    const size_t first = text.find_first_not_of(kWhiteSpace);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kWhiteSpace) - first + 1);
}

// White space, a sign, digits; what follows is ignored and no digits are 0. A number beyond 32 bits is the nearest end
// of their range.
int32_t decimalValue(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(kWhiteSpace), text.size()));
    const bool negative = !text.empty() && text.front() == '-';
    if (!text.empty() && (text.front() == '-' || text.front() == '+')) text.remove_prefix(1);

    constexpr int64_t kBeyond = int64_t{1} << 31;
    int64_t value = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') break;
        value = std::min(value * 10 + (c - '0'), kBeyond);
    }
    return static_cast<int32_t>(negative ? -value : std::min(value, kBeyond - 1));
}

void applyTag(std::string_view tag, const std::vector<Tag>& rows, std::ostream& log) {
    for (const Tag& row : rows) {
        if (!row.matches(tag)) continue;
        log << row.found;
        const std::string_view valueText = tag.substr(row.text.size());
        if (row.isFlag()) {
            row.take(0);
        } else if (!valueText.empty()) {
            const int32_t value = decimalValue(valueText);
            row.take(value);
            log << row.valueLabel << value;
        }
        log << std::endl;
        return;
    }
    log << "  Unknown tag: " << tag << std::endl;
}

// shownName is what the log says; the tags are those of fullName.
void parseTags(std::string_view shownName, std::string_view fullName, const std::vector<Tag>& rows, std::ostream& log) {
    log << "  Searching " << shownName << " for tags..." << std::endl;
    const size_t colon = fullName.find(':');
    std::string_view list = colon == std::string_view::npos ? std::string_view() : fullName.substr(colon + 1);
    while (!list.empty()) {
        const std::string_view tag = list.substr(0, list.find(','));
        list.remove_prefix(std::min(tag.size() + 1, list.size()));
        if (!tag.empty()) applyTag(trimmed(tag), rows, log);
    }
    log << "  Done searching." << std::endl;
}

}  // namespace

void parseDetailTags(const std::string& name, LayerInfo& layer, std::ostream& log) {
    const auto addFlags = [&](uint32_t flags) { return [&layer, flags](int32_t) { layer.meshFlags |= flags; }; };
    const std::vector<Tag> rows = {
        {"billboard", "  Found billboard tag", "", addFlags(Billboard)},
        {"billboardz", "  Found billboardz tag", "", addFlags(Billboard | BillboardZ)},
        {"enormals", "  Found encoded normals tag", "", addFlags(EncodedNormals)},
        {"sort", "  Found sort tag", "", [&](int32_t) { layer.sort = true; }},
        {"no_strip", "  Found no_strip tag", "", [&](int32_t) { layer.strip = false; }},
        {"autolod=", "  Found autolod tag: ", "Percent = ",
         [&](int32_t value) {
             layer.autoLod = true;
             layer.autoLodPercent = value;
         }},
        {"size=", "  Found size tag: ", "  Size = ", [&](int32_t value) { layer.size = value; }},
    };
    parseTags(name, name, rows, log);
}

void parseCollisionTags(const std::string& name, LayerInfo& layer, std::ostream& log) {
    const std::vector<Tag> rows = {
        {"cylinder", "  Found cylinder tag.", "",
         [&](int32_t) { layer.collisionType = CollisionType::CylinderCollision; }},
        {"box", "  Found box tag.", "", [&](int32_t) { layer.collisionType = CollisionType::BoxCollision; }},
    };
    parseTags(name, name, rows, log);
}

void parseBoundsTags(const std::string& name, TextureOptions& options, std::ostream& log) {
    const std::vector<Tag> rows = {
        {"no_mipmap", "  Found no_mipmap tag.", "", [&](int32_t) { options.noMipmap = true; }},
        {"no_mipmap_trans", "  Found no_mipmap_trans tag.", "", [&](int32_t) { options.noMipmapTrans = true; }},
        {"no_black_border", "  Found no_black_border tag.", "", [&](int32_t) { options.noBlackBorder = true; }},
    };
    parseTags(name, name, rows, log);
}

void parseClipTags(ClipInfo& clip, std::ostream& log) {
    const std::vector<Tag> rows = {
        {"blend", "  Found blend tag", "", [&](int32_t) { clip.flags |= Shape::Blend; }},
        {"fps=", "  Found fps tag: ", "FPS = ", [&](int32_t value) { clip.fps = value; }},
        {"priority=", "  Found priority tag: ", "Priority = ", [&](int32_t value) { clip.priority = value; }},
    };
    parseTags(clip.name, clip.fullName, rows, log);
}

std::string nameWithoutTags(const std::string& name) { return name.substr(0, name.find(':')); }

}  // namespace marrowfen
