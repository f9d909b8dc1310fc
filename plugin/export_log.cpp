#include "plugin/export_log.h"

#include <ostream>

#include "ground/version.h"

namespace marrowfen::plugin {

void ExportLog::writeBanner(const HostVersion& host) {
    *this << "Marrowfen v" << kVersion << std::endl << std::endl;
    *this << "trueSpace major=" << host.major << " minor=" << host.minor << std::endl << std::endl;
}

}  // namespace marrowfen::plugin
