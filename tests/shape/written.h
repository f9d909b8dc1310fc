#pragma once

// What the writers make of a shape.

#include <sstream>
#include <string>

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

}  // namespace marrowfen
