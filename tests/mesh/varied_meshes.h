#pragma once

// What the tests of stripping and decimation share.

#include <string>

#include "tests/plain/mesh_makers.h"

namespace marrowfen::makers {

struct Face {
    Triangle corners;
    uint32_t material = Primitive::Indexed;
    int32_t sourcePoly = 0;
};

inline Mesh meshOf(const std::vector<Face>& faces) {
    Mesh mesh;
    for (const Face& f : faces) addTriangle(mesh, f.corners, f.material, f.sourcePoly);
    return mesh;
}

// The error, and each primitive on a line of its own.
inline std::string listing(const Mesh& mesh) {
    std::string text = mesh.error() + "\n";
    for (const Primitive& p : mesh.primitives) {
        text += std::to_string(p.firstElement) + "+" + std::to_string(p.numElements) + " material " +
                std::to_string(p.material) + " poly " + std::to_string(p.sourcePoly) + ":";
        for (uint32_t i = 0; i < p.numElements; ++i) text += " " + std::to_string(mesh.indices.at(p.firstElement + i));
        text += "\n";
    }
    return text + std::to_string(mesh.indices.size()) + " indices\n";
}

// The meshes on which the fast methods are compared with the plain ones, a few hundred triangles each.
inline std::vector<Mesh> variedMeshes(uint32_t seed) {
    std::mt19937 random(seed);
    const auto below = [&](uint32_t n) { return pick(random, n); };
    std::vector<Mesh> meshes;
    meshes.push_back(grid(2 + below(12), 2 + below(12)));
    meshes.push_back(torus(3 + below(12), 3 + below(12)));
    meshes.push_back(sphere(3 + below(60), 3 + below(4)));
    meshes.push_back(fan(1 + below(100), true));
    meshes.push_back(fan(1 + below(100), false));
    meshes.push_back(book(1 + below(80)));
    meshes.push_back(soup(1 + below(150), 3 + below(80), seed));
    meshes.push_back(soup(100, 3 + below(12), seed));
    meshes.push_back(soup(1 + below(60), 3 + below(120), seed, true));
    const size_t regular = 6;
    for (size_t i = 0; i < regular; ++i) {
        meshes.push_back(shuffled(meshes[i], seed));
        meshes.push_back(patched(meshes[i], 1 + below(60), seed));
        meshes.push_back(spoiled(shuffled(meshes[i], seed), 2 + below(20), 2 + below(20)));
    }
    return meshes;
}

}  // namespace marrowfen::makers
