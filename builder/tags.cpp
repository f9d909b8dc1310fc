#include "builder/tags.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <vector>

#include "ground/ascii.h"
#include "ground/at.h"
#include "ground/excerpt.h"
#include "ground/near_word.h"
#include "shape/shape.h"

namespace marrowfen {

namespace {

constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";

// A flag is the whole tag, a value tag what begins with its word ("size=").
struct TagWord {
    std::string_view text;
    std::string_view found;       // logged when a tag matches
    std::string_view valueLabel;  // logged before the value; empty for a flag

    bool isFlag() const { return valueLabel.empty(); }
};

bool isTagOfWord(std::string_view tag, std::string_view word) {
    return word.ends_with('=') ? beginsWithIgnoringCase(tag, word) : equalIgnoringCase(tag, word);
}

// A row of a role's tags.
template <class Record>
struct Tag {
    TagWord word;
    void (*take)(Record& record, int32_t value);  // a flag is given 0
};

constexpr Tag<LayerInfo> kDetailTags[] = {
    {{"billboard", "  Found billboard tag", ""}, [](LayerInfo& l, int32_t) { l.meshFlags |= Billboard; }},
    {{"billboardz", "  Found billboardz tag", ""},
     [](LayerInfo& l, int32_t) { l.meshFlags |= Billboard | BillboardZ; }},
    {{"enormals", "  Found encoded normals tag", ""}, [](LayerInfo& l, int32_t) { l.meshFlags |= EncodedNormals; }},
    {{"sort", "  Found sort tag", ""}, [](LayerInfo& l, int32_t) { l.sort = true; }},
    {{"no_strip", "  Found no_strip tag", ""}, [](LayerInfo& l, int32_t) { l.strip = false; }},
    {{"autolod=", "  Found autolod tag: ", "Percent = "},
     [](LayerInfo& l, int32_t value) {
         l.autoLod = true;
         l.autoLodPercent = value;
     }},
    {{"size=", "  Found size tag: ", "  Size = "}, [](LayerInfo& l, int32_t value) { l.size = value; }},
};

constexpr Tag<LayerInfo> kCollisionTags[] = {
    {{"cylinder", "  Found cylinder tag.", ""},
     [](LayerInfo& l, int32_t) { l.collisionType = CollisionType::CylinderCollision; }},
    {{"box", "  Found box tag.", ""}, [](LayerInfo& l, int32_t) { l.collisionType = CollisionType::BoxCollision; }},
};

constexpr Tag<TextureOptions> kBoundsTags[] = {
    {{"no_mipmap", "  Found no_mipmap tag.", ""}, [](TextureOptions& o, int32_t) { o.noMipmap = true; }},
    {{"no_mipmap_trans", "  Found no_mipmap_trans tag.", ""},
     [](TextureOptions& o, int32_t) { o.noMipmapTrans = true; }},
    {{"no_black_border", "  Found no_black_border tag.", ""},
     [](TextureOptions& o, int32_t) { o.noBlackBorder = true; }},
};

constexpr Tag<ClipInfo> kClipTags[] = {
    {{"blend", "  Found blend tag", ""}, [](ClipInfo& c, int32_t) { c.flags |= Shape::Blend; }},
    {{"fps=", "  Found fps tag: ", "FPS = "}, [](ClipInfo& c, int32_t value) { c.fps = value; }},
    {{"priority=", "  Found priority tag: ", "Priority = "}, [](ClipInfo& c, int32_t value) { c.priority = value; }},
};

// The tags of one role (TagRole numbers them), and where they may stand.
struct RoleTags {
    const char* owners;
    std::vector<std::string_view> words;
};

template <class Record, size_t Count>
RoleTags roleTags(const char* owners, const Tag<Record> (&tags)[Count]) {
    RoleTags role{owners, {}};
    for (const Tag<Record>& tag : tags) role.words.push_back(tag.word.text);
    return role;
}

const std::vector<RoleTags>& rolesOfTags() {
    static const std::vector<RoleTags> roles = {
        roleTags("detail layers", kDetailTags), roleTags("collision layers", kCollisionTags),
        roleTags("the bounds layer", kBoundsTags), roleTags("clips", kClipTags)};
    return roles;
}

bool isTagOf(std::string_view tag, const RoleTags& role) {
    return std::any_of(role.words.begin(), role.words.end(),
                       [&](std::string_view word) { return isTagOfWord(tag, word); });
}

// Where a tag that is unknown in its place may stand; null for one that is unknown everywhere.
const char* ownersOf(std::string_view tag) {
    for (const RoleTags& role : rolesOfTags()) {
        if (isTagOf(tag, role)) return role.owners;
    }
    return nullptr;
}

// The words of all tags, of whatever role.
std::vector<std::string_view> knownWords() {
    std::vector<std::string_view> words;
    for (const RoleTags& role : rolesOfTags()) words.insert(words.end(), role.words.begin(), role.words.end());
    return words;
}

std::string_view trimmed(std::string_view text) {
    const size_t first = text.find_first_not_of(kWhiteSpace);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kWhiteSpace) - first + 1);
}

struct DecimalNumber {
    int32_t value = 0;
    bool isExact = false;  // it is all that the text says
};

// White space, a sign, digits; what follows is ignored and no digits are 0. A number beyond 32 bits is the nearest end
// of their range.
DecimalNumber decimalNumber(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(kWhiteSpace), text.size()));
    const bool negative = !text.empty() && text.front() == '-';
    if (!text.empty() && (text.front() == '-' || text.front() == '+')) text.remove_prefix(1);

    constexpr int64_t kBeyond = int64_t{1} << 31;
    const size_t digits = std::min(text.find_first_not_of("0123456789"), text.size());
    int64_t value = 0;
    for (const char c : text.substr(0, digits)) value = std::min(value * 10 + (c - '0'), kBeyond);
    return {static_cast<int32_t>(negative ? -value : std::min(value, kBeyond - 1)),
            digits > 0 && digits == text.size() && value < kBeyond};
}

std::string quoted(std::string_view tag) { return "\"" + excerpt(tag) + "\""; }

// An unknown tag in quotes, with the known one that it was probably meant to be: its word without white space is near,
// and it has or hasn't a value.
std::string quotedWithGuess(std::string_view tag) {
    const size_t equals = std::min(tag.find('='), tag.size());
    std::string word;
    std::copy_if(tag.begin(), tag.begin() + static_cast<ptrdiff_t>(equals), std::back_inserter(word),
                 [](char c) { return kWhiteSpace.find(c) == std::string_view::npos; });
    if (equals < tag.size()) word += '=';

    std::string guess(nearWord(word, knownWords()));
    if (guess.ends_with('=') && equals < tag.size()) guess += tag.substr(equals + 1);
    return quoted(tag) + (guess.empty() ? "" : " (did you mean \"" + guess + "\"?)");
}

// Whose name carries the tags. There may be many, so that messages about each are given the beginning of the name.
struct Owner {
    Message::Place place;
    const std::string& name;  // without tags for a clip
    const std::string shown = excerpt(name);
};

// The message about a tag that its owner's role doesn't know.
Message uselessTag(std::string_view tag, const Owner& owner) {
    const char* owners = ownersOf(tag);
    if (owners == nullptr) return {&kUnknownTag, owner.place, owner.shown, quotedWithGuess(tag)};
    return {&kTagOfOtherRole, owner.place, owner.shown, quoted(tag) + " in " + owner.shown + " is for " + owners};
}

template <class Record, size_t Count>
void applyTag(std::string_view text, const Tag<Record> (&tags)[Count], Record& record, const Owner& owner,
              Notices& notices) {
    const auto* const tag = std::find_if(std::begin(tags), std::end(tags),
                                         [&](const Tag<Record>& row) { return isTagOfWord(text, row.word.text); });
    if (tag == std::end(tags)) {
        notices.tell("  Unknown tag: " + std::string(text), uselessTag(text, owner));
        return;
    }
    std::ostream& log = notices.log();
    log << tag->word.found;
    const std::string_view valueText = text.substr(tag->word.text.size());
    if (tag->word.isFlag()) {
        tag->take(record, 0);
    } else if (!valueText.empty()) {
        const DecimalNumber number = decimalNumber(valueText);
        tag->take(record, number.value);
        log << tag->word.valueLabel << number.value;
        if (!number.isExact) {
            notices.tell(
                {&kTagValue, owner.place, owner.shown, quoted(text) + " is read as " + std::to_string(number.value)});
        }
    } else {
        notices.tell({&kTagValue, owner.place, owner.shown, quoted(text) + " has none"});
    }
    log << std::endl;
}

// The tags of fullName, trimmed; an empty one has white space between its commas.
std::vector<std::string_view> tagsOf(std::string_view fullName) {
    const size_t colon = fullName.find(':');
    std::string_view list = colon == std::string_view::npos ? std::string_view() : fullName.substr(colon + 1);
    std::vector<std::string_view> tags;
    while (!list.empty()) {
        const std::string_view tag = list.substr(0, list.find(','));
        list.remove_prefix(std::min(tag.size() + 1, list.size()));
        if (!tag.empty()) tags.push_back(trimmed(tag));
    }
    return tags;
}

template <class Record, size_t Count>
void parseTags(std::string_view fullName, const Tag<Record> (&tags)[Count], Record& record, const Owner& owner,
               Notices& notices) {
    notices.log() << "  Searching " << owner.name << " for tags..." << std::endl;
    for (const std::string_view text : tagsOf(fullName)) applyTag(text, tags, record, owner, notices);
    notices.log() << "  Done searching." << std::endl;
}

}  // namespace

void parseDetailTags(LayerInfo& layer, Notices& notices) {
    parseTags(layer.name, kDetailTags, layer, {Message::Place::Layer, layer.name}, notices);
}

void parseCollisionTags(LayerInfo& layer, Notices& notices) {
    parseTags(layer.name, kCollisionTags, layer, {Message::Place::Layer, layer.name}, notices);
}

void parseBoundsTags(const std::string& layerName, TextureOptions& options, Notices& notices) {
    parseTags(layerName, kBoundsTags, options, {Message::Place::Layer, layerName}, notices);
}

void tellTagsOfNodesLayer(const std::string& layerName, Notices& notices) {
    for (const std::string_view tag : tagsOf(layerName)) {
        if (ownersOf(tag) != nullptr) notices.tell(uselessTag(tag, {Message::Place::Layer, layerName}));
    }
}

void parseClipTags(ClipInfo& clip, Notices& notices) {
    parseTags(clip.fullName, kClipTags, clip, {Message::Place::Clip, clip.name}, notices);
}

TagSplit splitTags(const std::string& fullName, TagRole role) {
    TagSplit split;
    for (const std::string_view tag : tagsOf(fullName)) {
        const bool isKnown = role != TagRole::None && isTagOf(tag, at(rolesOfTags(), static_cast<size_t>(role)));
        (isKnown ? split.understood : split.unknown).emplace_back(tag);
    }
    return split;
}

std::string nameWithoutTags(const std::string& name) { return name.substr(0, name.find(':')); }

}  // namespace marrowfen
