#pragma once

// What the writers make of a shape, and what the readers make of that.

#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "shape/shape.h"

namespace marrowfen {

inline std::string dts(const Shape& shape, bool includeSequences = true) {
    std::ostringstream out;
    shape.writeDts(out, includeSequences);
    return out.str();
}

inline std::string dsq(const Shape& shape) {
    std::ostringstream out;
    shape.writeDsq(out);
    return out.str();
}

inline std::string dumpOf(const Shape& shape) {
    std::ostringstream out;
    shape.dumpText(out);
    return out.str();
}

inline Shape readDts(const std::string& bytes, std::string* surplus = nullptr) {
    std::istringstream in(bytes);
    Shape shape;
    shape.readDts(in, surplus);
    return shape;
}

inline Shape readDsq(const std::string& bytes, std::string* surplus = nullptr) {
    std::istringstream in(bytes);
    Shape shape;
    shape.readDsq(in, surplus);
    return shape;
}

// The file with a few other bytes. None is 0x80: a quaternion's component of -32768 is written as -32767.
inline std::string changed(std::string file, std::mt19937& random) {
    for (auto left = random() % 20; left > 0; --left) file[random() % file.size()] = static_cast<char>(random() | 1);
    return file;
}

// The little-endian words of 1, 2 or 4 bytes that the text consists of.
inline std::vector<uint32_t> wordsOf(const std::string& bytes, size_t width = 4) {
    std::vector<uint32_t> words(bytes.size() / width);
    for (size_t i = 0; i < words.size() * width; ++i) {
        words[i / width] |= uint32_t{static_cast<unsigned char>(bytes[i])} << 8 * (i % width);
    }
    return words;
}

}  // namespace marrowfen
