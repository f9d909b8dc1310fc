#include "cli/command.h"

namespace marrowfen::cli {

void addImportCommand(CLI::App&, Session&) {}

}  // namespace marrowfen::cli
