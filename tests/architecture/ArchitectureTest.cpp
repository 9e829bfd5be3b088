// Which target may include which: the one table of the tree's layers, held against every include
// line and every CMake list. A new target gets its row here.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// The libraries from outside that a target may see; the standard library is open to all.
enum class Outside : unsigned char { nothing, sqlite, qt };

struct Layer {
    std::string target;
    Outside outside;
    std::vector<std::string> uses; ///< and all that these use
};

// Bottom up: a target uses only targets of rows above its own.
const std::vector<Layer> kLayers = {
    {"assets",            Outside::qt,      {}                                                },
    {"jet",               Outside::nothing, {}                                                },
    {"ado",               Outside::sqlite,  {"jet"}                                           },
    {"controls",          Outside::qt,      {"assets"}                                        },
    {"print",             Outside::qt,      {"controls"}                                      },
    {"shell_base",        Outside::qt,      {"ado", "controls"}                               },
    {"shell_lookup",      Outside::qt,      {"shell_base"}                                    },
    {"registers",         Outside::qt,      {"shell_lookup"}                                  },
    {"cheques",           Outside::qt,      {"shell_base"}                                    },
    {"collections",       Outside::qt,      {"cheques"}                                       },
    {"report_layout",     Outside::qt,      {"print"}                                         },
    {"reports",           Outside::qt,      {"shell_base", "report_layout"}                   },
    {"consultation",      Outside::qt,      {"collections"}                                   },
    {"shell_windows",     Outside::qt,      {"registers", "consultation", "reports"}          },
    {"valtrino",          Outside::qt,      {"shell_windows"}                                 },
    {"shop_schema",       Outside::nothing, {"jet"}                                           },
    {"shop_samples",      Outside::nothing, {"shop_schema"}                                   },
    {"valtrino-mdb",      Outside::nothing, {"ado", "shop_samples"}                           },
    {"bench_data",        Outside::sqlite,  {"shop_samples"}                                  },
    {"shop_bench",        Outside::sqlite,  {"ado", "bench_data"}                             },
    {"bench_windows",     Outside::qt,      {"controls"}                                      },
    {"operations_bench",  Outside::qt,      {"collections", "bench_data", "bench_windows"}    },
    {"deletion_bench",    Outside::qt,      {"shell_windows", "bench_data", "bench_windows"}  },
    {"report_samples",    Outside::qt,      {"report_layout"}                                 },
    {"report_bench",      Outside::qt,      {"report_samples"}                                },
    {"test_support",      Outside::qt,      {}                                                },
    {"valtrino_heard",    Outside::qt,      {}                                                },
    {"rule_test_support", Outside::nothing, {"jet"}                                           },
    {"jet_test_support",  Outside::nothing, {"jet", "rule_test_support"}                      },
    {"form_test_support", Outside::qt,      {"controls", "test_support"}                      },
    {"shop_test_support", Outside::qt,      {"shell_base", "shop_schema", "form_test_support"}},
    {"fuzz_support",      Outside::nothing, {}                                                },
    {"fuzz_file",         Outside::nothing, {"jet_test_support", "fuzz_support"}              },
    {"fuzz_journal",      Outside::nothing, {"jet_test_support", "fuzz_support"}              },
    {"fuzz_rules",        Outside::nothing, {"jet", "fuzz_support"}                           },
    {"fuzz_sql",          Outside::nothing, {"ado", "fuzz_support"}                           },
    {"fuzz_init",         Outside::qt,      {"shell_base", "fuzz_support"}                    },
};

// What tests may use beside their folder, where it sees no more than the folder itself does.
const std::vector<std::string> kHelpers = {
    "test_support",      "rule_test_support", "jet_test_support", "shop_schema",
    "form_test_support", "shop_test_support", "report_layout",    "report_samples"};

/// Path from the root of the tree, with "/", and the file's text.
using Files = std::map<std::string, std::string>;
/// Path of a file and the target that lists it.
using Owners = std::map<std::string, std::string>;

const Layer* layerOf(const std::string& target) {
    const auto found = std::ranges::find(kLayers, target, &Layer::target);
    return found == kLayers.end() ? nullptr : &*found;
}

std::string folderOf(const std::string& path) {
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? "" : path.substr(0, slash);
}

/// The sources, forms, resources and CMake lists of the tree; no builds, nothing of others.
Files readTree(const std::filesystem::path& root) {
    Files files;
    for (auto entry = std::filesystem::recursive_directory_iterator(root);
         entry != std::filesystem::recursive_directory_iterator(); ++entry) {
        const std::string name = entry->path().filename().string();
        if (entry->is_directory()) {
            if (name.starts_with('.') || name.starts_with("build") || name == "third_party")
                entry.disable_recursion_pending();
            continue;
        }
        static const std::regex wanted(R"(.*\.(h|cpp|ui|qrc)|CMakeLists\.txt)");
        if (!std::regex_match(name, wanted))
            continue;
        std::ifstream file(entry->path());
        std::ostringstream text;
        text << file.rdbuf();
        files[entry->path().lexically_relative(root).generic_string()] = text.str();
    }
    return files;
}

/// What the CMake lists say: every file named in a call that makes a target.
Owners readOwners(const Files& files) {
    static const std::regex comment("#[^\n]*");
    static const std::regex call(
        R"((?:house_(?:library|program|test|fuzzer)|add_(?:library|executable)|target_sources)\s*\(([^)]*)\))");
    Owners owners;
    for (const auto& [path, text] : files) {
        if (!path.ends_with("CMakeLists.txt"))
            continue;
        const std::string folder = path.substr(0, path.rfind('/') + 1);
        const std::string code = std::regex_replace(text, comment, "");
        for (std::sregex_iterator it(code.begin(), code.end(), call), end; it != end; ++it) {
            std::istringstream words((*it)[1].str());
            std::string target;
            words >> target;
            for (std::string word; words >> word;)
                if (word.find('.') != std::string::npos)
                    owners[folder + word] = target;
        }
    }
    return owners;
}

/// The target whose file the tree's include paths find for `include`, written in `from`.
std::optional<std::string> targetOfInclude(const std::string& include, const std::string& from,
                                           const Owners& owners) {
    // What uic and moc make belongs to the form or source it is made from.
    static const std::regex generated(R"(ui_(.*)\.h|(.*)\.moc)");
    std::smatch match;
    if (std::regex_match(include, match, generated)) {
        const std::string origin =
            match[1].matched ? match[1].str() + ".ui" : match[2].str() + ".cpp";
        const auto owner = owners.find(folderOf(from) + "/" + origin);
        return owner == owners.end() ? std::nullopt : std::optional(owner->second);
    }
    for (const char* prefix : {"", "platform/", "tests/"})
        if (const auto owner = owners.find(prefix + include); owner != owners.end())
            return owner->second;
    return std::nullopt;
}

/// The target and all that it uses by the table.
std::set<std::string> reachOf(const std::string& target) {
    std::set<std::string> reach = {target};
    if (const Layer* layer = layerOf(target))
        for (const std::string& used : layer->uses)
            reach.merge(reachOf(used));
    return reach;
}

/// What a file may see.
struct View {
    Outside outside = Outside::nothing;
    std::set<std::string> targets;
};

/// The tests of a folder see its targets, what those see, and the helpers of that height.
View viewFrom(const std::string& path, const std::string& target, const Owners& owners) {
    View view{Outside::nothing, reachOf(target)};
    if (const Layer* layer = layerOf(target))
        view.outside = layer->outside;
    if (layerOf(target) != nullptr || !path.starts_with("tests/"))
        return view;
    const std::string folder = folderOf(path.substr(std::string("tests/").size()));
    for (const auto& [file, owner] : owners) {
        if (folderOf(file) != folder && folderOf(file) != "platform/" + folder)
            continue;
        view.targets.merge(reachOf(owner));
        if (const Layer* layer = layerOf(owner))
            view.outside = std::max(view.outside, layer->outside);
    }
    for (const std::string& helper : kHelpers) {
        std::set<std::string> needed = reachOf(helper);
        needed.erase(helper);
        if (std::ranges::includes(view.targets, needed))
            view.targets.insert(helper);
    }
    return view;
}

/// A sentence for each include line of `path` that draws an arrow the table doesn't have.
std::vector<std::string> wrongIncludes(const std::string& path, const std::string& text,
                                       const Owners& owners) {
    const auto owner = owners.find(path);
    if (owner == owners.end())
        return {path + " stands in no CMakeLists.txt"};
    const std::string& target = owner->second;
    const View allowed = viewFrom(path, target, owners);

    std::vector<std::string> wrong;
    const auto complain = [&](const std::string& include, const std::string& why) {
        wrong.push_back(path + " includes " + include + ": " + why);
    };
    static const std::regex includeLine(R"re(\s*#\s*include\s*([<"])([^>"]+)[>"].*)re");
    std::istringstream lines(text);
    std::smatch match;
    for (std::string line; std::getline(lines, line);) {
        if (line.find('#') == std::string::npos || !std::regex_match(line, match, includeLine))
            continue;
        const std::string include = match[2].str();
        if (match[1].str() == "\"") {
            const auto other = targetOfInclude(include, path, owners);
            if (!other)
                complain(include, "no target lists that path (write it with its folder)");
            else if (!allowed.targets.contains(*other))
                complain(include, target + " may not use " + *other);
        } else if (include.starts_with('Q') && allowed.outside != Outside::qt) {
            complain(include, target + " may not use Qt");
        } else if (include.starts_with("sqlite3") && allowed.outside != Outside::sqlite) {
            complain(include, target + " may not use SQLite");
        }
    }
    return wrong;
}

bool isCode(const std::string& path) { return path.ends_with(".h") || path.ends_with(".cpp"); }

std::vector<std::string> wrongIncludes(const Files& files) {
    const Owners owners = readOwners(files);
    std::vector<std::string> wrong;
    for (const auto& [path, text] : files)
        if (isCode(path))
            std::ranges::move(wrongIncludes(path, text, owners), std::back_inserter(wrong));
    return wrong;
}

TEST(Architecture, EveryIncludeFollowsTheTable) {
    for (const std::string& wrong : wrongIncludes(readTree(VALTRINO_TREE)))
        ADD_FAILURE() << wrong;
}

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

TEST(Architecture, EveryTargetHasItsRow) {
    for (const auto& [path, target] : readOwners(readTree(VALTRINO_TREE)))
        if (!path.starts_with("tests/") && layerOf(target) == nullptr)
            ADD_FAILURE() << target << " (" << path << ") has no row in the table of layers";
}

TEST(Architecture, ArrowsPointDown) {
    for (auto layer = kLayers.begin(); layer != kLayers.end(); ++layer)
        for (const std::string& used : layer->uses)
            EXPECT_TRUE(std::any_of(kLayers.begin(), layer,
                                    [&](const Layer& below) { return below.target == used; }))
                << layer->target << " uses " << used;
}

// The rules themselves, on trees of a few lines.

const Files kSmallTree = {
    {"platform/jet/CMakeLists.txt", "# a.cpp\nhouse_library(jet\n    Pager.h)\n"                 },
    {"platform/jet/Pager.h",        "#include <vector>\n"                                        },
    {"platform/ado/CMakeLists.txt", "house_library(ado Recordset.h)"                             },
    {"platform/ado/Recordset.h",    "#include \"jet/Pager.h\"\n\n#include <sqlite3.h>\n"         },
    {"registers/CMakeLists.txt",    "house_library(registers QT frmBancos.h frmBancos.ui)"       },
    {"registers/frmBancos.h",       "#include \"ado/Recordset.h\"\n#include \"ui_frmBancos.h\"\n"},
    {"registers/frmBancos.ui",      ""                                                           },
    {"tests/ado/CMakeLists.txt",    "house_test(ado_test SOURCES RecordsetTest.cpp LIBS ado)"    },
    {"tests/ado/RecordsetTest.cpp", "#include \"ado/Recordset.h\"\n#include \"jet/Pager.h\"\n"   },
};

Files changed(const std::string& path, const std::string& text) {
    Files files = kSmallTree;
    files[path] = text;
    return files;
}

TEST(ArchitectureRules, AcceptATreeWhoseArrowsPointDown) {
    EXPECT_THAT(wrongIncludes(kSmallTree), IsEmpty());
}

TEST(ArchitectureRules, RefuseAnArrowThatPointsUp) {
    EXPECT_THAT(wrongIncludes(changed("platform/jet/Pager.h", "#include \"ado/Recordset.h\"\n")),
                ElementsAre(HasSubstr("jet may not use ado")));
}

TEST(ArchitectureRules, RefuseATestThatReachesAboveItsFolder) {
    EXPECT_THAT(wrongIncludes(
                    changed("tests/ado/RecordsetTest.cpp", "#include \"registers/frmBancos.h\"\n")),
                ElementsAre(HasSubstr("ado_test may not use registers")));
}

TEST(ArchitectureRules, RefuseQtAndSqliteWhereTheyDontBelong) {
    EXPECT_THAT(wrongIncludes(changed("platform/ado/Recordset.h", "#include <QString>\n")),
                ElementsAre(HasSubstr("ado may not use Qt")));
    EXPECT_THAT(wrongIncludes(changed("registers/frmBancos.h", "  # include <sqlite3.h>\n")),
                ElementsAre(HasSubstr("registers may not use SQLite")));
}

TEST(ArchitectureRules, RefuseAnIncludeWithoutItsFolder) {
    EXPECT_THAT(wrongIncludes(changed("platform/ado/Recordset.h", "#include \"Pager.h\"\n")),
                ElementsAre(HasSubstr("write it with its folder")));
}

TEST(ArchitectureRules, RefuseAFileThatNoListNames) {
    EXPECT_THAT(wrongIncludes(changed("platform/jet/Left.cpp", "int left;\n")),
                ElementsAre("platform/jet/Left.cpp stands in no CMakeLists.txt"));
}

} // namespace
