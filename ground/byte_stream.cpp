#include "ground/byte_stream.h"

#include "ground/byte_order.h"
#include "ground/whole_file.h"

namespace marrowfen {

namespace {

constexpr size_t kLargestFile = size_t{1} << 30;  // far above any shape; ends the reading of endless streams
constexpr int32_t kPackedOne = 32767;             // 1 as a packed component of a quaternion

}  // namespace

int16_t packQuaternionComponent(float value) {
    const int32_t whole = truncatedToInt32(value * static_cast<float>(kPackedOne));
    return static_cast<int16_t>(whole > kPackedOne ? kPackedOne : whole < -kPackedOne ? -kPackedOne : whole);
}

void ByteWriter::value(uint16_t number) { put16(bytes_, number); }
void ByteReader::value(uint16_t& number) { number = get16(take(2)); }

void ByteWriter::value(uint32_t number) { put32(bytes_, number); }
void ByteReader::value(uint32_t& number) { number = get32(take(4)); }

void ByteWriter::value(float number) { put32(bytes_, floatBits(number)); }
void ByteReader::value(float& number) { number = floatFromBits(read<uint32_t>()); }

void ByteWriter::value(const Quaternion& q) {
    for (const float component : {q.x, q.y, q.z, q.w}) value(static_cast<uint16_t>(packQuaternionComponent(component)));
}

void ByteReader::value(Quaternion& q) {
    for (float* component : {&q.x, &q.y, &q.z, &q.w}) {
        *component = static_cast<float>(static_cast<int16_t>(read<uint16_t>())) / static_cast<float>(kPackedOne);
    }
}

void ByteWriter::value(const Matrix44& matrix) {
    for (const auto& row : matrix.m) values(row[0], row[1], row[2], row[3]);
}

void ByteReader::value(Matrix44& matrix) {
    for (auto& row : matrix.m) values(row[0], row[1], row[2], row[3]);
}

void ByteWriter::low8(uint32_t number) {
    assert(number <= UINT8_MAX);
    value(static_cast<uint8_t>(number));
}

void ByteWriter::low16(uint32_t number) {
    assert(number <= UINT16_MAX);
    value(static_cast<uint16_t>(number));
}

void ByteReader::text(std::string& characters, size_t length) {
    characters.clear();
    if (!holds(static_cast<int64_t>(length), 1)) return;
    characters = file_.substr(position_, length);
    position_ += length;
}

void ByteWriter::zeroEnded(const std::string& name) {
    text(name);
    bytes_.push_back('\0');
}

void ByteReader::zeroEnded(std::string& name) {
    name.clear();
    if (!good()) return;
    const size_t end = file_.substr(0, end_).find('\0', position_);
    if (end == std::string_view::npos) return report("a name has no end");
    name = file_.substr(position_, end - position_);
    position_ = end + 1;
}

ByteReader::ByteReader(std::string_view file, size_t begin, size_t end, ReadFault& fault)
    : file_(file), position_(begin), end_(end), fault_(&fault) {
    assert(begin <= end && end <= file.size());
}

const char* ByteReader::take(size_t size) {
    static constexpr char kZeros[4] = {};
    assert(size <= sizeof kZeros);
    if (!good()) return kZeros;
    if (left() < size) {
        report("the data ends here, " + std::to_string(size - left()) + " bytes too early");
        return kZeros;
    }
    const char* taken = file_.data() + position_;
    position_ += size;
    return taken;
}

bool ByteReader::holds(int64_t count, size_t entryBytes) {
    assert(entryBytes > 0);
    if (!good()) return false;
    if (count < 0) {
        report("the count is " + std::to_string(count));
    } else if (static_cast<uint64_t>(count) > left() / entryBytes) {
        report("the count is " + std::to_string(count) + ", each takes " + std::to_string(entryBytes) + " bytes, " +
               std::to_string(left()) + " bytes are left");
    }
    return good();
}

void ReadFault::report(size_t offset, const std::string& what) {
    if (none()) text = "offset " + std::to_string(offset) + ": " + (section.empty() ? "" : section + ": ") + what;
}

std::string readWholeStream(std::istream& stream, ReadFault& fault) {
    std::string file;
    switch (readWhole(stream, kLargestFile, file)) {
        case WholeRead::Done:
            break;
        case WholeRead::Failed:
            fault.report(file.size(), "the file can't be read");
            break;
        case WholeRead::TooLarge:
            fault.report(kLargestFile, "the file is larger than any shape");
            break;
    }
    return file;
}

}  // namespace marrowfen
