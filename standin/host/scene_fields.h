#pragma once

// One list of fields per record of a scene: what the file calls each, and its limits. The scene file's reader and its
// writer, the check of a scene's values and the hand-over from the importing process all walk these lists in this
// order. It is the order of keys in a written file, and of two faults in a record the first one is reported.

#include <cstddef>
#include <optional>
#include <span>
#include <tuple>
#include <type_traits>

#include "standin/host/scene.h"
#include "standin/host/scene_words.h"

namespace marrowfen::standin {

// The host keeps the material of a face in signed 16 bits.
inline constexpr WholeBounds kMaterialNumbers = {-32768, 32767};

struct FieldRules {
    bool isRequired = false;                 // in a file; other keys are left out where they hold their default
    std::optional<TsxNodeType> onlyOf = {};  // only a record of this type has it
    std::span<const TypeWord> words = {};    // of a type code: the words for the known ones
    bool isPlace = false;                    // points of the scene, or matrices that lead to them
    WholeBounds whole = {};                  // of a whole number, within what its own type holds
    CountBounds count = {};                  // of a list
};

template <class Record, class T>
struct Field {
    const char* key;  // null of a part, whose own fields stand among the record's
    T Record::*member;
    FieldRules rules = {};
};

template <class Record, class T>
Field(const char*, T Record::*) -> Field<Record, T>;
template <class Record, class T>
Field(const char*, T Record::*, FieldRules) -> Field<Record, T>;
template <class Record, class T>
Field(std::nullptr_t, T Record::*, FieldRules) -> Field<Record, T>;

// What isn't a record has no fields.
template <class Record>
inline constexpr std::tuple<> kFields{};

template <>
inline constexpr std::tuple kFields<HostSettings>{
    Field{"major", &HostSettings::major},         Field{"minor", &HostSettings::minor},
    Field{"directory", &HostSettings::directory}, Field{"frameRate", &HostSettings::frameRate},
    Field{"playMode", &HostSettings::playMode},   Field{"activeTime", &HostSettings::activeTime},
};

// The value is what the type says; a type that the exporter doesn't know needs none.
template <>
inline constexpr std::tuple kFields<ShaderParameter>{
    Field{"name", &ShaderParameter::name, {.isRequired = true}},
    Field{"type", &ShaderParameter::type, {.isRequired = true, .words = kParameterTypes}},
    Field{"value", &ShaderParameter::value},
};

template <>
inline constexpr std::tuple kFields<Shader>{
    Field{"name", &Shader::name, {.isRequired = true}},
    Field{"valid", &Shader::valid},
    Field{"parameters", &Shader::parameters},
};

template <>
inline constexpr std::tuple kFields<HostMaterial>{
    Field{"color", &HostMaterial::color},
    Field{"texture", &HostMaterial::texture},
    Field{"reflection", &HostMaterial::reflection},
    Field{"shader", &HostMaterial::shader},
};

template <>
inline constexpr std::tuple kFields<Face>{
    Field{"corners", &Face::corners, {.isRequired = true, .count = {kFewestCorners, kMostCorners, "a face"}}},
    Field{"material", &Face::material, {.whole = kMaterialNumbers}},
};

template <>
inline constexpr std::tuple kFields<Polyhedron>{
    Field{"vertexTransform", &Polyhedron::vertexTransform, {.isPlace = true}},
    Field{"vertices", &Polyhedron::vertices, {.isRequired = true, .isPlace = true}},
    Field{"normals", &Polyhedron::normals},
    Field{"uvs", &Polyhedron::uvs},
    Field{"faces", &Polyhedron::faces},
    Field{"materials", &Polyhedron::materials},
};

template <>
inline constexpr std::tuple kFields<Muscle>{
    Field{"joint", &Muscle::joint, {.isRequired = true}},
    Field{"vertices", &Muscle::vertices},
};

template <>
inline constexpr std::tuple kFields<Node>{
    Field{"type", &Node::type, {.isRequired = true, .words = kNodeTypes}},
    Field{"name", &Node::name},
    Field{"id", &Node::id},
    Field{"layer", &Node::layer},
    Field{"location", &Node::location, {.isPlace = true}},
    Field{"rotation", &Node::rotation},
    Field{"transform", &Node::transform, {.isPlace = true}},
    Field{"axes", &Node::axes, {.isPlace = true}},
    Field{nullptr, &Node::polyhedron, {.onlyOf = TsxPolyhedron}},
    Field{"muscles", &Node::muscles, {.onlyOf = TsxBone}},
    Field{"tendon", &Node::tendon, {.onlyOf = TsxJoint}},
    Field{"children", &Node::children},
};

template <>
inline constexpr std::tuple kFields<Key>{
    Field{"frame", &Key::frame, {.isRequired = true}},
    Field{"location", &Key::location, {.isPlace = true}},
    Field{"rotation", &Key::rotation},
    Field{"transform", &Key::transform, {.isPlace = true}},
};

template <>
inline constexpr std::tuple kFields<Clip>{
    Field{"name", &Clip::name, {.isRequired = true}},
    Field{"start", &Clip::start, {.isRequired = true}},
    Field{"end", &Clip::end, {.isRequired = true}},
    Field{"length", &Clip::length},
    Field{"toggle", &Clip::toggle},
    Field{"loop", &Clip::loop},
    Field{"enabled", &Clip::enabled},
    Field{"keys", &Clip::keys},
};

template <>
inline constexpr std::tuple kFields<Scene>{
    Field{"host", &Scene::host},
    Field{"layers", &Scene::layers, {.isRequired = true, .count = {0, kMostLayers, "a host"}}},
    Field{"materials", &Scene::materials},
    Field{"nodes", &Scene::nodes, {.isRequired = true}},
    Field{"clips", &Scene::clips},
};

template <class T>
concept SceneRecord = std::tuple_size_v<decltype(kFields<T>)> >
0;

// Calls visit(field) for each field of the record.
template <SceneRecord Record, class Visit>
constexpr void forEachField(Visit&& visit) {
    std::apply([&](const auto&... field) { (visit(field), ...); }, kFields<Record>);
}

// Whether a record of its type has the field.
template <class Record, class T>
bool isIn(const Record& record, const Field<Record, T>& field) {
    if constexpr (std::is_same_v<Record, Node>) {
        return !field.rules.onlyOf || *field.rules.onlyOf == record.type;
    } else {
        return true;
    }
}

// Kinds of values that the walks tell apart.
template <class T>
inline constexpr bool kIsOptional = false;
template <class T>
inline constexpr bool kIsOptional<std::optional<T>> = true;

template <class T>
inline constexpr bool kIsWhole = std::is_integral_v<T> && !std::is_same_v<T, bool>;

}  // namespace marrowfen::standin
