#pragma once

// What a person asks of a shape at a glance, worked out from its tables. Links that lead nowhere are left out.

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "mesh/mesh_words.h"
#include "shape/shape_check.h"
#include "shape/shape_words.h"

namespace marrowfen::cli {

struct MeshFacts {
    int64_t triangles = 0;
    int64_t strips = 0;
    int64_t vertices = 0;
    std::set<uint32_t> materials;

    void add(const Mesh& mesh);
};

// All meshes of one detail level.
struct LevelFacts : MeshFacts {
    std::vector<int32_t> meshes;
};

LevelFacts factsOf(const Shape& shape, const Shape::DetailLevel& level);

// An entry of the name table, or "?" for none.
std::string nameAt(const Shape& shape, int32_t index);

// The words of the flags that are set; bits without a word as one hexadecimal number.
template <size_t N>
std::vector<std::string> flagWords(uint32_t flags, const FlagWord (&words)[N]) {
    std::vector<std::string> found;
    for (const auto& [bit, word] : words) {
        if ((flags & bit) != 0) found.emplace_back(word);
        flags &= ~bit;
    }
    if (flags != 0) {
        char text[16];
        std::snprintf(text, sizeof text, "0x%x", static_cast<unsigned>(flags));
        found.emplace_back(text);
    }
    return found;
}

// The nodes in the order of a walk down the tree, each with its depth. Nodes of a circle of parents come last, at
// depth 0.
struct TreeNode {
    size_t node;
    size_t depth;
};
std::vector<TreeNode> nodeTree(const Shape& shape);

// Key frames a second, 0 where the duration gives none.
float frameRate(const Shape::Sequence& sequence);

// Nodes that a sequence moves, turns or scales.
size_t animatedNodes(const Shape::Sequence& sequence);

}  // namespace marrowfen::cli
