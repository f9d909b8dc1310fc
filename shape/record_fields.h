#pragma once

// The fields of each record in the order in which DTS and DSQ files store them: the one list that the writers and the
// readers share. forEachField(record, visit) calls visit(field) for each.

#include "shape/shape.h"

namespace marrowfen {

template <class Record, class Visit, class... Fields>
void visitFields(Record& record, Visit& visit, Fields... fields) {
    (visit(record.*fields), ...);
}

// Record is the type itself or const.
template <class Record, class Visit>
void forEachField(Record& record, Visit visit) {
    using R = std::remove_const_t<Record>;
    const auto each = [&](auto... fields) { visitFields(record, visit, fields...); };
    if constexpr (std::is_same_v<R, Shape::Node>) {
        each(&R::name, &R::parent, &R::firstObject, &R::firstChild, &R::nextSibling);
    } else if constexpr (std::is_same_v<R, Shape::Object>) {
        each(&R::name, &R::numMeshes, &R::firstMesh, &R::node, &R::nextSibling, &R::firstDecal);
    } else if constexpr (std::is_same_v<R, Shape::Decal>) {
        each(&R::name, &R::numMeshes, &R::firstMesh, &R::object, &R::sibling);
    } else if constexpr (std::is_same_v<R, Shape::IflMaterial>) {
        each(&R::name, &R::slot, &R::firstFrame, &R::time, &R::numFrames);
    } else if constexpr (std::is_same_v<R, Shape::ObjectState>) {
        each(&R::vis, &R::frame, &R::matFrame);
    } else if constexpr (std::is_same_v<R, Shape::DecalState>) {
        each(&R::frame);
    } else if constexpr (std::is_same_v<R, Shape::Trigger>) {
        each(&R::state, &R::pos);
    } else {
        static_assert(std::is_same_v<R, Shape::DetailLevel>);
        each(&R::name, &R::subshape, &R::objectDetail, &R::size, &R::avgError, &R::maxError, &R::polyCount);
    }
}

// Words of a file that one record takes.
template <class Record>
size_t fieldCount() {
    Record record;
    size_t count = 0;
    forEachField(record, [&](auto&) { ++count; });
    return count;
}

// Tables of some records are stored column by column: one field of every record, then the next field.
inline constexpr int32_t Shape::SubShape::*kSubShapeFirsts[] = {
    &Shape::SubShape::firstNode, &Shape::SubShape::firstObject, &Shape::SubShape::firstDecal};
inline constexpr int32_t Shape::SubShape::*kSubShapeCounts[] = {
    &Shape::SubShape::numNodes, &Shape::SubShape::numObjects, &Shape::SubShape::numDecals};

// visit(pointer to member) for each column of the material list that follows the names.
template <class Visit>
void forEachMaterialColumn(Visit visit) {
    using M = Shape::Material;
    visit(&M::flags);
    visit(&M::reflectance);
    visit(&M::bump);
    visit(&M::detail);
    visit(&M::detailScale);
    visit(&M::reflection);
}

inline constexpr uint8_t kMaterialListVersion = 1;
inline constexpr size_t kLongestMaterialName = 255;  // its length is one byte

// The index sets that end a sequence's record.
inline constexpr IndexSet Shape::Sequence::*kSequenceSets[] = {
    &Shape::Sequence::rotationMatters, &Shape::Sequence::translationMatters, &Shape::Sequence::scaleMatters,
    &Shape::Sequence::decalMatters,    &Shape::Sequence::iflMatters,         &Shape::Sequence::visMatters,
    &Shape::Sequence::frameMatters,    &Shape::Sequence::matFrameMatters};

}  // namespace marrowfen
