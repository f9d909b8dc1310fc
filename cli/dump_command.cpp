#include "cli/command.h"

namespace marrowfen::cli {

void addDumpCommand(CLI::App&, Session&) {}

}  // namespace marrowfen::cli
