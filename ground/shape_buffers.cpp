#include "ground/shape_buffers.h"

#include <ostream>

#include "ground/coding.h"

namespace marrowfen {

int16_t packQuaternionComponent(float value) {
    const int32_t whole = truncatedToInt32(value * 32767.0F);
    return static_cast<int16_t>(whole > 32767 ? 32767 : whole < -32767 ? -32767 : whole);
}

void putPoint(std::string& out, const Point3& point) {
    for (const float value : {point.x, point.y, point.z}) putFloat(out, value);
}

void putQuaternion(std::string& out, const Quaternion& value) {
    for (const float component : {value.x, value.y, value.z, value.w}) {
        put16(out, static_cast<uint16_t>(packQuaternionComponent(component)));
    }
}

void ShapeBuffers::write32(uint32_t value) { put32(words_, value); }
void ShapeBuffers::write16(uint16_t value) { put16(halves_, value); }
void ShapeBuffers::write8(uint8_t value) { bytes_.push_back(static_cast<char>(value)); }

void ShapeBuffers::writeFloat(float value) { putFloat(words_, value); }
void ShapeBuffers::writePoint(const Point3& point) { putPoint(words_, point); }
void ShapeBuffers::writeQuaternion(const Quaternion& value) { putQuaternion(halves_, value); }

void ShapeBuffers::writeBox(const Box& box) {
    writePoint(box.min);
    writePoint(box.max);
}

void ShapeBuffers::checkpoint() {
    write32(nextCheckpoint_);
    write16(static_cast<uint16_t>(nextCheckpoint_));
    write8(static_cast<uint8_t>(nextCheckpoint_));
    ++nextCheckpoint_;
}

void ShapeBuffers::flush(std::ostream& stream) {
    if (halves_.size() % 4 != 0) write16(0);
    while (bytes_.size() % 4 != 0) write8(0);

    // The three starts are in 32-bit words from the end of this header.
    const auto startOf16 = static_cast<uint32_t>(words_.size() / 4);
    const auto startOf8 = static_cast<uint32_t>(startOf16 + halves_.size() / 4);
    const auto total = static_cast<uint32_t>(startOf8 + bytes_.size() / 4);
    std::string header;
    for (const uint32_t value : {kFormatVersion, total, startOf16, startOf8}) put32(header, value);

    for (const std::string* block : {&header, &words_, &halves_, &bytes_}) {
        stream.write(block->data(), static_cast<std::streamsize>(block->size()));
    }
}

}  // namespace marrowfen
