#include "cli/command.h"

namespace marrowfen::cli {

void addInspectCommand(CLI::App&, Session&) {}

}  // namespace marrowfen::cli
