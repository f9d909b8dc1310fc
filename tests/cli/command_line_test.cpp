// The words of a command line, and that what is told of names is what the exporter knows.

#include <gtest/gtest.h>

#include "builder/tags.h"
#include "cli/arguments.h"

namespace marrowfen::cli {
namespace {

TEST(CommandLine, FirstWrongWordIsNamed) {
    struct Case {
        std::vector<std::string> words;
        std::string fault, hint;
    };
    for (const Case& c : std::vector<Case>{
             {{"exprot", "--nonsense"}, "there is no command \"exprot\"", "did you mean export?"},
             {{"export", "--depfiel", "a.d", "--scale", "x"},
              "export: there is no option --depfiel",
              "did you mean --depfile?"},
             {{"export", "a.obj", "b.dts", "--scale", "-1"},
              "export: --scale: \"-1\" isn't a number from 1e-06 to 1000000",
              ""},
             {{"export", "--fps=nan", "a"}, "export: --fps: \"nan\" isn't a number from 1 to 1000", ""},
             {{"export", "a", "--jobs", "1.5"}, "export: --jobs: \"1.5\" isn't a whole number from 1 to 1024", ""},
             {{"export", "a", "-j"}, "export: --jobs needs a value: N", ""},
             {{"inspect", "a.dts", "--json=yes"}, "inspect: --json takes no value", ""},
             {{"view", "a.dts"}, "view: OUTPUT is missing", "marrowfen view --help has examples"},
             {{"diff", "a", "b", "c"}, "diff: \"c\" is one word too many", ""},
             {{"-x"}, "there is no option -x", "marrowfen --help lists all"},
             {{"export", "--help"}, "", ""},
         }) {
        const CommandLine line = readCommandLine(c.words);
        EXPECT_EQ(line.fault.error, c.fault) << c.words[0];
        EXPECT_EQ(line.fault.hint, c.hint) << c.words[0];
        EXPECT_EQ(line.fault.code, c.fault.empty() ? Done : WrongUsage);
    }
}

TEST(CommandLine, OptionsStandAnywhereInEveryForm) {
    const CommandLine line = readCommandLine(
        {"-qv", "export", "--layer", "a=b", "-j4", "x.obj", "-v", "--turn", "-90", "--layer=c=d", "--", "--odd.dts"});
    ASSERT_EQ(line.fault.error, "");
    const Arguments& arguments = line.arguments;
    EXPECT_EQ(arguments.places(), (std::vector<std::string>{"x.obj", "--odd.dts"}));
    EXPECT_EQ(arguments.count("--verbose"), 2U);
    EXPECT_EQ(arguments.number("--jobs", 0), 4);
    EXPECT_EQ(arguments.number("--turn", 0), -90);
    EXPECT_EQ(arguments.all("--layer"), (std::vector<std::string>{"a=b", "c=d"}));
}

TEST(CommandLine, ToldNamesAreThoseOfTheExporter) {
    const std::pair<std::string, TagRole> kRoles[] = {{"detail layer", TagRole::DetailLayer},
                                                      {"collision layer", TagRole::CollisionLayer},
                                                      {"bounds layer", TagRole::BoundsLayer},
                                                      {"clip", TagRole::Clip}};
    for (const NameRow& row : nameTable()) {
        for (const auto& [owner, role] : kRoles) {
            if (row.owner != owner) continue;
            EXPECT_EQ(splitTags("x:" + std::string(row.word), role).understood.size(), 1U) << row.word;
        }
    }
}

}  // namespace
}  // namespace marrowfen::cli
