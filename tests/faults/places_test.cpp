// Outputs and surroundings that a night's run meets: one line and the right exit code, and nothing else is touched.

#include <sys/stat.h>

#include <algorithm>
#include <map>
#include <regex>

#include "tests/files.h"
#include "tests/standin/scene_of.h"

namespace marrowfen::test {

namespace {

namespace fs = std::filesystem;

struct PlacesTest : testing::Test, TestFolder {
    PlacesTest() {
        writeFile(folder / "t.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
        EXPECT_EQ(run("import t.obj t.scene.json; " MARROWFEN_COMMAND " export t.obj t.dts").code, 0);
    }

    // COMMAND, where it stands alone, is the program.
    ProgramResult run(std::string line) const {
        const size_t at = line.find("COMMAND");
        line = at == std::string::npos ? MARROWFEN_COMMAND " " + line : line.replace(at, 7, MARROWFEN_COMMAND);
        return runIn(folder, line);
    }

    // As somebody who owns nothing here.
    static std::string asGuest() { return geteuid() == 0 ? "setpriv --reuid=65534 --regid=65534 --clear-groups " : ""; }

    // The files' rights, names and sizes.
    std::string files() const { return runIn(folder, "ls -lAn --time-style=+ | sed 1d | sort").text; }
};

}  // namespace

TEST_F(PlacesTest, RefusedOutputIsUntouched) {
    const std::string longName(252, 'n');
    // The folder as a disk that can't be written to, seen by this run only; some systems allow that to nobody.
    const std::string readOnlyDisk =
        "unshare -rm sh -c 'mount --bind . . && mount -o remount,bind,ro . && cd \"$PWD\" && ";
    const bool hasDisks = runIn(folder, readOnlyDisk + "true'").code == 0;
    const bool hasGuests = runIn(folder, asGuest() + MARROWFEN_COMMAND " --version").code == 0;
    ASSERT_EQ(runIn(folder,
                    "cp t.dts old.dts; echo t.obj >list; mkfifo fifo; ln -s t.obj link; ln t.obj hard.scene.json; ln "
                    "-s loop loop; mkdir dir; "
                    "ln -s t.dts.log both.dts; echo old > ro; chmod 400 ro; cp t.scene.json ro.scene.json; "
                    "chmod 444 ro.scene.json; ln -s fifo f.dts; mknod null c 1 3; mkdir textured_0.png; "
                    "cp /usr/share/assimp/models/glTF2/BoxTextured-glTF-Embedded/BoxTextured.gltf textured.gltf; "
                    "mkdir closed; chmod 555 closed; echo old > closed/old.scene.json; chmod 644 closed/old.scene.json")
                  .code,
              0);
    struct Case {
        std::string line, text;
        bool canBeTried = true;
    };
    for (const Case& c : std::vector<Case>{
             {"import t.obj /dev/full", "/dev/full: not a regular file"},
             {"import t.obj fifo", "fifo: not a regular file"},
             {"import t.obj dir", "dir: Is a directory"},
             {"import t.obj loop", "loop: Too many levels of symbolic links"},
             {"import t.obj t.obj", "t.obj: is an input of this run"},
             {"import t.obj link", "link: is an input of this run"},
             {"import t.obj hard.scene.json", "hard.scene.json: is an input of this run"},
             {"import t.obj ro", "ro: is read-only"},
             {"import t.obj t.dts/x", "t.dts/x: Not a directory"},
             {"add-node ro.scene.json eye", "ro.scene.json: is read-only"},
             {"view t.dts fifo.glb/x.glb", "fifo.glb/x.glb: No such file or directory"},
             {"export t.obj f.dts", "f.dts: not a regular file"},
             {"export t.obj t.dts --for t.dts", "t.dts: is an input of this run"},
             {"export t.obj t.dts --depfile t.obj", "t.obj: is an input of this run"},
             {"export t.obj t.dts --report ./link", "./link: is an input of this run"},
             {"export t.obj t.dts --for old.dts --report old.dts", "old.dts: is an input of this run"},
             {"export t.obj n.dts --depfile n.dts.log", "n.dts.log: is n.dts.log too"},
             {"export t.obj t.dts --report ../" + folder.filename().string() + "/t.dts", "/t.dts: is t.dts too"},
             {"export t.obj t.dts --depfile n.d --report n.d", "n.d: is n.d too"},
             {"export @list --out-dir . --depfile list", "list: is an input of this run"},
             {"export t.obj " + longName.substr(0, 248) + ".dts", ".dts.log: File name too long"},
             {"-q export t.obj t.dts --dry-run --report - > /dev/full", "standard output: No space left on device"},
             {"-q add-node t.scene.json eye -o - > /dev/full", "standard output: No space left on device"},
             {"-q import t.obj /dev/stdout > /dev/full", "standard output: No space left on device"},
             {"-q import t.obj /dev/stdout >&-", "standard output: Bad file descriptor"},
             {"import --help > /dev/full", "standard output: No space left on device"},
             {"ulimit -f 0; COMMAND -q import t.obj n.scene.json", "n.scene.json: File too large"},
             {"ulimit -f 0; COMMAND view t.dts n.glb", "n.glb: File too large"},
             {"export textured.gltf textured.dts", "textured_0.png: Is a directory"},
             {"ulimit -f 0; COMMAND add-node t.scene.json eye", "t.scene.json: File too large"},
             {"import t.obj " + std::string(4200, '/') + "o", "/o: File name too long"},
             {readOnlyDisk + "COMMAND -q export t.obj t.dts'", "t.dts: Read-only file system", hasDisks},
             {readOnlyDisk + "COMMAND -q import t.obj n.scene.json'", "n.scene.json: Read-only file system", hasDisks},
             {asGuest() + "COMMAND -q import t.obj closed/n.json", "closed/n.json: Permission denied", hasGuests},
             {asGuest() + "COMMAND -q add-node closed/old.scene.json eye", "closed/old.scene.json: Permission denied",
              hasGuests},
         }) {
        if (!c.canBeTried) continue;
        const std::string before = files();
        const ProgramResult result = run(c.line);
        EXPECT_EQ(result.code, 4) << c.line << "\n" << result.text;
        EXPECT_TRUE(result.text.starts_with("error: ") && result.text.ends_with(c.text + "\n") &&
                    std::count(result.text.begin(), result.text.end(), '\n') == 1)
            << c.line << "\n"
            << result.text;
        EXPECT_EQ(files(), before) << c.line;
    }
    if (!hasDisks || !hasGuests) GTEST_SKIP() << "no read-only disk or no other user could be had; the rest was tried";
}

TEST_F(PlacesTest, InputThatCannotBeReadIsOneLine) {
    const bool hasGuests = runIn(folder, asGuest() + MARROWFEN_COMMAND " --version").code == 0;
    ASSERT_EQ(runIn(folder,
                    "mkdir dir.obj dir.dts dir.scene.json; for f in t.obj t.scene.json t.dts; do cp $f closed.${f#t.}; "
                    "chmod 000 closed.${f#t.}; done; chmod 777 .")
                  .code,
              0);
    for (const std::string command :
         {"export IN.obj o.dts", "export IN.scene.json o.dts", "inspect IN.dts", "dump IN.dts", "view IN.dts o.glb",
          "import IN.obj o.scene.json", "explain IN.obj"}) {
        for (const auto& [name, why] :
             std::map<std::string, std::string>{{"gone", "No such file or directory"},
                                                {"dir", "is a folder"},
                                                {"closed", "Permission denied"},
                                                {std::string(5000, 'n'), "File name too long"}}) {
            if (name == "closed" && !hasGuests) continue;
            std::string line = command;
            line.replace(line.find("IN"), 2, name);
            const ProgramResult result = run((name == "closed" ? asGuest() : "") + "COMMAND -q " + line);
            EXPECT_EQ(result.code, 3) << line << "\n" << result.text;
            EXPECT_TRUE(result.text.starts_with("error: " + name + ".") && result.text.find(why) != std::string::npos &&
                        std::count(result.text.begin(), result.text.end(), '\n') == 1)
                << line << "\n"
                << result.text;
        }
    }
    if (!hasGuests) GTEST_SKIP() << "no other user could be had; the rest was tried";
}

// Cut, emptied, gone and back while runs read it: what they make is of the whole input, or they say one line.
TEST_F(PlacesTest, InputThatChangesIsReadWholeOrRefused) {
    ASSERT_EQ(run("true; cp /usr/share/assimp/models/glTF2/BoxTextured-glTF/* .; cp BoxTextured.gltf b.gltf; "
                  "COMMAND -q export b.gltf b.dts --no-textures; " MARROWFEN_COMMAND " view t.dts t.glb")
                  .code,
              0);
    struct Case {
        std::string changing, command, output, whole;
    };
    for (const Case& c : std::vector<Case>{{"t.obj", "export t.obj o.dts", "o.dts", "t.dts"},
                                           {"t.obj", "import t.obj o.scene.json", "o.scene.json", "t.scene.json"},
                                           {"t.scene.json", "export t.scene.json o.dts", "o.dts", "t.dts"},
                                           {"BoxTextured0.bin", "export b.gltf o.dts --no-textures", "o.dts", "b.dts"},
                                           {"b.gltf", "export b.gltf o.dts --no-textures", "o.dts", "b.dts"},
                                           {"t.dts", "view t.dts o.glb", "o.glb", "t.glb"}}) {
        const std::string change =
            "cp IN kept; (while test -e kept; do for n in 1 9 30; do head -c $n kept > IN; rm IN; cp kept IN; done; "
            "done) 2>&- & ";
        const std::string read =
            "for i in 1 2 3 4 5 6 7 8 9 10; do rm -f o.*; said=$(COMMAND -q " + c.command +
            " 2>&1); case $? in 0) cmp " + c.output + " " + c.whole +
            ";; 3) test $(echo \"$said\" | wc -l) = 1 || echo \"$said\";; *) echo \"$said\";; esac; done; ";
        const std::string line = std::regex_replace(change, std::regex("IN"), c.changing) + read +
                                 "mv kept last; wait; cp last " + c.changing;
        EXPECT_EQ(run(line).text, "") << c.command;
    }
}

TEST_F(PlacesTest, OddSurroundingsGiveTheSameFiles) {
    const std::string scene = readFile(folder / "t.scene.json");
    const std::string shape = readFile(folder / "t.dts");
    const std::string log = readFile(folder / "t.dts.log");
    // In these two, numbers have another point and letters another case.
    ASSERT_EQ(
        runIn(folder, "localedef -i de_DE -f ISO-8859-1 ./de_DE && localedef -i tr_TR -f ISO-8859-9 ./tr_TR").code, 0);
    for (const std::string& line : std::vector<std::string>{
             "COMMAND import t.obj o.scene.json <&- >&- 2>&-", "COMMAND import t.obj /dev/stdout 2>&- >o.scene.json",
             "umask 077; COMMAND import t.obj o.scene.json; test $(stat -c %a o.scene.json) = 600",
             "umask 0; COMMAND import t.obj o.scene.json; test $(stat -c %a o.scene.json) = 666",
             "env -i COMMAND import t.obj o.scene.json", "HOME=/none TMPDIR=/none COMMAND import t.obj o.scene.json",
             "LOCPATH=$PWD LC_ALL=tr_TR COMMAND import t.obj o.scene.json",
             "LOCPATH=$PWD LC_ALL=de_DE COMMAND import t.obj o.scene.json",
             "ln -s o.scene.json l; COMMAND import t.obj l; rm l",
             "d=" + std::string(3800, '/') + "$PWD; COMMAND import $d/t.obj $d/o.scene.json",
             "COMMAND import t.obj '\xFF\xFE.json'; mv ?\xFE.json o.scene.json"}) {
        EXPECT_EQ(run(line).code, 0) << line;
        EXPECT_EQ(readFile(folder / "o.scene.json"), scene) << line;
        fs::remove(folder / "o.scene.json");
    }
    for (const std::string& line : std::vector<std::string>{
             "COMMAND -v export t.obj o.dts 2>&-", "COMMAND -v export t.obj o.dts >&- <&- 2>&-",
             "env -i COMMAND export t.obj o.dts", "LOCPATH=$PWD LC_ALL=de_DE COMMAND export t.obj o.dts"}) {
        EXPECT_EQ(run(line).code, 0) << line;
        EXPECT_EQ(readFile(folder / "o.dts"), shape) << line;
        EXPECT_EQ(readFile(folder / "o.dts.log"), log) << line;
    }
}

TEST_F(PlacesTest, NewFileHasTheRightsOfTheOldOne) {
    for (const char* rights : {"600", "664", "755"}) {
        const std::string set = std::string("chmod ") + rights + " t.dts t.dts.log t.scene.json && ";
        EXPECT_EQ(run(set + "COMMAND export t.obj t.dts").code, 0);
        EXPECT_EQ(run("add-node t.scene.json eye").code, 0);
        for (const char* name : {"t.dts", "t.dts.log", "t.scene.json"}) {
            EXPECT_EQ(runIn(folder, std::string("stat -c %a ") + name).text, std::string(rights) + "\n") << name;
        }
    }
}

// Two scenes whose shapes and logs differ, so that a pair of two runs would show.
TEST_F(PlacesTest, RunsToOnePathAtOnceLeaveOnePair) {
    ASSERT_EQ(run("import t.obj u.scene.json; sed -i 's/Detail/Detail two/' u.scene.json; " MARROWFEN_COMMAND
                  " export u.scene.json u.dts")
                  .code,
              0);
    const auto pair = [&](const std::string& output) {
        return readFile(folder / output) + readFile(folder / (output + ".log"));
    };
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(
            run("true; for i in 1 2 3 4 5 6 7 8 9 10; do for s in t u; do COMMAND -q export $s.scene.json o.dts & "
                "done; done; wait")
                .text,
            "");
        EXPECT_TRUE(pair("o.dts") == pair("t.dts") || pair("o.dts") == pair("u.dts"));
    }
    EXPECT_EQ(run("for i in 1 2 3 4 5 6 7 8 9 10; do COMMAND -q add-node t.scene.json n$i & done; wait").text, "");
    EXPECT_EQ(standin::readSceneFile((folder / "t.scene.json").string()).scene.value().nodes.size(), 11U);
    EXPECT_EQ(files().find(".marrowfen"), std::string::npos);
}

TEST_F(PlacesTest, SignalEndsARunAtOnceAndNothingIsLeft) {
    const std::string old = files();
    for (const char* signal : {"INT", "TERM", "HUP", "QUIT", "PIPE", "XCPU"}) {
        for (int milliseconds = 1; milliseconds <= 25; milliseconds += 6) {
            const ProgramResult result =
                run(std::string("ulimit -c 0; timeout -s ") + signal + " 0." +
                    std::to_string(1000 + milliseconds).substr(1) + " COMMAND -q export t.scene.json t.dts");
            EXPECT_EQ(result.text, "") << signal;
            EXPECT_EQ(files(), old) << signal << milliseconds;
        }
    }
}

}  // namespace marrowfen::test
