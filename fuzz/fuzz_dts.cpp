// Any bytes as a DTS file: a fault or a shape. A shape can be printed, checked, shown and written, and what was written
// reads back to the same bytes.

#include <sstream>
#include <string>

#include "cli/inspect_report.h"
#include "fuzz/require.h"
#include "view/shape_gltf.h"

using namespace marrowfen;

namespace {

std::string written(const Shape& shape) {
    std::ostringstream out;
    shape.writeDts(out, true);
    return out.str();
}

void look(const Shape& shape) {
    std::ostringstream dump;
    shape.dumpText(dump);
    cli::ShapeFile file;
    file.path = "fuzz.dts";
    file.shape = shape;
    const std::vector<ShapeProblem> problems = findProblems(shape);
    cli::inspectText(file, problems);
    cli::inspectJson(file, problems);
    view::shapeToGltf(shape, "fuzz");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
    Shape shape;
    shape.readDts(in);
    if (shape.hasError()) {
        REQUIRE(shape.nodes.empty() && shape.names.empty() && shape.meshes.empty() && shape.materials.empty());
        return 0;
    }
    look(shape);

    // Files of other programs may hold what isn't kept, but what we wrote stays as it is.
    const std::string first = written(shape);
    std::istringstream again(first);
    Shape back;
    std::string surplus;
    back.readDts(again, &surplus);
    REQUIRE(!back.hasError() && surplus.empty());
    REQUIRE(written(back) == first);

    // Whoever follows links asks first whether they hold.
    if (!anyBroken(findProblems(shape))) {
        shape.computeBounds();
        shape.computeCenter();
        shape.computeRadius();
        shape.computeTubeRadius();
    }
    return 0;
}
