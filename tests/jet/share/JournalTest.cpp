// Journals that lie beside a file: those that are its own are used, all others are put aside.
#include "jet/share/Journal.h"

#include "jet/Check.h"
#include "jet/MemoryDisk.h"
#include "jet/Sentences.h"
#include "jet/ShopWork.h"
#include "jet/Waiting.h"
#include "jet/page/CommitPairs.h"
#include "jet/share/LockFile.h"
#include "support/Versions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>

using namespace jet;
using namespace std::string_literals;
using testing::HasSubstr;

namespace {

/// A shop's file whose station died while it wrote pages; and how it was before.
class LeftJournal : public testing::TestWithParam<Version> {
protected:
    LeftJournal() {
        MemoryDisk shop(emptyShop(GetParam()));
        ShopWork work(1);
        {
            Database file(kPath, on(shop));
            for (int i = 1; i <= 8; ++i)
                work.step(file, i);
            content = contentOf(file);
        }
        before = shop.image();
        MemoryDisk disk(before);
        ShopWork again = work;
        halfDone = ::halfDone(before, [&](Database& file) { again.step(file, 10); });
        {
            Database file(kPath, on(disk));
            work.step(file, 10);
            contentAfter = contentOf(file);
        }
        after = disk.image();
    }

    [[nodiscard]] const Format& format() const { return formatOf(GetParam()); }
    [[nodiscard]] std::size_t pairAt() const { return format().header.commitPairs.at + 2; }
    /// The pages that differ, header aside.
    [[nodiscard]] std::vector<std::size_t> changedPages(const DiskImage& a,
                                                        const DiskImage& b) const {
        std::vector<std::size_t> pages;
        const std::size_t size = format().pageSize;
        for (std::size_t at = size; at < std::min(a.at(kPath).size(), b.at(kPath).size());
             at += size)
            if (!std::equal(a.at(kPath).begin() + static_cast<std::ptrdiff_t>(at),
                            a.at(kPath).begin() + static_cast<std::ptrdiff_t>(at + size),
                            b.at(kPath).begin() + static_cast<std::ptrdiff_t>(at)))
                pages.push_back(at);
        return pages;
    }

    /// Opens; the journal was put aside, and the operator hears of it.
    void expectSetAside(const DiskImage& image, const std::string& reason, bool writable) {
        MemoryDisk disk(image);
        {
            Database file(kPath, on(disk));
            EXPECT_THAT(file.notice().value_or(""),
                        testing::AllOf(HasSubstr(reason), HasSubstr("-journal.old")));
            EXPECT_EQ(file.readOnlyReason().has_value(), !writable);
        }
        const DiskImage left = disk.image();
        EXPECT_EQ(left.at(kJournal + ".old"), image.at(kJournal));
        EXPECT_FALSE(left.contains(kJournal));
        EXPECT_EQ(left.at(kPath), image.at(kPath));
        EXPECT_EQ(Database(kPath, on(disk)).notice(), std::nullopt);
    }

    DiskImage before;
    DiskImage after;
    DiskImage halfDone;
    std::uint64_t content = 0;
    std::uint64_t contentAfter = 0;
};

INSTANTIATE_TEST_SUITE_P(, LeftJournal, bothVersions(), versionName);

TEST_P(LeftJournal, OfItsOwnFileUndoesTheTransaction) {
    ASSERT_FALSE(changedPages(halfDone, before).empty());
    MemoryDisk disk(halfDone);
    Database file(kPath, on(disk));
    EXPECT_EQ(contentOf(file), content);
    EXPECT_EQ(file.notice(), std::nullopt);
    EXPECT_EQ(file.readOnlyReason(), std::nullopt);
    EXPECT_EQ(changedPages(disk.image(), before).size(), 0U);
}

TEST_P(LeftJournal, IsUsedBeforeAFileIsOpenedForReading) {
    MemoryDisk disk(halfDone);
    Database::Options options = on(disk);
    options.readOnly = true;
    Database file(kPath, options);
    EXPECT_EQ(contentOf(file), content);
}

TEST_P(LeftJournal, WhereNobodyMayWriteTheFileIsNotOpened) {
    MemoryDisk disk(halfDone);
    disk.failing = [](const std::string& name) { return name.ends_with(".mdb"); };
    try {
        Database file(kPath, on(disk));
        FAIL();
    } catch (const Error& error) {
        EXPECT_EQ(error.code(), Errc::readOnly);
        EXPECT_THAT(error.what(), HasSubstr("Uma gravação foi interrompida"));
    }
}

TEST_P(LeftJournal, ThatAnotherStationIsUsingIsWaitedFor) {
    MemoryDisk disk(halfDone);
    File other("/loja/automacao.ldb", File::Mode::readWrite, disk);
    ASSERT_TRUE(other.tryLock(Disk::Lock::exclusive, LockFile::kWriting));
    bool waited = false;
    setWaitHook([&] {
        waited = true;
        other.unlock(LockFile::kWriting);
    });
    Database file(kPath, on(disk));
    setWaitHook({});
    EXPECT_TRUE(waited);
    EXPECT_EQ(contentOf(file), content);
}

TEST_P(LeftJournal, IsNotUsedBesideAForeignProgram) {
    const auto comes = [](MemoryDisk& disk) {
        File foreign("/loja/automacao.ldb", File::Mode::readWrite, disk);
        EXPECT_TRUE(foreign.tryLock(Disk::Lock::exclusive, LockFile::kUsers + 7));
        return foreign;
    };
    {
        MemoryDisk disk(halfDone);
        const File foreign = comes(disk);
        EXPECT_THAT(sentenceOf([&] { Database(kPath, on(disk)); }, Errc::locked),
                    HasSubstr("Feche-o lá e tente de novo"));
        EXPECT_EQ(disk.image().at(kPath), halfDone.at(kPath));
    }
    DiskImage finished = halfDone;
    finished[kPath] = after.at(kPath);
    MemoryDisk disk(finished);
    const File foreign = comes(disk);
    Database file(kPath, on(disk));
    EXPECT_EQ(contentOf(file), contentAfter);
    EXPECT_EQ(disk.image().at(kJournal), finished.at(kJournal)) << "nor needed";
}

TEST_P(LeftJournal, ThatFindsNoNameToBeSetAsideUnderIsLeftThere) {
    DiskImage image = halfDone;
    image[kPath] = before.at(kPath);
    store<std::uint16_t>(image[kPath].data() + pairAt(), 0x0155);
    for (int i = 1; i <= 1000; ++i)
        image[kJournal + ".old" + (i == 1 ? "" : std::to_string(i))] = {};
    MemoryDisk disk(image);
    Database file(kPath, on(disk));
    EXPECT_THAT(file.readOnlyReason().value_or(""), HasSubstr("já há 1000 guardados"));
    EXPECT_EQ(contentOf(file), content);
    EXPECT_EQ(disk.image().at(kJournal), image.at(kJournal));
}

TEST_P(LeftJournal, BesideACopyPutBackIsSetAside) {
    DiskImage image = halfDone;
    image[kPath] = before.at(kPath);
    store<std::uint16_t>(image[kPath].data() + pairAt(), 0x0155);
    expectSetAside(image, "substituído por uma cópia", true);
}

TEST_P(LeftJournal, OfAnotherFileIsSetAside) {
    DiskImage image = halfDone;
    MemoryDisk otherShop(emptyShop(GetParam()));
    {
        Database file(kPath, on(otherShop));
        ShopWork work(99);
        for (int i = 1; i < 20; ++i)
            work.step(file, i);
    }
    image[kPath] = otherShop.image().at(kPath);
    expectSetAside(image, "alterado por outro programa", true);
    image[kPath][0x30] ^= std::byte{0x10}; // a field of the header that has nothing to do with it
    expectSetAside(image, "é de outro arquivo", true);
}

TEST_P(LeftJournal, OfAFileThatAnotherHasChangedSinceIsSetAsideAndTheFileOnlyRead) {
    // A page of the transaction, in neither its old nor its new state.
    DiskImage image = halfDone;
    image[kPath][changedPages(before, after).front() + 900] ^= std::byte{0x55};
    expectSetAside(image, "alterado por outro programa", false);
    // Another user has written since.
    image = halfDone;
    store<std::uint16_t>(image[kPath].data() + pairAt() + 40, 0x0177);
    expectSetAside(image, "alterado por outro programa", false);
    // The file has grown since.
    image = halfDone;
    image[kPath].resize(image[kPath].size() + 40 * format().pageSize);
    expectSetAside(image, "alterado por outro programa", false);
}

TEST_P(LeftJournal, CutOffIsSetAsideOnlyIfItWasNeeded) {
    DiskImage image = halfDone;
    image[kJournal].resize(image[kJournal].size() / 2);
    expectSetAside(image, "incompleto", false);
    image[kPath] = before.at(kPath);
    MemoryDisk disk(image);
    Database file(kPath, on(disk));
    EXPECT_EQ(file.notice(), std::nullopt);
    EXPECT_EQ(file.readOnlyReason(), std::nullopt);
    EXPECT_EQ(contentOf(file), content);
}

// As older programs left them: their sums, too, were others.
TEST_P(LeftJournal, OfAnotherVersionIsLeftForItIfItIsNeeded) {
    DiskImage image = halfDone;
    image[kJournal].at(7) = std::byte{'1'};
    for (std::size_t at = 56; at < 64; ++at)
        image[kJournal].at(at) ^= std::byte{0xFF};
    MemoryDisk disk(image);
    try {
        Database file(kPath, on(disk));
        FAIL();
    } catch (const Error& error) {
        EXPECT_EQ(error.code(), Errc::readOnly);
        EXPECT_THAT(error.what(), HasSubstr("O registro dela é de outra versão"));
    }
    EXPECT_EQ(disk.image().at(kPath), image.at(kPath));
    EXPECT_EQ(disk.image().at(kJournal), image.at(kJournal));
    // Before its transaction changed anything.
    image[kPath] = before.at(kPath);
    expectSetAside(image, "é de outra versão", true);
}

TEST_P(LeftJournal, OfAFinishedTransactionDoesNothing) {
    DiskImage image = halfDone;
    image[kPath] = after.at(kPath);
    MemoryDisk disk(image);
    Database file(kPath, on(disk));
    EXPECT_EQ(file.notice(), std::nullopt);
    EXPECT_EQ(contentOf(file), contentAfter);
}

TEST_P(LeftJournal, SetAsideTwiceHasTwoNames) {
    DiskImage image = halfDone;
    image[kPath] = before.at(kPath);
    store<std::uint16_t>(image[kPath].data() + pairAt(), 0x0155);
    image[kJournal + ".old"] = Bytes(3);
    MemoryDisk disk(image);
    Database file(kPath, on(disk));
    EXPECT_THAT(file.notice().value_or(""), HasSubstr("-journal.old2"));
    EXPECT_EQ(disk.image().at(kJournal + ".old"), Bytes(3));
}

TEST_P(LeftJournal, DamagedInAnyByteNeverSpoilsTheFile) {
    for (std::size_t at = 0; at < halfDone.at(kJournal).size(); at += 37) {
        DiskImage image = halfDone;
        image[kJournal][at] ^= std::byte{0x20};
        MemoryDisk disk(image);
        Database file(kPath, on(disk));
        const DiskImage left = disk.image();
        if (file.notice() || file.readOnlyReason())
            EXPECT_EQ(left.at(kPath), image.at(kPath)) << at;
        else
            EXPECT_EQ(contentOf(file), content) << at;
    }
}

TEST_P(LeftJournal, ThatDoesntKnowEveryPageItWouldCutOffIsSetAside) {
    MemoryDisk disk(halfDone);
    JournalHeader header = Journal::Reader(kJournal, format(), disk).header().value();
    header.fileBefore -= 2;
    header.changes = 0;
    ASSERT_TRUE(disk.remove(kJournal) == 0);
    const File database(kPath, File::Mode::read, disk);
    Journal(database, format()).write(header, {header.fileBefore, header.fileAfter, {}, {}});
    expectSetAside(disk.image(), "incompleto", false);
}

TEST_P(LeftJournal, IsToldByACheckThatOnlyReads) {
    MemoryDisk disk(halfDone);
    const Report report = check(kPath, disk);
    EXPECT_FALSE(report.sound());
    ASSERT_FALSE(report.findings.empty());
    EXPECT_THAT(
        report.findings.front().sentence,
        testing::AllOf(HasSubstr("o registro que a desfaz está ao lado"), HasSubstr("usuário 1")));
    EXPECT_EQ(disk.image(), halfDone);
}

TEST(Journals, GrowAndShrinkWithTheirTransactions) {
    MemoryDisk disk(emptyShop(Version::jet4));
    Database file(kPath, on(disk));
    Table& table = file.table("Cheques");
    Row row(7);
    row[1] = std::int64_t{1};
    row[2] = "1"s;
    row[6] = false;
    file.begin();
    for (int i = 0; i < 20000; ++i)
        table.insert(row);
    file.commit();
    const auto journal = [&] {
        const DiskImage image = disk.image();
        return image.contains(kJournal) ? image.at(kJournal).size() : 0;
    };
    const std::size_t filled = journal();
    EXPECT_LT(filled, std::size_t{1} << 20); // all pages but a few were new
    std::vector<RowId> ids;
    RowCursor scan = table.scan();
    for (bool there = scan.first(); there; there = scan.next())
        ids.push_back(scan.id());
    const std::size_t recorded = disk.record().size();
    file.begin();
    for (const RowId id : ids)
        table.erase(id);
    file.commit();
    std::uint64_t end = 0;
    for (std::size_t i = recorded; i < disk.record().size(); ++i) {
        const MemoryDisk::Operation& operation = disk.record()[i];
        if (operation.kind != MemoryDisk::Operation::Kind::write || operation.bytes.size() < 100000)
            continue;
        EXPECT_EQ(operation.offset, end); // from its beginning to its end
        end = operation.offset + operation.bytes.size();
    }
    EXPECT_GT(end, std::size_t{1} << 20);
    EXPECT_LT(end, disk.image().at(kPath).size() * 11 / 10);
    EXPECT_EQ(journal(), 0U);
}

TEST(Journals, ThatFillTheDiskGiveItsRoomBack) {
    MemoryDisk disk(emptyShop(Version::jet4));
    Database file(kPath, on(disk));
    ShopWork work(1);
    work.step(file, 1);
    const std::uint64_t content = contentOf(file);
    file.begin();
    Row row(7);
    row[5] = std::string(20000, 'x');
    row[6] = false;
    for (int i = 0; i < 30; ++i)
        file.table("Cheques").insert(row);
    disk.failWrites = kJournal;
    try {
        file.commit();
        FAIL();
    } catch (const Error& error) {
        EXPECT_EQ(error.code(), Errc::full);
    }
    EXPECT_EQ(disk.image().at(kJournal).size(), 0U);
    disk.failWrites.clear();
    EXPECT_TRUE(file.inTransaction());
    file.rollback();
    EXPECT_EQ(contentOf(file), content);
    work.step(file, 2);
    EXPECT_NE(contentOf(file), content);
}

} // namespace
