#include "ground/whole_file.h"

#include <cstdint>
#include <fstream>

namespace marrowfen {

WholeRead readWhole(std::istream& stream, size_t most, std::string& bytes) {
    char block[1 << 16];
    while (stream.good() && bytes.size() <= most) {
        stream.read(block, sizeof block);
        bytes.append(block, static_cast<size_t>(stream.gcount()));
    }
    if (bytes.size() > most) return WholeRead::TooLarge;
    return stream.bad() || !stream.eof() ? WholeRead::Failed : WholeRead::Done;
}

std::string readWholeFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::string bytes;
    if (!file || readWhole(file, SIZE_MAX, bytes) != WholeRead::Done) return {};
    return bytes;
}

}  // namespace marrowfen
