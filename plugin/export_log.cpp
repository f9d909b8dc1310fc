#include "plugin/export_log.h"

#include <ostream>

#include "ground/version.h"

namespace marrowfen::plugin {

void ExportLog::writeBanner(short hostMajor, short hostMinor) {
    *this << "Marrowfen v" << kVersion << std::endl << std::endl;
    *this << "trueSpace major=" << hostMajor << " minor=" << hostMinor << std::endl << std::endl;
}

}  // namespace marrowfen::plugin
