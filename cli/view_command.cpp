#include "cli/command.h"

namespace marrowfen::cli {

void addViewCommand(CLI::App&, Session&) {}

}  // namespace marrowfen::cli
