#pragma once

// ShapeBuilder: turns the host's open scene into a Shape.

#include <ostream>

#include "ground/message.h"
#include "shape/shape.h"

namespace marrowfen {

enum class ExportMode : int { ShapeOnly = 0, ShapeWithAnimation = 1, SequencesOnly = 2 };

class ShapeBuilder : public Shape {
public:
    // Runs the whole build, up to its end or to the first error; afterwards this object is the finished shape, or
    // hasError() is true. The log is borrowed for that time, and the listener hears what an artist should know of; the
    // host's play mode, active time and clip states are as before.
    ShapeBuilder(std::ostream& log, ExportMode mode, const MessageListener& listener = {});
};

}  // namespace marrowfen
