// What the disk of Windows does where other systems do something else.
#include "jet/Database.h"
#include "jet/Notes.h"
#include "jet/RealFolder.h"
#include "jet/Sentences.h"
#include "jet/disk/File.h"
#include "jet/share/LockFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <fstream>
#include <thread>
#include <vector>
#include <windows.h>

using namespace jet;
namespace fs = std::filesystem;
using Mode = Disk::Mode;
using testing::HasSubstr;

namespace {

class WindowsDisks : public RealFolder {
protected:
    std::unique_ptr<Disk::Handle> opened(const fs::path& path, Mode mode) {
        int error = 0;
        auto handle = disk.open(path, mode, error);
        EXPECT_EQ(error, 0);
        return handle;
    }
};

/// A file as another program has it.
class Theirs {
public:
    Theirs(const fs::path& path, DWORD access, DWORD share)
        : handle_(::CreateFileW(path.c_str(), access, share, nullptr, OPEN_EXISTING, 0, nullptr)) {}
    Theirs(const Theirs&) = delete;
    Theirs& operator=(const Theirs&) = delete;
    ~Theirs() { close(); }
    [[nodiscard]] bool isOpen() const { return handle_ != INVALID_HANDLE_VALUE; }
    void close() {
        if (isOpen())
            ::CloseHandle(std::exchange(handle_, INVALID_HANDLE_VALUE));
    }

private:
    HANDLE handle_;
};
constexpr DWORD kReadWrite = GENERIC_READ | GENERIC_WRITE;
constexpr DWORD kShareWriting = FILE_SHARE_READ | FILE_SHARE_WRITE;

TEST_F(WindowsDisks, OpenOnlyWhatIsAFileOfThatName) {
    const fs::path file = made("arquivo");
    EXPECT_EQ(openError(folder / "nenhum"), ENOENT);
    EXPECT_EQ(openError(folder / "sem" / "nenhum"), ENOENT);
    EXPECT_EQ(openError(folder.path()), EISDIR);
    EXPECT_EQ(openError(folder.path(), Mode::readBeside), EISDIR);
    EXPECT_EQ(openError(file, Mode::createNew), EEXIST);
    EXPECT_EQ(openError("NUL"), EISDIR);
}

TEST_F(WindowsDisks, TakeNamesOfAnyLanguageAndLength) {
    fs::path deep = folder.path();
    const std::string part = "pasta de serviço número ";
    for (int i = 0; i < 12; ++i) {
        deep /= Disk::pathOf(part + std::to_string(i));
        ASSERT_EQ(disk.makeFolder(deep), 1);
    }
    ASSERT_GT(deep.native().size(), std::size_t{MAX_PATH});
    const std::string name = "ações €.mdb";
    const fs::path path = deep / Disk::pathOf(name);
    {
        File file(path, Mode::createNew);
        file.write(0, Bytes(5));
    }
    std::vector<Disk::Entry> entries;
    ASSERT_EQ(disk.list(deep, entries), 0);
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].name, name);
    EXPECT_EQ(entries[0].size, 5U);
    EXPECT_TRUE(disk.exists(path));
    EXPECT_EQ(disk.rename(path, deep / "b"), 0);
    EXPECT_EQ(disk.remove(deep / "b"), 0);
    for (; deep != folder.path(); deep = deep.parent_path())
        ASSERT_NE(::RemoveDirectoryW((L"\\\\?\\" + deep.native()).c_str()), 0);
}

TEST_F(WindowsDisks, ReplaceAFileThatMayOnlyBeReadAndRemoveOne) {
    const fs::path file = made("arquivo", "velho");
    ASSERT_NE(::SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_READONLY), 0);
    // A system that lets its administrator write all the same has none to refuse.
    if (!Theirs(file, kReadWrite, kShareWriting).isOpen()) {
        EXPECT_EQ(openError(file, Mode::readWrite), EACCES);
    }
    const fs::path other = made("outro", "novo");
    EXPECT_EQ(disk.copyRights(file, other), 0);
    EXPECT_NE(::GetFileAttributesW(other.c_str()) & FILE_ATTRIBUTE_READONLY, 0U);
    EXPECT_EQ(disk.remove(other), 0);
    EXPECT_EQ(disk.remove(file), 0);
}

TEST_F(WindowsDisks, TellTheirOwnLocksFromThoseOfOthers) {
    const fs::path path = made("arquivo");
    const auto mine = opened(path, Mode::writeBeside);
    const auto other = opened(path, Mode::writeBeside);
    using enum Disk::Lock;
    EXPECT_EQ(mine->lock(exclusive, 1000, 1), 1);
    EXPECT_EQ(mine->lock(exclusive, 1000, 1), 1) << "once more";
    EXPECT_EQ(other->lock(exclusive, 1000, 1), 0);
    EXPECT_EQ(mine->firstHeld(exclusive, 900, 200), 1100);
    EXPECT_EQ(other->firstHeld(exclusive, 900, 200), 1000);
    EXPECT_EQ(other->firstHeld(shared, 900, 200), 1000);
    EXPECT_EQ(mine->lock(shared, 1000, 1), 1) << "otherwise than before";
    EXPECT_EQ(other->firstHeld(shared, 900, 200), 1100);
    EXPECT_EQ(other->firstHeld(exclusive, 900, 200), 1000);
    EXPECT_EQ(other->lock(shared, 1000, 1), 1);
    EXPECT_EQ(mine->lock(exclusive, 1000, 1), 0);
    EXPECT_EQ(other->firstHeld(exclusive, 900, 200), 1000) << "what was had before is kept";
    EXPECT_EQ(mine->lock(none, 1000, 1), 1);
    EXPECT_EQ(other->lock(exclusive, 1050, 3), 1);
    EXPECT_EQ(mine->firstHeld(shared, 1001, 200), 1050);
    EXPECT_EQ(mine->lock(exclusive, 1052, 4), 0);
    EXPECT_EQ(other->lock(none, 1050, 1), -EINVAL) << "a part of what was taken in one go";
}

TEST_F(WindowsDisks, LetAnotherProgramTakeADatabaseForWritingUntilWeWrite) {
    const fs::path path = folder / "loja.mdb";
    Database::create(path, Version::jet4);
    Database file(path);
    file.createTable(notes());
    note(file, "primeira");
    // We aren't in the way of who lets nobody else write: we have it open for reading.
    Theirs alone(path, kReadWrite, FILE_SHARE_READ);
    ASSERT_TRUE(alone.isOpen());
    EXPECT_EQ(file.table("notas").rowCount(), 1);
    EXPECT_THAT(sentenceOf([&] { note(file, "segunda"); }, Errc::locked),
                HasSubstr("aberto em outro programa"));
    alone.close();
    Theirs together(path, kReadWrite, kShareWriting | FILE_SHARE_DELETE);
    ASSERT_TRUE(together.isOpen());
    sentenceOf([&] { file.flush(); }, Errc::locked);
    together.close();
    file.flush();
    EXPECT_GE(file.table("notas").rowCount(), 2);
}

TEST_F(WindowsDisks, ClaimAFileForWriting) {
    const fs::path path = made("loja.mdb", "abc");
    File file(path, Mode::readWrite);
    {
        const File::Claim claim(file);
        EXPECT_FALSE(Theirs(path, GENERIC_WRITE, kShareWriting).isOpen());
        EXPECT_TRUE(Theirs(path, GENERIC_READ, kShareWriting | FILE_SHARE_DELETE).isOpen());
        EXPECT_NE(opened(path, Mode::readWrite), nullptr) << "another of us comes in meanwhile";
        file.write(0, Bytes(2, std::byte{'x'}));
        file.sync();
        EXPECT_FALSE(Theirs(path, GENERIC_WRITE, kShareWriting).isOpen());
    }
    EXPECT_TRUE(Theirs(path, GENERIC_WRITE, kShareWriting | FILE_SHARE_DELETE).isOpen());
    std::ifstream in(path);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), "xxc");
}

/// Knows whether it is still what it was when it goes.
struct OfAThread {
    std::vector<int> held;
    long long mark = 0x1122334455667788;
    ~OfAThread() { broken += mark != 0x1122334455667788 ? 1 : 0; }
    static inline std::atomic<int> broken = 0;
};

TEST(WindowsThreads, GiveBackWhatIsTheirOwnBeforeItsMemory) {
    for (int round = 0; round < 100; ++round) {
        std::vector<std::thread> threads;
        for (std::size_t size = 100; size < 106; ++size)
            threads.emplace_back([size] {
                thread_local OfAThread own;
                own.held.resize(size);
            });
        for (std::thread& thread : threads)
            thread.join();
    }
    EXPECT_EQ(OfAThread::broken, 0);
}

TEST_F(WindowsDisks, SayThatAnotherHasAFileToHimself) {
    const fs::path path = made("loja.mdb");
    const Theirs alone(path, GENERIC_READ, 0);
    EXPECT_THAT(sentenceOf([&] { const File file(path, Mode::readWrite); }, Errc::locked),
                HasSubstr("está em uso"));
}

} // namespace
