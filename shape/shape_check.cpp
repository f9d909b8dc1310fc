#include "shape/shape_check.h"

#include <algorithm>

#include "ground/at.h"
#include "shape/problem_list.h"
#include "shape/shape_questions.h"

namespace marrowfen {

namespace {

// Each packed component is cut by less than one step of 1/32767.
constexpr float kUnitTolerance = 4.0F / 32767;

// A level's objects are looked through for this many levels only, far more than an engine can tell apart, so that a
// file of nothing but levels and objects takes no longer than others.
constexpr size_t kLevelsLookedInto = 256;

template <class Record>
void checkNames(const Shape& shape, const char* record, const std::vector<Record>& records, ProblemList& list) {
    for (size_t i = 0; i < records.size(); ++i) {
        if (hasIndex(shape.names, records[i].name)) continue;
        list.add(problem::kRecordName, [&] { return place(record, i, "name", records[i].name); });
    }
}

// Nodes whose chain of parents comes back to itself. Each node is walked over once: its mark is the walk that did.
void checkCycles(const std::vector<Shape::Node>& nodes, ProblemList& list) {
    constexpr size_t kNoWalk = SIZE_MAX;
    std::vector<size_t> walks(nodes.size(), kNoWalk);
    for (size_t start = 0; start < nodes.size(); ++start) {
        int32_t n = static_cast<int32_t>(start);
        while (hasIndex(nodes, n) && at(walks, n) == kNoWalk) {
            at(walks, n) = start;
            n = at(nodes, n).parent;
        }
        if (hasIndex(nodes, n) && at(walks, n) == start) {
            list.add(problem::kNodeCircle, [&] { return place("nodes", static_cast<size_t>(n)); });
        }
    }
}

void checkNodes(const Shape& shape, ProblemList& list) {
    assert(shape.nodeDefTranslations.size() == shape.nodes.size());
    checkNames(shape, "nodes", shape.nodes, list);
    for (size_t i = 0; i < shape.nodes.size(); ++i) {
        const Shape::Node& node = shape.nodes[i];
        if (!isIndexOrNone(node.parent, shape.nodes)) {
            list.add(problem::kNodeParent, [&] { return place("nodes", i, "parent", node.parent); });
        }
        if (!isFinite(shape.nodeDefTranslations[i])) {
            list.add(problem::kNodePlaceNumber, [&] { return place("nodes", i); });
        }
    }
    checkCycles(shape.nodes, list);
}

void checkRotations(const MessageKind& kind, const char* record, const std::vector<Quaternion>& rotations,
                    ProblemList& list) {
    for (size_t i = 0; i < rotations.size(); ++i) {
        const auto [x, y, z, w] = rotations[i];
        const float length = std::sqrt(x * x + y * y + z * z + w * w);
        if (!(std::fabs(length - 1) <= kUnitTolerance))
            list.add(kind, [&] { return place(record, i, "length", length); });
    }
}

void checkObjects(const Shape& shape, ProblemList& list) {
    checkNames(shape, "objects", shape.objects, list);
    for (size_t i = 0; i < shape.objects.size(); ++i) {
        const Shape::Object& object = shape.objects[i];
        if (!isRange(object.firstMesh, object.numMeshes, shape.meshes)) {
            list.add(problem::kObjectMeshes, [&] { return place("objects", i, "firstMesh", object.firstMesh); });
        }
        if (!isIndexOrNone(object.node, shape.nodes)) {
            list.add(problem::kObjectNode, [&] { return place("objects", i, "node", object.node); });
        } else if (object.node < 0) {
            list.add(problem::kObjectWithoutNode, [&] { return place("objects", i); });
        }
    }
    if (shape.objectStates.size() < shape.objects.size()) {
        list.add(problem::kObjectState, [&] { return place("objects", shape.objectStates.size()); });
    }
}

void checkDecals(const Shape& shape, ProblemList& list) {
    checkNames(shape, "decals", shape.decals, list);
    for (size_t i = 0; i < shape.decals.size(); ++i) {
        const Shape::Decal& decal = shape.decals[i];
        if (!isRange(decal.firstMesh, decal.numMeshes, shape.meshes) || !isIndexOrNone(decal.object, shape.objects)) {
            list.add(problem::kDecalLinks, [&] { return place("decals", i); });
        }
    }
}

void checkMaterials(const Shape& shape, ProblemList& list) {
    for (size_t i = 0; i < shape.materials.size(); ++i) {
        const Shape::Material& material = shape.materials[i];
        for (const int32_t other : {material.reflectance, material.bump, material.detail}) {
            if (isIndexOrNone(other, shape.materials)) continue;
            list.add(problem::kMaterialLink, [&] { return place("materials", i, "material", other); });
        }
    }
    checkNames(shape, "IFLmaterials", shape.IFLmaterials, list);
    for (size_t i = 0; i < shape.IFLmaterials.size(); ++i) {
        const int32_t slot = shape.IFLmaterials[i].slot;
        if (hasIndex(shape.materials, slot)) continue;
        list.add(problem::kIflSlot, [&] { return place("IFLmaterials", i, "slot", slot); });
    }
}

void checkSubShapes(const Shape& shape, ProblemList& list) {
    for (size_t i = 0; i < shape.subshapes.size(); ++i) {
        const Shape::SubShape& s = shape.subshapes[i];
        if (isRange(s.firstNode, s.numNodes, shape.nodes) && isRange(s.firstObject, s.numObjects, shape.objects) &&
            isRange(s.firstDecal, s.numDecals, shape.decals)) {
            continue;
        }
        list.add(problem::kSubshapeRange, [&] { return place("subshapes", i); });
    }
}

// Engines collide with the vertices as they stand, of which a skin's wait for its bones.
void checkCollisionMeshes(const Shape& shape, ProblemList& list) {
    for (size_t i = 0; i < std::min(shape.detailLevels.size(), kLevelsLookedInto); ++i) {
        const Shape::DetailLevel& level = shape.detailLevels[i];
        if (levelKind(shape, level) == LevelKind::Visible) continue;
        for (const LevelMesh& part : meshesOf(shape, level)) {
            if (at(shape.meshes, part.mesh).type != MeshType::Skin) continue;
            list.add(problem::kCollisionSkin, [&] { return place("meshes", static_cast<size_t>(part.mesh)); });
        }
    }
}

// Levels are tried in their order: one shows from its size up to where an earlier one takes over.
void checkDetailLevels(const Shape& shape, ProblemList& list) {
    checkNames(shape, "detailLevels", shape.detailLevels, list);
    for (size_t i = 0; i < shape.detailLevels.size(); ++i) {
        const Shape::DetailLevel& level = shape.detailLevels[i];
        if (!hasIndex(shape.subshapes, level.subshape)) {
            list.add(problem::kLevelSubshape, [&] { return place("detailLevels", i, "subshape", level.subshape); });
        } else if (i < kLevelsLookedInto && !drawsAnything(shape, level)) {
            list.add(problem::kLevelEmpty, [&] { return place("detailLevels", i); });
        }
    }
    checkCollisionMeshes(shape, list);
    for (const size_t i : levelsThatNeverShow(shape)) {
        list.add(problem::kLevelNeverShows,
                 [&] { return place("detailLevels", i, "size", shape.detailLevels[i].size); });
    }
    if (shape.smallestDetailLevel < 0 || shape.smallestDetailLevel > static_cast<int64_t>(shape.detailLevels.size())) {
        list.add(problem::kLevelSmallest, [&] { return std::to_string(shape.smallestDetailLevel); });
    }
}

void checkBounds(const Shape& shape, ProblemList& list) {
    if (drawsWithoutEnd(shape)) list.add(problem::kTooManyTriangles, [] { return std::string("shape"); });
    const auto [min, max] = shape.bounds;
    const bool whole = isFinite(min) && isFinite(max) && min.x <= max.x && min.y <= max.y && min.z <= max.z;
    if (!whole) return list.add(problem::kBoundsEmpty, [] { return std::string("shape"); });
    if (reachOf(shape.bounds) > kFarReach) list.add(problem::kBoundsFar, [] { return std::string("shape"); });
}

}  // namespace

std::string ShapeProblem::text() const {
    std::string line = kind->headline + std::string(": ");
    for (size_t i = 0; i < where.size(); ++i) line += (i == 0 ? "" : ", ") + where[i];
    return count > where.size() ? line + " and " + std::to_string(count - where.size()) + " more" : line;
}

bool anyBroken(const std::vector<ShapeProblem>& problems) {
    return std::any_of(problems.begin(), problems.end(), [](const ShapeProblem& problem) { return problem.isError(); });
}

std::vector<ShapeProblem> findProblems(const Shape& shape, ShapeFileKind kind) {
    ProblemList list;
    checkNodes(shape, list);
    checkRotations(problem::kKeyRotationUnit, "nodeRotations", shape.nodeRotations, list);
    checkRotations(problem::kGroundRotationUnit, "groundRotations", shape.groundRotations, list);
    checkSequences(shape, kind, list);
    if (kind == ShapeFileKind::Dsq) return list.problems;

    checkRotations(problem::kNodeRotationUnit, "nodes", shape.nodeDefRotations, list);
    checkObjects(shape, list);
    checkDecals(shape, list);
    checkMaterials(shape, list);
    checkSubShapes(shape, list);
    checkDetailLevels(shape, list);
    checkMeshes(shape, list);
    checkBounds(shape, list);
    return list.problems;
}

}  // namespace marrowfen
