#include "ground/block_stream.h"

#include <algorithm>
#include <ostream>

namespace marrowfen {

namespace {

constexpr size_t kHeaderBytes = 16;  // version, then three sizes in words
constexpr size_t kWord = 4;

}  // namespace

void BlockWriter::checkpoint() {
    words.value(nextCheckpoint_);
    halves.value(static_cast<uint16_t>(nextCheckpoint_));
    bytes.value(static_cast<uint8_t>(nextCheckpoint_));
    ++nextCheckpoint_;
}

void BlockReader::checkpoint() {
    words.read<uint32_t>();
    halves.read<uint16_t>();
    bytes.read<uint8_t>();
}

void BlockWriter::flush(std::ostream& stream) {
    if (halves.size() % kWord != 0) halves.value(uint16_t{0});
    while (bytes.size() % kWord != 0) bytes.value(uint8_t{0});
    assert(words.size() % kWord == 0 && halves.size() % kWord == 0);

    // The three sizes count 32-bit words from the end of the header.
    const auto startOf16 = static_cast<uint32_t>(words.size() / kWord);
    const auto startOf8 = static_cast<uint32_t>(startOf16 + halves.size() / kWord);
    const auto total = static_cast<uint32_t>(startOf8 + bytes.size() / kWord);
    ByteWriter header;
    header.values(kFormatVersion, total, startOf16, startOf8);
    assert(header.size() == kHeaderBytes);

    for (const ByteWriter* block : {&header, &words, &halves, &bytes}) {
        stream.write(block->bytes().data(), static_cast<std::streamsize>(block->size()));
    }
}

BlockPlaces readBlockPlaces(std::string_view file, ReadFault& fault) {
    fault.section = "header";
    ByteReader header(file, std::min(kWord, file.size()), file.size(), fault);
    uint32_t total = 0, startOf16 = 0, startOf8 = 0;
    header.values(total, startOf16, startOf8);
    if (!(startOf16 <= startOf8 && startOf8 <= total && total <= header.left() / kWord)) {
        fault.report(kWord, "blocks of " + std::to_string(total) + " words that start at " + std::to_string(startOf16) +
                                " and " + std::to_string(startOf8) + " don't fit " + std::to_string(header.left()) +
                                " bytes");
    }
    if (!fault.none()) return {};
    const auto place = [](size_t word) { return kHeaderBytes + word * kWord; };
    return {kHeaderBytes, place(startOf16), place(startOf8), place(total)};
}

BlockReader BlockPlaces::open(std::string_view file, ReadFault& fault) const {
    return {{file, words, halves, fault}, {file, halves, bytes, fault}, {file, bytes, end, fault}};
}

}  // namespace marrowfen
