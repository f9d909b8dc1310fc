#include "standin/import/model_import.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "standin/import/isolated_run.h"
#include "standin/import/model.h"
#include "standin/import/scene_transfer.h"

namespace marrowfen::standin {

namespace {

// Why a path can't be a model, empty if it can.
std::string pathFault(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return std::strerror(errno);
    if (S_ISDIR(status.st_mode)) return "is a folder";
    // Anything but a file may never end.
    if (!S_ISREG(status.st_mode)) return "isn't a file";
    return {};
}

}  // namespace

LoadResult importModel(const std::string& path, const ImportOptions& options) {
    const std::string fault = pathFault(path);
    if (!fault.empty()) return {{}, path + ": " + fault, {}};
    const RunLimits limits{options.memoryMegabytes, options.cpuSeconds, options.wallSeconds};
    const RunOutcome outcome = runIsolated(limits, [&] { return packResult(readModel(path, options)); });
    if (!outcome.failure.empty()) return {{}, path + ": " + outcome.failure, {}};
    return unpackResult(outcome.output, path);
}

}  // namespace marrowfen::standin
