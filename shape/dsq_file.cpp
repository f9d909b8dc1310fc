#include <charconv>
#include <cstdlib>
#include <ostream>

#include "ground/block_stream.h"
#include "ground/crlf_stream.h"
#include "shape/record_fields.h"
#include "shape/sequence_record.h"
#include "shape/shape.h"

// A DSQ file is the node names, the animation tables, the sequences and the triggers in one stream of words. Each part
// stands here once, for writing (a ByteWriter and a const Shape) and for reading (a ByteReader and a Shape).

namespace marrowfen {

namespace {

constexpr size_t kSmallestNode = 4;  // bytes: the length of its name

// The file holds names as text: nothing at all for an index that names nothing. Read back, each becomes an entry of its
// own in the name table.
void exchangeName(ByteWriter& bytes, const std::vector<std::string>& names, int32_t index) {
    if (!hasIndex(names, index)) return;
    bytes.value(count32(at(names, index)));
    bytes.text(at(names, index));
}

void exchangeName(ByteReader& bytes, std::vector<std::string>& names, int32_t& index) {
    index = count32(names);
    bytes.text(names.emplace_back(), bytes.read<uint32_t>());
}

// The word stands for tables that were never used; data behind another number would be unknown.
void exchangeNoTables(ByteWriter& bytes) { bytes.unused(); }
void exchangeNoTables(ByteReader& bytes) {
    const auto count = bytes.read<uint32_t>();
    if (count != 0) bytes.report("the word before is " + std::to_string(count) + " instead of 0");
}

template <class Bytes, class AnyShape>
void exchangeNodes(Bytes& bytes, AnyShape& shape) {
    bytes.section("nodes");
    bytes.entries(bytes.count(shape.nodes), kSmallestNode, shape.nodes,
                  [&](auto& node) { exchangeName(bytes, shape.names, node.name); });
    exchangeNoTables(bytes);
}

template <class Bytes, class AnyShape>
void exchangeKeys(Bytes& bytes, AnyShape& shape) {
    bytes.section("node rotations");
    bytes.list(shape.nodeRotations);
    bytes.section("node translations");
    bytes.list(shape.nodeTranslations);

    bytes.section("node scales");
    bytes.list(shape.nodeScalesUniform);
    bytes.list(shape.nodeScalesAligned);
    const int64_t arbitrary = bytes.count(shape.nodeScaleRotsArbitrary);
    bytes.entries(arbitrary, shape.nodeScaleRotsArbitrary);
    bytes.entries(arbitrary, shape.nodeScalesArbitrary);

    bytes.section("ground frames");
    const int64_t grounds = bytes.count(shape.groundTranslations);
    bytes.entries(grounds, shape.groundTranslations);
    bytes.entries(grounds, shape.groundRotations);
}

void exchangeSequences(ByteWriter& bytes, const Shape& shape) {
    exchangeNoTables(bytes);
    bytes.count(shape.sequences);
    for (const Shape::Sequence& sequence : shape.sequences) {
        exchangeName(bytes, shape.names, sequence.nameIndex);
        exchangeSequence(bytes, sequence);
    }
}

void exchangeSequences(ByteReader& bytes, Shape& shape) {
    bytes.section("sequences");
    exchangeNoTables(bytes);
    bytes.entries(bytes.count(shape.sequences), kSmallestSequence, shape.sequences, [&](Shape::Sequence& sequence) {
        exchangeName(bytes, shape.names, sequence.nameIndex);
        exchangeSequence(bytes, kFormatVersion, sequence);
    });
}

template <class Bytes, class AnyShape>
void exchangeTriggers(Bytes& bytes, AnyShape& shape) {
    bytes.section("triggers");
    exchangeRecords(bytes, bytes.count(shape.triggers), shape.triggers);
}

// What follows the version.
template <class Bytes, class AnyShape>
void exchangeFile(Bytes& bytes, AnyShape& shape) {
    exchangeNodes(bytes, shape);
    bytes.section("objects");
    bytes.count(shape.objects);  // those that the sequences were made with; the file holds none of them
    exchangeKeys(bytes, shape);
    exchangeSequences(bytes, shape);
    exchangeTriggers(bytes, shape);
}

// Where the debug listing goes; empty where there is no drive C.
std::string debugListingPath() {
#ifdef _WIN32
    return "c:\\temp.txt";
#else
    const char* drive = std::getenv("MARROWFEN_DRIVE_C");
    return drive == nullptr || *drive == '\0' ? std::string() : std::string(drive) + "/temp.txt";
#endif
}

// Six decimals as "%f" writes them, but with a point in every locale, and with "inf", "-inf" and "nan" on every
// platform (the sign of a nan depends on the processor).
std::string fixedText(float value) {
    constexpr size_t kLongestFloat = 1 + 39 + 1 + 6;  // sign, digits before the point, point, decimals
    if (value != value) return "nan";
    char text[kLongestFloat];
    const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, 6);
    assert(end.ec == std::errc());
    return {text, end.ptr};
}

void writeDebugListing(const std::vector<Point3>& translations) {
    const std::string path = debugListingPath();
    if (path.empty()) return;
    std::string listing;
    for (size_t i = 0; i < translations.size(); ++i) {
        const Point3& t = translations[i];
        listing += std::to_string(i) + ": " + fixedText(t.x) + " " + fixedText(t.y) + " " + fixedText(t.z) + "\n";
    }
    // A listing that can't be written is left out: the DSQ file doesn't depend on it.
    CrLfFile file(path);
    file << listing;
}

}  // namespace

void Shape::writeDsq(std::ostream& stream) const {
    writeDebugListing(nodeTranslations);
    ByteWriter bytes;
    bytes.value(kFormatVersion);
    exchangeFile(bytes, *this);
    stream.write(bytes.bytes().data(), static_cast<std::streamsize>(bytes.size()));
}

void Shape::readDsq(std::istream& stream, std::string* surplus) {
    ReadFault fault;
    const std::string file = readWholeStream(stream, fault);
    ByteReader bytes(file, 0, file.size(), fault);
    const auto version = bytes.read<uint32_t>();
    if (version != kFormatVersion) {
        constexpr uint32_t kBelievable = 100;  // far more than there ever were
        fault.report(0, version < kBelievable ? "version " + std::to_string(version) + ", only " +
                                                    std::to_string(kFormatVersion) + " can be read"
                                              : "this is no DSQ file: version word " + std::to_string(version));
    }
    Shape shape;
    exchangeFile(bytes, shape);
    // The file has no default pose, but every node of a shape has one.
    shape.nodeDefRotations.resize(shape.nodes.size());
    shape.nodeDefTranslations.resize(shape.nodes.size());

    if (!fault.none()) return setError(fault.text);
    if (surplus != nullptr && bytes.left() > 0) {
        *surplus = "offset " + std::to_string(bytes.offset()) + ": " + std::to_string(bytes.left()) +
                   " bytes too many at the end of the file";
    }
    *this = std::move(shape);
}

}  // namespace marrowfen
