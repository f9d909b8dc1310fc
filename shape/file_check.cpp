#include "shape/file_check.h"

#include "shape/shape.h"

namespace marrowfen {

std::string checkDtsFile(std::istream& stream) {
    Shape shape;
    std::string surplus;
    shape.readDts(stream, &surplus);
    return shape.hasError() ? shape.error() : surplus;
}

std::string checkDsqFile(std::istream& stream) {
    Shape shape;
    std::string surplus;
    shape.readDsq(stream, &surplus);
    return shape.hasError() ? shape.error() : surplus;
}

}  // namespace marrowfen
