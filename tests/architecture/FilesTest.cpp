// That each file stands in its list, and that none is longer than can be taken in.
#include "architecture/Tree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(Architecture, EveryFormAndResourceIsListed) {
    const Files files = readTree(VALTRINO_TREE);
    const Owners owners = readOwners(files);
    for (const auto& [path, text] : files)
        if ((path.ends_with(".ui") || path.ends_with(".qrc")) && !owners.contains(path))
            ADD_FAILURE() << path << " stands in no CMakeLists.txt";
}

// What holds for every window is tested on one list of them; the splash takes nothing, for a
// second.
TEST(Architecture, EveryWindowStandsInTheListOfThoseThatAreWalked) {
    const Files files = readTree(VALTRINO_TREE);
    const std::string& list = files.at("tests/shell/EveryWindow.h");
    for (const auto& [path, text] : files) {
        const std::string window = std::filesystem::path(path).stem().string();
        if (path.ends_with(".ui") && window != "frmSplash") {
            EXPECT_TRUE(list.find('<' + window + '>') != std::string::npos ||
                        list.find(window + "::") != std::string::npos)
                << "EveryWindow.h lacks " << window;
        }
    }
}

TEST(Architecture, EveryListedFileIsThere) {
    const Files files = readTree(VALTRINO_TREE);
    for (const auto& [path, target] : readOwners(files))
        EXPECT_TRUE(files.contains(path)) << target << " lists " << path;
}

// What a window does beyond its fields and buttons has a place of its own.
TEST(Architecture, NoWindowsSourceIsLong) {
    constexpr int kLines = 300;
    const Files files = readTree(VALTRINO_TREE);
    for (const auto& [path, text] : files) {
        if (!path.ends_with(".ui"))
            continue;
        const std::string source = path.substr(0, path.size() - 3) + ".cpp";
        EXPECT_LE(std::ranges::count(files.at(source), '\n'), kLines) << source;
    }
}

/// Those of more than 500 lines, but for tables that a program has written.
std::vector<std::string> longSources(const Files& files) {
    constexpr int kLines = 500;
    std::vector<std::string> found;
    for (const auto& [path, text] : files)
        if (isCode(path) && std::ranges::count(text, '\n') > kLines &&
            text.find("\n// Made by tools/") == std::string::npos)
            found.push_back(path);
    return found;
}

TEST(Architecture, NoSourceIsLongerThan500Lines) {
    EXPECT_THAT(longSources(readTree(VALTRINO_TREE)), IsEmpty());
}

TEST(ArchitectureRules, RefuseALongSourceThatNoProgramHasWritten) {
    const std::string lines(500, '\n');
    EXPECT_THAT(longSources({
                    {"platform/jet/Good.cpp",   lines                                   },
                    {"platform/jet/Long.h",     lines + "\n"                            },
                    {"platform/jet/Tables.cpp", "\n// Made by tools/tables.py\n" + lines},
                    {"registers/frmBancos.ui",  lines + lines                           }
    }),
                ElementsAre("platform/jet/Long.h"));
}

} // namespace
