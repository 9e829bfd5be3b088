// Which target may include which: the one table of the tree's layers, held against every include
// line and every CMake list. A new target gets its row here.
#include "architecture/Tree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace {

using testing::AllOf;
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
    {"jet_system",        Outside::nothing, {}                                                },
    {"manual",            Outside::qt,      {}                                                },
    {"jet_value",         Outside::nothing, {"jet_system"}                                    },
    {"jet_disk",          Outside::nothing, {"jet_value"}                                     },
    {"jet_text",          Outside::nothing, {"jet_value"}                                     },
    {"jet_page",          Outside::nothing, {"jet_disk", "jet_text"}                          },
    {"jet_share",         Outside::nothing, {"jet_page"}                                      },
    {"jet_row",           Outside::nothing, {"jet_page"}                                      },
    {"jet_index",         Outside::nothing, {"jet_row"}                                       },
    {"jet_rule",          Outside::nothing, {"jet_row"}                                       },
    {"jet_check",         Outside::nothing, {"jet_share", "jet_index", "jet_rule"}            },
    {"jet_database",      Outside::nothing, {"jet_check"}                                     },
    {"jet_copy",          Outside::nothing, {"jet_database"}                                  },
    {"jet",               Outside::nothing, {"jet_copy"}                                      },
    {"ado_system",        Outside::nothing, {}                                                },
    {"ado_value",         Outside::nothing, {"jet"}                                           },
    {"ado_dialect",       Outside::sqlite,  {"jet"}                                           },
    {"ado_engine",        Outside::sqlite,  {"ado_dialect"}                                   },
    {"ado_provider",      Outside::nothing, {"ado_dialect"}                                   },
    {"ado_file",          Outside::nothing, {"ado_provider", "ado_engine"}                    },
    {"ado_server",        Outside::nothing, {"ado_provider", "ado_value", "ado_system"}       },
    {"ado_recordset",     Outside::nothing, {"ado_file", "ado_server"}                        },
    {"ado_migrate",       Outside::nothing, {"ado_server"}                                    },
    {"ado",               Outside::nothing, {"ado_recordset", "ado_migrate"}                  },
    {"controls_system",   Outside::qt,      {}                                                },
    {"controls_look",     Outside::qt,      {"controls_system", "assets"}                     },
    {"controls_typing",   Outside::qt,      {"controls_system"}                               },
    {"controls_box",      Outside::qt,      {"controls_look", "controls_typing"}              },
    {"controls_folder",   Outside::qt,      {"controls_look", "controls_typing"}              },
    {"controls_window",   Outside::qt,      {"controls_box"}                                  },
    {"controls",          Outside::qt,      {"controls_window", "controls_folder"}            },
    {"print_system",      Outside::qt,      {}                                                },
    {"print_report",      Outside::qt,      {"controls"}                                      },
    {"print_output",      Outside::qt,      {"print_system", "print_report"}                  },
    {"print_preview",     Outside::qt,      {"print_output"}                                  },
    {"print",             Outside::qt,      {"print_preview"}                                 },
    {"shop_schema",       Outside::nothing, {"jet"}                                           },
    {"shell_base",        Outside::qt,      {"ado", "controls", "shop_schema"}                },
    {"shell_lookup",      Outside::qt,      {"shell_base"}                                    },
    {"registers",         Outside::qt,      {"shell_lookup"}                                  },
    {"cheques",           Outside::qt,      {"shell_base"}                                    },
    {"collections",       Outside::qt,      {"cheques"}                                       },
    {"report_layout",     Outside::qt,      {"print"}                                         },
    {"reports",           Outside::qt,      {"shell_base", "report_layout"}                   },
    {"consultation",      Outside::qt,      {"collections"}                                   },
    {"agenda",            Outside::qt,      {"registers", "consultation", "report_layout"}    },
    {"agenda_panel",      Outside::qt,      {"agenda"}                                        },
    {"shell_manual",      Outside::qt,      {"manual", "controls"}                            },
    {"manual_printer",    Outside::qt,      {"shell_manual"}                                  },
    {"shell_windows",     Outside::qt,      {"agenda_panel", "reports", "shell_manual"}       },
    {"valtrino",          Outside::qt,      {"shell_windows"}                                 },
    {"valtrino-novo",     Outside::qt,      {"shell_base", "shop_schema"}                     },
    {"shop_samples",      Outside::nothing, {"shop_schema"}                                   },
    {"valtrino-mdb",      Outside::nothing, {"ado", "shop_samples"}                           },
    {"bench_data",        Outside::sqlite,  {"shop_samples"}                                  },
    {"shop_bench",        Outside::sqlite,  {"ado", "bench_data"}                             },
    {"systems_bench",     Outside::nothing, {"ado"}                                           },
    {"limits_bench",      Outside::sqlite,  {"ado", "bench_data"}                             },
    {"bench_windows",     Outside::qt,      {"controls"}                                      },
    {"operations_bench",  Outside::qt,      {"collections", "bench_data", "bench_windows"}    },
    {"portfolio_bench",   Outside::qt,      {"agenda_panel", "bench_data", "bench_windows"}   },
    {"deletion_bench",    Outside::qt,      {"shell_windows", "bench_data", "bench_windows"}  },
    {"report_samples",    Outside::qt,      {"report_layout"}                                 },
    {"report_bench",      Outside::qt,      {"report_samples"}                                },
    {"program_support",   Outside::nothing, {}                                                },
    {"test_support",      Outside::qt,      {"program_support"}                               },
    {"valtrino_heard",    Outside::qt,      {}                                                },
    {"rule_test_support", Outside::nothing, {"jet", "program_support"}                        },
    {"cluster_support",   Outside::nothing, {"ado", "test_support"}                           },
    {"server_bench",      Outside::nothing, {"cluster_support", "shop_schema"}                },
    {"compared_bench",    Outside::sqlite,  {"cluster_support", "shop_schema", "bench_data"}  },
    {"stations_bench",    Outside::nothing, {"cluster_support", "shop_schema"}                },
    {"shop_stores",       Outside::nothing, {"cluster_support", "shop_schema"}                },
    {"jet_test_support",  Outside::nothing, {"jet", "rule_test_support"}                      },
    {"form_test_support", Outside::qt,      {"controls", "test_support"}                      },
    {"failing_disk",      Outside::nothing, {"jet", "program_support"}                        },
    {"shop_test_support", Outside::qt,      {"shell_base", "form_test_support", "shop_stores"}},
    {"window_operations", Outside::qt,      {"shell_windows", "shop_test_support"}            },
    {"windows_bench",     Outside::qt,      {"cluster_support", "window_operations"}          },
    {"fuzz_support",      Outside::nothing, {}                                                },
    {"fuzz_file",         Outside::nothing, {"jet_test_support", "fuzz_support"}              },
    {"fuzz_journal",      Outside::nothing, {"jet_test_support", "fuzz_support"}              },
    {"fuzz_rules",        Outside::nothing, {"jet", "fuzz_support"}                           },
    {"fuzz_sql",          Outside::nothing, {"ado", "fuzz_support"}                           },
    {"fuzz_init",         Outside::qt,      {"shell_base", "fuzz_support"}                    },
};

// What tests may use beside their folder, where it sees no more than the folder itself does.
const std::vector<std::string> kHelpers = {
    "program_support",   "test_support",  "rule_test_support", "jet_test_support",
    "cluster_support",   "shop_schema",   "shop_stores",       "form_test_support",
    "shop_test_support", "report_layout", "report_samples",    "window_operations",
    "failing_disk"};

// Who may look into the rooms of a platform folder from outside, beside the folder's own tests.
const std::vector<std::string> kRoomGuests = {"rule_test_support", "cluster_support", "fuzz_file",
                                              "fuzz_journal",      "fuzz_rules",      "fuzz_sql"};

const Layer* layerOf(const std::string& target) {
    const auto found = std::ranges::find(kLayers, target, &Layer::target);
    return found == kLayers.end() ? nullptr : &*found;
}

/// The platform folder of whose rooms one holds that file; empty for a file in no room.
std::string folderWithRooms(const std::string& path) {
    static const std::regex inRoom("platform/([^/]+)/[^/]+/.*");
    std::smatch match;
    return std::regex_match(path, match, inRoom) ? match[1].str() : "";
}

/// Whether a file may include what lies in the rooms of a platform folder: not from outside, if
/// there are public headers beside the rooms.
bool mayLookInto(const std::string& folder, const std::string& path, const std::string& target,
                 const Owners& owners) {
    return path.starts_with("platform/" + folder + "/") ||
           path.starts_with("tests/" + folder + "/") ||
           std::ranges::find(kRoomGuests, target) != kRoomGuests.end() ||
           std::ranges::none_of(owners, [&](const auto& file) {
               return folderOf(file.first) == "platform/" + folder && file.first.ends_with(".h");
           });
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

/// The tests of a folder, in whatever room of it, see its targets, what those see, and the helpers
/// of that height.
View viewFrom(const std::string& path, const std::string& target, const Owners& owners) {
    View view{Outside::nothing, reachOf(target)};
    if (const Layer* layer = layerOf(target))
        view.outside = layer->outside;
    if (layerOf(target) != nullptr || !path.starts_with("tests/"))
        return view;
    const std::string folder = (++std::filesystem::path(path).begin())->string();
    view.targets.merge(reachOf(folder)); // that of a folder with rooms has no files of its own
    for (const auto& [file, owner] : owners) {
        if (!file.starts_with(folder + "/") && !file.starts_with("platform/" + folder + "/"))
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
    for (const auto& [include, quoted] : includesOf(text)) {
        if (quoted) {
            const auto other = fileOfInclude(include, path, owners);
            if (other == owners.end()) {
                complain(include, "no target lists that path (write it with its folder)");
                continue;
            }
            if (!allowed.targets.contains(other->second))
                complain(include, target + " may not use " + other->second);
            const std::string folder = folderWithRooms(other->first);
            if (!folder.empty() && !mayLookInto(folder, path, target, owners))
                complain(include, "only what lies in platform/" + folder + " itself is public");
        } else if (include.starts_with('Q') && allowed.outside != Outside::qt) {
            complain(include, target + " may not use Qt");
        } else if (include.starts_with("sqlite3") && allowed.outside != Outside::sqlite) {
            complain(include, target + " may not use SQLite");
        } else if (include.starts_with("libpq") && target != "ado_server") {
            complain(include, target + " may not use libpq");
        }
    }
    return wrong;
}

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

TEST(Architecture, NoClassesIncludeEachOther) {
    EXPECT_THAT(cyclesOf(readTree(VALTRINO_TREE)), IsEmpty());
}

// What nobody outside includes, by itself or through another public header, belongs into a room.
TEST(Architecture, EveryPublicHeaderOfAFolderWithRoomsIsUsedOutside) {
    const Files files = readTree(VALTRINO_TREE);
    const Owners owners = readOwners(files);
    std::set<std::string> folders;
    for (const auto& [path, target] : owners)
        if (const std::string folder = folderWithRooms(path); !folder.empty())
            folders.insert("platform/" + folder);
    const auto isPublic = [&](const std::string& path) {
        return path.ends_with(".h") && folders.contains(folderOf(path));
    };
    std::set<std::string> used;
    for (const auto& [path, text] : files) {
        if (!isCode(path))
            continue;
        for (const auto& [include, quoted] : includesOf(text)) {
            const auto other = quoted ? fileOfInclude(include, path, owners) : owners.end();
            if (other != owners.end() &&
                (isPublic(path) || !path.starts_with(folderOf(other->first) + "/")))
                used.insert(other->first);
        }
    }
    for (const auto& [path, text] : files)
        if (isPublic(path) && !used.contains(path))
            ADD_FAILURE() << path << " is included by nobody outside";
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
    {"platform/ado/CMakeLists.txt", "house_library(ado_engine Recordset.h)"                      },
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
                ElementsAre(HasSubstr("jet may not use ado_engine")));
}

TEST(ArchitectureRules, RefuseATestThatReachesAboveItsFolder) {
    EXPECT_THAT(wrongIncludes(
                    changed("tests/ado/RecordsetTest.cpp", "#include \"registers/frmBancos.h\"\n")),
                ElementsAre(HasSubstr("ado_test may not use registers")));
}

TEST(ArchitectureRules, RefuseQtAndSqliteWhereTheyDontBelong) {
    EXPECT_THAT(wrongIncludes(changed("platform/ado/Recordset.h", "#include <QString>\n")),
                ElementsAre(HasSubstr("ado_engine may not use Qt")));
    EXPECT_THAT(wrongIncludes(changed("registers/frmBancos.h", "  # include <sqlite3.h>\n")),
                ElementsAre(HasSubstr("registers may not use SQLite")));
}

/// The small tree with a room in its engine, and a public header whose source is in it.
Files withRoom(const std::string& reader, const std::string& text) {
    Files files = kSmallTree;
    files["platform/jet/page/CMakeLists.txt"] =
        "house_library(jet_page Map.cpp ../Map.h View.h Walk.h)";
    files["platform/jet/Map.h"] = "#include \"jet/page/View.h\"\n";
    files["platform/jet/page/Map.cpp"] = "#include \"jet/Map.h\"\n#include \"jet/page/Walk.h\"\n";
    files["platform/jet/page/View.h"] = "";
    files["platform/jet/page/Walk.h"] = "#include \"jet/page/View.h\"\n";
    files["tests/jet/CMakeLists.txt"] = "house_test(jet_test SOURCES ViewTest.cpp LIBS jet)";
    files["tests/jet/ViewTest.cpp"] = "";
    files[reader] = text;
    return files;
}

TEST(ArchitectureRules, RefuseToLookIntoARoomFromOutside) {
    const std::string includes = "#include \"jet/Map.h\"\n#include \"jet/page/View.h\"\n";
    for (const char* outside : {"platform/ado/Recordset.h", "tests/ado/RecordsetTest.cpp"})
        EXPECT_THAT(
            wrongIncludes(withRoom(outside, includes)),
            ElementsAre(AllOf(HasSubstr(outside), HasSubstr("jet/page/View.h"),
                              HasSubstr("only what lies in platform/jet itself is public"))));
    EXPECT_THAT(wrongIncludes(withRoom("tests/jet/ViewTest.cpp", includes)), IsEmpty());
    Files inRoom = withRoom("tests/jet/page/ViewTest.cpp", includes);
    inRoom["tests/jet/CMakeLists.txt"] =
        "house_test(jet_test SOURCES ViewTest.cpp page/ViewTest.cpp LIBS jet)";
    EXPECT_THAT(wrongIncludes(inRoom), IsEmpty());
}

TEST(ArchitectureRules, LeaveTheRoomsOpenOfAFolderWithoutPublicHeaders) {
    Files files = withRoom("platform/ado/Recordset.h", "#include \"jet/page/View.h\"\n");
    for (const char* face : {"platform/jet/Pager.h", "platform/jet/Map.h",
                             "platform/jet/page/Map.cpp", "platform/jet/page/Walk.h"})
        files.erase(face);
    files["platform/jet/CMakeLists.txt"] = "add_subdirectory(page)";
    files["platform/jet/page/CMakeLists.txt"] = "house_library(jet_page View.h)";
    files["tests/ado/RecordsetTest.cpp"] = "";
    EXPECT_THAT(wrongIncludes(files), IsEmpty());
}

TEST(ArchitectureRules, KnowWhatMocMakesByItsHeader) {
    const std::string path = "platform/jet/page/Map.cpp";
    EXPECT_THAT(wrongIncludes(withRoom(path, "#include \"jet/page/moc_View.cpp\"\n")), IsEmpty());
    EXPECT_THAT(wrongIncludes(withRoom(path, "#include \"jet/page/moc_Gone.cpp\"\n")),
                ElementsAre(HasSubstr("no target lists that path")));
}

TEST(ArchitectureRules, FindACycleThroughSourcesToo) {
    EXPECT_THAT(cyclesOf(withRoom("platform/jet/page/View.h", "")), IsEmpty());
    EXPECT_THAT(cyclesOf(withRoom("platform/jet/page/Walk.h", "#include \"jet/Map.h\"\n")),
                ElementsAre("jet_page/Map, jet_page/Walk"));
    EXPECT_THAT(cyclesOf(withRoom("platform/jet/page/View.h", "#include \"jet/page/Walk.h\"\n")),
                ElementsAre("jet_page/View, jet_page/Walk"));
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
