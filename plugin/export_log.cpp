#include "plugin/export_log.h"

#include <ostream>

namespace marrowfen::plugin {

void ExportLog::writeBanner(short hostMajor, short hostMinor) {
    *this << "Marrowfen v1.1.0" << std::endl << std::endl;
    *this << "trueSpace major=" << hostMajor << " minor=" << hostMinor << std::endl << std::endl;
}

}  // namespace marrowfen::plugin
