// Whole exports by files: each SITUATION.scene.json is built, and what comes out is compared with SITUATION.expected,
// a text for a person to review. Its first two lines say how the scene is built and what of the result is shown:
//
//     mode: shape | shape with animation | sequences only
//     show: SECTION, SECTION, ...
//
// where a section is "log" or one of shapeText(). Everything after them is the expected text.

#include <algorithm>

#include "builder/shape_builder.h"
#include "standin/host/host.h"
#include "standin/host/scene_file.h"
#include "tests/export/shape_text.h"
#include "tests/files.h"

namespace marrowfen {
namespace {

namespace fs = std::filesystem;

const fs::path kFolder = fs::path(MARROWFEN_SOURCE_DIR) / "tests/export";
constexpr const char* kSceneEnding = ".scene.json";

std::vector<std::string> situations() {
    std::vector<std::string> found;
    for (const fs::directory_entry& entry : fs::directory_iterator(kFolder)) {
        const std::string name = entry.path().filename().string();
        if (name.ends_with(kSceneEnding)) found.push_back(name.substr(0, name.size() - 11));
    }
    std::sort(found.begin(), found.end());
    return found;
}

// The rest of the line that begins with the key.
std::string headerValue(const std::string& text, const std::string& key) {
    const size_t at = text.find(key + ": ");
    if (at == std::string::npos) return {};
    const size_t begin = at + key.size() + 2;
    return text.substr(begin, text.find('\n', begin) - begin);
}

ExportMode modeOf(const std::string& words) {
    if (words == "shape with animation") return ExportMode::ShapeWithAnimation;
    if (words == "sequences only") return ExportMode::SequencesOnly;
    EXPECT_EQ(words, "shape");
    return ExportMode::ShapeOnly;
}

std::string exported(const fs::path& sceneFile, const std::string& mode, const std::string& sections) {
    standin::LoadResult loaded = standin::readSceneFile(sceneFile.string());
    EXPECT_EQ(loaded.error, "");
    if (!loaded.scene) return {};
    standin::Host host(std::move(*loaded.scene));
    std::ostringstream log;
    const ShapeBuilder shape(log, modeOf(mode));
    EXPECT_EQ(host.liveHandles(), 0);
    EXPECT_TRUE(host.faults().empty());

    std::string text = "mode: " + mode + "\nshow: " + sections + "\n";
    if (shape.hasError()) text += "\n-- error\n" + shape.error() + "\n";
    std::istringstream list(sections);
    for (std::string section; std::getline(list >> std::ws, section, ',');) {
        text += "\n-- " + section + "\n" + (section == "log" ? log.str() : shapeText(shape, section));
    }
    return text;
}

class ExportOf : public testing::TestWithParam<std::string> {};

TEST_P(ExportOf, GivesTheExpectedText) {
    const fs::path expectedFile = kFolder / (GetParam() + ".expected");
    const std::string expected = test::readFile(expectedFile);
    const std::string mode = headerValue(expected, "mode"), sections = headerValue(expected, "show");
    test::expectReviewed(expectedFile, exported(kFolder / (GetParam() + kSceneEnding), mode, sections));
}

std::string testName(const testing::TestParamInfo<std::string>& info) {
    std::string name = info.param;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Scenes, ExportOf, testing::ValuesIn(situations()), testName);

}  // namespace
}  // namespace marrowfen
