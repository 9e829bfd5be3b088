// The daily copies, and putting one back.
#include "jet/Backup.h"

#include "jet/Copies.h"
#include "jet/DamagedFile.h"
#include "jet/FileSteps.h"
#include "jet/system/System.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <cctype>
#include <ctime>
#include <functional>
#include <map>

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
    [[nodiscard]] static std::string nameOf(Day day) {
        char text[32];
        (void)std::snprintf(text, sizeof text, "automacao-%04d-%02u-%02u.mdb",
                            static_cast<int>(day.year()), static_cast<unsigned>(day.month()),
                            static_cast<unsigned>(day.day()));
        return text;
    }
    static void damage(const std::filesystem::path& file) {
        std::fstream stream(file, std::ios::binary | std::ios::in | std::ios::out);
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

TEST_F(Backups, TheLastTenAreKeptAndOneOfEachWeek) {
    for (int day = 1; day <= 14; ++day)
        EXPECT_TRUE(on(2004y / 5 / day).makeIfDue());
    std::vector<std::string> kept{"automacao-2004-05-02.mdb"}; // a Sunday
    for (int day = 5; day <= 14; ++day)
        kept.push_back(nameOf(2004y / 5 / day));
    EXPECT_EQ(copies(), kept);
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
    EXPECT_GT(copies().size(), foreign.size());
}

TEST_F(Backups, AClockThatWasWrongDoesntCostTodaysCopy) {
    for (int day = 1; day <= 10; ++day)
        (void)on(2044y / 5 / day).makeIfDue();
    const auto today = on(2004y / 5 / 1).makeIfDue();
    ASSERT_TRUE(today);
    EXPECT_TRUE(std::filesystem::exists(*today));
}

TEST_F(Backups, CopiesOfDaysToComePushOutNoTrueOne) {
    for (const auto year : {2044y, 2004y})
        for (int day = 1; day <= 11; ++day) {
            (void)on(year / 5 / day).makeIfDue();
            store("mais um");
        }
    for (int day = 2; day <= 11; ++day)
        EXPECT_THAT(copies(), testing::Contains(nameOf(2004y / 5 / day)));
    EXPECT_THAT(copies(), testing::Not(testing::Contains(nameOf(2044y / 5 / 1))));
}

TEST_F(Backups, ACopyMadeUnderADateOfLongAgoStaysForWhatItHolds) {
    for (int day = 1; day <= 12; ++day) {
        (void)on(2004y / 5 / day).makeIfDue();
        store("mais um");
    }
    (void)on(2001y / 1 / 1).makeIfDue();
    store("mais um");
    (void)on(2004y / 5 / 13).makeIfDue();
    EXPECT_THAT(copies(), testing::Contains(nameOf(2001y / 1 / 1)));
}

TEST_F(Backups, ACopyOfTodaysNameFromAWrongClockIsMadeAnew) {
    const auto wrong = on(2004y / 5 / 20).makeIfDue();
    ASSERT_TRUE(wrong);
    store("segundo");
    (void)on(2004y / 5 / 19).makeIfDue();
    store("terceiro");
    EXPECT_TRUE(on(2004y / 5 / 20).makeIfDue());
    EXPECT_TRUE(contentOf(*wrong) == contentOf(file_));
    EXPECT_FALSE(on(2004y / 5 / 20).makeIfDue());
    // Of several that hold more the one with the least tells: the others may be from wrong clocks.
    for (const int day : {18, 17}) {
        store("mais um");
        (void)on(2004y / 5 / day).makeIfDue();
    }
    EXPECT_TRUE(on(2004y / 5 / 20).makeIfDue());
    EXPECT_TRUE(contentOf(*wrong) == contentOf(file_));
}

TEST_F(Backups, ACopyBroughtBackDoesntMakeTodaysCopyDueForEver) {
    const auto first = on(2004y / 5 / 1).makeIfDue();
    store("segundo");
    (void)on(2004y / 5 / 2).makeIfDue();
    restore(*first, file_);
    EXPECT_TRUE(on(2004y / 5 / 3).makeIfDue());
    EXPECT_FALSE(on(2004y / 5 / 3).makeIfDue());
}

TEST_F(Backups, OnlyASoundCopyCountsAsTodays) {
    const auto copy = folder_.path() / "backup" / nameOf(2004y / 5 / 1);
    const auto elsewhere = folder_ / "outro.mdb";
    std::filesystem::copy_file(file_, elsewhere);
    const std::map<std::string, std::function<void()>> others{
        {"vazio",         [&] { std::ofstream(copy).close(); }                                  },
        {"pela metade",
         [&] {
             std::filesystem::copy_file(file_, copy);
             std::filesystem::resize_file(copy, std::filesystem::file_size(copy) / 2);
         }                                                                                      },
        {"outra coisa",   [&] { std::ofstream(copy) << "não é um banco de dados"; }           },
        {"um link",       [&] { std::filesystem::create_symlink(elsewhere, copy); }             },
        {"um link morto", [&] { std::filesystem::create_symlink(folder_ / "nenhum.mdb", copy); }},
    };
    std::filesystem::create_directory(copy.parent_path());
    for (const auto& [what, put] : others) {
        SCOPED_TRACE(what);
        put();
        EXPECT_TRUE(on(2004y / 5 / 1).makeIfDue());
        EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(copy)));
        EXPECT_TRUE(contentOf(copy) == contentOf(file_));
        EXPECT_FALSE(on(2004y / 5 / 1).makeIfDue());
        std::filesystem::remove(copy);
    }
    EXPECT_TRUE(contentOf(elsewhere) == contentOf(file_)) << "nobody writes through a link";
}

TEST_F(Backups, TodaysCopyIsCheckedOnce) {
    Backup backup = on(2004y / 5 / 1);
    const auto copy = backup.makeIfDue();
    ASSERT_TRUE(copy);
    // What isn't looked at can't be found wanting: same size, same time, other bytes.
    const auto time = std::filesystem::last_write_time(*copy);
    damage(*copy);
    std::filesystem::last_write_time(*copy, time);
    EXPECT_FALSE(backup.makeIfDue());
    EXPECT_TRUE(on(2004y / 5 / 1).makeIfDue()) << "another start of the program looks again";
}

TEST_F(Backups, WhoMayNotReadTheDatabaseMayNotReadItsCopies) {
    using enum std::filesystem::perms;
    for (const auto rights :
         {owner_read | owner_write, owner_read | owner_write | group_read | group_write}) {
        std::filesystem::permissions(file_, rights);
        const auto copy = on(2004y / 5 / 1).makeIfDue();
        ASSERT_TRUE(copy);
        EXPECT_EQ(std::filesystem::status(*copy).permissions(), rights);
        std::filesystem::remove(*copy);
    }
}

TEST_F(Backups, TheNewestSoundCopyIsFound) {
    for (int day = 1; day <= 3; ++day)
        (void)on(2004y / 5 / day).makeIfDue();
    (void)on(2044y / 5 / 1).makeIfDue();
    damage(folder_.path() / "backup" / nameOf(2004y / 5 / 3));
    const auto sound = on(2004y / 5 / 3).newestSound();
    ASSERT_TRUE(sound);
    EXPECT_EQ(sound->filename(), nameOf(2004y / 5 / 2));
}

TEST_F(Backups, WhereNoCopyIsSoundNoneIsFound) {
    EXPECT_FALSE(on(2004y / 5 / 3).newestSound());
    (void)on(2004y / 5 / 1).makeIfDue();
    damage(folder_.path() / "backup" / nameOf(2004y / 5 / 1));
    EXPECT_FALSE(on(2004y / 5 / 3).newestSound());
}

TEST_F(Backups, TodayIsWhatTheClockOnTheWallSays) {
    const auto today = [] {
        const std::time_t now = std::time(nullptr);
        const std::tm* const local = std::localtime(&now);
        return Day(std::chrono::year(local->tm_year + 1900),
                   std::chrono::month(static_cast<unsigned>(local->tm_mon + 1)),
                   std::chrono::day(static_cast<unsigned>(local->tm_mday)));
    };
    const Day before = today();
    const Day told = Backup::localToday();
    EXPECT_TRUE(before <= told && told <= today());
}

TEST_F(Backups, WhatOnlyHasACopysNameStays) {
    const auto backup = folder_.path() / "backup";
    const std::vector<std::string> folders{nameOf(2004y / 4 / 1),
                                           "automacao-2004-04-02.parcial-outra-99-1.mdb"};
    for (const std::string& name : folders) {
        std::filesystem::create_directories(backup / name);
        std::filesystem::last_write_time(backup / name,
                                         std::filesystem::file_time_type::clock::now() - 25h);
    }
    for (int day = 1; day <= 12; ++day)
        EXPECT_TRUE(on(2004y / 5 / day).makeIfDue());
    for (const std::string& name : folders)
        EXPECT_TRUE(std::filesystem::is_directory(backup / name)) << name;
}

TEST_F(Backups, ANoteThatCantBeReadIsANoteAllTheSame) {
    const auto note = folder_.path() / "backup" / "automacao-com-erros.txt";
    std::filesystem::create_directories(note);
    EXPECT_EQ(on(2004y / 5 / 1).damage(), "O banco de dados tem erros.");
    std::filesystem::remove(note);
    std::filesystem::create_symlink(folder_ / "nenhuma", note);
    EXPECT_EQ(on(2004y / 5 / 1).damage(), std::nullopt) << "another has just taken it away";
}

TEST_F(Backups, AFileThatIsNoDatabaseAnyMoreIsNoted) {
    (void)on(2004y / 5 / 1).makeIfDue();
    std::ofstream(file_) << std::string(9000, 'x');
    expectError(Errc::unsupported, "não é um banco de dados",
                [&] { (void)on(2004y / 5 / 2).makeIfDue(); });
    EXPECT_TRUE(on(2004y / 5 / 2).damage());
    EXPECT_EQ(copies(),
              (std::vector<std::string>{nameOf(2004y / 5 / 1), "automacao-com-erros.txt"}));
}

TEST_F(Backups, ErrorsAreNotedUntilTheDatabaseIsSoundAgain) {
    const std::string sound = contentOf(file_);
    for (int day = 1; day <= 10; ++day)
        (void)on(2004y / 5 / day).makeIfDue();
    EXPECT_FALSE(on(2004y / 5 / 10).damage());
    damage(file_);
    EXPECT_THROW((void)on(2004y / 5 / 11).makeIfDue(), Error);
    const auto noted = on(2004y / 5 / 11).damage();
    ASSERT_TRUE(noted);
    EXPECT_THAT(*noted, testing::HasSubstr("tem erros"));
    // Even where today's copy is there the database is looked at.
    EXPECT_THROW((void)on(2004y / 5 / 10).makeIfDue(), Error);

    std::ofstream(file_, std::ios::binary) << sound;
    EXPECT_FALSE(on(2004y / 5 / 10).makeIfDue());
    EXPECT_FALSE(on(2004y / 5 / 10).damage());
}

TEST_F(Backups, WhatIsMetAtWorkIsNotedTillTheFileHasBeenChecked) {
    (void)on(2004y / 5 / 1).makeIfDue();
    on(2004y / 5 / 1).noteDamage("A página 7 não pôde ser lida.");
    EXPECT_EQ(on(2004y / 5 / 1).damage(), "A página 7 não pôde ser lida.");
    EXPECT_FALSE(on(2004y / 5 / 1).makeIfDue());
    EXPECT_FALSE(on(2004y / 5 / 1).damage());
}

TEST_F(Backups, AFileThatAnotherProgramCallsDamagedIsLookedAt) {
    (void)on(2004y / 5 / 1).makeIfDue();
    {
        std::fstream stream(file_, std::ios::binary | std::ios::in | std::ios::out);
        stream.seekp(std::streamoff{0xE00 + 2 * 5}); // user 5 met a damaged page
        stream.put(1).put(0);
    }
    EXPECT_THROW((void)on(2004y / 5 / 1).makeIfDue(), Error);
    EXPECT_TRUE(on(2004y / 5 / 1).damage());
}

TEST_F(Backups, ADamagedDatabaseNeverPushesOutAGoodCopy) {
    for (unsigned day = 1; day <= 10; ++day)
        (void)on(2004y / 5 / static_cast<int>(day)).makeIfDue();
    const auto before = on(2004y / 5 / 10).copies();
    const std::string good = contentOf(folder_.path() / "backup" / "automacao-2004-05-10.mdb");
    damage(file_);
    for (unsigned day = 11; day <= 13; ++day)
        expectError(Errc::corrupt, "tem erros e não foi copiado",
                    [&] { (void)on(2004y / 5 / static_cast<int>(day)).makeIfDue(); });
    EXPECT_EQ(on(2004y / 5 / 13).copies(), before);
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

TEST_F(Backups, APartThatIsBeingMadeStaysHoweverOldItLooks) {
    const auto part = folder_.path() / "backup" / "automacao-2004-04-01.parcial-outra-99-1.mdb";
    std::filesystem::create_directory(part.parent_path());
    File atWork(part, File::Mode::createNew);
    ASSERT_TRUE(atWork.tryLock(Disk::Lock::exclusive, 0x7FFF0000));
    std::filesystem::last_write_time(part, std::filesystem::file_time_type::clock::now() - 25h);
    (void)on(2004y / 5 / 1).makeIfDue();
    EXPECT_TRUE(std::filesystem::exists(part));
}

TEST_F(Backups, TwoPartsNeverHaveOneName) {
    const UnnamedFile one(file_);
    const UnnamedFile other(file_);
    EXPECT_NE(one.path(), other.path());
    std::string machine = sys::machineName();
    std::erase_if(machine, [](unsigned char c) { return std::isalnum(c) == 0; });
    EXPECT_THAT(one.path().string(), testing::HasSubstr(machine.substr(0, 32)));
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
