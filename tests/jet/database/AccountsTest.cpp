// Several accounts of one machine in a shop's file: what one makes beside it serves the others,
// whatever they let others do with their own files.
#include "jet/Account.h"
#include "jet/Backup.h"
#include "jet/Check.h"
#include "jet/Compact.h"
#include "jet/Database.h"
#include "jet/MemoryDisk.h"
#include "jet/Notes.h"
#include "jet/Sentences.h"
#include "jet/database/DatabasePager.h"
#include "jet/share/Journal.h"
#include "support/TemporaryFolder.h"
#include "support/Versions.h"

#include <gmock/gmock.h>

#include <csignal>
#include <sys/resource.h>

using namespace jet;
using namespace std::string_literals;
using testing::HasSubstr;

namespace fs = std::filesystem;

namespace {

constexpr uid_t kMaria = 61001;
constexpr uid_t kJose = 61002;
constexpr gid_t kShop = 61000;
constexpr mode_t kSticky = 01000;

void noteIn(const fs::path& path, const std::string& text) {
    Database file(path);
    note(file, text);
}

std::int32_t notesIn(const fs::path& path) {
    Database file(path);
    return static_cast<std::int32_t>(file.table("notas").rowCount());
}

struct stat whatIs(const fs::path& path) {
    struct stat info {};
    EXPECT_EQ(::lstat(path.c_str(), &info), 0) << path;
    return info;
}

/// A shop's file of Maria's, in a folder and a group that Jose belongs to as well.
class Accounts : public testing::TestWithParam<Version> {
protected:
    static constexpr std::int32_t kNotes = 400;

    void SetUp() override {
        if (!Account::canBeHad())
            GTEST_SKIP() << "only root can work as other accounts";
        Database::create(path, GetParam());
        {
            Database file(path);
            Table& table = file.createTable(notes());
            for (int i = 0; i < kNotes; ++i)
                table.insert(Row{std::string(200, 'n')});
        }
        give(0660, 0770);
    }
    void give(mode_t file, mode_t where) const {
        ASSERT_EQ(::chown(path.c_str(), kMaria, kShop), 0);
        ASSERT_EQ(::chmod(path.c_str(), file), 0);
        ASSERT_EQ(::chown(folder.path().c_str(), kMaria, kShop), 0);
        ASSERT_EQ(::chmod(folder.path().c_str(), where), 0);
    }
    void expectRights(const fs::path& of, uid_t owner, mode_t mode) const {
        const struct stat info = whatIs(of);
        EXPECT_EQ(info.st_uid, owner) << of;
        EXPECT_EQ(info.st_gid, kShop) << of;
        EXPECT_EQ(info.st_mode & 07777U, mode) << of;
    }
    /// Dies at the first byte that would go into the file's later pages: some have been written.
    [[nodiscard]] bool diesInASave(Account& who) const {
        const bool done = who.does([&] {
            Database file(path);
            file.begin();
            RowCursor row = file.table("notas").scan();
            const Assignment change[] = {
                {0, "mudada"s}
            };
            std::vector<RowId> ids;
            for (bool there = row.first(); there; there = row.next())
                ids.push_back(row.id());
            file.table("notas").update(ids.front(), change);
            file.table("notas").update(ids.back(), change);
            const auto end =
                std::uint64_t{number(ids.back().page)} * DatabasePager::of(file).format().pageSize;
            const struct rlimit most { end, end };
            if (::setrlimit(RLIMIT_FSIZE, &most) != 0)
                throw std::runtime_error("no limit");
            file.commit();
        });
        return !done && who.died() == SIGXFSZ;
    }

    TemporaryFolder folder;
    fs::path path = folder / "loja.mdb";
    fs::path lock = folder / "loja.ldb";
    fs::path journal = folder / "loja.mdb-journal";
    Account maria{kMaria, kMaria, kShop};
    Account jose{kJose, kJose, kShop};
};

INSTANTIATE_TEST_SUITE_P(, Accounts, bothVersions(), versionName);

TEST_P(Accounts, WhatLiesBesideHasTheDatabasesRights) {
    for (const mode_t mode : {0660U, 0666U}) {
        give(mode, 0770);
        EXPECT_TRUE(jose.does([&] {
            Database file(path);
            note(file, "de José");
            expectRights(lock, kJose, mode);
            expectRights(journal, kJose, mode);
        }));
    }
    give(0600, 0700);
    Database file(path); // the technician's
    note(file, "do técnico");
    expectRights(lock, kMaria, 0600);
    expectRights(journal, kMaria, 0600);
    EXPECT_TRUE(maria.does([&] { noteIn(path, "de Maria"); }));
}

TEST_P(Accounts, WorkOneAfterTheOtherAndAtTheSameTime) {
    for (Account* who : {&maria, &jose, &maria})
        EXPECT_TRUE(who->does([&] { noteIn(path, "minha"); }));
    maria.start([&] {
        Database file(path);
        note(file, "antes");
        maria.pause();
        note(file, "depois");
    });
    EXPECT_TRUE(jose.does([&] { noteIn(path, "entretanto"); }));
    EXPECT_TRUE(maria.finish());
    EXPECT_EQ(notesIn(path), kNotes + 6);
    EXPECT_TRUE(check(path).clean());
}

TEST_P(Accounts, AStationThatDiesInASaveLocksNobodyOut) {
    for (const mode_t where : {0770U, 0770U | kSticky}) {
        give(0660, where);
        for (auto [dead, next] : {
                 std::pair{&jose,  &maria},
                 std::pair{&maria, &jose }
        }) {
            const std::int32_t before = notesIn(path);
            ASSERT_TRUE(diesInASave(*dead));
            ASSERT_TRUE(fs::exists(journal));
            EXPECT_FALSE(check(path).sound());
            EXPECT_TRUE(next->does([&] { noteIn(path, "depois"); }));
            EXPECT_EQ(notesIn(path), before + 1);
            EXPECT_TRUE(check(path).clean());
            EXPECT_TRUE(dead->does([&] { noteIn(path, "de volta"); }));
        }
    }
}

TEST_P(Accounts, TheTechniciansDeathInASaveLocksNobodyOut) {
    give(0600, 0700);
    Account root(0, 0, 0);
    ASSERT_TRUE(diesInASave(root));
    EXPECT_TRUE(maria.does([&] { noteIn(path, "depois"); }));
    EXPECT_TRUE(check(path).clean());
}

TEST_P(Accounts, WhoMayOnlyReadKeepsTheOwnerFromNothing) {
    for (const mode_t mode : {0640U, 0644U}) {
        give(mode, 0770);
        EXPECT_TRUE(jose.does([&] {
            const Database reader(path);
            EXPECT_TRUE(whatIs(lock).st_mode & 060);
        }));
        jose.start([&] {
            const Database reader(path);
            jose.pause();
        });
        EXPECT_TRUE(maria.does([&] { noteIn(path, "da dona"); }));
        EXPECT_TRUE(jose.finish());
    }
}

TEST_P(Accounts, ACopyPutBackStaysTheOwnersOrIsRefusedBeforehand) {
    const fs::path copy = folder / "copia.mdb";
    fs::copy_file(path, copy);
    ASSERT_EQ(::chmod(copy.c_str(), 0644), 0);
    EXPECT_TRUE(maria.does([&] { noteIn(path, "depois da cópia"); }));
    const ino_t before = whatIs(path).st_ino;

    EXPECT_TRUE(jose.does([&] {
        EXPECT_THAT(sentenceOf([&] { static_cast<void>(restore(copy, path)); }, Errc::readOnly),
                    HasSubstr("ficariam sem acesso"));
    }));
    EXPECT_EQ(whatIs(path).st_ino, before);
    expectRights(path, kMaria, 0660);
    for (const auto& entry : fs::directory_iterator(folder.path()))
        EXPECT_TRUE(entry.path() == path || entry.path() == copy) << entry.path();

    EXPECT_TRUE(maria.does([&] {
        EXPECT_TRUE(restore(copy, path));
        expectRights(path, kMaria, 0660);
    }));
    const auto kept = restore(copy, path); // by the technician
    ASSERT_TRUE(kept);
    expectRights(path, kMaria, 0660);
    expectRights(*kept, kMaria, 0660);
    EXPECT_TRUE(jose.does([&] { noteIn(path, "de José"); }));
    EXPECT_EQ(notesIn(path), kNotes + 1);
}

TEST_P(Accounts, ACompactedCopyIsNoMoreOpenThanTheFile) {
    give(0600, 0700);
    static_cast<void>(compact(path, folder / "menor.mdb"));
    expectRights(folder / "menor.mdb", kMaria, 0600);
}

/// On a disk in memory, every call of which can be made to fail.
class AccountsInMemory : public testing::TestWithParam<Version> {
protected:
    [[nodiscard]] static Disk::Rights of(std::uint32_t owner, std::uint32_t mode) {
        return {owner, kShop, mode};
    }

    const DiskImage shop = diskOfNotes(GetParam());
    const std::string lock = "/loja/automacao.ldb";
    const std::string journal = kPath + "-journal"s;
};

INSTANTIATE_TEST_SUITE_P(, AccountsInMemory, bothVersions(), versionName);

TEST_P(AccountsInMemory, WhateverFailsTheJournalIsNeverMoreOpenThanTheDatabase) {
    bool failed = true;
    for (std::uint64_t call = 1; failed; ++call) {
        MemoryDisk disk(shop);
        disk.rightsOf(kPath) = of(kMaria, 0660);
        disk.account = kJose;
        disk.group = call % 2 == 0 ? kShop : kJose;
        disk.rightsOf(kPath).mode |= call % 2 == 0 ? 0U : 06U;
        disk.failFrom(call, call % 3 == 0, EPERM);
        try {
            Database file(kPath, on(disk));
            note(file, "uma");
        } catch (const Error& error) {
            EXPECT_STRNE(error.what(), "");
        }
        failed = disk.calls() >= call;
        disk.failNoMore();
        if (disk.exists(journal)) {
            EXPECT_EQ(disk.rightsOf(journal).mode & ~(disk.rightsOf(kPath).mode | 0600U), 0U);
        }
        Database file(kPath, on(disk));
        EXPECT_EQ(file.readOnlyReason(), std::nullopt);
        note(file, "outra");
    }
}

TEST_P(AccountsInMemory, AGroupThatCantBeGivenGetsWhatEverybodyHas) {
    MemoryDisk disk(shop);
    disk.rightsOf(kPath) = of(kMaria, 0666);
    disk.account = kJose;
    disk.group = kJose;
    {
        Database file(kPath, on(disk));
        note(file, "uma");
        EXPECT_EQ(disk.rightsOf(journal), (Disk::Rights{kJose, kJose, 0666}));
    }
    disk.rightsOf(kPath).mode = 0662; // read and written by everybody, but for the right to read
    disk.rightsOf(kPath).owner = kJose;
    Database file(kPath, on(disk));
    note(file, "outra");
    EXPECT_EQ(disk.rightsOf(journal).mode & 077U, 022U);
}

TEST_P(AccountsInMemory, AnEmptyJournalThatAnotherAccountLeftIsSetAside) {
    MemoryDisk disk(shop);
    disk.rightsOf(kPath) = of(kMaria, 0660);
    disk.put(journal, MemoryDisk::Kind::file);
    disk.rightsOf(journal) = of(kMaria, 0640);
    disk.account = kJose;
    disk.group = kShop;
    {
        Database file(kPath, on(disk));
        EXPECT_THAT(file.notice().value_or(""), HasSubstr("-journal.old"));
        note(file, "uma");
    }
    disk.put(journal, MemoryDisk::Kind::file);
    disk.rightsOf(journal) = of(kMaria, 0640);
    disk.eachItsOwn = true;
    Database file(kPath, on(disk));
    EXPECT_THAT(file.readOnlyReason().value_or(""), HasSubstr("nem posto de lado"));
    EXPECT_EQ(file.table("notas").rowCount(), 2);
}

} // namespace
