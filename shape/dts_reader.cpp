#include <istream>

#include "ground/shape_buffers.h"
#include "ground/shape_reader.h"
#include "shape/record_fields.h"
#include "shape/sequence_record.h"
#include "shape/shape.h"

// The inverse of the writer for version 24, with the differences of the versions 19 to 23. Mesh blocks of older
// versions are read in the layout of version 24.

namespace marrowfen {

namespace {

constexpr uint32_t kOldestVersion = 19;
constexpr size_t kHeaderBytes = 16;

// What the versions differ in.
struct Layout {
    uint32_t version = kFormatVersion;
    bool scaleMark = true;  // a mark stands where the scale tables end

    bool hasScales() const { return version > 21; }
    bool hasSkinCount() const { return version < 23; }
    bool hasGroundFrames() const { return version > 23; }
};

// The table sizes at the start of the 32-bit block.
struct Counts {
    int32_t nodes, objects, decals, subshapes, iflMaterials;
    int64_t rotations, translations;
    int32_t scalesUniform = 0, scalesAligned = 0, scalesArbitrary = 0;
    int32_t groundTranslations = 0;
    int32_t objectStates, decalStates, triggers, detailLevels, meshes, names;
};

Counts readCounts(ByteReader& in, const Layout& layout) {
    Counts counts;
    for (int32_t* count : {&counts.nodes, &counts.objects, &counts.decals, &counts.subshapes, &counts.iflMaterials}) {
        *count = in.readInt();
    }
    counts.rotations = in.readInt();
    if (layout.hasScales()) {
        counts.translations = in.readInt();
        counts.scalesUniform = in.readInt();
        counts.scalesAligned = in.readInt();
        counts.scalesArbitrary = in.readInt();
    } else {
        // One count of node states, the default pose included.
        counts.rotations -= counts.nodes;
        counts.translations = counts.rotations;
    }
    if (layout.hasGroundFrames()) counts.groundTranslations = in.readInt();
    for (int32_t* count :
         {&counts.objectStates, &counts.decalStates, &counts.triggers, &counts.detailLevels, &counts.meshes}) {
        *count = in.readInt();
    }
    if (layout.hasSkinCount()) in.readInt();
    counts.names = in.readInt();
    return counts;
}

void readValue(ByteReader& in, int32_t& value) { value = in.readInt(); }
void readValue(ByteReader& in, uint32_t& value) { value = in.read32(); }
void readValue(ByteReader& in, float& value) { value = in.readFloat(); }

template <class Record>
void readRecords(ShapeReader& in, const char* section, int32_t count, std::vector<Record>& records) {
    in.fault.section = section;
    readList(in.words, count, 4 * fieldCount<Record>(), records, [&] {
        Record record;
        forEachField(record, [&](auto& field) { readValue(in.words, field); });
        return record;
    });
    in.checkpoint();
}

void readSubShapes(ShapeReader& in, int32_t count, std::vector<Shape::SubShape>& subshapes) {
    in.fault.section = "subshapes";
    constexpr size_t kBytes = 4 * (std::size(kSubShapeFirsts) + std::size(kSubShapeCounts));
    if (in.words.holds(count, kBytes)) subshapes.resize(static_cast<size_t>(count));
    const auto readColumns = [&](const auto& columns) {
        for (const auto column : columns) {
            for (Shape::SubShape& subshape : subshapes) subshape.*column = in.words.readInt();
        }
        in.checkpoint();
    };
    readColumns(kSubShapeFirsts);
    readColumns(kSubShapeCounts);
}

void readPoses(ShapeReader& in, const Counts& counts, const Layout& layout, Shape& shape) {
    in.fault.section = "default pose";
    in.readQuaternions(counts.nodes, shape.nodeDefRotations);
    in.readPoints(counts.nodes, shape.nodeDefTranslations);

    in.fault.section = "node translations";
    in.readPoints(counts.translations, shape.nodeTranslations);
    in.fault.section = "node rotations";
    in.readQuaternions(counts.rotations, shape.nodeRotations);
    in.checkpoint();

    in.fault.section = "node scales";
    in.readFloats(counts.scalesUniform, shape.nodeScalesUniform);
    in.readPoints(counts.scalesAligned, shape.nodeScalesAligned);
    in.readPoints(counts.scalesArbitrary, shape.nodeScalesArbitrary);
    in.readQuaternions(counts.scalesArbitrary, shape.nodeScaleRotsArbitrary);
    if (layout.scaleMark) in.checkpoint();

    if (!layout.hasGroundFrames()) return;
    in.fault.section = "ground frames";
    in.readPoints(counts.groundTranslations, shape.groundTranslations);
    in.readQuaternions(counts.groundTranslations, shape.groundRotations);
    in.checkpoint();
}

// One mesh after the other, so that memory is taken only for meshes that are there.
void readMeshes(ShapeReader& in, int32_t count, std::vector<Mesh>& meshes) {
    in.fault.section = "meshes";
    if (!in.words.holds(count, 4)) return;
    for (int32_t i = 0; i < count && in.fault.none(); ++i) {
        in.fault.section = "mesh " + std::to_string(i);
        meshes.emplace_back().readMeshBlock(in);
    }
    in.checkpoint();
}

void readNames(ShapeReader& in, int32_t count, std::vector<std::string>& names) {
    in.fault.section = "names";
    readList(in.bytes, count, 1, names, [&] { return in.bytes.readName(); });
    in.checkpoint();
}

void readTables(ShapeReader& in, const Layout& layout, Shape& shape) {
    in.fault.section = "header";
    const Counts counts = readCounts(in.words, layout);
    shape.smallestSize = static_cast<float>(in.words.readInt());
    shape.smallestDetailLevel = in.words.readInt();
    in.checkpoint();

    shape.radius = in.words.readFloat();
    shape.tubeRadius = in.words.readFloat();
    shape.center = in.words.readPoint();
    shape.bounds.min = in.words.readPoint();
    shape.bounds.max = in.words.readPoint();
    in.checkpoint();

    readRecords(in, "nodes", counts.nodes, shape.nodes);
    readRecords(in, "objects", counts.objects, shape.objects);
    readRecords(in, "decals", counts.decals, shape.decals);
    readRecords(in, "IFL materials", counts.iflMaterials, shape.IFLmaterials);
    readSubShapes(in, counts.subshapes, shape.subshapes);
    readPoses(in, counts, layout, shape);
    readRecords(in, "object states", counts.objectStates, shape.objectStates);
    readRecords(in, "decal states", counts.decalStates, shape.decalStates);
    readRecords(in, "triggers", counts.triggers, shape.triggers);
    readRecords(in, "detail levels", counts.detailLevels, shape.detailLevels);
    readMeshes(in, counts.meshes, shape.meshes);
    readNames(in, counts.names, shape.names);
}

void readSequences(ByteReader& in, uint32_t version, std::vector<Shape::Sequence>& sequences, ReadFault& fault) {
    fault.section = "sequences";
    readList(in, in.readInt(), kSmallestSequence, sequences, [&] {
        Shape::Sequence sequence;
        sequence.nameIndex = in.readInt();
        readSequence(in, version, sequence);
        return sequence;
    });
}

void readMaterials(ByteReader& in, std::vector<Shape::Material>& materials, ReadFault& fault) {
    fault.section = "materials";
    if (in.read8() != kMaterialListVersion) return;
    // Each has at least the length of its name and six words.
    readList(in, in.readInt(), 25, materials, [&] {
        Shape::Material material;
        material.name = in.readText(in.read8());
        return material;
    });
    forEachMaterialColumn([&](auto column) {
        for (Shape::Material& material : materials) readValue(in, material.*column);
    });
}

// The three blocks of the file, or a fault when the sizes in the header don't fit it.
ShapeReader openBlocks(const std::string& file, ReadFault& fault) {
    fault.section = "header";
    ByteReader header(file, 4, file.size(), fault);
    const uint64_t total = header.read32(), startOf16 = header.read32(), startOf8 = header.read32();
    const bool fits = startOf16 <= startOf8 && startOf8 <= total && total <= header.left() / 4;
    if (!fits) {
        fault.report(4, "blocks of " + std::to_string(total) + " words that start at " + std::to_string(startOf16) +
                            " and " + std::to_string(startOf8) + " don't fit " + std::to_string(header.left()) +
                            " bytes");
    }
    const auto block = [&](uint64_t begin, uint64_t end) {
        return fits ? ByteReader(file, kHeaderBytes + begin * 4, kHeaderBytes + end * 4, fault)
                    : ByteReader(file, 0, 0, fault);
    };
    return {fault, block(0, startOf16), block(startOf16, startOf8), block(startOf8, total)};
}

// One line about bytes that nothing refers to; the padding of the narrow blocks is none of them.
std::string surplusText(const ShapeReader& blocks, const ByteReader& rest) {
    const auto line = [](const ByteReader& in, const char* place) {
        return "offset " + std::to_string(in.offset()) + ": " + std::to_string(in.left()) + " bytes too many " + place;
    };
    if (blocks.words.left() > 0) return line(blocks.words, "in the 32-bit block");
    if (blocks.halves.left() > 2) return line(blocks.halves, "in the 16-bit block");
    if (blocks.bytes.left() > 3) return line(blocks.bytes, "in the 8-bit block");
    if (rest.left() > 0) return line(rest, "at the end of the file");
    return {};
}

void readFile(const std::string& file, Layout layout, Shape& shape, ReadFault& fault, std::string& surplus) {
    ShapeReader blocks = openBlocks(file, fault);
    const size_t restBegin = blocks.bytes.offset() + blocks.bytes.left();
    readTables(blocks, layout, shape);

    ByteReader rest(file, restBegin, file.size(), fault);
    readSequences(rest, layout.version, shape.sequences, fault);
    readMaterials(rest, shape.materials, fault);
    surplus = surplusText(blocks, rest);
}

// Before version 22 there are no scale tables, and files with and without their mark are both imaginable. The reading
// that uses up the whole file is the right one.
void readOldFile(const std::string& file, uint32_t version, Shape& shape, ReadFault& fault, std::string& surplus) {
    readFile(file, {version, true}, shape, fault, surplus);
    if (fault.none() && surplus.empty()) return;

    Shape other;
    ReadFault otherFault;
    std::string otherSurplus;
    readFile(file, {version, false}, other, otherFault, otherSurplus);
    if (!otherFault.none() || !otherSurplus.empty()) return;
    shape = std::move(other);
    fault = otherFault;
    surplus = otherSurplus;
}

}  // namespace

void Shape::readDts(std::istream& stream, std::string* surplus) {
    ReadFault fault;
    const std::string file = readWholeStream(stream, fault);
    const uint32_t version = ByteReader(file, 0, file.size(), fault).read32();
    if (fault.none() && version < kOldestVersion) return setError("The DTS file is of a older, unsupported version");
    if (version > kFormatVersion) {
        fault.report(0, "version " + std::to_string(version) + " is newer than " + std::to_string(kFormatVersion));
    }

    Shape shape;
    std::string left;
    if (fault.none()) {
        const bool old = !Layout{version}.hasScales();
        old ? readOldFile(file, version, shape, fault, left) : readFile(file, {version}, shape, fault, left);
    }
    if (!fault.none()) return setError(fault.text);
    *this = std::move(shape);
    if (surplus != nullptr) *surplus = left;
}

}  // namespace marrowfen
