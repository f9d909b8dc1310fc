#pragma once

// Text files whose lines end in CR LF on every platform, so that the same run writes the same bytes everywhere.

#include <cerrno>
#include <cstring>
#include <fstream>
#include <ostream>
#include <streambuf>
#include <string>

namespace marrowfen {

// Hands everything on to a binary stream buffer, with a carriage return before each line feed. Keeps nothing back:
// a flush here flushes the buffer underneath, which is borrowed.
class CrLfBuffer : public std::streambuf {
public:
    explicit CrLfBuffer(std::streambuf& binary) : binary_(binary) {}

    int fault() const { return fault_; }  // the errno of the first failure; 0 for none

protected:
    int_type overflow(int_type c) override {
        if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
        const char written = traits_type::to_char_type(c);
        return xsputn(&written, 1) == 1 ? c : traits_type::eof();
    }

    std::streamsize xsputn(const char* text, std::streamsize length) override {
        std::streamsize done = 0;
        while (done < length) {
            const auto rest = static_cast<size_t>(length - done);
            const auto* lineEnd = static_cast<const char*>(std::memchr(text + done, '\n', rest));
            const std::streamsize run = lineEnd != nullptr ? lineEnd - (text + done) : length - done;
            if (!put(text + done, run)) return done;
            done += run;
            if (lineEnd == nullptr) break;
            if (!put("\r\n", 2)) return done;
            ++done;
        }
        return done;
    }

    int sync() override { return note(binary_.pubsync() == 0) ? 0 : -1; }

private:
    std::streambuf& binary_;
    int fault_ = 0;

    bool put(const char* text, std::streamsize length) { return note(binary_.sputn(text, length) == length); }

    bool note(bool good) {
        if (!good && fault_ == 0) fault_ = errno;
        return good;
    }
};

// A text file that replaces an older one of its path. When it can't be opened, the stream has failed from the start
// and drops what is written.
class CrLfFile : public std::ostream {
public:
    explicit CrLfFile(const std::string& path) : std::ostream(nullptr), buffer_(file_) {
        init(&buffer_);
        if (file_.open(path, std::ios::out | std::ios::binary | std::ios::trunc) == nullptr) noteFault(failbit);
    }

    // Failures of the last write and of the close show in the stream's state.
    void close() {
        if (file_.is_open() && file_.close() == nullptr) noteFault(badbit);
    }

    // The errno of the first failure, the open and the close included; 0 for none.
    int fault() const { return buffer_.fault() != 0 ? buffer_.fault() : fault_; }

private:
    std::filebuf file_;
    CrLfBuffer buffer_;
    int fault_ = 0;

    void noteFault(iostate state) {
        fault_ = errno;
        setstate(state);
    }
};

}  // namespace marrowfen
