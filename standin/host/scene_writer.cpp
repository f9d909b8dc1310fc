#include <algorithm>
#include <bit>
#include <cstdint>

#include "standin/host/json_document.h"
#include "standin/host/scene_fields.h"
#include "standin/host/scene_file.h"

// The scene becomes a tree of pieces, and the tree becomes lines: what fits into a line stands in one, longer objects
// get a line a member, longer lists a line an entry, and long lists of numbers and points fill their lines.

namespace marrowfen::standin {
namespace {

constexpr size_t kLineWidth = 120;
constexpr size_t kIndent = 2;

struct Piece {
    enum Layout { Word, Object, List, Filled };

    Layout layout = Word;
    std::string key;            // of an object's member
    std::string word;           // of a Word: its text
    std::vector<Piece> pieces;  // of the others

    bool isObject() const { return layout == Object; }
};

Piece word(std::string text) { return {Piece::Word, {}, std::move(text), {}}; }

// Equal in every bit, so that a negative zero isn't taken for a default.
bool isSame(float a, float b) { return std::bit_cast<uint32_t>(a) == std::bit_cast<uint32_t>(b); }
template <size_t N>
bool isSame(const std::array<float, N>& a, const std::array<float, N>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), [](float x, float y) { return isSame(x, y); });
}
template <class T>
bool isSame(const T& a, const T& b) {
    if constexpr (SceneRecord<T>) {
        bool same = true;
        forEachField<T>([&](const auto& field) { same = same && isSame(a.*field.member, b.*field.member); });
        return same;
    } else {
        return a == b;
    }
}

// What the values of a scene become.
class PieceMaker {
public:
    template <SceneRecord Record>
    static Piece make(const Record& record) {
        Piece object;
        object.layout = Piece::Object;
        addFields(object, record);
        return object;
    }

    static Piece make(bool flag) { return word(flag ? "true" : "false"); }
    static Piece make(float number) { return word(numberText(number)); }
    static Piece make(int32_t number) { return word(std::to_string(number)); }
    static Piece make(const std::string& text) { return word(jsonQuoted(text)); }
    static Piece make(const Corner& corner) { return make(std::array{corner.vertex, corner.uv}); }

    static void add(Piece& object, const char* key, Piece value) {
        value.key = key;
        object.pieces.push_back(std::move(value));
    }

private:
    // An optional entry of a list; an optional member is left out instead.
    static Piece make(const std::optional<std::string>& text) { return text ? make(*text) : word("null"); }

    template <class List>
    static Piece wordOf(const List& entries) {
        std::string text;
        for (const auto& entry : entries) text += (text.empty() ? "[" : ", ") + make(entry).word;
        return word(text + "]");
    }

    template <class T, size_t N>
    static Piece make(const std::array<T, N>& numbers) {
        return wordOf(numbers);
    }

    static Piece make(const std::vector<Corner>& corners) { return wordOf(corners); }

    template <class T>
    static Piece make(const std::vector<T>& entries) {
        Piece list;
        list.layout = SceneRecord<T> ? Piece::List : Piece::Filled;
        list.pieces.reserve(entries.size());
        for (const T& entry : entries) list.pieces.push_back(make(entry));
        return list;
    }

    template <class T>
    static Piece make(const std::vector<std::pair<std::string, T>>& entries) {
        Piece map;
        map.layout = Piece::Object;
        for (const auto& [key, value] : entries) add(map, key.c_str(), make(value));
        return map;
    }

    template <SceneRecord Record>
    static void addFields(Piece& object, const Record& record) {
        forEachField<Record>([&](const auto& field) {
            if (isIn(record, field)) addField(object, record, field);
        });
    }

    template <class Record, class T>
    static void addField(Piece& object, const Record& record, const Field<Record, T>& field) {
        static const Record byDefault;
        const T& value = record.*field.member;
        if constexpr (SceneRecord<T>) {
            if (field.key == nullptr) return addFields(object, value);
        }
        if (!field.rules.isRequired && isSame(value, byDefault.*field.member)) return;
        if constexpr (kIsOptional<T>) {
            add(object, field.key, make(*value));
        } else if constexpr (kIsWhole<T>) {
            add(object, field.key, wholePiece(value, field.rules));
        } else {
            add(object, field.key, make(value));
        }
    }

    static Piece wholePiece(int32_t number, const FieldRules& rules) {
        const auto isThis = [&](const TypeWord& type) { return type.code == number; };
        const auto known = std::find_if(rules.words.begin(), rules.words.end(), isThis);
        return known != rules.words.end() ? make(std::string(known->word)) : make(number);
    }

    // As the type says, whatever the value holds; of a type that the exporter doesn't know, it is JSON text.
    static void addField(Piece& object, const ShaderParameter& parameter,
                         const Field<ShaderParameter, ShaderParameter::Value>& field) {
        const bool* flag = std::get_if<bool>(&parameter.value);
        const float* number = std::get_if<float>(&parameter.value);
        const std::string* given = std::get_if<std::string>(&parameter.value);
        const std::string text = given ? *given : std::string();
        switch (parameter.type) {
            case TsxFlagParameter:
                return add(object, field.key, make(flag && *flag ? 1 : 0));
            case TsxFloatParameter:
                return add(object, field.key, make(number ? *number : 0.0F));
            case TsxTextParameter:
                return add(object, field.key, make(text));
            default:
                if (!text.empty()) add(object, field.key, word(text));
        }
    }
};

// The format stands in front of the scene's own members.
Piece scenePiece(const Scene& scene) {
    Piece head;
    PieceMaker::add(head, "format", PieceMaker::make(std::string(kSceneFormat)));
    PieceMaker::add(head, "version", PieceMaker::make(kSceneVersion));
    Piece object = PieceMaker::make(scene);
    object.pieces.insert(object.pieces.begin(), std::make_move_iterator(head.pieces.begin()),
                         std::make_move_iterator(head.pieces.end()));
    return object;
}

// From pieces to lines.
class LineWriter {
public:
    std::string text;

    // Writes the piece at the end of the last line; what it breaks into stands indented.
    void write(const Piece& piece, size_t indent) {
        if (piece.layout == Piece::Word) {
            text += piece.word;
            return;
        }
        const bool isBroken = !fitsInLine(piece);
        text += piece.isObject() ? '{' : '[';
        if (isBroken) newLine(indent + kIndent);
        for (size_t i = 0; i < piece.pieces.size(); ++i) {
            if (i > 0) separate(piece, i, indent, isBroken);
            if (piece.isObject()) text += jsonQuoted(piece.pieces[i].key) + ": ";
            write(piece.pieces[i], indent + kIndent);
        }
        if (isBroken) newLine(indent);
        text += piece.isObject() ? '}' : ']';
    }

private:
    size_t lineStart_ = 0;

    size_t column() const { return text.size() - lineStart_; }

    void newLine(size_t indent) {
        text += '\n';
        lineStart_ = text.size();
        text.append(indent, ' ');
    }

    // Puts a comma before entry i, and a blank or a line end.
    void separate(const Piece& piece, size_t i, size_t indent, bool isBroken) {
        text += ',';
        const bool fillsLine =
            piece.layout == Piece::Filled && column() + 2 + piece.pieces[i].word.size() <= kLineWidth;
        if (isBroken && !fillsLine) {
            newLine(indent + kIndent);
        } else {
            text += ' ';
        }
    }

    // Adds the piece's width to used; false as soon as that is more than a line.
    static bool measure(const Piece& piece, size_t& used) {
        used += piece.key.size() + piece.word.size() + 4;
        for (const Piece& inner : piece.pieces) {
            if (used > kLineWidth || !measure(inner, used)) return false;
        }
        return used <= kLineWidth;
    }

    bool fitsInLine(const Piece& piece) const {
        size_t used = column();
        return measure(piece, used);
    }
};

}  // namespace

std::string sceneText(const Scene& scene) {
    LineWriter writer;
    writer.write(scenePiece(scene), 0);
    return writer.text + "\n";
}

}  // namespace marrowfen::standin
