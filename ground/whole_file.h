#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>

namespace marrowfen {

enum class WholeRead { Done, Failed, TooLarge };

// Appends everything that is left in the stream to bytes, in blocks, as the size of a pipe or device isn't known
// before. Ends with TooLarge once there are more than `most` bytes.
WholeRead readWhole(std::istream& stream, size_t most, std::string& bytes);

// The bytes of a file; none when it can't be read to its end.
std::string readWholeFile(const std::string& path);

}  // namespace marrowfen
