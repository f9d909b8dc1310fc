#include "cli/command.h"

namespace marrowfen::cli {

void addAddNodeCommand(CLI::App&, Session&) {}

}  // namespace marrowfen::cli
