// Any bytes as a DSQ file: a fault or sequences that can be shown and written, and read back to the same bytes.

#include <sstream>
#include <string>

#include "cli/inspect_report.h"
#include "fuzz/require.h"

using namespace marrowfen;

namespace {

std::string written(const Shape& shape) {
    std::ostringstream out;
    shape.writeDsq(out);
    return out.str();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
    cli::ShapeFile file;
    file.path = "fuzz.dsq";
    file.kind = ShapeFileKind::Dsq;
    file.shape.readDsq(in);
    if (file.shape.hasError()) {
        REQUIRE(file.shape.nodes.empty() && file.shape.names.empty() && file.shape.sequences.empty());
        return 0;
    }
    const std::vector<ShapeProblem> problems = findProblems(file.shape, file.kind);
    cli::inspectText(file, problems);
    cli::inspectJson(file, problems);

    const std::string first = written(file.shape);
    std::istringstream again(first);
    Shape back;
    std::string surplus;
    back.readDsq(again, &surplus);
    REQUIRE(!back.hasError() && surplus.empty());
    REQUIRE(written(back) == first);
    return 0;
}
