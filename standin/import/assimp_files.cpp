#include "standin/import/assimp_files.h"

#include <assimp/MemoryIOWrapper.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "ground/ascii.h"
#include "ground/pieces.h"
#include "standin/import/own_files.h"

namespace marrowfen::standin {

namespace {

constexpr std::string_view kBigEndianMark = "\xFE\xFF", kLittleEndianMark = "\xFF\xFE";

std::string contentOf(Assimp::IOStream& stream) {
    std::string bytes(stream.FileSize(), '\0');
    bytes.resize(stream.Read(bytes.data(), 1, bytes.size()));
    stream.Seek(0, aiOrigin_SET);
    return bytes;
}

bool beginsWith16BitMark(Assimp::IOStream& stream) {
    std::string mark(2, '\0');
    const bool isThere = stream.Read(mark.data(), 1, 2) == 2;
    stream.Seek(0, aiOrigin_SET);
    return isThere && (mark == kBigEndianMark || mark == kLittleEndianMark);
}

void appendUtf8(std::string& text, uint32_t letter) {
    const auto put = [&](uint32_t byte) { text += static_cast<char>(byte); };
    if (letter < 0x80) return put(letter);
    if (letter < 0x800) {
        put(0xC0 | letter >> 6);
    } else {
        if (letter < 0x10000) {
            put(0xE0 | letter >> 12);
        } else {
            put(0xF0 | letter >> 18);
            put(0x80 | (letter >> 12 & 0x3F));
        }
        put(0x80 | (letter >> 6 & 0x3F));
    }
    put(0x80 | (letter & 0x3F));
}

// UTF-16 behind its mark.
std::string utf8Of(std::string_view bytes) {
    const bool isBig = bytes.starts_with(kBigEndianMark);
    const auto unitAt = [&](size_t at) -> uint32_t {
        const auto first = static_cast<uint8_t>(bytes[at]), second = static_cast<uint8_t>(bytes[at + 1]);
        return isBig ? static_cast<uint32_t>(first << 8 | second) : static_cast<uint32_t>(second << 8 | first);
    };
    std::string text;
    for (size_t at = 2; at + 1 < bytes.size(); at += 2) {
        uint32_t letter = unitAt(at);
        if (letter >= 0xD800 && letter < 0xDC00 && at + 3 < bytes.size()) {
            at += 2;
            letter = 0x10000 + ((letter & 0x3FF) << 10) + (unitAt(at) & 0x3FF);
        }
        appendUtf8(text, letter);
    }
    return text;
}

// "<matrix>\n  1 0 ..." -> "<matrix>1 0 ..."
std::string withoutBlanksBeforeNumbers(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r\n", kNumber = "+-.0123456789";
    std::string result;
    for (size_t at = 0; at < text.size(); ++at) {
        result += text[at];
        if (text[at] != '>') continue;
        const size_t next = text.find_first_not_of(kBlanks, at + 1);
        if (next != std::string_view::npos && kNumber.find(text[next]) != std::string_view::npos) at = next - 1;
    }
    return result;
}

// "SURF 0x30", "mat 1" of two materials -> "mat 7". A file whose materials aren't a line each stays as it is.
std::string withSurfaceKinds(const std::string& text) {
    const std::vector<std::string> lines = piecesOf(text, '\n');
    std::vector<std::string> materials;
    for (const std::string& line : lines) {
        if (!line.starts_with("MATERIAL ")) continue;
        const size_t quote = line.starts_with("MATERIAL \"") ? line.find('"', 10) : std::string::npos;
        if (quote == std::string::npos) return text;
        materials.emplace_back(line).insert(quote, 1, kKindMark);
    }
    std::string result;
    size_t written = 0;
    int kind = 0;
    for (const std::string& line : lines) {
        if (line.starts_with("SURF ")) {
            const unsigned long flags = std::strtoul(line.c_str() + 5, nullptr, 0);
            kind = static_cast<int>(flags >> 4) % kSurfaceKinds;
        }
        if (line.starts_with("MATERIAL ") && written < materials.size() && ++written == materials.size()) {
            for (int k = 0; k < kSurfaceKinds; ++k) {
                for (std::string copy : materials) {
                    copy.insert(copy.find(kKindMark) + 1, 1, static_cast<char>('0' + k));
                    result += copy + '\n';
                }
            }
        } else if (line.starts_with("mat ") && !materials.empty()) {
            const unsigned long material = std::strtoul(line.c_str() + 4, nullptr, 10);
            result += "mat " + std::to_string(material + static_cast<size_t>(kind) * materials.size()) + '\n';
        } else if (!line.starts_with("MATERIAL ") || materials.empty()) {
            result += line + '\n';
        }
    }
    return result;
}

// Keeps its bytes for as long as it is open.
Assimp::IOStream* streamOf(const std::string& bytes) {
    auto* copy = new uint8_t[bytes.size()];
    std::copy(bytes.begin(), bytes.end(), copy);
    return new Assimp::MemoryIOStream(copy, bytes.size(), true);
}

}  // namespace

bool ModelFiles::finds(const char* path) const {
    const FilePlace place = placeOfFile(model_, path);
    if (place != FilePlace::Outside) lookedFor_.push_back({path, place == FilePlace::There});
    return place == FilePlace::There;
}

bool ModelFiles::Exists(const char* path) const { return finds(path); }

Assimp::IOStream* ModelFiles::Open(const char* path, const char* mode) {
    std::unique_ptr<Assimp::IOStream> stream(finds(path) ? DefaultIOSystem::Open(path, mode) : nullptr);
    if (stream == nullptr) return nullptr;
    const std::string ending = std::filesystem::path(path).extension().string();
    const auto endsWith = [&](const char* other) { return equalIgnoringCase(ending, other); };
    const bool isAc3d = endsWith(".ac") || endsWith(".acc") || endsWith(".ac3d");
    const bool isWide = beginsWith16BitMark(*stream);
    if (!endsWith(".dae") && !endsWith(".md2") && !isAc3d && !isWide) return stream.release();
    std::string bytes = contentOf(*stream);
    // Its reader takes a list that ends with the file for one that ends beyond it.
    if (endsWith(".md2")) return streamOf(bytes + '\0');
    if (isWide) bytes = utf8Of(bytes);
    if (isAc3d) bytes = withSurfaceKinds(bytes);
    return streamOf(endsWith(".dae") ? withoutBlanksBeforeNumbers(bytes) : bytes);
}

}  // namespace marrowfen::standin
