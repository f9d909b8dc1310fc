#include "cli/shape_facts.h"

#include <algorithm>

#include "ground/at.h"
#include "ground/excerpt.h"

namespace marrowfen::cli {

void MeshFacts::add(const Mesh& mesh, int64_t drawn) {
    triangles += drawn;
    vertices += count32(mesh.vertexes);
    for (const Primitive& primitive : mesh.primitives) {
        if ((primitive.material & Primitive::Strip) != 0) ++strips;
        if ((primitive.material & Primitive::NoMaterial) == 0)
            materials.insert(primitive.material & Primitive::MaterialMask);
    }
}

MeshFacts ShapeFacts::of(size_t mesh) const {
    MeshFacts facts;
    facts.add(at(shape_.meshes, mesh), at(triangles_, mesh));
    return facts;
}

LevelFacts ShapeFacts::of(const Shape::DetailLevel& level) const {
    LevelFacts facts;
    for (const LevelMesh& part : meshesOf(shape_, level)) {
        facts.meshes.push_back(part.mesh);
        facts.add(at(shape_.meshes, part.mesh), at(triangles_, part.mesh));
    }
    return facts;
}

std::string nameAt(const Shape& shape, int32_t index) {
    return hasIndex(shape.names, index) ? excerpt(at(shape.names, index)) : "?";
}

std::vector<TreeNode> nodeTree(const Shape& shape) {
    std::vector<std::vector<size_t>> children(shape.nodes.size());
    std::vector<TreeNode> open;  // a stack: the next node of the walk is at its end
    for (size_t i = shape.nodes.size(); i-- > 0;) {
        const int32_t parent = shape.nodes[i].parent;
        if (hasIndex(shape.nodes, parent)) {
            at(children, parent).push_back(i);
        } else {
            open.push_back({i, 0});
        }
    }

    std::vector<TreeNode> tree;
    std::vector<bool> reached(shape.nodes.size());
    while (!open.empty()) {
        const TreeNode next = open.back();
        open.pop_back();
        tree.push_back(next);
        reached[next.node] = true;
        for (const size_t child : children[next.node]) open.push_back({child, next.depth + 1});
    }
    for (size_t i = 0; i < reached.size(); ++i) {
        if (!reached[i]) tree.push_back({i, 0});
    }
    return tree;
}

float frameRate(const Shape::Sequence& sequence) {
    return sequence.duration > 0 ? static_cast<float>(sequence.numKeyFrames) / sequence.duration : 0;
}

size_t animatedNodes(const Shape::Sequence& sequence) {
    size_t count = 0;
    const IndexSet* sets[] = {&sequence.rotationMatters, &sequence.translationMatters, &sequence.scaleMatters};
    const size_t size = std::max({sets[0]->size(), sets[1]->size(), sets[2]->size()});
    for (size_t i = 0; i < size; ++i) {
        const auto has = [&](const IndexSet* set) { return i < set->size() && set->test(i); };
        if (std::any_of(std::begin(sets), std::end(sets), has)) ++count;
    }
    return count;
}

}  // namespace marrowfen::cli
