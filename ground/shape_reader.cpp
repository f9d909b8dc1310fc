#include "ground/shape_reader.h"

#include <istream>

#include "ground/coding.h"

namespace marrowfen {

namespace {

constexpr size_t kLargestFile = size_t{1} << 30;  // far above any shape; ends the reading of endless streams
constexpr float kPackedOne = 32767.0F;

}  // namespace

void ReadFault::report(size_t offset, const std::string& what) {
    if (none()) text = "offset " + std::to_string(offset) + ": " + (section.empty() ? "" : section + ": ") + what;
}

const unsigned char* ByteReader::take(size_t size) {
    static constexpr unsigned char kZeros[4] = {};
    if (!good()) return kZeros;
    if (left() < size) {
        report("the data ends here, " + std::to_string(size - left()) + " bytes too early");
        return kZeros;
    }
    const auto* taken = reinterpret_cast<const unsigned char*>(file_.data()) + position_;
    position_ += size;
    return taken;
}

uint32_t ByteReader::read32() { return get32(take(4)); }
uint16_t ByteReader::read16() { return get16(take(2)); }
uint8_t ByteReader::read8() { return *take(1); }
float ByteReader::readFloat() { return floatFromBits(read32()); }

Point3 ByteReader::readPoint() {
    Point3 point;
    for (float* value : {&point.x, &point.y, &point.z}) *value = readFloat();
    return point;
}

Quaternion ByteReader::readQuaternion() {
    Quaternion q;
    for (float* value : {&q.x, &q.y, &q.z, &q.w}) {
        *value = static_cast<float>(static_cast<int16_t>(read16())) / kPackedOne;
    }
    return q;
}

std::string ByteReader::readText(size_t length) {
    if (!holds(static_cast<int64_t>(length), 1)) return {};
    const std::string text(file_.substr(position_, length));
    position_ += length;
    return text;
}

std::string ByteReader::readName() {
    if (!good()) return {};
    const size_t end = file_.substr(0, end_).find('\0', position_);
    if (end == std::string_view::npos) {
        report("a name has no end");
        return {};
    }
    const std::string name(file_.substr(position_, end - position_));
    position_ = end + 1;
    return name;
}

bool ByteReader::holds(int64_t count, size_t entryBytes) {
    if (!good()) return false;
    if (count < 0) {
        report("the count is " + std::to_string(count));
    } else if (static_cast<uint64_t>(count) > left() / entryBytes) {
        report("the count is " + std::to_string(count) + ", each takes " + std::to_string(entryBytes) + " bytes, " +
               std::to_string(left()) + " bytes are left");
    }
    return good();
}

void ShapeReader::checkpoint() {
    words.read32();
    halves.read16();
    bytes.read8();
}

void ShapeReader::readPoints(int64_t count, std::vector<Point3>& points) {
    readList(words, count, 12, points, [&] { return words.readPoint(); });
}

void ShapeReader::readQuaternions(int64_t count, std::vector<Quaternion>& values) {
    readList(halves, count, 8, values, [&] { return halves.readQuaternion(); });
}

void ShapeReader::readFloats(int64_t count, std::vector<float>& values) {
    readList(words, count, 4, values, [&] { return words.readFloat(); });
}

void ShapeReader::readInts(int64_t count, std::vector<int32_t>& values) {
    readList(words, count, 4, values, [&] { return words.readInt(); });
}

std::string readWholeStream(std::istream& stream, ReadFault& fault) {
    std::string file;
    char chunk[1 << 16];
    while (stream.good() && file.size() <= kLargestFile) {
        stream.read(chunk, sizeof chunk);
        file.append(chunk, static_cast<size_t>(stream.gcount()));
    }
    if (file.size() > kLargestFile) {
        fault.report(kLargestFile, "the file is larger than any shape");
    } else if (stream.bad() || !stream.eof()) {
        fault.report(file.size(), "the file can't be read");
    }
    return file;
}

}  // namespace marrowfen
