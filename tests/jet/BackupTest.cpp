// The daily copies, and putting one back.
#include "jet/Backup.h"

#include "jet/Copies.h"
#include "jet/DamagedFile.h"
#include "jet/FileSteps.h"
#include "support/TemporaryFolder.h"

using namespace jet;
using namespace std::chrono_literals;

namespace {

using Day = std::chrono::year_month_day;

class Backups : public testing::Test {
protected:
    Backups() {
        Database::create(file_, Version::jet4);
        store("primeiro");
    }
    /// Another row in the database.
    void store(const std::string& text) const {
        Database database(file_);
        if (!database.hasTable("Notas"))
            database.createTable({"Notas", {{"texto", ColumnType::text, 50}}, {}});
        database.table("Notas").insert(Row{text});
    }
    [[nodiscard]] Backup on(Day day) const {
        return Backup(file_, [day] { return day; });
    }
    [[nodiscard]] std::vector<std::string> copies() const {
        return filesIn(folder_.path() / "backup");
    }
    void damage() const {
        std::fstream stream(file_, std::ios::binary | std::ios::in | std::ios::out);
        stream.seekp(std::streamoff{2} * 4096);
        stream << std::string(200, 'x');
    }

    TemporaryFolder folder_;
    std::filesystem::path file_ = folder_ / "automacao.mdb";
};

TEST_F(Backups, OneADayFromMidnightToMidnight) {
    const auto first = on(2004y / 2 / 28).makeIfDue();
    ASSERT_TRUE(first);
    EXPECT_EQ(*first, folder_.path() / "backup" / "automacao-2004-02-28.mdb");
    EXPECT_TRUE(contentOf(*first) == contentOf(file_));

    store("segundo");
    EXPECT_FALSE(on(2004y / 2 / 28).makeIfDue());
    EXPECT_FALSE(contentOf(*first) == contentOf(file_)) << "the copy of the day is made once";
    EXPECT_TRUE(on(2004y / 2 / 29).makeIfDue());
    EXPECT_TRUE(on(2004y / 3 / 1).makeIfDue());
    EXPECT_TRUE(on(2005y / 1 / 1).makeIfDue()); // after a long holiday
    EXPECT_EQ(copies(),
              (std::vector<std::string>{"automacao-2004-02-28.mdb", "automacao-2004-02-29.mdb",
                                        "automacao-2004-03-01.mdb", "automacao-2005-01-01.mdb"}));
}

TEST_F(Backups, TheLastTenAreKept) {
    for (unsigned day = 1; day <= 14; ++day)
        EXPECT_TRUE(on(2004y / 5 / static_cast<int>(day)).makeIfDue());
    const auto kept = on(2004y / 5 / 14).copies();
    ASSERT_EQ(kept.size(), Backup::kKept);
    EXPECT_EQ(kept.front().filename(), "automacao-2004-05-05.mdb");
    EXPECT_EQ(kept.back().filename(), "automacao-2004-05-14.mdb");
}

TEST_F(Backups, FilesOfOthersStay) {
    const auto backup = folder_.path() / "backup";
    std::filesystem::create_directory(backup);
    const std::vector<std::string> foreign{"automacao-1999-13-45.mdb", "automacao-2001-1-1.mdb",
                                           "automacao-2001-01-01.mdb.old", "leia-me.txt",
                                           "outro-2001-01-01.mdb"};
    for (const std::string& name : foreign)
        std::ofstream(backup / name) << "de outros";
    for (unsigned day = 1; day <= 12; ++day)
        (void)on(2004y / 5 / static_cast<int>(day)).makeIfDue();
    for (const std::string& name : foreign)
        EXPECT_EQ(contentOf(backup / name), "de outros") << name;
    EXPECT_EQ(copies().size(), Backup::kKept + foreign.size());
}

TEST_F(Backups, AClockThatWasWrongDoesntCostTodaysCopy) {
    for (unsigned day = 1; day <= 10; ++day)
        (void)on(2044y / 5 / static_cast<int>(day)).makeIfDue();
    const auto today = on(2004y / 5 / 1).makeIfDue();
    ASSERT_TRUE(today);
    EXPECT_TRUE(std::filesystem::exists(*today));
    EXPECT_EQ(copies().size(), Backup::kKept);
}

TEST_F(Backups, ADamagedDatabaseNeverPushesOutAGoodCopy) {
    for (unsigned day = 1; day <= 10; ++day)
        (void)on(2004y / 5 / static_cast<int>(day)).makeIfDue();
    const auto before = copies();
    const std::string good = contentOf(folder_.path() / "backup" / "automacao-2004-05-10.mdb");
    damage();
    for (unsigned day = 11; day <= 13; ++day)
        expectError(Errc::corrupt, "tem erros e não foi copiado",
                    [&] { (void)on(2004y / 5 / static_cast<int>(day)).makeIfDue(); });
    EXPECT_EQ(copies(), before);
    EXPECT_TRUE(contentOf(folder_.path() / "backup" / "automacao-2004-05-10.mdb") == good);
}

TEST_F(Backups, AFolderThatCantBeMadeIsAnError) {
    std::ofstream(folder_.path() / "backup") << "um arquivo";
    EXPECT_THROW((void)on(2004y / 5 / 1).makeIfDue(), Error);
    EXPECT_EQ(contentOf(folder_.path() / "backup"), "um arquivo");
}

TEST_F(Backups, ADatabaseThatIsGoneIsAnError) {
    std::filesystem::remove(file_);
    expectError(Errc::notFound, "não existe", [&] { (void)on(2004y / 5 / 1).makeIfDue(); });
    EXPECT_TRUE(copies().empty());
}

TEST_F(Backups, ACopyThatIsntWantedAnyMoreLeavesNothing) {
    std::stop_source stop;
    stop.request_stop();
    expectError(Errc::cancelled, "interrompida",
                [&] { (void)on(2004y / 5 / 1).makeIfDue(stop.get_token()); });
    EXPECT_TRUE(copies().empty());
    expectError(Errc::cancelled, "interrompida",
                [&] { (void)check(file_, Disk::system(), stop.get_token()); });
}

TEST_F(Backups, LeftoversOfAnEarlierDayGo) {
    const auto leftover = folder_.path() / "backup" / "automacao-2004-04-01.parcial-99.mdb";
    const auto recent = folder_.path() / "backup" / "automacao-2004-04-01.parcial-98.mdb";
    std::filesystem::create_directory(leftover.parent_path());
    std::ofstream(leftover) << "meia cópia";
    std::ofstream(recent) << "de outro programa, agora mesmo";
    std::filesystem::last_write_time(leftover, std::filesystem::file_time_type::clock::now() - 25h);
    (void)on(2004y / 5 / 1).makeIfDue();
    EXPECT_FALSE(std::filesystem::exists(leftover));
    EXPECT_TRUE(std::filesystem::exists(recent));
}

TEST_F(Backups, AChangeDuringACopyIsNoticed) {
    EXPECT_FALSE(unchangedWhile(file_, [&] { store("durante a cópia"); }));
    EXPECT_TRUE(unchangedWhile(file_, [] {}));
}

TEST_F(Backups, TheCopyOfAnOpenDatabaseIsWhole) {
    Database open(file_);
    open.table("Notas").insert(Row{std::string("gravado")});
    open.flush();
    const auto copy = on(2004y / 5 / 1).makeIfDue();
    ASSERT_TRUE(copy);
    Database read(*copy, {true, {}, {}});
    EXPECT_EQ(rowsOf(read, "Notas").size(), 2U);
}

class Restoring : public Backups {
protected:
    Restoring() : copy_(*on(2004y / 5 / 1).makeIfDue()) { store("depois da cópia"); }
    std::filesystem::path copy_;
};

TEST_F(Restoring, PutsTheCopyInPlaceAndKeepsWhatWasThere) {
    const std::string was = contentOf(file_);
    const auto kept = restore(copy_, file_);
    ASSERT_TRUE(kept);
    EXPECT_TRUE(kept->filename().string().starts_with("automacao-substituido-"));
    EXPECT_TRUE(contentOf(*kept) == was);
    EXPECT_TRUE(contentOf(file_) == contentOf(copy_));
    EXPECT_EQ(filesIn(folder_.path()),
              (std::vector<std::string>{kept->filename().string(), "automacao.mdb", "backup"}));

    store("outra vez"); // the replaced file isn't the new one under another name
    EXPECT_TRUE(contentOf(*kept) == was);
    const auto again = restore(copy_, file_);
    ASSERT_TRUE(again);
    EXPECT_NE(*again, *kept);
}

TEST_F(Restoring, WorksWhereThereIsNoDatabaseAnyMore) {
    std::filesystem::remove(file_);
    EXPECT_FALSE(restore(copy_, file_));
    EXPECT_TRUE(contentOf(file_) == contentOf(copy_));
}

TEST_F(Restoring, ALinkToTheDatabaseStaysOne) {
    const std::filesystem::path link = folder_ / "atalho.mdb";
    std::filesystem::create_symlink(file_, link);
    const std::string was = contentOf(file_);
    const auto kept = restore(copy_, link);
    ASSERT_TRUE(kept);
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_TRUE(contentOf(file_) == contentOf(copy_));
    EXPECT_TRUE(contentOf(*kept) == was);
}

TEST_F(Restoring, RefusesWhileSomebodyHasTheDatabaseOpen) {
    const Database open(file_);
    const std::string was = contentOf(file_);
    expectError(Errc::locked, "está aberto", [&] { (void)restore(copy_, file_); });
    EXPECT_TRUE(contentOf(file_) == was);
}

TEST_F(Restoring, RefusesADamagedCopy) {
    std::filesystem::resize_file(copy_, std::filesystem::file_size(copy_) / 2);
    const std::string was = contentOf(file_);
    expectError(Errc::corrupt, "A cópia tem erros", [&] { (void)restore(copy_, file_); });
    EXPECT_TRUE(contentOf(file_) == was);
    EXPECT_EQ(filesIn(folder_.path()), (std::vector<std::string>{"automacao.mdb", "backup"}));
}

TEST_F(Restoring, RefusesACopyThatIsntThere) {
    expectError(Errc::notFound, "não existe",
                [&] { (void)restore(folder_ / "nenhuma.mdb", file_); });
    EXPECT_TRUE(std::filesystem::exists(file_));
}

} // namespace
