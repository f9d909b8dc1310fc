#pragma once

#include <string>

#include "ground/crlf_stream.h"
#include "host/host_program.h"

namespace marrowfen::plugin {

// The text file that every export writes beside its output, replacing an older one. An end-of-line flushes, so that the
// file holds every completed line. A log that can't be opened drops what is written and stops nothing.
class ExportLog : public CrLfFile {
public:
    explicit ExportLog(const std::string& path) : CrLfFile(path) {}

    void writeBanner(const HostVersion& host);
};

}  // namespace marrowfen::plugin
