#include <algorithm>

#include "shape/problem_list.h"

namespace marrowfen {

namespace {

// Whether all members are below the size of a table; sets are stored in whole words, so they may be longer.
template <class Table>
bool isSetOf(const IndexSet& set, const Table& table) {
    for (size_t i = table.size(); i < set.size(); ++i) {
        if (set.test(i)) return false;
    }
    return true;
}

// Calls bad(table name) for each table in which the sequence's block of keys doesn't lie.
template <class Bad>
void forEachBadBlock(const Shape& shape, const Shape::Sequence& s, Bad bad) {
    const int64_t keys = s.numKeyFrames;
    assert(keys > 0);
    const auto block = [&](int32_t base, const IndexSet& members, const auto& table, const char* name) {
        const auto count = static_cast<int64_t>(members.count());
        if (count > 0 && !isRange(base, count * keys, table)) bad(name);
    };
    block(s.baseRotation, s.rotationMatters, shape.nodeRotations, "rotation");
    block(s.baseTranslation, s.translationMatters, shape.nodeTranslations, "translation");
    if ((s.flags & Shape::ArbitraryScale) != 0) {
        block(s.baseScale, s.scaleMatters, shape.nodeScalesArbitrary, "scale");
    } else if ((s.flags & Shape::AlignedScale) != 0) {
        block(s.baseScale, s.scaleMatters, shape.nodeScalesAligned, "scale");
    } else {
        block(s.baseScale, s.scaleMatters, shape.nodeScalesUniform, "scale");
    }
    if (!isRange(s.firstGroundFrame, s.numGroundFrames, shape.groundTranslations)) bad("ground frame");
    if (!isRange(s.firstTrigger, s.numTriggers, shape.triggers)) bad("trigger");
}

// States belong to objects and decals, which only a DTS file has.
template <class Bad>
void forEachBadStateBlock(const Shape& shape, const Shape::Sequence& s, Bad bad) {
    const size_t largestSet = std::max({s.visMatters.size(), s.frameMatters.size(), s.matFrameMatters.size()});
    int64_t objects = 0;
    for (size_t i = 0; i < std::min(largestSet, shape.objects.size()); ++i) {
        const auto has = [&](const IndexSet& set) { return i < set.size() && set.test(i); };
        if (has(s.visMatters) || has(s.frameMatters) || has(s.matFrameMatters)) ++objects;
    }
    const int64_t keys = s.numKeyFrames;
    if (objects > 0 && !isRange(s.baseObjectState, objects * keys, shape.objectStates)) bad("object state");
    const auto decals = static_cast<int64_t>(s.decalMatters.count());
    if (decals > 0 && !isRange(s.baseDecalState, decals * keys, shape.decalStates)) bad("decal state");
}

bool hasOnlyMembersThatExist(const Shape& shape, const Shape::Sequence& s, ShapeFileKind kind) {
    const bool nodes = isSetOf(s.rotationMatters, shape.nodes) && isSetOf(s.translationMatters, shape.nodes) &&
                       isSetOf(s.scaleMatters, shape.nodes);
    if (kind == ShapeFileKind::Dsq) return nodes;
    return nodes && isSetOf(s.decalMatters, shape.decals) && isSetOf(s.iflMatters, shape.IFLmaterials) &&
           isSetOf(s.visMatters, shape.objects) && isSetOf(s.frameMatters, shape.objects) &&
           isSetOf(s.matFrameMatters, shape.objects);
}

}  // namespace

void checkSequences(const Shape& shape, ShapeFileKind kind, ProblemList& list) {
    for (size_t i = 0; i < shape.sequences.size(); ++i) {
        const Shape::Sequence& s = shape.sequences[i];
        const auto at = [&] { return place("sequences", i); };
        if (!hasIndex(shape.names, s.nameIndex)) {
            list.add(problem::kSequenceName, [&] { return place("sequences", i, "name", s.nameIndex); });
        }
        if (!hasOnlyMembersThatExist(shape, s, kind)) list.add(problem::kSequenceMembers, at);
        if (!(s.duration > 0) || !std::isfinite(s.duration)) {
            list.add(problem::kSequenceDuration, [&] { return place("sequences", i, "duration", s.duration); });
        }
        if (s.numKeyFrames < 1) {
            list.add(problem::kSequenceNoKeys, at);
            if (s.numKeyFrames < 0) list.add(problem::kSequenceNegativeKeys, at);
            continue;
        }
        const auto bad = [&](const char* table) {
            list.add(problem::kSequenceKeysRange, [&] { return place("sequences", i) + "." + table + "s"; });
        };
        forEachBadBlock(shape, s, bad);
        if (kind == ShapeFileKind::Dts) forEachBadStateBlock(shape, s, bad);
    }
}

}  // namespace marrowfen
