// The rules of real files, kept.
#include "jet/Check.h"
#include "jet/Database.h"
#include "jet/Sentences.h"
#include "jet/database/Catalog.h"
#include "jet/database/TableRules.h"
#include "jet/rule/Properties.h"
#include "support/Samples.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

using namespace jet;

namespace {

class SampleRules : public testing::Test {
protected:
    void SetUp() override {
        if (!samplesFolder())
            GTEST_SKIP() << "no sample databases here";
    }
    /// A copy of a sample, open for writing.
    [[nodiscard]] Database opened(const std::string& name) {
        path_ = folder_ / name.c_str();
        std::filesystem::copy_file(*samplesFolder() / "samples" / name, path_);
        Database::Options options;
        if (name == "password.mdb")
            options.password = "ucanaccess";
        if (name == "charsetGBK.mdb")
            options.codePage = 936;
        return {path_, options};
    }

    TemporaryFolder folder_;
    std::filesystem::path path_;
};

/// A row whose first column has the value.
RowId rowWith(const Table& table, std::int64_t value) {
    RowCursor row = table.scan();
    for (bool there = row.first(); there; there = row.next())
        if (row.row().integer(0) == value)
            return row.id();
    ADD_FAILURE() << table.name() << " has no row " << value;
    return {};
}

std::int64_t valuesOf(const Table& table, std::size_t column, std::int64_t value) {
    std::int64_t count = 0;
    RowCursor row = table.scan();
    for (bool there = row.first(); there; there = row.next())
        count += row.row().integer(column) == value ? 1 : 0;
    return count;
}

TEST_F(SampleRules, EveryRuleOfEverySampleIsUnderstood) {
    std::map<std::string, int> found;
    for (const auto& entry : std::filesystem::directory_iterator(*samplesFolder() / "samples")) {
        if (entry.path().extension() != ".mdb")
            continue;
        SCOPED_TRACE(entry.path().filename());
        Database database = opened(entry.path().filename().string());
        const Table& objects = database.table("MSysObjects");
        const TextCodec& codec = objects.columns()[*objects.findColumn("Name")].codec;
        for (const std::string& name : database.allTableNames()) {
            SCOPED_TRACE(name);
            const Table& table = database.table(name);
            const PageNo page = table.definition().page();
            for (const PropertyGroup& group :
                 parseProperties(tableProperties(objects, page), codec, page))
                for (const char* kind : {"Required", "AllowZeroLength", "DefaultValue",
                                         "ValidationRule", "ValidationText"})
                    if (const Property* property = group.find(kind)) {
                        const bool yesNo = property->type == ColumnType::boolean;
                        ++found[std::string(kind) + " " +
                                (yesNo ? (property->yes() ? "yes" : "no") : property->text(codec))];
                    }
            if (const auto rules = TableRules::load(database, table)) {
                EXPECT_FALSE(rules->problem()) << *rules->problem();
                Row values(table.columns().size());
                rules->values().fillIn(values, std::vector<bool>(values.size(), false));
            }
            found["relationships"] += static_cast<int>(relationshipsOf(database, table).size());
        }
    }
    for (const auto& [kind, count] : found)
        RecordProperty(kind, count);
    EXPECT_GT(found["Required yes"], 0);
    EXPECT_GT(found["AllowZeroLength no"], 0);
    EXPECT_GT(found["DefaultValue 0"], 0);
    EXPECT_GT(found["relationships"], 0);
}

class SampleRelationships : public SampleRules, public testing::WithParamInterface<bool> {};
// As declared in the system's table, and by the blocks of the indexes alone.
INSTANTIATE_TEST_SUITE_P(Sources, SampleRelationships, testing::Bool());

TEST_P(SampleRelationships, AreKept) {
    {
        Database database = opened("indexTestV2000.mdb");
        if (GetParam()) {
            Table& declared = database.table("MSysRelationships");
            while (declared.rowCount() > 0) {
                RowCursor row = declared.scan();
                ASSERT_TRUE(row.first());
                declared.erase(row.id());
            }
        }
        Table& children = database.table("Table1");
        Table& deleting = database.table("Table2"); // takes its children along
        Table& renaming = database.table("Table3"); // gives them its new key
        const auto toDeleting = *children.findColumn("otherfk1");
        const auto toRenaming = *children.findColumn("otherfk2");
        ASSERT_EQ(relationshipsOf(database, children).size(), 2U);

        RowCursor row = children.scan();
        ASSERT_TRUE(row.first());
        const std::int64_t first = row.row().integer(toDeleting);
        const std::int64_t second = row.row().integer(toRenaming);
        const RowId child = row.id();
        for (const std::size_t column : {toDeleting, toRenaming})
            EXPECT_EQ(errorOf([&] {
                          children.update(child, std::vector<Assignment>{
                                                     {column, std::int64_t{12345}}
                          });
                      }),
                      Errc::related);
        Row orphan = *children.read(child);
        orphan[0] = std::int64_t{777};
        orphan[toDeleting] = std::int64_t{12345};
        EXPECT_EQ(errorOf([&] { (void)children.insert(orphan); }), Errc::related);
        EXPECT_EQ(errorOf([&] { renaming.erase(rowWith(renaming, second)); }), Errc::related);
        EXPECT_EQ(errorOf([&] {
                      deleting.update(rowWith(deleting, first), std::vector<Assignment>{
                                                                    {0, std::int64_t{5000}}
                      });
                  }),
                  Errc::related);

        const std::int64_t renamed = valuesOf(children, toRenaming, second);
        EXPECT_EQ(renaming
                      .update(rowWith(renaming, second),
                              std::vector<Assignment>{
                                  {0, std::int64_t{5000}}
        })
                      .size(),
                  static_cast<std::size_t>(renamed));
        EXPECT_EQ(valuesOf(children, toRenaming, 5000), renamed);

        const std::int64_t all = children.rowCount();
        const std::int64_t going = valuesOf(children, toDeleting, first);
        EXPECT_GT(going, 0);
        EXPECT_EQ(deleting.erase(rowWith(deleting, first)).size(), static_cast<std::size_t>(going));
        EXPECT_EQ(children.rowCount(), all - going);
    }
    EXPECT_TRUE(check(path_).sound());
}

TEST_F(SampleRules, RequiredColumnsAreKept) {
    {
        Database database = opened("fixedTextTestV2000.mdb");
        Table& users = database.table("users");
        RowCursor row = users.scan();
        ASSERT_TRUE(row.first());
        const RowId id = row.id();
        for (std::size_t i = 0; i < users.columns().size(); ++i) {
            if (users.columns()[i].type == ColumnType::boolean)
                continue;
            EXPECT_EQ(errorOf([&] {
                          users.update(id, std::vector<Assignment>{
                                               {i, {}}
                          });
                      }),
                      Errc::nullValue)
                << users.columns()[i].name;
        }
        EXPECT_EQ(errorOf([&] { (void)users.insert(std::vector<Assignment>{}); }), Errc::nullValue);
    }
    EXPECT_TRUE(check(path_).sound());
}

TEST_F(SampleRules, DefaultsAreGiven) {
    {
        Database database = opened("testIndexPropertiesV2000.mdb");
        Table& table = database.table("TableIgnoreNulls2");
        const auto key = table.findColumn("row");
        const auto number = table.findColumn("data2");
        ASSERT_TRUE(key && number);
        const RowId id = table.insert(std::vector<Assignment>{
            {*key, std::string("novo")}
        });
        EXPECT_EQ((*table.read(id))[*number], Value(std::int64_t{0}));
        const RowId empty = table.insert(std::vector<Assignment>{
            {*key,    std::string("outro")},
            {*number, Value{}             }
        });
        EXPECT_TRUE(isNull((*table.read(empty))[*number]));
        table.erase(id);
        table.erase(empty);
    }
    EXPECT_TRUE(check(path_).sound());
}

TEST_F(SampleRules, ADefaultIsHeldAgainstTheRelationshipsToo) {
    Database database = opened("indexTestV2000.mdb");
    Table& children = database.table("Table1"); // its references default to 0, which nobody has
    const auto toDeleting = *children.findColumn("otherfk1");
    const auto toRenaming = *children.findColumn("otherfk2");
    const std::vector<Assignment> key{
        {0, std::int64_t{4321}}
    };
    EXPECT_EQ(errorOf([&] { (void)children.insert(key); }), Errc::related);
    std::vector<Assignment> alone = key;
    alone.push_back({toDeleting, {}});
    alone.push_back({toRenaming, {}});
    EXPECT_EQ(children.read(children.insert(alone)).value()[0], Value(std::int64_t{4321}));
}

} // namespace
