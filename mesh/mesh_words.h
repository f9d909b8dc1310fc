#pragma once

// The words by which text output names what a mesh's numbers mean.

#include "ground/flag_text.h"
#include "mesh/mesh.h"

namespace marrowfen {

inline constexpr FlagWord kMeshFlagWords[] = {
    {Billboard, "billboard"},
    {HasDetail, "hasdetail"},
    {BillboardZ, "billboardz"},
    {EncodedNormals, "encodednormals"},
};

// Parts of a primitive's material word, but for the draw type Triangles, which has no bit.
inline constexpr FlagWord kPrimitiveWords[] = {
    {Primitive::Strip, "strip"},
    {Primitive::Fan, "fan"},
    {Primitive::Indexed, "indexed"},
    {Primitive::NoMaterial, "nomaterial"},
};

// Empty for a number that is no type.
inline const char* meshTypeWord(MeshType type) {
    switch (type) {
        case MeshType::Standard:
            return "standard";
        case MeshType::Skin:
            return "skin";
        case MeshType::Decal:
            return "decal";
        case MeshType::Sorted:
            return "sorted";
        case MeshType::Null:
            return "null";
    }
    return "";
}

}  // namespace marrowfen
