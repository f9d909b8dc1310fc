#pragma once

// A DTS or DSQ file as the commands that look at files load it.

#include <cstdint>
#include <string>

#include "shape/shape_check.h"

namespace marrowfen::cli {

struct ShapeFile {
    std::string path;
    ShapeFileKind kind = ShapeFileKind::Dts;  // by the ending of the path
    uint32_t version = 0;
    size_t bytes = 0;
    Shape shape;
    std::string surplus;  // about bytes that belong to nothing, empty for none

    // Parts of a DTS file, in bytes.
    size_t words = 0, halves = 0, narrow = 0;  // the three packed blocks
    size_t rest = 0;                           // sequences and materials
};

// Empty on success, else one line that names the file and the place.
std::string loadShapeFile(const std::string& path, ShapeFile& file);

}  // namespace marrowfen::cli
