// One name, one thing: who looks for a class by its name finds one.
#include "architecture/Tree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// The classes, structures and enumerations that are defined more than once, inside others aside:
/// those are told apart by what they lie in. Tests name things for themselves.
std::set<std::string> namesOfSeveral(const Files& files) {
    static const std::regex definition(
        R"(^(?:class|struct|enum class|enum) (?:alignas\(\w+\) )?(\w+)(?: final)?(?: : .*)? ?\{.*)");
    std::map<std::string, int> times;
    for (const auto& [path, text] : files) {
        if (!isCode(path) || path.starts_with("tests/") || path.starts_with("bench/"))
            continue;
        std::istringstream lines(text);
        std::smatch match;
        for (std::string line; std::getline(lines, line);)
            if (std::regex_match(line, match, definition))
                ++times[match[1]];
    }
    std::set<std::string> several;
    for (const auto& [name, count] : times)
        if (count > 1)
            several.insert(name);
    return several;
}

// A record's field as the record-set model has it, and a structure's as file formats do.
TEST(Names, NoTwoClassesHaveOne) {
    EXPECT_THAT(namesOfSeveral(readTree(VALTRINO_TREE)), ElementsAre("Field"));
}

TEST(NameRules, CountClassesOfAllLayersAndNotWhatLiesInOthers) {
    const auto files = [](const std::string& second) {
        return Files{
            {"platform/jet/A.h",  "namespace jet {\n\nclass Place final : public Row {\n};\n}\n"},
            {"shell/B.cpp",       second                                                        },
            {"tests/jet/CTest.h", "struct Place {\n};\n"                                        }
        };
    };
    EXPECT_THAT(namesOfSeveral(files("namespace {\n\nstruct Place {\n};\n}\n")),
                ElementsAre("Place"));
    EXPECT_THAT(namesOfSeveral(files("enum class Place { here };\n")), ElementsAre("Place"));
    EXPECT_THAT(namesOfSeveral(files("class Place;\nstruct Way {\n    struct Place {\n    };\n};\n"
                                     "struct Way::Place {\n};\n")),
                IsEmpty());
}

} // namespace
