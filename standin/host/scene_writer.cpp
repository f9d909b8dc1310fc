#include <bit>
#include <cstdint>

#include "host/tsxapi.h"
#include "standin/host/json_document.h"
#include "standin/host/scene_file.h"
#include "standin/host/scene_words.h"

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

// Pieces of the scene's records; the overloads that a list or a map of records finds its entries by.
Piece piece(bool flag) { return word(flag ? "true" : "false"); }
Piece piece(float number) { return word(numberText(number)); }
Piece piece(int32_t number) { return word(std::to_string(number)); }
Piece piece(const std::string& text) { return word(jsonQuoted(text)); }
Piece piece(const std::optional<std::string>& text) { return word(text ? jsonQuoted(*text) : "null"); }
Piece piece(const ShaderParameter& parameter);
Piece piece(const Shader& shader);
Piece piece(const Material& material);
Piece piece(const Face& face);
Piece piece(const Muscle& muscle);
Piece piece(const Node& node);
Piece piece(const Key& key);
Piece piece(const Clip& clip);
Piece piece(const HostSettings& host);

// Numbers in brackets, as one word.
template <class T, size_t N>
Piece piece(const std::array<T, N>& numbers) {
    std::string text;
    for (const T& number : numbers) text += (text.empty() ? "[" : ", ") + piece(number).word;
    return word(text + "]");
}

template <class T>
Piece list(const std::vector<T>& entries, Piece::Layout layout) {
    Piece result;
    result.layout = layout;
    result.pieces.reserve(entries.size());
    for (const T& entry : entries) result.pieces.push_back(piece(entry));
    return result;
}

Piece piece(const std::vector<int32_t>& numbers) { return list(numbers, Piece::Filled); }
Piece piece(const std::vector<Vec3>& points) { return list(points, Piece::Filled); }
Piece piece(const std::vector<Key>& keys) { return list(keys, Piece::List); }

template <class T>
Piece piece(const std::vector<std::pair<std::string, T>>& entries) {
    Piece result;
    result.layout = Piece::Object;
    for (const auto& [key, value] : entries) {
        result.pieces.push_back(piece(value));
        result.pieces.back().key = key;
    }
    return result;
}

// Equal in every bit, so that a negative zero isn't taken for a default.
template <class T>
bool isSame(const T& a, const T& b) {
    return a == b;
}
bool isSame(float a, float b) { return std::bit_cast<uint32_t>(a) == std::bit_cast<uint32_t>(b); }
template <size_t N>
bool isSame(const std::array<float, N>& a, const std::array<float, N>& b) {
    for (size_t i = 0; i < N; ++i) {
        if (!isSame(a[i], b[i])) return false;
    }
    return true;
}

// Collects an object's members.
class Members {
public:
    void add(const char* key, Piece value) {
        value.key = key;
        object_.pieces.push_back(std::move(value));
    }

    // Left out when it holds its default.
    template <class T>
    void add(const char* key, const T& value, const T& byDefault) {
        if (!isSame(value, byDefault)) add(key, piece(value));
    }

    template <class T>
    void addGiven(const char* key, const std::optional<T>& value) {
        if (value) add(key, piece(*value));
    }

    template <class T>
    void addList(const char* key, const std::vector<T>& entries, Piece::Layout layout) {
        if (!entries.empty()) add(key, list(entries, layout));
    }

    template <class T>
    void addMap(const char* key, const std::vector<std::pair<std::string, T>>& entries) {
        if (!entries.empty()) add(key, piece(entries));
    }

    Piece object() {
        object_.layout = Piece::Object;
        return std::move(object_);
    }

private:
    Piece object_;
};

template <size_t N>
Piece typePiece(int32_t type, const TypeWord (&words)[N]) {
    for (const TypeWord& known : words) {
        if (known.code == type) return piece(std::string(known.word));
    }
    return piece(type);
}

void addParameterValue(Members& members, const ShaderParameter& parameter) {
    const auto textValue = [&] {
        const std::string* text = std::get_if<std::string>(&parameter.value);
        return text ? *text : std::string();
    };
    const float* number = std::get_if<float>(&parameter.value);
    const bool* flag = std::get_if<bool>(&parameter.value);
    switch (parameter.type) {
        case TsxFlagParameter:
            members.add("value", piece(flag && *flag ? 1 : 0));
            break;
        case TsxFloatParameter:
            members.add("value", piece(number ? *number : 0.0F));
            break;
        case TsxTextParameter:
            members.add("value", piece(textValue()));
            break;
        default:
            if (!textValue().empty()) members.add("value", word(textValue()));
    }
}

Piece piece(const ShaderParameter& parameter) {
    Members members;
    members.add("name", piece(parameter.name));
    members.add("type", typePiece(parameter.type, kParameterTypes));
    addParameterValue(members, parameter);
    return members.object();
}

Piece piece(const Shader& shader) {
    Members members;
    members.add("name", piece(shader.name));
    members.add("valid", shader.valid, true);
    members.addList("parameters", shader.parameters, Piece::List);
    return members.object();
}

Piece piece(const Material& material) {
    const Material byDefault;
    Members members;
    members.add("color", material.color, byDefault.color);
    members.add("texture", material.texture, byDefault.texture);
    members.add("reflection", material.reflection, byDefault.reflection);
    members.addGiven("shader", material.shader);
    return members.object();
}

Piece piece(const Face& face) {
    std::string corners;
    for (const Corner& corner : face.corners) {
        corners +=
            (corners.empty() ? "[[" : ", [") + std::to_string(corner.vertex) + ", " + std::to_string(corner.uv) + "]";
    }
    Members members;
    members.add("corners", word(corners + "]"));
    members.add("material", face.material, int32_t{0});
    return members.object();
}

Piece piece(const Muscle& muscle) {
    Members members;
    members.add("joint", piece(muscle.joint));
    members.addMap("vertices", muscle.vertices);
    return members.object();
}

void addPolyhedron(Members& members, const Polyhedron& polyhedron) {
    members.addGiven("vertexTransform", polyhedron.vertexTransform);
    members.add("vertices", list(polyhedron.vertices, Piece::Filled));
    members.addGiven("normals", polyhedron.normals);
    members.addList("uvs", polyhedron.uvs, Piece::Filled);
    members.addList("faces", polyhedron.faces, Piece::List);
    members.addList("materials", polyhedron.materials, Piece::Filled);
}

Piece piece(const Node& node) {
    const Node byDefault;
    Members members;
    members.add("type", typePiece(node.type, kNodeTypes));
    members.add("name", node.name, byDefault.name);
    members.addGiven("id", node.id);
    members.add("layer", int32_t{node.layer}, int32_t{byDefault.layer});
    members.add("location", node.location, byDefault.location);
    members.add("rotation", node.rotation, byDefault.rotation);
    members.addGiven("transform", node.transform);
    members.addGiven("axes", node.axes);
    if (node.type == TsxPolyhedron) addPolyhedron(members, node.polyhedron);
    if (node.type == TsxBone) members.addList("muscles", node.muscles, Piece::List);
    if (node.type == TsxJoint) members.addMap("tendon", node.tendon);
    members.addList("children", node.children, Piece::List);
    return members.object();
}

Piece piece(const Key& key) {
    Members members;
    members.add("frame", piece(key.frame));
    members.addGiven("location", key.location);
    members.addGiven("rotation", key.rotation);
    members.addGiven("transform", key.transform);
    return members.object();
}

Piece piece(const Clip& clip) {
    const Clip byDefault;
    Members members;
    members.add("name", piece(clip.name));
    members.add("start", piece(clip.start));
    members.add("end", piece(clip.end));
    members.addGiven("length", clip.length);
    members.add("toggle", clip.toggle, byDefault.toggle);
    members.add("loop", clip.loop, byDefault.loop);
    members.add("enabled", clip.enabled, byDefault.enabled);
    members.addMap("keys", clip.keys);
    return members.object();
}

Piece piece(const HostSettings& host) {
    const HostSettings byDefault;
    Members members;
    members.add("major", int32_t{host.major}, int32_t{byDefault.major});
    members.add("minor", int32_t{host.minor}, int32_t{byDefault.minor});
    members.add("directory", host.directory, byDefault.directory);
    members.add("frameRate", host.frameRate, byDefault.frameRate);
    members.add("playMode", host.playMode, byDefault.playMode);
    members.add("activeTime", host.activeTime, byDefault.activeTime);
    return members.object();
}

Piece scenePiece(const Scene& scene) {
    Members members;
    members.add("format", piece(std::string(kSceneFormat)));
    members.add("version", piece(kSceneVersion));
    Piece host = piece(scene.host);
    if (!host.pieces.empty()) members.add("host", std::move(host));
    members.add("layers", list(scene.layers, Piece::Filled));
    members.addMap("materials", scene.materials);
    members.add("nodes", list(scene.nodes, Piece::List));
    members.addList("clips", scene.clips, Piece::List);
    return members.object();
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
