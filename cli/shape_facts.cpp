#include "cli/shape_facts.h"

#include <algorithm>

namespace marrowfen::cli {

namespace {

int64_t trianglesOf(const Primitive& primitive) {
    const int64_t elements = primitive.numElements;
    const bool triangles = (primitive.material & Primitive::TypeMask) == Primitive::Triangles;
    return triangles ? elements / 3 : std::max<int64_t>(elements - 2, 0);
}

template <class Table>
bool isIn(int64_t i, const Table& table) {
    return i >= 0 && i < static_cast<int64_t>(table.size());
}

}  // namespace

void MeshFacts::add(const Mesh& mesh) {
    vertices += static_cast<int64_t>(mesh.vertexes.size());
    for (const Primitive& primitive : mesh.primitives) {
        triangles += trianglesOf(primitive);
        if ((primitive.material & Primitive::Strip) != 0) ++strips;
        if ((primitive.material & Primitive::NoMaterial) == 0)
            materials.insert(primitive.material & Primitive::MaterialMask);
    }
}

LevelFacts factsOf(const Shape& shape, const Shape::DetailLevel& level) {
    LevelFacts facts;
    if (!isIn(level.subshape, shape.subshapes)) return facts;
    const Shape::SubShape& subshape = shape.subshapes[static_cast<size_t>(level.subshape)];
    const int64_t first = std::max<int64_t>(subshape.firstObject, 0);
    const int64_t end = std::min<int64_t>(first + subshape.numObjects, static_cast<int64_t>(shape.objects.size()));
    for (int64_t i = first; i < end; ++i) {
        const Shape::Object& object = shape.objects[static_cast<size_t>(i)];
        const int64_t mesh = int64_t{object.firstMesh} + level.objectDetail;
        if (level.objectDetail < 0 || level.objectDetail >= object.numMeshes || !isIn(mesh, shape.meshes)) continue;
        if (shape.meshes[static_cast<size_t>(mesh)].type == MeshType::Null) continue;
        facts.meshes.push_back(static_cast<int32_t>(mesh));
        facts.add(shape.meshes[static_cast<size_t>(mesh)]);
    }
    return facts;
}

std::string nameAt(const Shape& shape, int32_t index) {
    return isIn(index, shape.names) ? shape.names[static_cast<size_t>(index)] : "?";
}

std::vector<TreeNode> nodeTree(const Shape& shape) {
    std::vector<std::vector<size_t>> children(shape.nodes.size());
    std::vector<TreeNode> open;  // a stack: the next node of the walk is at its end
    for (size_t i = shape.nodes.size(); i-- > 0;) {
        const int32_t parent = shape.nodes[i].parent;
        if (isIn(parent, shape.nodes)) {
            children[static_cast<size_t>(parent)].push_back(i);
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
