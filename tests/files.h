#pragma once

// Files and folders that tests make, and programs that they run.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace marrowfen::test {

inline std::string readFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return std::move(content).str();
}

inline void writeFile(const std::filesystem::path& path, const std::string& content) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << content;
}

// Compares with a text that a person has reviewed. A run with the environment variable MARROWFEN_REGENERATE set writes
// it anew; what it wrote has to be reviewed before it is committed.
inline void expectReviewed(const std::filesystem::path& file, const std::string& actual) {
    if (std::getenv("MARROWFEN_REGENERATE") != nullptr) writeFile(file, actual);
    EXPECT_EQ(readFile(file), actual) << file;
}

// An empty folder of a test's own, gone with it.
struct TestFolder {
    TestFolder() = default;
    ~TestFolder() { std::filesystem::remove_all(folder); }
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    const std::filesystem::path folder = mkdtemp((testing::TempDir() + "marrowfen-XXXXXX").data());
};

struct ProgramResult {
    int code = -1;     // of its exit, 128 and the signal's number when one ended it
    std::string text;  // standard output and error
};

// A shell's line, run in the folder.
inline ProgramResult runIn(const std::filesystem::path& folder, const std::string& shellLine) {
    std::FILE* pipe = popen(("cd '" + folder.string() + "' && { " + shellLine + "; } 2>&1").c_str(), "r");
    ProgramResult result;
    char text[4096];
    while (const size_t n = std::fread(text, 1, sizeof text, pipe)) result.text.append(text, n);
    const int status = pclose(pipe);
    result.code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return result;
}

}  // namespace marrowfen::test
