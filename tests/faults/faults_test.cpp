// Every call that a run makes of the system fails once, or dies there: the old files or the new ones, both of one run,
// one line that says why, and nothing left behind.

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include "tests/files.h"
#include "tests/standin/scene_of.h"

namespace marrowfen::test {

namespace {

namespace fs = std::filesystem;

std::string sceneNamed(const std::string& name) {
    return standin::sceneWith(R"("layers": [null, ")" + name + R"("], "nodes": [
{"type": "polyhedron", "layer": 1, "vertices": [[0, 0, 0], [2, 0, 0], [0, 2, 0]], "faces": [
 {"corners": [[0, 0], [1, 0], [2, 0]]}]}])");
}

struct FaultsTest : testing::Test, TestFolder {
    FaultsTest() {
        writeFile(folder / "old.scene.json", sceneNamed("Detail old"));
        writeFile(folder / "new.scene.json", sceneNamed("Detail newer"));
        EXPECT_EQ(run("export old.scene.json a.dts").code, 0);
        EXPECT_EQ(run("export new.scene.json b.dts").code, 0);
        oldPair = pairOf("a.dts");
        newPair = pairOf("b.dts");
        oldShape = readFile(folder / "a.dts");
    }

    ProgramResult run(const std::string& arguments, const std::string& before = "") const {
        return runIn(folder, before + " " MARROWFEN_COMMAND " " + arguments);
    }

    // With this fault; isMet: whether the run came as far.
    ProgramResult runFailing(const std::string& arguments, const std::string& fault) {
        fs::remove(folder / "mark");
        ProgramResult result = run(
            arguments, "MARROWFEN_FAIL='" + fault + "' MARROWFEN_FAIL_MARK=mark LD_PRELOAD=" MARROWFEN_FAIL_NTH_CALL);
        isMet = fs::exists(folder / "mark");
        return result;
    }

    std::string pairOf(const std::string& output) const {
        return readFile(folder / output) + readFile(folder / (output + ".log"));
    }

    bool hasTemporaries() const {
        return std::any_of(fs::directory_iterator(folder), {}, [](const fs::directory_entry& entry) {
            return entry.path().filename().string().starts_with(".marrowfen");
        });
    }

    std::string oldPair, newPair, oldShape;
    bool isMet = false;
};

bool isOneLine(const std::string& text) { return std::count(text.begin(), text.end(), '\n') == 1; }

constexpr std::array kCalls = {"write",   "fsync",   "chmod",   "linkat", "rename", "renameat",
                               "mkdirat", "mkdtemp", "fopen64", "close",  "fclose"};

}  // namespace

TEST_F(FaultsTest, FailedCallLeavesTheOldPairOrTheNewOne) {
    for (const std::string call : kCalls) {
        for (const std::string& how : {std::to_string(ENOSPC), std::to_string(EIO) + " on"}) {
            isMet = true;
            for (int n = 1; isMet; ++n) {
                const std::string fault = call + " " + std::to_string(n) + " " + how;
                const ProgramResult result = runFailing("-q export new.scene.json a.dts", fault);
                const std::string left = pairOf("a.dts");
                EXPECT_TRUE(left == newPair || (result.code != 0 && left == oldPair)) << fault << "\n" << result.text;
                EXPECT_FALSE(hasTemporaries()) << fault;
                if (result.code != 0) {
                    const char* why = std::strerror(std::atoi(how.c_str()));
                    const bool isInput = result.code == 3 && call == "fopen64" && n == 1;
                    EXPECT_TRUE(isOneLine(result.text) && result.text.find(why) != std::string::npos &&
                                result.text.starts_with(isInput ? "error: new.scene.json" : "error: a.dts"))
                        << fault << "\n"
                        << result.text;
                    EXPECT_EQ(result.code, isInput ? 3 : 4) << fault;
                }
                if (left != oldPair) {
                    ASSERT_EQ(run("-q export old.scene.json a.dts").code, 0);
                }
            }
        }
    }
}

TEST_F(FaultsTest, KilledRunIsFinishedOrUndoneByTheNext) {
    for (const std::string call : kCalls) {
        isMet = true;
        for (int n = 1; isMet; ++n) {
            const std::string fault = call + " " + std::to_string(n) + " kill";
            const ProgramResult result = runFailing("-q export new.scene.json a.dts", fault);
            ASSERT_EQ(run("-q export old.scene.json c.dts").code, 0);
            const std::string left = pairOf("a.dts");
            EXPECT_TRUE(left == oldPair || left == newPair) << fault;
            EXPECT_FALSE(hasTemporaries()) << fault;
            if (left != oldPair) {
                ASSERT_EQ(run("-q export old.scene.json a.dts").code, 0);
            }
        }
    }
}

// Some functions of the library do with less memory: then the result has to be the same.
TEST_F(FaultsTest, FailedAllocationIsOneLineOrDoesNotShow) {
    for (const std::string& command :
         std::vector<std::string>{"export new.scene.json a.dts", "inspect b.dts", "inspect --json b.dts", "dump b.dts",
                                  "view b.dts a.dts.glb", "explain new.scene.json", "add-node a.scene.json eye",
                                  "diff b.dts b.dts", "formats"}) {
        const auto result = [&] { return readFile(folder / "out") + pairOf("a.dts") + readFile(folder / "a.dts.glb"); };
        const auto restore = [&] {
            writeFile(folder / "a.scene.json", sceneNamed("a"));
            writeFile(folder / "a.dts", oldShape);
            writeFile(folder / "a.dts.log", oldPair.substr(oldShape.size()));
            for (const char* name : {"out", "a.dts.glb"}) fs::remove(folder / name);
        };
        ASSERT_EQ(run("-q " + command + " >out").code, 0) << command;
        const std::string wanted = result();
        restore();
        const std::string before = result();
        isMet = true;
        for (int n = 1; isMet; n += 1 + n / 12) {
            const std::string fault = "new " + std::to_string(n) + " 12";
            const int code = runFailing("-q " + command + " >out 2>err", fault).code;
            const std::string error = readFile(folder / "err");
            const bool isHosts = code == 1 && error.find("The host has no memory") != std::string::npos;
            if (code == 0) {
                EXPECT_TRUE(result() == wanted) << command << ": " << fault;
            } else if (!isHosts) {
                EXPECT_EQ(std::to_string(code) + error, "70error: out of memory\n") << command << ": " << fault;
                EXPECT_TRUE(result() == before) << command << ": " << fault;
            }
            EXPECT_FALSE(hasTemporaries()) << fault;
            restore();
        }
    }
}

}  // namespace marrowfen::test
