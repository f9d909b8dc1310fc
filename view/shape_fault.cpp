#include "view/shape_fault.h"

#include <algorithm>
#include <cstdint>

#include "shape/shape_questions.h"

namespace marrowfen::view {

namespace {

// Blocks of keys may overlap, and so may the levels' objects: a small file can ask for any number. These stop it.
constexpr uint64_t kMostKeys = 50'000'000;
constexpr uint64_t kMostPlacedNodes = 1'000'000;
constexpr int32_t kMostKeysOfANode = 4'000'000;  // more can't be told apart as seconds in 32-bit floats
constexpr size_t kMostBones = 65'535;            // glTF numbers joints in 16 bits

std::string place(const char* kind, size_t index) { return std::string(kind) + " " + std::to_string(index) + ": "; }

// A skin of glTF names each of its joints once.
std::string findBoneFault(const Shape& shape) {
    for (size_t i = 0; i < shape.meshes.size(); ++i) {
        if (shape.meshes[i].type != MeshType::Skin) continue;
        std::vector<int32_t> bones = shape.meshes[i].nodeIndex;
        if (bones.size() > kMostBones) return place("mesh", i) + "too many bones to show";
        std::sort(bones.begin(), bones.end());
        const auto twice = std::adjacent_find(bones.begin(), bones.end());
        if (twice != bones.end()) return place("mesh", i) + "two bone slots name node " + std::to_string(*twice);
    }
    return {};
}

uint64_t countKeys(const Shape::Sequence& sequence) {
    const auto keys = static_cast<uint64_t>(std::max(sequence.numKeyFrames, 0));
    return keys * (sequence.rotationMatters.count() + sequence.translationMatters.count());
}

std::string findKeyFault(const Shape& shape) {
    uint64_t keys = 0;
    for (size_t i = 0; i < shape.sequences.size(); ++i) {
        keys += countKeys(shape.sequences[i]);
        if (keys > kMostKeys || shape.sequences[i].numKeyFrames > kMostKeysOfANode) {
            return place("sequence", i) + "too many keys to show";
        }
    }
    return {};
}

}  // namespace

std::string findFault(const Shape& shape, ShapeFileKind kind) {
    for (const ShapeProblem& problem : findProblems(shape, kind)) {
        if (problem.isError()) return problem.text();
    }
    if (shape.detailLevels.size() * (shape.objects.size() + shape.nodes.size()) > kMostPlacedNodes) {
        return std::to_string(shape.detailLevels.size()) + " detail levels are too many to show";
    }
    if (drawsWithoutEnd(shape)) return "too many triangles to show";
    const std::string fault = findBoneFault(shape);
    return fault.empty() ? findKeyFault(shape) : fault;
}

}  // namespace marrowfen::view
