#include "cli/shape_file.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

#include "ground/ascii.h"
#include "ground/coding.h"
#include "ground/shape_reader.h"

namespace marrowfen::cli {

namespace {

bool endsIgnoringCase(std::string_view text, std::string_view ending) {
    return text.size() >= ending.size() && equalIgnoringCase(text.substr(text.size() - ending.size()), ending);
}

// The sizes in the header, which reading has found to fit the file.
void measureBlocks(const std::string& bytes, ShapeFile& file) {
    const auto word = [&](size_t i) { return size_t{get32(reinterpret_cast<const unsigned char*>(&bytes[i * 4]))}; };
    const size_t total = word(1), startOf16 = word(2), startOf8 = word(3);
    file.words = startOf16 * 4;
    file.halves = (startOf8 - startOf16) * 4;
    file.narrow = (total - startOf8) * 4;
    file.rest = bytes.size() - 16 - total * 4;
}

}  // namespace

std::string loadShapeFile(const std::string& path, ShapeFile& file) {
    std::ifstream stream(path, std::ios::binary);
    if (!stream) return path + ": " + std::strerror(errno);
    ReadFault fault;
    const std::string bytes = readWholeStream(stream, fault);
    if (!fault.none()) return path + ": " + fault.text;

    file.path = path;
    file.bytes = bytes.size();
    file.kind = endsIgnoringCase(path, ".dsq") ? ShapeFileKind::Dsq : ShapeFileKind::Dts;
    std::istringstream in(bytes);
    if (file.kind == ShapeFileKind::Dsq) {
        file.shape.readDsq(in, &file.surplus);
    } else {
        file.shape.readDts(in, &file.surplus);
    }
    if (file.shape.hasError()) return path + ": " + file.shape.error();
    file.version = get32(reinterpret_cast<const unsigned char*>(bytes.data()));
    if (file.kind == ShapeFileKind::Dts) measureBlocks(bytes, file);
    return {};
}

}  // namespace marrowfen::cli
