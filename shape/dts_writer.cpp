#include <cassert>
#include <ostream>

#include "ground/coding.h"
#include "ground/shape_buffers.h"
#include "shape/record_fields.h"
#include "shape/sequence_record.h"
#include "shape/shape.h"

// A DTS file is the packed buffers with all tables, then the sequences, then the material list. Everything is laid out
// in memory and leaves in a few writes.

namespace marrowfen {

namespace {

void writeValue(ShapeBuffers& out, int32_t value) { out.writeInt(value); }
void writeValue(ShapeBuffers& out, uint32_t value) { out.write32(value); }
void writeValue(ShapeBuffers& out, float value) { out.writeFloat(value); }
void writeValue(ShapeBuffers& out, const Point3& value) { out.writePoint(value); }
void writeValue(ShapeBuffers& out, const Quaternion& value) { out.writeQuaternion(value); }

template <class Value>
void writeValues(ShapeBuffers& out, const std::vector<Value>& values) {
    for (const Value& value : values) writeValue(out, value);
}

template <class Record>
void writeRecords(ShapeBuffers& out, const std::vector<Record>& records) {
    for (const Record& record : records) {
        forEachField(record, [&](const auto& field) { writeValue(out, field); });
    }
    out.checkpoint();
}

void writeHeader(ShapeBuffers& out, const Shape& shape) {
    for (const size_t count :
         {shape.nodes.size(), shape.objects.size(), shape.decals.size(), shape.subshapes.size(),
          shape.IFLmaterials.size(), shape.nodeRotations.size(), shape.nodeTranslations.size(),
          shape.nodeScalesUniform.size(), shape.nodeScalesAligned.size(), shape.nodeScalesArbitrary.size(),
          shape.groundTranslations.size(), shape.objectStates.size(), shape.decalStates.size(), shape.triggers.size(),
          shape.detailLevels.size(), shape.meshes.size(), shape.names.size()}) {
        out.write32(static_cast<uint32_t>(count));
    }
    out.writeInt(truncatedToInt32(shape.smallestSize));  // a whole number in the file
    out.writeInt(shape.smallestDetailLevel);
    out.checkpoint();

    out.writeFloat(shape.radius);
    out.writeFloat(shape.tubeRadius);
    out.writePoint(shape.center);
    out.writeBox(shape.bounds);
    out.checkpoint();
}

void writeSubShapes(ShapeBuffers& out, const std::vector<Shape::SubShape>& subshapes) {
    const auto writeColumns = [&](const auto& columns) {
        for (const auto column : columns) {
            for (const Shape::SubShape& subshape : subshapes) out.writeInt(subshape.*column);
        }
        out.checkpoint();
    };
    writeColumns(kSubShapeFirsts);
    writeColumns(kSubShapeCounts);
}

void writePoses(ShapeBuffers& out, const Shape& shape) {
    writeValues(out, shape.nodeDefRotations);
    writeValues(out, shape.nodeDefTranslations);
    writeValues(out, shape.nodeTranslations);
    writeValues(out, shape.nodeRotations);
    out.checkpoint();

    writeValues(out, shape.nodeScalesUniform);
    writeValues(out, shape.nodeScalesAligned);
    writeValues(out, shape.nodeScalesArbitrary);
    writeValues(out, shape.nodeScaleRotsArbitrary);
    out.checkpoint();

    writeValues(out, shape.groundTranslations);
    writeValues(out, shape.groundRotations);
    out.checkpoint();
}

void writeNames(ShapeBuffers& out, const std::vector<std::string>& names) {
    for (const std::string& name : names) {
        for (const char c : name) out.write8(static_cast<uint8_t>(c));
        out.write8(0);
    }
    out.checkpoint();
}

void putSequences(std::string& out, const std::vector<Shape::Sequence>& sequences) {
    put32(out, static_cast<uint32_t>(sequences.size()));
    for (const Shape::Sequence& sequence : sequences) {
        put32(out, static_cast<uint32_t>(sequence.nameIndex));
        putSequence(out, sequence);
    }
}

void putColumnValue(std::string& out, uint32_t value) { put32(out, value); }
void putColumnValue(std::string& out, int32_t value) { put32(out, static_cast<uint32_t>(value)); }
void putColumnValue(std::string& out, float value) { putFloat(out, value); }

void putMaterials(std::string& out, const std::vector<Shape::Material>& materials) {
    out.push_back(static_cast<char>(kMaterialListVersion));
    put32(out, static_cast<uint32_t>(materials.size()));
    for (const Shape::Material& material : materials) {
        const std::string name = material.name.substr(0, kLongestMaterialName);
        out.push_back(static_cast<char>(name.size()));
        out += name;
    }
    forEachMaterialColumn([&](auto column) {
        for (const Shape::Material& material : materials) putColumnValue(out, material.*column);
    });
}

}  // namespace

void Shape::writeDts(std::ostream& stream, bool includeSequences) const {
    // Readers find these lists' lengths in the counts of others.
    assert(nodeDefRotations.size() == nodes.size() && nodeDefTranslations.size() == nodes.size());
    assert(nodeScaleRotsArbitrary.size() == nodeScalesArbitrary.size());
    assert(groundRotations.size() == groundTranslations.size());

    ShapeBuffers buffers;
    writeHeader(buffers, *this);
    writeRecords(buffers, nodes);
    writeRecords(buffers, objects);
    writeRecords(buffers, decals);
    writeRecords(buffers, IFLmaterials);
    writeSubShapes(buffers, subshapes);
    writePoses(buffers, *this);
    writeRecords(buffers, objectStates);
    writeRecords(buffers, decalStates);
    writeRecords(buffers, triggers);
    writeRecords(buffers, detailLevels);
    for (const Mesh& mesh : meshes) mesh.writeMeshBlock(buffers);
    buffers.checkpoint();
    writeNames(buffers, names);
    buffers.flush(stream);

    std::string rest;
    if (includeSequences) {
        putSequences(rest, sequences);
    } else {
        put32(rest, 0);
    }
    putMaterials(rest, materials);
    stream.write(rest.data(), static_cast<std::streamsize>(rest.size()));
}

}  // namespace marrowfen
