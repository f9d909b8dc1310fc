#pragma once

#include <ostream>
#include <string>

#include "ground/math.h"

namespace marrowfen {

// The output of a text dump: a stream and the run of tabs that stands at the start of each line inside a record.
// Floats are written in the stream's default notation.
class ShapeDumper {
public:
    explicit ShapeDumper(std::ostream& stream) : stream_(stream) {}

    const std::string& indentation() const { return indentation_; }
    void indent() { indentation_.push_back('\t'); }
    void outdent() { indentation_.pop_back(); }

    template <class Value>
    ShapeDumper& operator<<(const Value& value) {
        stream_ << value;
        return *this;
    }

    // One line of a record: the indentation, the label, the value.
    template <class Value>
    void field(const char* label, const Value& value) {
        *this << indentation_ << label << value << "\n";
    }

private:
    std::ostream& stream_;
    std::string indentation_;
};

// The records that shapes and meshes share.
inline ShapeDumper& operator<<(ShapeDumper& out, const Point3& point) {
    out << "point\n" << out.indentation() << "{\n";
    out.field("\tx = ", point.x);
    out.field("\ty = ", point.y);
    out.field("\tz = ", point.z);
    return out << out.indentation() << "}\n";
}

inline ShapeDumper& operator<<(ShapeDumper& out, const Box& box) {
    out << "box\n" << out.indentation() << "{\n";
    const auto corner = [&](const char* label, const Point3& point) {
        out << out.indentation() << label;
        out.indent();
        out << point;
        out.outdent();
        out << "\n";
    };
    corner("\tmin = ", box.min);
    corner("\tmax = ", box.max);
    return out << out.indentation() << "}\n";
}

}  // namespace marrowfen
