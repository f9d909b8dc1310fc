#include "host/host_program.h"

#include "host/tsxapi.h"

namespace marrowfen {

HostVersion hostVersion() {
    HostVersion version;
    tsxGetTsVersionNbrs(&version.major, &version.minor);
    return version;
}

std::optional<std::string> hostFolder() {
    const char* folder = tsxGetTSDir(0);
    return folder == nullptr ? std::nullopt : std::optional<std::string>(folder);
}

void* hostMainView() { return tsxGetMainViewHwnd(); }

}  // namespace marrowfen
