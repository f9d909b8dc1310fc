#pragma once

// Host materials become shape materials, shared by every face that maps to the same values.

#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/scene_node.h"
#include "shape/shape.h"

namespace marrowfen {

// What the artist asks of all textures of a shape.
struct TextureOptions {
    bool noMipmap = false;
    bool noMipmapTrans = false;
    bool noBlackBorder = false;
};

// The texture name of a material without a texture.
inline constexpr const char* kNoTextureName = "Unnamed";

// What is read from one host material.
struct MaterialInfo {
    float ambientFactor = 0;        // of an environment-map shader
    float mirrorFactor = 0;         // of an environment-map shader
    float thirdReflectionProp = 0;  // the third of the host's four reflection properties
    std::string textureName;        // without folder and extension, or "Unnamed"
    std::string envMapName;         // of an environment-map shader, without folder and extension
};

// The file name without folder and extension. Only the backslash separates folders, and only a full stop behind the
// last of them begins the extension.
std::string_view reducedFileName(std::string_view fileName);

// Converts the materials of faces, one polyhedron after the other.
class MaterialConversion {
public:
    // The shape's material list, which nobody else adds to, and the log are borrowed.
    MaterialConversion(std::vector<Shape::Material>& materials, std::ostream& log, const TextureOptions& options);

    // Host material numbers count within a polyhedron: call this before the first face of each.
    void beginPolyhedron() { hostMaterials_.clear(); }

    // The material word of a face, without its draw type: an index into the material list, or NoMaterial when the host
    // can't give the face's material. Shader parameters are logged once a face.
    uint32_t faceMaterial(const SceneNode& polyhedron, int16_t materialNumber);

    // Index of the entry with these values, appended when there is none. A reflectance of -1 is any.
    int32_t findOrAddMaterial(Shape::Material wanted);

private:
    // A host material as read for the first face that has it.
    struct HostMaterial {
        bool known = false;  // the host gave it
        MaterialInfo info;
        uint8_t opacity = 255;
        std::string logText;  // the lines that reading it writes
    };

    // Indices into materials_ of the entries of one name: the first map, and the others rising by about what they
    // reflect.
    struct SameName {
        int32_t firstMap = -1;
        std::unordered_map<int32_t, std::vector<int32_t>> byReflection;
    };

    const HostMaterial& hostMaterial(const SceneNode& polyhedron, int16_t materialNumber);
    void enter(int32_t index);
    int32_t find(const Shape::Material& wanted) const;

    std::vector<Shape::Material>& materials_;
    std::ostream& log_;
    TextureOptions options_;
    std::unordered_map<std::string, SameName> byName_;
    std::unordered_map<int16_t, HostMaterial> hostMaterials_;  // of the current polyhedron, by number
};

}  // namespace marrowfen
