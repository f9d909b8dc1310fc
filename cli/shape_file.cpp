#include "cli/shape_file.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "ground/ascii.h"
#include "shape/problem_kinds.h"

namespace marrowfen::cli {

namespace {

// The sizes in the header, which reading has found to fit the file.
void measureBlocks(const std::string& bytes, ShapeFile& file) {
    ReadFault fault;
    const BlockPlaces places = readBlockPlaces(bytes, fault);
    assert(fault.none());
    file.words = places.halves - places.words;
    file.halves = places.bytes - places.halves;
    file.narrow = places.end - places.bytes;
    file.rest = bytes.size() - places.end;
}

}  // namespace

std::string loadShapeFile(const std::string& path, ShapeFile& file) {
    std::ifstream stream(path, std::ios::binary);
    if (!stream) return path + ": " + std::strerror(errno);
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored)) return path + ": is a folder";
    ReadFault fault;
    const std::string bytes = readWholeStream(stream, fault);
    if (!fault.none()) return path + ": " + fault.text;

    file.path = path;
    file.bytes = bytes.size();
    file.kind = endsWithIgnoringCase(path, ".dsq") ? ShapeFileKind::Dsq : ShapeFileKind::Dts;
    std::istringstream in(bytes);
    if (file.kind == ShapeFileKind::Dsq) {
        file.shape.readDsq(in, &file.surplus);
    } else {
        file.shape.readDts(in, &file.surplus);
    }
    if (file.shape.hasError()) return path + ": " + file.shape.error();
    file.version.word = ByteReader(bytes, 0, bytes.size(), fault).read<uint32_t>();
    if (file.kind == ShapeFileKind::Dts) measureBlocks(bytes, file);
    return {};
}

std::vector<ShapeProblem> problemsOf(const ShapeFile& file) {
    std::vector<ShapeProblem> problems = findProblems(file.shape, file.kind);
    const auto addOdd = [&](const MessageKind& kind, const std::string& where) {
        if (!where.empty()) problems.push_back({&kind, 1, {where}});
    };
    addOdd(problem::kFileVersion, newerVersion(file));
    addOdd(problem::kFileSurplus, file.surplus);
    return problems;
}

std::string dumpOf(const Shape& shape, const std::string& only) {
    std::ostringstream text;
    // Else a stream keeps to itself that it got no memory, and its text ends there.
    text.exceptions(std::ios::badbit);
    shape.dumpText(text, only);
    return text.str();
}

std::string newerVersion(const ShapeFile& file) {
    if (file.version.isKnown()) return {};
    return "version " + std::to_string(file.version.word) + ", read as " + std::to_string(file.version.layout());
}

}  // namespace marrowfen::cli
