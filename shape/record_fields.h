#pragma once

// The fields of each record in the order in which DTS and DSQ files store them: one list, which writing and reading
// share. exchange(bytes, record) does either: with a ByteWriter and a const record it appends the fields, with a
// ByteReader it fills the record.

#include "ground/byte_stream.h"
#include "shape/shape.h"

namespace marrowfen {

// The tables of the 32-bit block whose records are words and nothing else.
template <class Bytes, class Record>
void exchange(Bytes& bytes, Record& r) {
    using R = std::remove_const_t<Record>;
    if constexpr (std::is_same_v<R, Shape::Node>) {
        bytes.values(r.name, r.parent, r.firstObject, r.firstChild, r.nextSibling);
    } else if constexpr (std::is_same_v<R, Shape::Object>) {
        bytes.values(r.name, r.numMeshes, r.firstMesh, r.node, r.nextSibling, r.firstDecal);
    } else if constexpr (std::is_same_v<R, Shape::Decal>) {
        bytes.values(r.name, r.numMeshes, r.firstMesh, r.object, r.sibling);
    } else if constexpr (std::is_same_v<R, Shape::IflMaterial>) {
        bytes.values(r.name, r.slot, r.firstFrame, r.time, r.numFrames);
    } else if constexpr (std::is_same_v<R, Shape::ObjectState>) {
        bytes.values(r.vis, r.frame, r.matFrame);
    } else if constexpr (std::is_same_v<R, Shape::DecalState>) {
        bytes.values(r.frame);
    } else if constexpr (std::is_same_v<R, Shape::Trigger>) {
        bytes.values(r.state, r.pos);
    } else {
        static_assert(std::is_same_v<R, Shape::DetailLevel>);
        bytes.values(r.name, r.subshape, r.objectDetail, r.size, r.avgError, r.maxError, r.polyCount);
    }
}

// Neither writes nor reads, but counts the bytes of the fields that it is given.
struct FieldCounter {
    size_t bytes = 0;

    template <class... Fields>
    void values(const Fields&...) {
        bytes += (kBytesOf<Fields> + ...);
    }
};

// Bytes that one of these records takes.
template <class Record>
size_t bytesOfRecord() {
    const Record record;
    FieldCounter counter;
    exchange(counter, record);
    return counter.bytes;
}

template <class Bytes, class Records>
void exchangeRecords(Bytes& bytes, int64_t count, Records& records) {
    bytes.entries(count, bytesOfRecord<typename Records::value_type>(), records,
                  [&](auto& record) { exchange(bytes, record); });
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

}  // namespace marrowfen
