#pragma once

// The three packed blocks of a DTS file, one of 32-bit words, one of 16-bit words and one of bytes, which are filled
// and read side by side and stand in the file one after the other. Writer and reader have the same functions, like
// those of ground/byte_stream.h.

#include <cstdint>
#include <iosfwd>
#include <string>
#include <utility>
#include <vector>

#include "ground/byte_stream.h"

namespace marrowfen {

inline constexpr uint32_t kFormatVersion = 24;  // of DTS and DSQ files
inline constexpr uint32_t kOldestVersion = 19;  // of DTS files that can be read

// The first word of a DTS file. Its low byte is the version; exporters keep what they like in the other bits. A word
// whose low byte is no version that is known belongs to a newer one, and is read as the latest known.
struct VersionWord {
    static constexpr uint32_t kVersionBits = 0xFF;

    uint32_t word = kFormatVersion;

    bool isKnown() const { return kOldestVersion <= (word & kVersionBits) && (word & kVersionBits) <= kFormatVersion; }
    uint32_t layout() const { return isKnown() ? word & kVersionBits : kFormatVersion; }
};

struct BlockWriter {
    ByteWriter words, halves, bytes;

    // Appends the running counter to all three blocks and advances it. Readers step over these marks.
    void checkpoint();

    // What is written from here on belongs to it.
    void section(const char* name) { sections.emplace_back(name, size()); }
    std::vector<std::pair<std::string, size_t>> sections;  // each with the bytes in front of it

    size_t size() const { return words.size() + halves.size() + bytes.size(); }

    // Pads the two narrow blocks to whole 32-bit words and writes the header and the three blocks.
    void flush(std::ostream& stream);

private:
    uint32_t nextCheckpoint_ = 0;
};

struct BlockReader {
    ByteReader words, halves, bytes;

    // Steps over a mark in each block, whatever its value.
    void checkpoint();

    void section(const std::string& name) { words.section(name); }
};

// Where the blocks of a file lie, in bytes from its start; all 0 when the header doesn't tell, which is a fault.
struct BlockPlaces {
    size_t words = 0, halves = 0, bytes = 0, end = 0;

    BlockReader open(std::string_view file, ReadFault& fault) const;
};
BlockPlaces readBlockPlaces(std::string_view file, ReadFault& fault);

}  // namespace marrowfen
