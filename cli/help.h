#pragma once

// What the table of verbs and options says to people and shells.

#include <string>
#include <vector>

#include "cli/option_table.h"

namespace marrowfen::cli {

std::vector<std::string> firstLines();  // for who types the program's name alone
std::string commandHelp();
std::string verbHelp(const VerbRow& verb);

// "-j, --jobs N"
std::string optionForms(const OptionRow& row);

// Manual pages, as man reads them.
std::string commandPage();
std::string namesPage();

std::string bashCompletion();
std::string zshCompletion();
std::string fishCompletion();

}  // namespace marrowfen::cli
