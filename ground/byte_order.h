#pragma once

// Numbers of 16 and 32 bits as the bytes of the files that we write and read: the lowest byte first. The only place
// that knows a byte order.

#include <cstdint>
#include <cstring>
#include <string>

namespace marrowfen {

inline void put16(std::string& out, uint16_t value) {
    const char bytes[] = {static_cast<char>(value), static_cast<char>(value >> 8)};
    out.append(bytes, sizeof bytes);
}

inline void put32(std::string& out, uint32_t value) {
    const char bytes[] = {static_cast<char>(value), static_cast<char>(value >> 8), static_cast<char>(value >> 16),
                          static_cast<char>(value >> 24)};
    out.append(bytes, sizeof bytes);
}

inline uint16_t get16(const char* bytes) {
    const auto at = [&](int i) { return static_cast<unsigned char>(bytes[i]); };
    return static_cast<uint16_t>(at(0) | at(1) << 8);
}

inline uint32_t get32(const char* bytes) { return get16(bytes) | static_cast<uint32_t>(get16(bytes + 2)) << 16; }

inline uint32_t floatBits(float value) {
    uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

inline float floatFromBits(uint32_t bits) {
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

}  // namespace marrowfen
