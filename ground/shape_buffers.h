#pragma once

// The three packed buffers of a DTS file: 32-bit words, 16-bit words and bytes, filled side by side and written one
// after the other.

#include <cstdint>
#include <iosfwd>
#include <string>

#include "ground/math.h"

namespace marrowfen {

inline constexpr uint32_t kFormatVersion = 24;  // of DTS and DSQ files

// A unit-range value as the files pack it: times 32767 in 32-bit float, truncated toward zero, kept within -32767 to
// 32767; 0 for a value that isn't a number.
int16_t packQuaternionComponent(float value);

void putPoint(std::string& out, const Point3& point);           // x, y, z
void putQuaternion(std::string& out, const Quaternion& value);  // four packed 16-bit components

class ShapeBuffers {
public:
    void write32(uint32_t value);
    void write16(uint16_t value);
    void write8(uint8_t value);

    void writeInt(int32_t value) { write32(static_cast<uint32_t>(value)); }
    void writeFloat(float value);                   // by its bits
    void writePoint(const Point3& point);           // x, y, z
    void writeBox(const Box& box);                  // min, then max
    void writeQuaternion(const Quaternion& value);  // four packed 16-bit components

    // Appends the running counter to all three buffers and advances it. Readers step over these marks.
    void checkpoint();

    // Pads the two narrow buffers to whole 32-bit words and writes the header and the three blocks.
    void flush(std::ostream& stream);

private:
    uint32_t nextCheckpoint_ = 0;
    std::string words_;   // little-endian bytes of the 32-bit buffer
    std::string halves_;  // of the 16-bit buffer
    std::string bytes_;
};

}  // namespace marrowfen
