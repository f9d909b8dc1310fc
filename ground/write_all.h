#pragma once

#include <unistd.h>

#include <cerrno>
#include <string_view>

namespace marrowfen {

// Writes all bytes to an open file or pipe; false, with the reason in errno, when that fails. Takes no memory.
inline bool writeAll(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t n = write(file, bytes.data(), bytes.size());
        if (n == 0 || (n < 0 && errno != EINTR)) return false;
        if (n > 0) bytes.remove_prefix(static_cast<size_t>(n));
    }
    return true;
}

}  // namespace marrowfen
