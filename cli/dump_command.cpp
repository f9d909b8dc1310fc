#include "cli/commands.h"
#include "cli/shape_file.h"

namespace marrowfen::cli {

namespace {

Outcome dump(const std::string& path, const std::string& only, const Session& session) {
    ShapeFile file;
    const std::string fault = loadShapeFile(path, file);
    if (!fault.empty()) return {UnreadableInput, fault};
    if (!newerVersion(file).empty()) session.warning(path + ": " + newerVersion(file));
    return printResult(dumpOf(file.shape, only));
}

}  // namespace

Outcome runDump(const Arguments& arguments, const Session& session) {
    return dump(arguments.place(0), arguments.text("--only"), session);
}

}  // namespace marrowfen::cli
