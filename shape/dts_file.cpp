#include <algorithm>
#include <istream>
#include <ostream>

#include "ground/block_stream.h"
#include "shape/record_fields.h"
#include "shape/sequence_record.h"
#include "shape/shape.h"

// A DTS file is the packed blocks with all tables, then the sequences, then the material list. Each table stands here
// once, for writing (a BlockWriter and a const Shape, version 24) and for reading (a BlockReader and a Shape, versions
// 19 to 24; newer ones as 24). Mesh blocks of older versions are read in the layout of version 24.

namespace marrowfen {

namespace {

constexpr uint8_t kMaterialListVersion = 1;
constexpr int32_t kMostMeshes = 32768;           // of which shapes have a few hundred
constexpr size_t kLongestMaterialName = 255;     // its length is one byte
constexpr size_t kSmallestMaterial = 1 + 6 * 4;  // bytes: the length of its name and six columns

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
    int32_t nodes = 0, objects = 0, decals = 0, subshapes = 0, iflMaterials = 0;
    int32_t rotations = 0;  // before the scale tables: of node states, the default pose included
    int32_t translations = 0, scalesUniform = 0, scalesAligned = 0, scalesArbitrary = 0, grounds = 0;
    int32_t objectStates = 0, decalStates = 0, triggers = 0, detailLevels = 0, meshes = 0, names = 0;
};

Counts countsOf(const Shape& s) {
    return {count32(s.nodes),
            count32(s.objects),
            count32(s.decals),
            count32(s.subshapes),
            count32(s.IFLmaterials),
            count32(s.nodeRotations),
            count32(s.nodeTranslations),
            count32(s.nodeScalesUniform),
            count32(s.nodeScalesAligned),
            count32(s.nodeScalesArbitrary),
            count32(s.groundTranslations),
            count32(s.objectStates),
            count32(s.decalStates),
            count32(s.triggers),
            count32(s.detailLevels),
            count32(s.meshes),
            count32(s.names)};
}

template <class Bytes, class AnyCounts>
void exchangeCounts(Bytes& words, const Layout& layout, AnyCounts& c) {
    words.values(c.nodes, c.objects, c.decals, c.subshapes, c.iflMaterials, c.rotations);
    if (layout.hasScales()) words.values(c.translations, c.scalesUniform, c.scalesAligned, c.scalesArbitrary);
    if (layout.hasGroundFrames()) words.value(c.grounds);
    words.values(c.objectStates, c.decalStates, c.triggers, c.detailLevels, c.meshes);
    if (layout.hasSkinCount()) words.unused();
    words.value(c.names);
}

template <class Blocks, class Records>
void exchangeTable(Blocks& file, const char* section, int32_t count, Records& records) {
    file.section(section);
    exchangeRecords(file.words, count, records);
    file.checkpoint();
}

// Column by column.
template <class Blocks, class SubShapes>
void exchangeSubShapes(Blocks& file, int32_t count, SubShapes& subshapes) {
    file.section("subshapes");
    constexpr size_t kBytes = 4 * (std::size(kSubShapeFirsts) + std::size(kSubShapeCounts));
    file.words.entries(count, kBytes, subshapes, [](auto&) {});
    const auto exchangeColumns = [&](const auto& columns) {
        for (const auto column : columns) {
            for (auto& subshape : subshapes) file.words.value(subshape.*column);
        }
        file.checkpoint();
    };
    exchangeColumns(kSubShapeFirsts);
    exchangeColumns(kSubShapeCounts);
}

template <class Blocks, class AnyShape>
void exchangePoses(Blocks& file, const Layout& layout, const Counts& counts, AnyShape& shape) {
    file.section("default pose");
    file.halves.entries(counts.nodes, shape.nodeDefRotations);
    file.words.entries(counts.nodes, shape.nodeDefTranslations);

    const int64_t rotations = counts.rotations - (layout.hasScales() ? int64_t{0} : counts.nodes);
    file.section("node translations");
    file.words.entries(layout.hasScales() ? counts.translations : rotations, shape.nodeTranslations);
    file.section("node rotations");
    file.halves.entries(rotations, shape.nodeRotations);
    file.checkpoint();

    file.section("node scales");
    file.words.entries(counts.scalesUniform, shape.nodeScalesUniform);
    file.words.entries(counts.scalesAligned, shape.nodeScalesAligned);
    file.words.entries(counts.scalesArbitrary, shape.nodeScalesArbitrary);
    file.halves.entries(counts.scalesArbitrary, shape.nodeScaleRotsArbitrary);
    if (layout.scaleMark) file.checkpoint();

    if (!layout.hasGroundFrames()) return;
    file.section("ground frames");
    file.words.entries(counts.grounds, shape.groundTranslations);
    file.halves.entries(counts.grounds, shape.groundRotations);
    file.checkpoint();
}

void exchangeMeshes(BlockWriter& file, [[maybe_unused]] int32_t count, const std::vector<Mesh>& meshes) {
    assert(count == count32(meshes));
    file.section("meshes");
    for (const Mesh& mesh : meshes) mesh.writeMeshBlock(file);
    file.checkpoint();
}

// One mesh after the other, so that memory is taken only for meshes that are there. A null mesh takes a hundred times
// its four bytes.
void exchangeMeshes(BlockReader& file, int32_t count, std::vector<Mesh>& meshes) {
    file.section("meshes");
    if (!file.words.holds(count, kBytesOf<int32_t>)) return;
    if (count > kMostMeshes) {
        return file.words.report(std::to_string(count) + " meshes, at most " + std::to_string(kMostMeshes) +
                                 " are read");
    }
    for (int32_t i = 0; i < count && file.words.good(); ++i) {
        file.section("mesh " + std::to_string(i));
        meshes.emplace_back().readMeshBlock(file);
    }
    file.checkpoint();
}

template <class Blocks, class Names>
void exchangeNames(Blocks& file, int32_t count, Names& names) {
    file.section("names");
    file.bytes.entries(count, 1, names, [&](auto& name) { file.bytes.zeroEnded(name); });
    file.checkpoint();
}

template <class Blocks, class AnyShape>
void exchangeMeasures(Blocks& file, AnyShape& shape) {
    file.words.whole(shape.smallestSize);
    file.words.value(shape.smallestDetailLevel);
    file.checkpoint();
    file.words.values(shape.radius, shape.tubeRadius, shape.center, shape.bounds);
    file.checkpoint();
}

// The three blocks.
template <class Blocks, class AnyCounts, class AnyShape>
void exchangeTables(Blocks& file, const Layout& layout, AnyCounts& counts, AnyShape& shape) {
    file.section("header");
    exchangeCounts(file.words, layout, counts);
    exchangeMeasures(file, shape);
    exchangeTable(file, "nodes", counts.nodes, shape.nodes);
    exchangeTable(file, "objects", counts.objects, shape.objects);
    exchangeTable(file, "decals", counts.decals, shape.decals);
    exchangeTable(file, "IFL materials", counts.iflMaterials, shape.IFLmaterials);
    exchangeSubShapes(file, counts.subshapes, shape.subshapes);
    exchangePoses(file, layout, counts, shape);
    exchangeTable(file, "object states", counts.objectStates, shape.objectStates);
    exchangeTable(file, "decal states", counts.decalStates, shape.decalStates);
    exchangeTable(file, "triggers", counts.triggers, shape.triggers);
    exchangeTable(file, "detail levels", counts.detailLevels, shape.detailLevels);
    exchangeMeshes(file, counts.meshes, shape.meshes);
    exchangeNames(file, counts.names, shape.names);
}

void exchangeSequences(ByteWriter& bytes, const std::vector<Shape::Sequence>& sequences) {
    bytes.count(sequences);
    for (const Shape::Sequence& sequence : sequences) {
        bytes.value(sequence.nameIndex);
        exchangeSequence(bytes, sequence);
    }
}

void exchangeSequences(ByteReader& bytes, uint32_t version, std::vector<Shape::Sequence>& sequences) {
    bytes.section("sequences");
    bytes.entries(bytes.count(sequences), kSmallestSequence, sequences, [&](Shape::Sequence& sequence) {
        bytes.value(sequence.nameIndex);
        exchangeSequence(bytes, version, sequence);
    });
}

// What follows the names, column by column.
template <class Bytes, class Materials>
void exchangeMaterialColumns(Bytes& bytes, Materials& materials) {
    forEachMaterialColumn([&](auto column) {
        for (auto& material : materials) bytes.value(material.*column);
    });
}

void exchangeMaterials(ByteWriter& bytes, const std::vector<Shape::Material>& materials) {
    bytes.value(kMaterialListVersion);
    bytes.count(materials);
    for (const Shape::Material& material : materials) {
        const std::string name = material.name.substr(0, kLongestMaterialName);
        bytes.value(static_cast<uint8_t>(name.size()));
        bytes.text(name);
    }
    exchangeMaterialColumns(bytes, materials);
}

void exchangeMaterials(ByteReader& bytes, std::vector<Shape::Material>& materials) {
    bytes.section("materials");
    if (bytes.read<uint8_t>() != kMaterialListVersion) return;
    bytes.entries(bytes.count(materials), kSmallestMaterial, materials,
                  [&](Shape::Material& material) { bytes.text(material.name, bytes.read<uint8_t>()); });
    exchangeMaterialColumns(bytes, materials);
}

// One way to read a file.
struct Reading {
    Shape shape;
    ReadFault fault;
    std::string surplus;        // a line about bytes that belong to nothing, empty for none
    bool hasFullBlocks = true;  // the tables use up the blocks that hold them

    // Bytes after the end of a file are likelier than bytes left over in a block.
    int trouble() const { return !fault.none() ? 3 : !hasFullBlocks ? 2 : surplus.empty() ? 0 : 1; }
};

// The padding of the narrow blocks is no surplus.
void noteSurplus(const BlockReader& blocks, const ByteReader& rest, Reading& reading) {
    const auto note = [&](const ByteReader& in, const char* place) {
        reading.surplus =
            "offset " + std::to_string(in.offset()) + ": " + std::to_string(in.left()) + " bytes too many " + place;
        reading.hasFullBlocks = &in == &rest;
    };
    if (blocks.words.left() > 0) return note(blocks.words, "in the 32-bit block");
    if (blocks.halves.left() > 2) return note(blocks.halves, "in the 16-bit block");
    if (blocks.bytes.left() > 3) return note(blocks.bytes, "in the 8-bit block");
    if (rest.left() > 0) note(rest, "at the end of the file");
}

Reading readFile(const std::string& file, const Layout& layout) {
    Reading reading;
    const BlockPlaces places = readBlockPlaces(file, reading.fault);
    BlockReader blocks = places.open(file, reading.fault);
    Counts counts;
    exchangeTables(blocks, layout, counts, reading.shape);

    ByteReader rest(file, places.end, file.size(), reading.fault);
    exchangeSequences(rest, layout.version, reading.shape.sequences);
    exchangeMaterials(rest, reading.shape.materials);
    noteSurplus(blocks, rest, reading);
    assert(!reading.fault.none() ||
           (count32(reading.shape.meshes) == counts.meshes && count32(reading.shape.names) == counts.names));
    return reading;
}

// Before version 22 there are no scale tables, and files with and without their mark are both imaginable. The reading
// with less trouble is the right one.
Reading readOldFile(const std::string& file, uint32_t version) {
    Reading marked = readFile(file, {version, true});
    if (marked.trouble() == 0) return marked;
    Reading unmarked = readFile(file, {version, false});
    return unmarked.trouble() < marked.trouble() ? std::move(unmarked) : std::move(marked);
}

}  // namespace

void Shape::writeDts(std::ostream& stream, bool includeSequences) const {
    BlockWriter blocks;
    const Counts counts = countsOf(*this);
    exchangeTables(blocks, Layout{}, counts, *this);
    blocks.flush(stream);

    ByteWriter rest;
    exchangeSequences(rest, includeSequences ? sequences : std::vector<Sequence>());
    exchangeMaterials(rest, materials);
    stream.write(rest.bytes().data(), static_cast<std::streamsize>(rest.size()));
}

std::vector<Shape::PartSize> Shape::partSizes() const {
    BlockWriter blocks;
    const Counts counts = countsOf(*this);
    exchangeTables(blocks, Layout{}, counts, *this);
    std::vector<PartSize> parts;
    for (size_t i = 0; i < blocks.sections.size(); ++i) {
        const size_t end = i + 1 < blocks.sections.size() ? blocks.sections[i + 1].second : blocks.size();
        parts.push_back({blocks.sections[i].first, end - blocks.sections[i].second});
    }
    ByteWriter rest;
    exchangeSequences(rest, sequences);
    parts.push_back({"sequences", rest.size()});
    exchangeMaterials(rest, materials);
    parts.push_back({"materials", rest.size() - parts.back().bytes});
    return parts;
}

void Shape::readDts(std::istream& stream, std::string* surplus) {
    ReadFault fault;
    const std::string file = readWholeStream(stream, fault);
    const VersionWord version{ByteReader(file, 0, file.size(), fault).read<uint32_t>()};
    if (!fault.none()) return setError(fault.text);
    if (version.word < kOldestVersion) return setError("The DTS file is of a older, unsupported version");

    const Layout layout{version.layout()};
    Reading reading = layout.hasScales() ? readFile(file, layout) : readOldFile(file, layout.version);
    if (!reading.fault.none()) {
        // What lies behind an unknown version and makes no sense is more likely a file of another kind.
        return setError(version.isKnown()
                            ? reading.fault.text
                            : "offset 0: this is no DTS file: version word " + std::to_string(version.word));
    }
    *this = std::move(reading.shape);
    if (surplus != nullptr) *surplus = reading.surplus;
}

}  // namespace marrowfen
