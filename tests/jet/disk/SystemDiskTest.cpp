// What the system's disk does with names, and what the operator is told of what can't be done.
#include "jet/MemoryDisk.h"
#include "jet/RealFolder.h"
#include "jet/Sentences.h"
#include "jet/disk/File.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

using namespace jet;
namespace fs = std::filesystem;

namespace {

class SystemDisks : public RealFolder {};

TEST_F(SystemDisks, NameAndRemoveWhatIsThere) {
    const fs::path file = made("arquivo", "conteúdo");
    EXPECT_EQ(disk.link(file, folder / "outro"), 0);
    EXPECT_EQ(disk.link(file, folder / "outro"), -EEXIST);
    EXPECT_EQ(disk.rename(folder / "outro", folder / "novo"), 0);
    EXPECT_EQ(disk.rename(folder / "outro", folder / "novo"), -ENOENT);
    EXPECT_EQ(disk.remove(folder / "novo"), 0);
    EXPECT_EQ(disk.remove(folder / "novo"), -ENOENT);
    EXPECT_EQ(disk.makeFolder(folder / "pasta"), 1);
    EXPECT_EQ(disk.makeFolder(folder / "pasta"), 0) << "is there already";
    EXPECT_EQ(disk.makeFolder(file), -EEXIST) << "but is none";
    EXPECT_EQ(disk.makeFolder(folder / "sem" / "nenhuma"), -ENOENT);
    std::vector<Disk::Entry> entries;
    EXPECT_EQ(disk.list(folder.path(), entries), 0);
    std::ranges::sort(entries, {}, &Disk::Entry::name);
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_TRUE(entries[0].name == "arquivo" && entries[0].isFile && entries[0].size == 9);
    EXPECT_TRUE(entries[1].name == "pasta" && !entries[1].isFile);
    EXPECT_EQ(disk.list(folder / "nenhuma", entries), -ENOENT);
    EXPECT_EQ(disk.syncFolderOf(file), 0);
    EXPECT_EQ(disk.syncFolderOf("nome"), 0) << "in the folder that the program is in";
    EXPECT_EQ(disk.syncFolderOf(folder / "nenhuma" / "arquivo"), -ENOENT);
}

TEST(DiskErrors, AreToldByWhatTheOperatorCanDo) {
    const struct {
        int error;
        Errc code, folderCode;
        const char* words;
    } cases[] = {
        {ENOENT,  Errc::notFound, Errc::io,       "o arquivo não existe"   },
        {ENOTDIR, Errc::notFound, Errc::io,       "o arquivo não existe"   },
        {EEXIST,  Errc::exists,   Errc::io,       "o arquivo já existe"    },
        {ENOSPC,  Errc::full,     Errc::full,     "libere espaço"          },
        {EBUSY,   Errc::locked,   Errc::io,       "está em uso"            },
        {EFBIG,   Errc::full,     Errc::io,       "libere espaço"          },
        {EACCES,  Errc::readOnly, Errc::readOnly, "sem permissão"          },
        {EPERM,   Errc::readOnly, Errc::readOnly, "sem permissão"          },
        {EROFS,   Errc::readOnly, Errc::readOnly, "sem permissão"          },
        {EISDIR,  Errc::io,       Errc::io,       "não é um arquivo comum"},
        {ELOOP,   Errc::io,       Errc::io,       "é um atalho"            },
        {EIO,     Errc::io,       Errc::io,       "não responde"           },
        {9999,    Errc::io,       Errc::io,       "erro 9999 do sistema"    },
    };
    for (const auto& [error, code, folderCode, words] : cases) {
        SCOPED_TRACE(words);
        MemoryDisk disk;
        const auto failing = [&, number = error](auto&& action) {
            disk.failFrom(disk.calls() + 1, true, number);
            action();
            disk.failNoMore();
        };
        failing([&, wanted = code, text = words] {
            EXPECT_THAT(sentenceOf([&] { File::rename(disk, "/loja/a", "/loja/b"); }, wanted),
                        testing::AllOf(testing::HasSubstr("/loja/"), testing::HasSubstr(text)));
        });
        failing([&, wanted = folderCode] {
            EXPECT_THAT(sentenceOf([&] { File::makeFolder(disk, "/loja/backup"); }, wanted),
                        testing::HasSubstr("\"/loja/backup\""));
        });
    }
}

} // namespace
