#pragma once

// Whether a written file is whole: all of it parses, and nothing is left over.

#include <iosfwd>
#include <string>

namespace marrowfen {

// Empty for a good file, else one line that says what is wrong and where ("offset N: ...").
std::string checkDtsFile(std::istream& stream);
std::string checkDsqFile(std::istream& stream);

}  // namespace marrowfen
