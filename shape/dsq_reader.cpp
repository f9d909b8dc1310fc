#include <istream>

#include "ground/shape_buffers.h"
#include "ground/shape_reader.h"
#include "shape/sequence_record.h"
#include "shape/shape.h"

// The inverse of the DSQ writer. The file holds names as text; each becomes an entry of its own in the name table.

namespace marrowfen {

namespace {

// Appends a name to the table and gives its index.
int32_t readName(ByteReader& in, std::vector<std::string>& names) {
    names.push_back(in.readText(in.read32()));
    return static_cast<int32_t>(names.size()) - 1;
}

void readNodes(ByteReader& in, Shape& shape) {
    readList(in, in.readInt(), 4, shape.nodes, [&] {
        Shape::Node node;
        node.name = readName(in, shape.names);
        return node;
    });
    // The file has no default pose, but every node of a shape has one.
    shape.nodeDefRotations.resize(shape.nodes.size());
    shape.nodeDefTranslations.resize(shape.nodes.size());
}

// The word stands for tables that were never used; data behind another number would be unknown.
void readUnused(ByteReader& in) {
    const uint32_t value = in.read32();
    if (value != 0) in.report("the word before is " + std::to_string(value) + " instead of 0");
}

void readPoints(ByteReader& in, int64_t count, std::vector<Point3>& points) {
    readList(in, count, 12, points, [&] { return in.readPoint(); });
}

void readQuaternions(ByteReader& in, int64_t count, std::vector<Quaternion>& values) {
    readList(in, count, 8, values, [&] { return in.readQuaternion(); });
}

void readKeys(ByteReader& in, ReadFault& fault, Shape& shape) {
    fault.section = "node rotations";
    readQuaternions(in, in.readInt(), shape.nodeRotations);
    fault.section = "node translations";
    readPoints(in, in.readInt(), shape.nodeTranslations);

    fault.section = "node scales";
    readList(in, in.readInt(), 4, shape.nodeScalesUniform, [&] { return in.readFloat(); });
    readPoints(in, in.readInt(), shape.nodeScalesAligned);
    const int32_t arbitrary = in.readInt();
    readQuaternions(in, arbitrary, shape.nodeScaleRotsArbitrary);
    readPoints(in, arbitrary, shape.nodeScalesArbitrary);

    fault.section = "ground frames";
    const int32_t grounds = in.readInt();
    readPoints(in, grounds, shape.groundTranslations);
    readQuaternions(in, grounds, shape.groundRotations);
}

void readSequences(ByteReader& in, Shape& shape) {
    readList(in, in.readInt(), kSmallestSequence, shape.sequences, [&] {
        Shape::Sequence sequence;
        sequence.nameIndex = readName(in, shape.names);
        readSequence(in, kFormatVersion, sequence);
        return sequence;
    });
}

void readTriggers(ByteReader& in, std::vector<Shape::Trigger>& triggers) {
    readList(in, in.readInt(), 8, triggers, [&] {
        const uint32_t state = in.read32();
        return Shape::Trigger{state, in.readFloat()};
    });
}

}  // namespace

void Shape::readDsq(std::istream& stream, std::string* surplus) {
    ReadFault fault;
    const std::string file = readWholeStream(stream, fault);
    ByteReader in(file, 0, file.size(), fault);
    Shape shape;

    const uint32_t version = in.read32();
    if (version != kFormatVersion) {
        fault.report(
            0, "version " + std::to_string(version) + ", only " + std::to_string(kFormatVersion) + " can be read");
    }
    fault.section = "nodes";
    readNodes(in, shape);
    readUnused(in);
    fault.section = "objects";
    in.readInt();  // the objects that the sequences were made with; the file holds none of them
    readKeys(in, fault, shape);
    fault.section = "sequences";
    readUnused(in);
    readSequences(in, shape);
    fault.section = "triggers";
    readTriggers(in, shape.triggers);

    if (!fault.none()) return setError(fault.text);
    if (surplus != nullptr && in.left() > 0) {
        *surplus = "offset " + std::to_string(in.offset()) + ": " + std::to_string(in.left()) +
                   " bytes too many at the end of the file";
    }
    *this = std::move(shape);
}

}  // namespace marrowfen
