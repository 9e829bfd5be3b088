// Thousands of random changes against a model in memory; then the file must be whole, and equal to
// the model for us and for an independent reader.
#include "jet/Check.h"
#include "jet/IndependentReader.h"
#include "jet/RandomRows.h"
#include "jet/database/DatabasePager.h"
#include "jet/database/TableRules.h"
#include "support/MdbTools.h"
#include "support/Samples.h"
#include "support/TemporaryFolder.h"
#include "support/Versions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

using namespace jet;

namespace {

constexpr std::size_t kMostRows = 400;

/// A file under random change, and what it must hold.
class ChangedFile {
public:
    ChangedFile(std::filesystem::path path, std::uint64_t seed)
        : path_(std::move(path)), random_(seed) {
        open();
        for (const std::string& name : database_->tableNames())
            if (Table& table = database_->table(name); !table.readOnlyReason())
                models_.emplace(name, TableModel(*database_, table));
    }

    [[nodiscard]] bool canChange() const { return !models_.empty(); }

    void change(int times) {
        for (int i = 0; i < times && !testing::Test::HasFailure(); ++i) {
            SCOPED_TRACE("change " + std::to_string(i));
            one();
            if (random_.chance(1))
                expectEqual();
            if (random_.chance(1) && !saved_)
                reopen();
        }
        endTransaction(true);
    }

    void expectEqual() {
        for (auto& [name, model] : models_)
            model.expectEqual(database_->table(name));
    }

    void reopen() {
        database_.reset();
        open();
    }
    void close() { database_.reset(); }

private:
    void open() {
        database_ = std::make_unique<Database>(path_);
        ASSERT_FALSE(database_->readOnlyReason()) << *database_->readOnlyReason();
    }

    void one() {
        if (!saved_ && random_.chance(5)) {
            database_->begin();
            saved_ = models_;
        } else if (saved_ && random_.chance(8)) {
            endTransaction(random_.chance(60));
        }
        auto at = models_.begin();
        std::advance(at, static_cast<std::ptrdiff_t>(random_.below(models_.size())));
        Table& table = database_->table(at->first);
        TableModel& model = at->second;
        const std::size_t dice = random_.below(100);
        const bool full = model.rows.size() >= kMostRows;
        if (model.rows.empty() || (!full && dice < 45))
            insert(table, model);
        else if (dice < 75 && !full)
            update(table, model);
        else
            erase(table, model);
    }

    void endTransaction(bool keep) {
        if (!saved_)
            return;
        if (keep) {
            database_->commit();
        } else {
            database_->rollback();
            models_ = *saved_;
        }
        saved_.reset();
    }

    /// What `action` ends in must be what the model says; true if it was done.
    template <class Action>
    bool doneAsExpected(const Table& table, std::optional<Errc> expected, const Row& row,
                        Action&& action) {
        try {
            action();
        } catch (const Error& error) {
            if (error.code() == Errc::tooLong) {
                std::size_t size = 0;
                for (const Value& value : row)
                    if (const auto* text = std::get_if<std::string>(&value))
                        size += std::min<std::size_t>(text->size(), 510);
                EXPECT_GT(size, 400U) << "the row isn't long: " << error.what();
                return false;
            }
            // What the rules of a real file refuse the model doesn't know.
            if (!expected && TableRules::load(*database_, table) &&
                (error.code() == Errc::rule || error.code() == Errc::related ||
                 error.code() == Errc::nullValue))
                return false;
            EXPECT_TRUE(expected) << error.what();
            if (expected) {
                EXPECT_EQ(error.code(), *expected) << error.what();
            }
            return false;
        }
        EXPECT_FALSE(expected) << "the change should have been refused";
        return true;
    }

    void insert(Table& table, TableModel& model) {
        Row row = random_.row(table);
        Row expected = row;
        std::optional<std::size_t> numbered;
        for (std::size_t i = 0; i < row.size(); ++i) {
            const Column& column = table.columns()[i];
            if (column.autonumber) {
                numbered = i;
                if (isNull(row[i]))
                    expected[i] = model.lastNumber + 1;
            }
            if (column.autoGuid && isNull(row[i]))
                row[i] = expected[i] = Guid{
                    {std::byte{7}, static_cast<std::byte>(row.size())}
                };
        }
        RowId id;
        if (!doneAsExpected(table, model.refusal(expected, std::nullopt), row,
                            [&] { id = table.insert(row); }))
            return;
        EXPECT_TRUE(model.rows.emplace(id, expected).second) << "the id is in use";
        if (numbered)
            model.lastNumber =
                std::max(model.lastNumber, std::get<std::int64_t>(expected[*numbered]));
    }

    void update(Table& table, TableModel& model) {
        const RowId id = anyRow(model);
        std::vector<Assignment> changes;
        Row expected = model.rows.at(id);
        for (std::size_t count = 1 + random_.below(4); count > 0; --count) {
            const std::size_t place = random_.below(table.columns().size());
            changes.push_back({place, random_.value(table.columns()[place])});
            expected[place] = changes.back().value;
        }
        std::vector<Cascaded> others;
        if (!doneAsExpected(table, model.refusal(expected, id), expected,
                            [&] { others = table.update(id, changes); }))
            return;
        model.rows[id] = expected;
        takeOver(others);
        for (std::size_t i = 0; i < expected.size(); ++i)
            if (table.columns()[i].autonumber && !isNull(expected[i]))
                model.lastNumber = std::max(model.lastNumber, std::get<std::int64_t>(expected[i]));
    }

    void erase(Table& table, TableModel& model) {
        const RowId id = anyRow(model);
        std::vector<Cascaded> others;
        if (!doneAsExpected(table, std::nullopt, {}, [&] { others = table.erase(id); }))
            return;
        model.rows.erase(id);
        takeOver(others);
        EXPECT_FALSE(table.read(id));
    }

    /// What went or changed along with a row, as the relationships of a real file ask for.
    void takeOver(const std::vector<Cascaded>& others) {
        for (const Cascaded& other : others) {
            TableModel& model = models_.at(other.table->name());
            if (other.erased)
                model.rows.erase(other.row);
            else
                model.rows[other.row] = other.table->read(other.row).value();
        }
    }

    RowId anyRow(const TableModel& model) {
        auto at = model.rows.begin();
        std::advance(at, static_cast<std::ptrdiff_t>(random_.below(model.rows.size())));
        return at->first;
    }

    std::filesystem::path path_;
    RandomRows random_;
    std::unique_ptr<Database> database_;
    std::map<std::string, TableModel> models_;
    /// The models as the open transaction found them.
    std::optional<std::map<std::string, TableModel>> saved_;
};

void expectNoErrors(const std::filesystem::path& file) {
    const Report report = check(file);
    for (const Finding& finding : report.findings)
        if (finding.severity == Finding::Severity::error)
            ADD_FAILURE() << "page " << number(finding.page) << ": " << finding.sentence;
}

/// False if the file has no table that may be changed.
bool changeAndCompare(const std::filesystem::path& file, std::uint64_t seed, int times) {
    SCOPED_TRACE(file.filename().string() + ", seed " + std::to_string(seed));
    ChangedFile changed(file, seed);
    if (!changed.canChange())
        return false;
    changed.change(times);
    changed.expectEqual();
    changed.reopen();
    changed.expectEqual();
    changed.close();
    expectNoErrors(file);
    if (hasMdbTools())
        expectSameAsIndependentReader(file);
    return true;
}

/// One table with an index of every kind, one with long rows and no index at all.
void makeFile(const std::filesystem::path& path, Version version) {
    Database::create(path, version);
    Database database(path);
    // clang-format off
    TableSpec wide{
        "Largo",
        {{"numero", ColumnType::longInteger, 0, true},
         {"nome", ColumnType::text, 60},
         {"codigo", ColumnType::integer},
         {"grupo", ColumnType::byte},
         {"valor", ColumnType::currency},
         {"simples", ColumnType::single},
         {"duplo", ColumnType::real},
         {"data", ColumnType::date},
         {"bytes", ColumnType::binary, 40},
         {"guid", ColumnType::guid},
         {"sim", ColumnType::boolean},
         {"obs", ColumnType::memo},
         {"foto", ColumnType::ole}},
        {{"PrimaryKey", {{"numero"}}, true},
         {"nome", {{"nome"}}, false, true},
         {"codigo", {{"codigo", false}, {"grupo"}}, false, true, true},
         {"valor", {{"valor"}, {"simples", false}}},
         {"duplo", {{"duplo", false}}},
         {"data", {{"data"}, {"nome", false}, {"sim"}}},
         {"bytes", {{"bytes", false}}},
         {"guid", {{"guid"}}, false, true},
         {"sim", {{"sim"}}}}
    };
    // clang-format on
    if (version == Version::jet4) {
        wide.columns.push_back({"decimal", ColumnType::numeric, 0, false, 18, 2});
        wide.indexes.push_back({"decimal", {{"decimal"}}});
    }
    database.createTable(wide);
    TableSpec tall{"Comprido", {}, {}};
    for (int i = 0; i < 8; ++i)
        tall.columns.push_back({"texto" + std::to_string(i), ColumnType::text, 255});
    tall.columns.push_back({"memo", ColumnType::memo});
    database.createTable(tall);
}

class PropertyFiles : public testing::TestWithParam<Version> {};
INSTANTIATE_TEST_SUITE_P(, PropertyFiles, bothVersions(), versionName);

TEST_P(PropertyFiles, RandomChangesLeaveAFreshFileWholeAndEqualToTheModel) {
    const TemporaryFolder folder;
    for (const std::uint64_t seed : {1U, 2U}) {
        const auto file = folder / ("fresh" + std::to_string(seed) + ".mdb").c_str();
        makeFile(file, GetParam());
        EXPECT_TRUE(changeAndCompare(file, seed, JET_ONE_IN == 1 ? 2500 : 1000));
    }
}

TEST(PropertySamples, RandomChangesLeaveCopiesOfRealFilesWholeAndEqualToTheModel) {
    const auto samples = samplesFolder();
    if (!samples)
        GTEST_SKIP() << "no sample databases here";
    std::vector<std::filesystem::path> files{*samples / "automacao-jet4.mdb"};
    for (const auto& entry : std::filesystem::directory_iterator(*samples / "samples"))
        if (entry.path().extension() == ".mdb" && entry.path().filename() != "password.mdb")
            files.push_back(entry.path());
    const TemporaryFolder folder;
    std::uint64_t seed = 100;
    std::size_t changed = 0;
    for (const auto& sample : files) {
        const auto file = folder.path() / sample.filename();
        std::filesystem::copy_file(sample, file);
        std::filesystem::permissions(file, std::filesystem::perms::owner_write,
                                     std::filesystem::perm_options::add);
        changed += changeAndCompare(file, seed++, 700 / JET_ONE_IN) ? 1U : 0U;
    }
    // All but the one that has no tables of its own.
    EXPECT_EQ(changed, files.size() - 1);
}

TEST_P(PropertyFiles, AFileThatStaysAtTheSameNumberOfRowsStopsGrowing) {
    const TemporaryFolder folder;
    const auto path = folder / "steady.mdb";
    makeFile(path, GetParam());
    RandomRows random(7);
    Database database(path);
    Table& table = database.table("Largo");
    // Rows go and come back with the same values and a new number.
    std::vector<std::pair<RowId, Row>> rows;
    while (rows.size() < 200)
        try {
            Row row = random.row(table);
            row[0] = Value();
            const RowId id = table.insert(row);
            rows.emplace_back(id, std::move(row));
        } catch (const Error& error) {
            ASSERT_EQ(error.code(), Errc::duplicate) << error.what();
        }
    constexpr int kRounds = 120 / JET_ONE_IN;
    std::uint32_t settled = 0;
    for (int round = 0; round < kRounds; ++round) {
        for (int i = 0; i < 40; ++i) {
            auto& [id, row] = rows[random.below(rows.size())];
            table.erase(id);
            id = table.insert(row);
        }
        database.flush();
        if (round == kRounds / 2)
            settled = DatabasePager::of(database).pageCount();
    }
    EXPECT_LE(DatabasePager::of(database).pageCount(), settled + settled / 50);
    EXPECT_TRUE(check(path).clean());
}

} // namespace
