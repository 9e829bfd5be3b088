// What a file keeps beside its tables, taken into another file.
#include "jet/Extras.h"

#include "jet/Check.h"
#include "jet/ExtendTable.h"
#include "jet/Rules.h"
#include "jet/SampleFiles.h"
#include "jet/database/Relationships.h"
#include "jet/page/Format.h"
#include "support/FileRules.h"
#include "support/MdbTools.h"
#include "support/Versions.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <fstream>

using namespace jet;

namespace {

using Spec = RelationshipFlags;
using testing::HasSubstr;
using testing::IsEmpty;

// clang-format off
const std::vector<TableSpec> kRelated{
    {"bancos",
     {{"codigo", ColumnType::longInteger}, {"agencia", ColumnType::longInteger},
      {"chefe", ColumnType::longInteger}, {"nome", ColumnType::text, 30}},
     {{"PrimaryKey", {{"codigo"}}, true}, {"conta", {{"agencia"}, {"codigo"}}, false, true}}},
    {"cheques",
     {{"numero", ColumnType::longInteger}, {"banco", ColumnType::longInteger},
      {"agencia", ColumnType::longInteger}},
     {{"PrimaryKey", {{"numero"}}, true}, {"do banco", {{"banco"}}}}}
};
const std::vector<RelationshipSpec> kRelationships{
    {"do banco", "cheques", "bancos", {{"banco", "codigo"}}, Spec::cascadeDelete},
    {"da conta", "cheques", "bancos", {{"banco", "codigo"}, {"agencia", "agencia"}},
     Spec::cascadeUpdate},
    {"chefia", "bancos", "bancos", {{"chefe", "codigo"}}, Spec::cascadeNull},
    {"só dito", "cheques", "bancos", {{"numero", "agencia"}}, Spec::notEnforced}
};
// clang-format on

Extras sorted(Extras extras) {
    std::ranges::sort(extras.objects, {},
                      [](const ExtraObject& o) { return std::pair(o.type, o.name); });
    std::ranges::sort(extras.relationships, {}, &RelationshipSpec::name);
    // Names that nothing uses don't count.
    const TextCodec codec(Version::jet4);
    for (ExtraObject& object : extras.objects)
        object.properties = recodedProperties(object.properties, codec, codec);
    return extras;
}

class ExtrasInFiles : public testing::TestWithParam<Version> {
protected:
    std::filesystem::path made(const char* name, Version version) {
        auto path = folder_ / name;
        Database::create(path, version);
        Database database(path);
        for (const TableSpec& table : kRelated)
            database.createTable(table);
        return path;
    }
    static void relateAll(const std::filesystem::path& path) {
        Database database(path);
        for (const RelationshipSpec& bond : kRelationships)
            relate(database, bond);
    }
    TemporaryFolder folder_;
};
INSTANTIATE_TEST_SUITE_P(, ExtrasInFiles, bothVersions(), versionName);

TEST_P(ExtrasInFiles, AreTheSameInAFileOfAnyVersion) {
    const auto from = made("de.mdb", GetParam());
    {
        Database database(from);
        setRules(database, "bancos",
                 {
                     {.column = "nome", .required = true, .defaultValue = "\"Praça\""},
                     {.rule = "[codigo]>0",                .message = "Código é maior que zero: ção."            }
        });
        enterObject(database, -2147483640, "Ativos é ção", ExtraObject::kQuery);
        Table& queries = database.table("MSysQueries");
        for (const std::int64_t attribute : {1, 5, 8, 255}) {
            Row step{std::int64_t{-2147483640},
                     attribute,
                     Bytes(2, std::byte{1}),
                     std::string("bancos"),
                     Value(),
                     std::string("codigo>0 ção"),
                     std::int64_t{0}};
            step.resize(queries.columns().size());
            queries.insert(step);
        }
        enterObject(database, -2147483639, "Formulário", -32768);
    }
    relateAll(from);
    Database source(from);
    const Extras extras = sorted(extrasOf(source));
    EXPECT_THAT(extras.others, testing::ElementsAre("Formulário"));
    ASSERT_EQ(extras.objects.size(), 2U);
    EXPECT_EQ(extras.objects[1].steps.size(), 4U);
    ASSERT_EQ(extras.relationships.size(), kRelationships.size());
    for (const Version version : {Version::jet3, Version::jet4}) {
        const auto to = made(version == Version::jet3 ? "3.mdb" : "4.mdb", version);
        {
            Database database(to);
            for (const ExtraObject& object : extras.objects)
                addExtra(database, object);
            for (const RelationshipSpec& bond : extras.relationships)
                relate(database, bond);
        }
        EXPECT_THAT(check(to).findings, IsEmpty());
        Database target(to);
        Extras copied = sorted(extrasOf(target));
        copied.others = extras.others;
        // A query has one more column in Jet 4.
        EXPECT_TRUE(copied.objects == extras.objects);
        EXPECT_TRUE(copied.relationships == extras.relationships);
        const KeptRules rules = rulesOf(target, target.table("bancos"));
        ASSERT_EQ(rules.values.size(), 2U);
        EXPECT_EQ(rules.values[0].defaultText, "\"Praça\"");
        EXPECT_EQ(rules.values[1].message, "Código é maior que zero: ção.");
    }
}

// The rows of MSysRelationships and the indexes of both tables say the same, each for itself.
TEST_P(ExtrasInFiles, ARelationshipIsToldByIndexesToo) {
    const auto path = made("laços.mdb", GetParam());
    relateAll(path);
    EXPECT_THAT(check(path).findings, IsEmpty());
    if (hasMdbTools()) {
        EXPECT_THAT(runProgram({"mdb-schema", path.string(), "postgres"}).out,
                    HasSubstr("FOREIGN KEY (\"banco\") REFERENCES \"bancos\"(\"codigo\") "
                              "ON DELETE CASCADE"));
    }
    Database database(path);
    Table& rows = database.table("MSysRelationships");
    std::vector<RowId> all;
    RowCursor row = rows.scan();
    for (bool there = row.first(); there; there = row.next())
        all.push_back(row.id());
    EXPECT_EQ(all.size(), 5U);
    for (const RowId id : all)
        rows.erase(id);
    std::vector<RelationshipSpec> told = sorted(extrasOf(database)).relationships;
    ASSERT_EQ(told.size(), 3U);
    for (RelationshipSpec& bond : told) {
        std::ranges::sort(bond.columns);
        const auto& of = *std::ranges::find(kRelationships, bond.name, &RelationshipSpec::name);
        auto columns = of.columns;
        std::ranges::sort(columns);
        EXPECT_EQ(bond.columns, columns) << bond.name;
        EXPECT_EQ(bond.flags, of.flags) << bond.name;
    }
    // The one whose name an index had took that index; the others got one of their own.
    EXPECT_EQ(database.table("cheques").indexes().size(), 3U);
    EXPECT_EQ(database.table("bancos").indexes().size(), 3U);
}

/// Gives a logical index of a closed file's table, whose definition is one page, another real one.
void changeRealIndex(const std::filesystem::path& path, const TableDefinition& table,
                     const LogicalIndex& index, std::size_t real) {
    const Format& format = formatOf(table.isJet3 ? Version::jet3 : Version::jet4);
    const LogicalIndexLayout& layout = format.logicalIndex;
    std::vector<std::byte> page(format.pageSize);
    const auto begin = static_cast<std::streamoff>(number(table.page()) * format.pageSize);
    std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
    file.seekg(begin);
    file.read(reinterpret_cast<char*>(page.data()), static_cast<std::streamsize>(page.size()));
    for (std::size_t at = 0; at + layout.size <= page.size(); ++at) {
        std::byte* const block = &page[at];
        if (load(block, layout.number) != index.number ||
            load(block, layout.realIndex) != index.realIndex ||
            load(block, layout.partner) != index.partner ||
            load(block, layout.otherTable) != index.partnerTable)
            continue;
        store(block, layout.realIndex, static_cast<std::uint32_t>(real));
        file.seekp(begin);
        file.write(reinterpret_cast<const char*>(page.data()),
                   static_cast<std::streamsize>(page.size()));
        return;
    }
    ADD_FAILURE() << "the index isn't in the definition";
}

TEST_P(ExtrasInFiles, ARelationshipWhoseIndexHasTooFewColumnsIsToldByTheRowsAlone) {
    const auto path = made("laços.mdb", GetParam());
    TableDefinition children;
    {
        Database database(path);
        relate(database, kRelationships[1]);
        children = database.table("cheques").definition();
    }
    const auto named = [&](const char* name) -> const LogicalIndex& {
        return *std::ranges::find(children.logicalIndexes, name, &LogicalIndex::name);
    };
    changeRealIndex(path, children, named("da conta"), named("do banco").realIndex);
    Database database(path);
    EXPECT_EQ(relationshipsOf(database, database.table("cheques")).size(), 1U);
    Table& rows = database.table("MSysRelationships");
    for (RowCursor row = rows.scan(); row.first();)
        rows.erase(row.id());
    EXPECT_THAT(relationshipsOf(database, database.table("cheques")), IsEmpty());
}

// Another program's index of the column serves; where no more are taken, the rows tell of it alone.
TEST_P(ExtrasInFiles, ARelationshipTakesTheIndexThatIsThere) {
    const auto path = made("laços.mdb", GetParam());
    Database database(path);
    const auto relationshipsToldOf = [&] {
        return std::ranges::count(database.table("cheques").definition().logicalIndexes,
                                  LogicalIndex::Kind::relationship, &LogicalIndex::kind);
    };
    const auto add = [&](const std::string& name) {
        relate(database, {name, "cheques", "bancos", {{"banco", "codigo"}}, 0});
    };
    add("outro nome");
    add("PrimaryKey"); // which an index of the cheques is called
    EXPECT_EQ(relationshipsToldOf(), 2);
    EXPECT_EQ(database.table("cheques").indexes().size(), 2U);
    for (int i = 0; i < 40; ++i)
        add("mais " + std::to_string(i));
    EXPECT_LT(relationshipsToldOf(), 31);
    EXPECT_EQ(extrasOf(database).relationships.size(), 42U);
    try {
        extendTable(database, "cheques",
                    {
                        "", {                    },
                         { {"x", {{"agencia"}}}, {"y", {{"agencia"}}}}
        });
        ADD_FAILURE() << "has two indexes more";
    } catch (const Error& error) {
        EXPECT_EQ(error.code(), Errc::full) << error.what();
    }
    EXPECT_THROW(relate(database, {"sem campo", "cheques", "bancos", {{"praça", "codigo"}}, 0}),
                 Error);
    EXPECT_THAT(check(path).findings, IsEmpty());
}

TEST_P(ExtrasInFiles, ARelationshipIsKeptFromThenOn) {
    const auto path = made("laços.mdb", GetParam());
    Database database(path);
    database.table("bancos").insert(Row{std::int64_t{1}, std::int64_t{2}, Value(), Value()});
    database.table("cheques").insert(Row{std::int64_t{5}, std::int64_t{1}, Value()});
    Table& before = database.table("cheques");
    relate(database, kRelationships[0]);
    EXPECT_THROW(static_cast<void>(before.rowCount()), Error);
    EXPECT_THROW(database.table("cheques").insert(Row{std::int64_t{6}, std::int64_t{9}, Value()}),
                 Error);
    EXPECT_THROW(relate(database, kRelationships[0]), Error);
    RowCursor bank = database.table("bancos").scan();
    ASSERT_TRUE(bank.first());
    database.table("bancos").erase(bank.id());
    EXPECT_EQ(database.table("cheques").rowCount(), 0);
}

// The indexes tell of it still.
TEST_P(ExtrasInFiles, ARelationshipThatIsNoLongerToBeEnforcedIsLeftAlone) {
    Database database(made("laços.mdb", GetParam()));
    relate(database, kRelationships[0]);
    Table& declared = database.table("MSysRelationships");
    const std::size_t flags = declared.findColumn("grbit").value();
    RowCursor row = declared.scan();
    for (bool there = row.first(); there; there = row.next())
        declared.update(row.id(),
                        std::array{
                            Assignment{flags, row.row().integer(flags) | Spec::notEnforced}
        });
    EXPECT_NO_THROW(
        database.table("cheques").insert(Row{std::int64_t{6}, std::int64_t{9}, Value()}));
}

// Real files' relationships, queries and properties, in a new file with the same tables.
TEST(Extras, OfRealFilesAreTheSameInANewOne) {
    const TemporaryFolder folder;
    for (const auto& file : sampleFiles(folder)) {
        SCOPED_TRACE(file.filename());
        std::optional<Database> source;
        try {
            source.emplace(file, optionsFor(file));
        } catch (const Error&) {
            continue;
        }
        const Extras extras = sorted(extrasOf(*source));
        const auto to = folder / "novo.mdb";
        std::filesystem::remove(to);
        Database::create(to, source->version());
        Database target(to);
        for (const std::string& name : source->tableNames()) {
            TableSpec spec{name, {}, {}};
            for (const Column& column : source->table(name).columns())
                spec.columns.push_back({.name = column.name, .type = ColumnType::longInteger});
            target.createTable(spec);
        }
        for (const ExtraObject& object : extras.objects)
            addExtra(target, object);
        for (const RelationshipSpec& bond : extras.relationships)
            if (target.hasTable(bond.child))
                relate(target, bond);
        const Extras copied = sorted(extrasOf(target));
        EXPECT_TRUE(copied.objects == extras.objects);
        for (const RelationshipSpec& bond : extras.relationships)
            if (target.hasTable(bond.child)) {
                EXPECT_THAT(copied.relationships, testing::Contains(bond));
            }
        target.flush();
        EXPECT_TRUE(check(to).clean());
    }
}

} // namespace
