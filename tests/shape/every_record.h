#pragma once

#include "shape/shape.h"

namespace marrowfen {

// One or two of every record, with a value of its own in every field; the last node and the last sets name nothing.
Shape everyRecord();

// The same records as they are made, nothing set.
Shape newRecords();

}  // namespace marrowfen
