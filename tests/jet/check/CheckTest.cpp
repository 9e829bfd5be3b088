#include "jet/Check.h"

#include "jet/DamagedFile.h"
#include "jet/ShopWork.h"
#include "jet/page/CommitPairs.h"
#include "jet/share/Journal.h"
#include "support/FileRules.h"
#include "support/Samples.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

using namespace jet;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

constexpr Version kVersions[] = {Version::jet3, Version::jet4};

std::string nameOf(Version version) { return version == Version::jet3 ? "Jet 3" : "Jet 4"; }

TEST(Check, FindsNothingInASoundFile) {
    for (const Version version : kVersions) {
        SCOPED_TRACE(nameOf(version));
        DamagedFile file(version);
        const Report report = file.check();
        EXPECT_TRUE(report.clean()) << listed(report);
        EXPECT_TRUE(report.sound());
        EXPECT_EQ(report.tables, 7U); // three and the system's four
        EXPECT_EQ(report.rows, 63U + 5U + 11U + 22U);
        EXPECT_EQ(report.indexEntries, 3 * 63U + 2 * 11U + 22U);
        EXPECT_EQ(report.pages, std::filesystem::file_size(file.path()) / file.format().pageSize);
    }
}

TEST(Check, FindsNothingInANewFile) {
    const TemporaryFolder folder;
    for (const Version version : kVersions) {
        const auto path = folder / (version == Version::jet3 ? "3.mdb" : "4.mdb");
        Database::create(path, version);
        const Report report = check(path);
        EXPECT_TRUE(report.clean()) << listed(report);
        EXPECT_EQ(report.freePages, 0U);
    }
}

TEST(Check, FindsNoErrorInRealFiles) {
    const auto samples = samplesFolder();
    if (!samples)
        GTEST_SKIP() << "no sample databases here";
    std::vector<std::filesystem::path> files{*samples / "automacao-jet4.mdb"};
    for (const auto& entry : std::filesystem::directory_iterator(*samples / "samples"))
        if (entry.path().extension() == ".mdb")
            files.push_back(entry.path());
    for (const auto& path : files) {
        const Report report = check(path);
        EXPECT_TRUE(report.sound()) << path << "\n" << listed(report);
        // The one whose deleted rows another writer left where they were.
        EXPECT_EQ(report.clean(), path.filename() != "testIndexPropertiesV2000.mdb")
            << path << "\n"
            << listed(report);
        EXPECT_GT(report.rows, 0U);
    }
}

TEST(Check, ADefinitionInAnOldFileHasItsMark) {
    DamagedFile file(Version::jet3);
    file.put<std::uint16_t>(file.other.page(), DefinitionPageLayout::freeBytes.at, 0);
    EXPECT_THAT(listed(file.check()), HasSubstr("a marca da página de definição está errada"));
}

TEST(Check, ARelationshipWithATableInAnotherFileIsLeftAlone) {
    for (const Version version : kVersions)
        for (const std::int64_t type : {4, 6}) {
            SCOPED_TRACE(nameOf(version));
            DamagedFile file(version);
            file.withDatabase([&](Database& database) {
                enterObject(database, -2147483000, "Fora", type);
                addRelationship(database, {"rel", "Cheques", {"cliente"}, "Fora", {"codigo"}});
            });
            EXPECT_TRUE(file.check().clean()) << listed(file.check());
        }
}

TEST(Check, WhatTheMapOfFreePagesDoesntReachIsFree) {
    for (const Version version : kVersions) {
        SCOPED_TRACE(nameOf(version));
        DamagedFile file(version);
        file.resize((8 * file.format().mapBitmap + 2) * file.format().pageSize);
        const Report report = file.check();
        EXPECT_TRUE(report.clean()) << listed(report);
    }
}

TEST(Check, ATextMayBeAsLongAsItsColumn) {
    for (const Version version : kVersions) {
        SCOPED_TRACE(nameOf(version));
        DamagedFile file(version);
        std::string name;
        while (name.size() < 400)
            name += "ç"; // two bytes of ours, one character of two hundred
        file.withDatabase([&](Database& database) {
            Row row(5);
            row[3] = name;
            database.table("Cheques").insert(row);
        });
        const Report report = file.check();
        EXPECT_TRUE(report.clean()) << listed(report);
    }
}

/// What can't be read is no damage: the disk may give it tomorrow.
TEST(Check, ADiskThatFailsIsAnErrorOfItsOwn) {
    for (const Version version : kVersions) {
        MemoryDisk disk(emptyShop(version));
        {
            Database file(kPath, on(disk));
            ShopWork(3).step(file, 1);
        }
        const DiskImage shop = disk.image();
        std::uint64_t number = 1;
        for (bool failed = true; failed; ++number) {
            SCOPED_TRACE(nameOf(version) + ", call " + std::to_string(number));
            MemoryDisk failing(shop);
            failing.failFrom(number, false, EIO);
            try {
                EXPECT_TRUE(check(kPath, failing).sound());
            } catch (const Error& error) {
                EXPECT_EQ(error.code(), Errc::io) << error.what();
            }
            failed = failing.calls() >= number;
        }
        EXPECT_GT(number, 20U);
    }
}

TEST(Check, AMissingFileIsAnErrorOfItsOwn) {
    const TemporaryFolder folder;
    EXPECT_THROW((void)check(folder / "nada.mdb"), Error);
}

TEST(Check, AUniqueIndexHasEachKeyOnce) {
    for (const Version version : kVersions) {
        SCOPED_TRACE(nameOf(version));
        DamagedFile file(version);
        // The index on the client, whose numbers repeat, is declared unique.
        const std::size_t flags = file.realIndexBlock(1) + file.format().realIndex.flags.at;
        file.page(file.cheques.page())[flags] |= std::byte{1};
        const Report report = file.check();
        EXPECT_THAT(listed(report), HasSubstr("uma chave aparece duas vezes num índice único"));
    }
}

TEST(Check, TellsFiftyOfAKindAndCountsTheRest) {
    DamagedFile file(Version::jet4);
    for (const RowId id : file.rows)
        if (id != file.moved)
            file.bytesOf(id).back() |= std::byte{0x80};
    const Report report = file.check();
    const auto ofKind = std::ranges::count_if(report.findings, [](const Finding& finding) {
        return finding.sentence.find("bits de sobra") != std::string::npos;
    });
    EXPECT_EQ(ofKind, 51);
    EXPECT_THAT(report.findings.back().sentence, HasSubstr("mais 12 vezes"));
    EXPECT_TRUE(report.sound());
    EXPECT_FALSE(report.clean());
}

TEST(Check, TellsOfAJournalBesideTheFile) {
    for (const Version version : kVersions) {
        SCOPED_TRACE(nameOf(version));
        DamagedFile file(version);
        const auto journal = Journal::pathFor(file.path());
        std::ofstream(journal, std::ios::binary) << "JETUNDO2";
        Report report = file.check();
        EXPECT_TRUE(report.sound());
        EXPECT_THAT(listed(report),
                    AllOf(StartsWith("warning"), HasSubstr("que não chegou a mudar nada"),
                          HasSubstr(journal.filename().string())));

        file.putPair(3, CommitPairs::kWriting);
        report = file.check();
        EXPECT_THAT(listed(report),
                    AllOf(StartsWith("error"), HasSubstr("abra o banco de dados com o programa"),
                          HasSubstr("usuário 3"), HasSubstr(journal.filename().string())));

        std::ofstream(journal, std::ios::binary) << std::string(8, '\0'); // an empty one
        file.restore();
        EXPECT_TRUE(file.check().clean());
    }
}

TEST(Check, WhatIsNoDatabaseIsSaidAndNotThrown) {
    const TemporaryFolder folder;
    const auto path = folder / "texto.mdb";
    for (const std::string content :
         {"", "Isto não é um banco de dados.", "                                       "}) {
        std::ofstream(path, std::ios::binary) << content;
        const Report report = check(path);
        ASSERT_EQ(report.findings.size(), 1U);
        EXPECT_THAT(report.findings[0].sentence, HasSubstr("o arquivo não pode ser aberto"));
    }
}

} // namespace
