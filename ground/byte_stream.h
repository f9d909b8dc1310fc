#pragma once

// Values as the bytes of a file: ByteWriter appends them, ByteReader takes them back. Both have the same functions, so
// that one list of a record's fields, a template over the stream, serves both ways:
//
//     template <class Bytes, class AnyTrigger>  // ByteWriter and const Trigger, or ByteReader and Trigger
//     void exchange(Bytes& bytes, AnyTrigger& trigger) { bytes.values(trigger.state, trigger.pos); }
//
// Reading takes every number of a file as hostile: each value is taken from a range of bytes that is known, each count
// is compared with the bytes that are left before memory is taken for it, and the first fault stays.

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "ground/at.h"
#include "ground/math.h"

namespace marrowfen {

// A unit-range value as the files pack it: times 32767 in 32-bit float, truncated toward zero, kept within -32767 to
// 32767; 0 for a value that isn't a number.
int16_t packQuaternionComponent(float value);

// Bytes that one value takes.
template <class Value>
inline constexpr size_t kBytesOf = sizeof(Value);
template <>
inline constexpr size_t kBytesOf<Quaternion> = 8;

class ByteWriter {
public:
    void value(uint8_t number) { bytes_.push_back(static_cast<char>(number)); }
    void value(uint16_t number);
    void value(uint32_t number);
    void value(int32_t number) { value(static_cast<uint32_t>(number)); }
    void value(float number);  // by its bits
    void value(const Point2D& point) { values(point.x, point.y); }
    void value(const Point3& point) { values(point.x, point.y, point.z); }
    void value(const Box& box) { values(box.min, box.max); }
    void value(const Quaternion& q);     // four packed 16-bit components
    void value(const Matrix44& matrix);  // row by row

    template <class... Values>
    void values(const Values&... each) {
        (value(each), ...);
    }

    // Numbers that a file holds in fewer bits than a record.
    void low8(uint32_t number);
    void low16(uint32_t number);
    // A float of which a file holds the whole part.
    void whole(float number) { value(truncatedToInt32(number)); }

    void text(std::string_view characters) { bytes_ += characters; }  // without length or end
    void zeroEnded(const std::string& name);

    // The length of a list.
    template <class Entry>
    int64_t count(const std::vector<Entry>& list) {
        value(count32(list));
        return count32(list);
    }

    // The entries of a list whose length stands elsewhere: `length` is what readers will find there. The list must have
    // that length.
    template <class Entry, class Exchange>
    void entries([[maybe_unused]] int64_t length, size_t /*entryBytes*/, const std::vector<Entry>& list,
                 Exchange each) {
        assert(length == static_cast<int64_t>(list.size()));
        for (const Entry& entry : list) each(entry);
    }
    template <class Entry>
    void entries(int64_t length, const std::vector<Entry>& list) {
        entries(length, kBytesOf<Entry>, list, [&](const Entry& entry) { value(entry); });
    }

    // A list after its length.
    template <class Entry>
    void list(const std::vector<Entry>& list) {
        entries(count(list), list);
    }

    void unused() { value(uint32_t{0}); }  // a word that says nothing
    void section(const char*) {}           // readers name their faults by it

    size_t size() const { return bytes_.size(); }
    const std::string& bytes() const { return bytes_; }

private:
    std::string bytes_;
};

// The first fault of a file, as "offset N: SECTION: what is wrong there". After it readers give zeros and empty lists.
struct ReadFault {
    std::string section;  // what is being read: names the place in the text
    std::string text;     // empty for none

    bool none() const { return text.empty(); }
    void report(size_t offset, const std::string& what);
};

// Takes values from the front of a range of the file. The file and the fault are borrowed.
class ByteReader {
public:
    ByteReader(std::string_view file, size_t begin, size_t end, ReadFault& fault);

    size_t offset() const { return position_; }
    size_t left() const { return end_ - position_; }
    bool good() const { return fault_->none(); }
    void report(const std::string& what) { fault_->report(position_, what); }

    // The counterparts of ByteWriter's.
    void value(uint8_t& number) { number = static_cast<uint8_t>(*take(1)); }
    void value(uint16_t& number);
    void value(uint32_t& number);
    void value(int32_t& number) { number = static_cast<int32_t>(read<uint32_t>()); }
    void value(float& number);
    void value(Point2D& point) { values(point.x, point.y); }
    void value(Point3& point) { values(point.x, point.y, point.z); }
    void value(Box& box) { values(box.min, box.max); }
    void value(Quaternion& q);
    void value(Matrix44& matrix);

    template <class... Values>
    void values(Values&... each) {
        (value(each), ...);
    }

    template <class Value>
    Value read() {
        Value result{};
        value(result);
        return result;
    }

    void low8(uint32_t& number) { number = read<uint8_t>(); }
    void low16(uint32_t& number) { number = read<uint16_t>(); }
    void whole(float& number) { number = static_cast<float>(read<int32_t>()); }

    void text(std::string& characters, size_t length);
    void zeroEnded(std::string& name);

    // The length that stands here; the list is as it was.
    template <class Entry>
    int64_t count(const std::vector<Entry>&) {
        return read<int32_t>();
    }

    // Gives the list its length and calls each(entry) in order; entryBytes is the least that an entry takes of this
    // range. Without room for that many the list is empty and the fault recorded.
    template <class Entry, class Exchange>
    void entries(int64_t length, size_t entryBytes, std::vector<Entry>& list, Exchange each) {
        list.clear();
        if (!holds(length, entryBytes)) return;
        list.resize(static_cast<size_t>(length));
        for (Entry& entry : list) each(entry);
    }
    template <class Entry>
    void entries(int64_t length, std::vector<Entry>& list) {
        entries(length, kBytesOf<Entry>, list, [&](Entry& entry) { value(entry); });
    }

    template <class Entry>
    void list(std::vector<Entry>& list) {
        entries(count(list), list);
    }

    void unused() { read<uint32_t>(); }
    void section(const std::string& name) { fault_->section = name; }

    // Whether the range has room for that many entries; reports a fault when it hasn't.
    bool holds(int64_t count, size_t entryBytes);

private:
    const char* take(size_t size);

    std::string_view file_;
    size_t position_;
    size_t end_;
    ReadFault* fault_;
};

// Everything that is left in the stream. A stream that fails or never ends is a fault.
std::string readWholeStream(std::istream& stream, ReadFault& fault);

}  // namespace marrowfen
