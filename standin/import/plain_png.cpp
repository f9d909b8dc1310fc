#include "standin/import/plain_png.h"

#include <zlib.h>

namespace marrowfen::standin {

namespace {

constexpr uint32_t kSide = 8;
constexpr char kRgb = 2, kRgba = 6;

void put32(std::string& bytes, uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(value >> shift & 0xFF);
}

void putChunk(std::string& bytes, const std::string& type, const std::string& data) {
    const std::string body = type + data;
    put32(bytes, static_cast<uint32_t>(data.size()));
    bytes += body;
    put32(bytes,
          static_cast<uint32_t>(crc32(0, reinterpret_cast<const Bytef*>(body.data()), static_cast<uInt>(body.size()))));
}

}  // namespace

std::string plainPng(const std::array<uint8_t, 4>& color) {
    const size_t channels = color[3] == 255 ? 3 : 4;
    std::string rows;
    for (uint32_t y = 0; y < kSide; ++y) {
        rows += '\0';  // no filter
        for (uint32_t x = 0; x < kSide; ++x) {
            for (size_t c = 0; c < channels; ++c) rows += static_cast<char>(color[c]);
        }
    }
    uLongf size = compressBound(static_cast<uLong>(rows.size()));
    std::string packed(size, '\0');
    compress(reinterpret_cast<Bytef*>(packed.data()), &size, reinterpret_cast<const Bytef*>(rows.data()),
             static_cast<uLong>(rows.size()));
    packed.resize(size);

    std::string head;
    put32(head, kSide);
    put32(head, kSide);
    head += '\x08';
    head += channels == 3 ? kRgb : kRgba;
    head += std::string(3, '\0');
    std::string bytes = "\x89PNG\r\n\x1A\n";
    putChunk(bytes, "IHDR", head);
    putChunk(bytes, "IDAT", packed);
    putChunk(bytes, "IEND", "");
    return bytes;
}

}  // namespace marrowfen::standin
