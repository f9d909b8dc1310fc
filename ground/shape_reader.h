#pragma once

// Reading files whose every number may be wrong: each value is taken from a range of bytes that is known, each count is
// compared with the bytes that are left before memory is taken for it, and the first fault stays.

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "ground/math.h"

namespace marrowfen {

// The first fault of a file, as "offset N: SECTION: what is wrong there". After it readers give zeros and empty lists.
struct ReadFault {
    std::string section;  // what is being read: names the place in the text
    std::string text;     // empty for none

    bool none() const { return text.empty(); }
    void report(size_t offset, const std::string& what);
};

// Takes little-endian values from the front of a range of the file. The file and the fault are borrowed.
class ByteReader {
public:
    ByteReader(std::string_view file, size_t begin, size_t end, ReadFault& fault)
        : file_(file), position_(begin), end_(end), fault_(&fault) {}

    size_t offset() const { return position_; }
    size_t left() const { return end_ - position_; }
    bool good() const { return fault_->none(); }
    void report(const std::string& what) { fault_->report(position_, what); }

    uint32_t read32();
    uint16_t read16();
    uint8_t read8();
    int32_t readInt() { return static_cast<int32_t>(read32()); }
    float readFloat();            // by its bits
    Point3 readPoint();           // x, y, z
    Quaternion readQuaternion();  // four packed 16-bit components
    std::string readText(size_t length);
    std::string readName();  // up to a zero byte

    // Whether the range has room for that many entries; reports a fault when it hasn't.
    bool holds(int64_t count, size_t entryBytes);

private:
    const unsigned char* take(size_t size);

    std::string_view file_;
    size_t position_;
    size_t end_;
    ReadFault* fault_;
};

// Resizes a list to a count from the file and fills it entry by entry; entryBytes is the least that an entry takes of
// the range. Without room for that many the list is empty and the fault recorded.
template <class Entry, class ReadEntry>
void readList(ByteReader& in, int64_t count, size_t entryBytes, std::vector<Entry>& list, ReadEntry readEntry) {
    list.clear();
    if (!in.holds(count, entryBytes)) return;
    list.resize(static_cast<size_t>(count));
    for (Entry& entry : list) entry = readEntry();
}

// The three packed blocks of a DTS file, read side by side as ShapeBuffers wrote them.
struct ShapeReader {
    ReadFault& fault;
    ByteReader words, halves, bytes;

    // Steps over a mark in each block, whatever its value.
    void checkpoint();

    void readPoints(int64_t count, std::vector<Point3>& points);
    void readQuaternions(int64_t count, std::vector<Quaternion>& values);
    void readFloats(int64_t count, std::vector<float>& values);
    void readInts(int64_t count, std::vector<int32_t>& values);
};

// Everything that is left in the stream. A stream that fails or never ends is a fault.
std::string readWholeStream(std::istream& stream, ReadFault& fault);

}  // namespace marrowfen
