// Which sources may know the operating system.
#include "architecture/Tree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <regex>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// What differs between operating systems stands in one folder a layer, one source a system.
const std::vector<std::string> kSystemFolders = {"platform/jet/system", "platform/ado/system",
                                                 "platform/controls/system",
                                                 "platform/print/system", "tools/system"};

/// Those who still call a system by themselves, and where that goes.
struct SystemCaller {
    std::string path;
    std::string becomes;
};
// clang-format off
const std::vector<SystemCaller> kSystemCallers = {
    {"tests/ado/recordset/ConnectionTest.cpp", "a file without rights: a test of the system's own"},
};
// clang-format on

/// A sentence for each line that names an operating system, or a header of one.
std::vector<std::string> systemsNamed(const std::string& path, const std::string& text) {
    static const std::regex header(
        R"((windows|winsock2?|ws2tcpip|io|direct|process|shlobj|shellapi|unistd|iconv|fcntl|dirent|spawn|grp|pwd|netdb|sched|poll|termios|dlfcn|pthread|syslog|langinfo|sys/.*|linux/.*|arpa/.*|netinet/.*)\.h)");
    static const std::regex condition(
        R"(\n[ \t]*#[ \t]*(?:el)?if[^\n]*\b(_WIN(?:32|64)|WIN32|_MSC_VER|__MINGW\w*|__CYGWIN__|__linux__|__unix__|__APPLE__|Q_OS_\w+|_POSIX\w*)\b)");
    std::vector<std::string> named;
    const bool isTest = path.starts_with("tests/") || path.starts_with("bench/");
    for (const auto& [include, quoted] : includesOf(text))
        if (!quoted && !isTest && std::regex_match(include, header))
            named.push_back((path + " includes ") += include + ", of one operating system");
    const std::string lines = "\n" + text;
    for (std::sregex_iterator it(lines.begin(), lines.end(), condition), end; it != end; ++it)
        named.push_back(path + " asks for " + (*it)[1].str());
    return named;
}

std::vector<std::string> systemsNamed(const Files& files) {
    std::vector<std::string> named;
    for (const auto& [path, text] : files)
        if (isCode(path) &&
            std::ranges::find(kSystemFolders, folderOf(path)) == kSystemFolders.end() &&
            std::ranges::find(kSystemCallers, path, &SystemCaller::path) == kSystemCallers.end())
            std::ranges::move(systemsNamed(path, text), std::back_inserter(named));
    return named;
}

TEST(Architecture, OnlyTheSystemsFoldersKnowTheOperatingSystem) {
    EXPECT_THAT(systemsNamed(readTree(VALTRINO_TREE)), IsEmpty());
}

TEST(ArchitectureRules, RefuseAnOperatingSystemOutsideOfItsFolder) {
    for (const char* header : {"unistd.h", "sys/stat.h", "windows.h"}) {
        const std::string line = std::string("#include <") + header + ">\n";
        EXPECT_THAT(systemsNamed({
                        {"platform/jet/Pager.h", line}
        }),
                    ElementsAre(HasSubstr(header)));
        EXPECT_THAT(systemsNamed({
                        {"platform/jet/system/PosixDisk.cpp", line}
        }),
                    IsEmpty());
    }
    for (const char* line :
         {"#ifdef _WIN32\n", "int a;\n  # if defined(Q_OS_LINUX)\n", "#elif !defined(__unix__)\n"})
        EXPECT_THAT(systemsNamed({
                        {"tests/ado/RecordsetTest.cpp", line}
        }),
                    ElementsAre(HasSubstr("asks for")));
    EXPECT_THAT(systemsNamed({
                    {"platform/jet/Pager.h", "#include <vector>\n#if QT_VERSION > 5\n"}
    }),
                IsEmpty());
}

} // namespace
