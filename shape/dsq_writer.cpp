#include <cassert>
#include <charconv>
#include <cstdlib>
#include <ostream>

#include "ground/coding.h"
#include "ground/crlf_stream.h"
#include "ground/shape_buffers.h"
#include "shape/sequence_record.h"
#include "shape/shape.h"

// A DSQ file is the node names, the animation tables, the sequences and the triggers in one stream of words, laid out
// in memory and written at once.

namespace marrowfen {

namespace {

// Nothing at all for an index that names nothing.
void putName(std::string& out, const std::vector<std::string>& names, int32_t index) {
    if (index < 0 || static_cast<size_t>(index) >= names.size()) return;
    const std::string& name = names[static_cast<size_t>(index)];
    put32(out, static_cast<uint32_t>(name.size()));
    out += name;
}

template <class List>
void putCount(std::string& out, const List& list) {
    put32(out, static_cast<uint32_t>(list.size()));
}

void putPoints(std::string& out, const std::vector<Point3>& points) {
    for (const Point3& point : points) putPoint(out, point);
}

void putQuaternions(std::string& out, const std::vector<Quaternion>& values) {
    for (const Quaternion& value : values) putQuaternion(out, value);
}

void putKeys(std::string& out, const Shape& shape) {
    putCount(out, shape.nodeRotations);
    putQuaternions(out, shape.nodeRotations);
    putCount(out, shape.nodeTranslations);
    putPoints(out, shape.nodeTranslations);

    putCount(out, shape.nodeScalesUniform);
    for (const float scale : shape.nodeScalesUniform) putFloat(out, scale);
    putCount(out, shape.nodeScalesAligned);
    putPoints(out, shape.nodeScalesAligned);
    putCount(out, shape.nodeScaleRotsArbitrary);
    putQuaternions(out, shape.nodeScaleRotsArbitrary);
    putPoints(out, shape.nodeScalesArbitrary);

    putCount(out, shape.groundTranslations);
    putPoints(out, shape.groundTranslations);
    putQuaternions(out, shape.groundRotations);
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
    if (value != value) return "nan";
    char text[64];  // the longest float has 39 digits before the point
    const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, 6);
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
    // Readers find these lists' lengths in the counts of others.
    assert(nodeScaleRotsArbitrary.size() == nodeScalesArbitrary.size());
    assert(groundRotations.size() == groundTranslations.size());

    std::string out;
    put32(out, kFormatVersion);
    putCount(out, nodes);
    for (const Node& node : nodes) putName(out, names, node.name);
    put32(out, 0);
    putCount(out, objects);
    writeDebugListing(nodeTranslations);
    putKeys(out, *this);
    put32(out, 0);
    putCount(out, sequences);
    for (const Sequence& sequence : sequences) {
        putName(out, names, sequence.nameIndex);
        putSequence(out, sequence);
    }
    putCount(out, triggers);
    for (const Trigger& trigger : triggers) {
        put32(out, trigger.state);
        putFloat(out, trigger.pos);
    }
    stream.write(out.data(), static_cast<std::streamsize>(out.size()));
}

}  // namespace marrowfen
