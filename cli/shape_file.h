#pragma once

// A DTS or DSQ file as the commands that look at files load it.

#include <cstdint>
#include <string>
#include <vector>

#include "ground/block_stream.h"
#include "shape/shape_check.h"

namespace marrowfen::cli {

struct ShapeFile {
    std::string path;
    ShapeFileKind kind = ShapeFileKind::Dts;  // by the ending of the path
    VersionWord version;
    size_t bytes = 0;
    Shape shape;
    std::string surplus;  // about bytes that belong to nothing, empty for none

    // Parts of a DTS file, in bytes.
    size_t words = 0, halves = 0, narrow = 0;  // the three packed blocks
    size_t rest = 0;                           // sequences and materials
};

// Empty on success, else one line that names the file and the place.
std::string loadShapeFile(const std::string& path, ShapeFile& file);

// What is wrong with the file, with its shape and beyond.
std::vector<ShapeProblem> problemsOf(const ShapeFile& file);

// "version 25, read as 24"; empty for a known version.
std::string newerVersion(const ShapeFile& file);

// The text of `marrowfen dump`: all tables, or one alone.
std::string dumpOf(const Shape& shape, const std::string& only = "");

}  // namespace marrowfen::cli
