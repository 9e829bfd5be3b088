// What stands in the lock file, and who has a place there.
#include "jet/share/LockFile.h"

#include "jet/Error.h"
#include "jet/LockSlots.h"
#include "jet/Sentences.h"
#include "jet/share/Presence.h"
#include "jet/system/System.h"

#include <gmock/gmock.h>

using namespace jet;
using namespace std::string_literals;
using testing::HasSubstr;

namespace {

class LockFiles : public LockSlots {
protected:
    void write(std::size_t user, const std::string& machine, const std::string& account) {
        std::string text(LockFile::kSlot, ' ');
        text.replace(0, machine.size() + 1, machine + '\0');
        text.replace(LockFile::kName, account.size() + 1, account + '\0');
        File(kLock, File::Mode::readWrite, disk)
            .write((user - 1) * LockFile::kSlot, std::as_bytes(std::span(text)));
    }
};

TEST_F(LockFiles, NameTheMachineAndTheAccountOfEachUser) {
    const std::string machine = sys::machineName().substr(0, LockFile::kName - 1);
    ASSERT_FALSE(machine.empty());
    const Database first(kPath, on(disk));
    const Database second(kPath, on(disk));
    for (const std::size_t user : {1U, 2U})
        EXPECT_EQ(slot(user), field(machine) + field("Admin"));
    LockFile lock(kPath, disk);
    lock.open();
    EXPECT_EQ(lock.nameOf(2), machine);
}

TEST_F(LockFiles, TellWhoIsThere) {
    const Database file(kPath, on(disk));
    LockFile lock(kPath, disk);
    lock.open();
    const struct {
        std::string machine, account, shown;
    } cases[] = {
        {"CAIXA2",         "Admin", "CAIXA2"        },
        {"CAIXA2",         "Maria", "CAIXA2 (Maria)"},
        {"CAIXA2  ",       "",      "CAIXA2"        },
        {"CAIXA\xE7\x01X", "Admin", "CAIXA??X"      },
        {"",               "Maria", "usuário 3"    },
    };
    for (const auto& [machine, account, shown] : cases) {
        write(3, machine, account);
        EXPECT_EQ(lock.nameOf(3), shown);
    }
    EXPECT_EQ(lock.nameOf(200), "usuário 200") << "behind the end of the file";
}

TEST_F(LockFiles, HaveRoomFor255Users) {
    File lock(kLock, File::Mode::createNew, disk);
    ASSERT_TRUE(
        lock.tryLock(Disk::Lock::exclusive, LockFile::kUsers + 1, LockFile::kMostUsers - 1));
    {
        const Database last(kPath, on(disk));
        EXPECT_TRUE(lock.isHeld(LockFile::kUsers + LockFile::kMostUsers));
        EXPECT_THAT(sentenceOf([&] { Database(kPath, on(disk)); }, Errc::locked),
                    HasSubstr("255 estações"));
    }
    lock.unlock(LockFile::kUsers + 77);
    const Database file(kPath, on(disk));
    EXPECT_TRUE(lock.isHeld(LockFile::kUsers + 77)) << "the lowest that is free";
    EXPECT_TRUE(lock.isHeld(LockFile::kMarks + 77));
}

TEST_F(LockFiles, PassOverANumberWhoseMarkIsStillHeld) {
    File lock(kLock, File::Mode::createNew, disk);
    ASSERT_TRUE(lock.tryLock(Disk::Lock::exclusive, LockFile::kMarks + 1));
    const Database file(kPath, on(disk));
    EXPECT_TRUE(lock.isHeld(LockFile::kUsers + 2));
    EXPECT_FALSE(lock.isHeld(LockFile::kUsers + 1));
}

TEST_F(LockFiles, NameThreeOfManyWhoAreInTheWay) {
    File database(kPath, File::Mode::readWrite, disk);
    Presence presence(database, formatOf(Version::jet4));
    EXPECT_EQ(presence.others(), "") << "before it is asked at all";
    presence.open();
    EXPECT_EQ(presence.others(), "");
    File lock(kLock, File::Mode::readWrite, disk);
    const auto comes = [&](unsigned user) {
        ASSERT_TRUE(lock.tryLock(Disk::Lock::exclusive, LockFile::kUsers + user));
        write(user, "CAIXA" + std::to_string(user), user == 2 ? "Maria" : "Admin");
    };
    comes(2);
    comes(4);
    EXPECT_EQ(presence.others(), ": CAIXA2 (Maria), CAIXA4");
    comes(5);
    EXPECT_EQ(presence.others(), ": CAIXA2 (Maria), CAIXA4, CAIXA5");
    comes(7);
    comes(255);
    EXPECT_EQ(presence.others(), ": CAIXA2 (Maria), CAIXA4, CAIXA5 e mais 2");
}

} // namespace
