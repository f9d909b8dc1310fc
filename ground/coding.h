#pragma once

// Little-endian bytes of the numbers that the file formats hold. Nothing else in the program knows a byte order.

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

inline uint16_t get16(const unsigned char* p) { return static_cast<uint16_t>(p[0] | p[1] << 8); }

inline uint32_t get32(const unsigned char* p) {
    return static_cast<uint32_t>(p[0]) | static_cast<uint32_t>(p[1]) << 8 | static_cast<uint32_t>(p[2]) << 16 |
           static_cast<uint32_t>(p[3]) << 24;
}

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

inline void putFloat(std::string& out, float value) { put32(out, floatBits(value)); }

// The whole part of value, or the nearest end of the 32-bit range; 0 for a value that isn't a number. (A plain cast
// of such values is undefined and differs between processors.)
inline int32_t truncatedToInt32(float value) {
    if (value != value) return 0;
    if (value >= 2147483648.0F) return INT32_MAX;
    if (value <= -2147483648.0F) return INT32_MIN;
    return static_cast<int32_t>(value);
}

}  // namespace marrowfen
