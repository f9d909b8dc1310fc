#include "cli/command.h"

namespace marrowfen::cli {

void addExportCommand(CLI::App&, Session&) {}

}  // namespace marrowfen::cli
