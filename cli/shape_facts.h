#pragma once

// What a person asks of a shape at a glance, worked out from its tables. Links that lead nowhere are left out.

#include <cstdint>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "mesh/mesh_words.h"
#include "shape/shape_questions.h"
#include "shape/shape_words.h"

namespace marrowfen::cli {

struct MeshFacts {
    int64_t triangles = 0;
    int64_t strips = 0;
    int64_t vertices = 0;
    std::set<uint32_t> materials;

    void add(const Mesh& mesh, int64_t drawn);
};

// All meshes of one detail level.
struct LevelFacts : MeshFacts {
    std::vector<int32_t> meshes;
};

// Counts the triangles once for all that is asked. The shape is borrowed.
class ShapeFacts {
public:
    explicit ShapeFacts(const Shape& shape) : shape_(shape), triangles_(trianglesPerMesh(shape)) {}

    MeshFacts of(size_t mesh) const;
    LevelFacts of(const Shape::DetailLevel& level) const;

private:
    const Shape& shape_;
    std::vector<int64_t> triangles_;
};

// An entry of the name table, or the beginning of a long one; "?" for none.
std::string nameAt(const Shape& shape, int32_t index);

// The words of the flags that are set; bits without a word as one hexadecimal number.
template <size_t N>
std::vector<std::string> allFlagWords(uint32_t flags, const FlagWord (&words)[N]) {
    std::vector<std::string> found = flagWords(flags, words);
    for (const FlagWord& known : words) flags &= ~known.bit;
    if (flags != 0) {
        std::ostringstream text;
        text << "0x" << std::hex << flags;
        found.push_back(text.str());
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
