#pragma once

// A host scene as plain data: what a scene file says and what an imported model becomes. docs/scene-file.md gives the
// meaning of every field. Poses are in scene space (right-handed, Z up), never relative to a parent.

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "ground/message.h"
#include "host/tsxapi.h"

namespace marrowfen::standin {

using Vec2 = std::array<float, 2>;
using Vec3 = std::array<float, 3>;
using Transform = std::array<float, 12>;  // three rows of four, the translation in the fourth column

// The host counts slots of layers and the corners of a face in signed 16 bits.
inline constexpr size_t kMostLayers = 32767;
inline constexpr size_t kMostCorners = 32767;
inline constexpr size_t kFewestCorners = 3;

struct HostSettings {
    int16_t major = 660;
    int16_t minor = 11;
    std::string directory;
    float frameRate = 30;
    int32_t playMode = 0;
    float activeTime = 0;

    bool operator==(const HostSettings&) const = default;
};

struct ShaderParameter {
    using Value = std::variant<bool, float, std::string>;

    std::string name;
    int32_t type = TsxFloatParameter;  // a TsxParameterType or any other number
    Value value;                       // as the type says; for other types whatever JSON text the file has

    bool operator==(const ShaderParameter&) const = default;
};

struct Shader {
    std::string name;
    bool valid = true;
    std::vector<ShaderParameter> parameters;

    bool operator==(const Shader&) const = default;
};

struct HostMaterial {
    std::array<uint8_t, 4> color = {255, 255, 255, 255};  // the fourth is the opacity
    std::string texture;
    std::array<float, 4> reflection = {0, 0, 0, 0};
    std::optional<Shader> shader;

    bool operator==(const HostMaterial&) const = default;
};

struct Corner {
    int32_t vertex = 0;
    int32_t uv = 0;

    bool operator==(const Corner&) const = default;
};

struct Face {
    std::vector<Corner> corners;  // at least three, clockwise seen from outside
    int32_t material = 0;         // index into the polyhedron's own materials

    bool operator==(const Face&) const = default;
};

struct Polyhedron {
    std::vector<Vec3> vertices;
    std::optional<std::vector<Vec3>> normals;  // one per vertex, pointing inward; computed when left out
    std::vector<Vec2> uvs;                     // v upward
    std::vector<Face> faces;
    std::vector<std::optional<std::string>> materials;  // keys of Scene::materials, or none
    std::optional<Transform> vertexTransform;           // the node's own transform when left out

    bool operator==(const Polyhedron&) const = default;
};

// The vertices that a muscle or tendon holds on each polyhedron, by the polyhedron's id, in file order.
using HeldVertices = std::vector<std::pair<std::string, std::vector<int32_t>>>;

struct Muscle {
    std::string joint;  // id
    HeldVertices vertices;

    bool operator==(const Muscle&) const = default;
};

// Levels of nodes: every walk through them is recursive, the plug-in's too.
inline constexpr int kDeepestNode = 1000;

struct Node {
    int32_t type = TsxPolyhedron;  // a TsxNodeType or any other number
    std::string name;
    std::optional<std::string> id;  // the name when left out
    int16_t layer = 0;
    Vec3 location = {0, 0, 0};
    Vec3 rotation = {0, 0, 0};           // radians
    std::optional<Transform> transform;  // from location and rotation when left out
    std::optional<Vec3> axes;            // the location when left out
    std::vector<Node> children;

    Polyhedron polyhedron;        // of a polyhedron
    std::vector<Muscle> muscles;  // of a bone, in the host's joint order
    HeldVertices tendon;          // of a joint

    const std::string& identity() const { return id ? *id : name; }
    bool operator==(const Node&) const = default;
};

struct Key {
    float frame = 0;
    std::optional<Vec3> location;  // the node's own when left out, as is the rotation
    std::optional<Vec3> rotation;
    std::optional<Transform> transform;  // from location and rotation when left out

    bool operator==(const Key&) const = default;
};

struct Clip {
    std::string name;  // tags included
    float start = 0, end = 0;
    std::optional<float> length;  // end - start when left out
    int32_t toggle = 0, loop = 0;
    bool enabled = true;
    std::vector<std::pair<std::string, std::vector<Key>>> keys;  // by node id, frames rising

    bool operator==(const Clip&) const = default;
};

struct Scene {
    HostSettings host;
    std::vector<std::optional<std::string>> layers;  // slot by slot; none is a slot that holds no layer
    std::vector<std::pair<std::string, HostMaterial>> materials;
    std::vector<Node> nodes;  // top-level, in the host's order
    std::vector<Clip> clips;

    bool operator==(const Scene&) const = default;
};

// How a scene or model was loaded, or why it wasn't.
// A file that loading a scene asked for.
struct LookedFor {
    std::string path;
    bool found = false;
};

struct LoadResult {
    std::optional<Scene> scene;     // none on failure
    std::string error;              // one line that names the file and the place
    std::vector<Message> warnings;  // what was dropped or guessed, of the kinds of load_notices.h
};

}  // namespace marrowfen::standin
