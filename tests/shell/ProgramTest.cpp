#include "jet/Backup.h"
#include "jet/Check.h"
#include "support/QtPrinters.h"
#include "support/ShopDatabase.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <unistd.h>

namespace {

using testing::ElementsAre;

/// The whole program, in a folder of its own, run to its end.
class Program : public testing::Test {
protected:
    void SetUp() override { std::filesystem::copy_file(OBSERVED_PROGRAM, folder_ / "valtrino"); }
    void TearDown() override { std::filesystem::remove_all(folder_); }

    void writeInitIni(const std::string& text) const {
        std::ofstream(folder_ / "init.ini") << text;
    }
    [[nodiscard]] QString folder() const { return QString::fromStdString(folder_.string()); }

    /// @param action what the main window is told to do once it stands.
    void run(const char* action = "mnusair") {
        QProcess process;
        start(process, action);
        waitForEnd(process);
    }
    /// The same, with keys for what that opens, on a disk that fails.
    void run(const char* action, const char* keys, const QString& disk) {
        keys_ = keys;
        disk_ = disk;
        output_.clear();
        run(action);
    }
    void start(QProcess& process, const char* action) {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("QT_QPA_PLATFORM", "offscreen");
        environment.insert("XDG_CONFIG_HOME", folder() + "/config");
        environment.insert("OBSERVED_ACTION", action);
        if (splash_)
            environment.insert("OBSERVED_SPLASH", splash_);
        if (!keys_.isEmpty())
            environment.insert("OBSERVED_KEYS", keys_);
        if (!disk_.isEmpty())
            environment.insert("OBSERVED_DISK", disk_);
        process.setProcessEnvironment(environment);
        if (installed_)
            process.setChildProcessModifier([] {
                if (::getuid() == 0 && ::setuid(kNobody) != 0)
                    ::_exit(kNobody & 0xFF);
            });
        process.start(folder() + "/valtrino", QStringList());
    }
    void waitForEnd(QProcess& process) {
        ended_ = process.waitForFinished(kPatienceMs);
        status_ = process.exitCode();
        crashed_ = process.exitStatus() == QProcess::CrashExit;
        output_ = QString::fromUtf8(process.readAllStandardOutput());
        if (!ended_)
            process.kill(), process.waitForFinished();
    }

    /// Ended by itself, with this status.
    void expectEnd(int status) const {
        EXPECT_TRUE(ended_);
        EXPECT_FALSE(crashed_);
        EXPECT_EQ(status_, status) << output_.toStdString();
    }
    [[nodiscard]] std::vector<std::string> told(const QString& pattern) const {
        std::vector<std::string> lines;
        for (const QString& line : output_.split('\n'))
            if (line.contains(QRegularExpression(pattern)))
                lines.push_back(line.toStdString());
        return lines;
    }

    static constexpr int kPatienceMs = 30'000;
    static constexpr uid_t kNobody = 65534;
    bool installed_ = false; ///< run by one who can't write in the program's folder
    std::filesystem::path folder_ = makeTestFolder();
    const char* splash_ = nullptr; ///< what befalls the splash
    QString keys_;
    QString disk_;
    QString output_;
    int status_ = -1;
    bool ended_ = false;
    bool crashed_ = false;
};

TEST_F(Program, ShowsTheSplashThenTheMainWindowAndEndsWithSair) {
    const ShopDatabase shop;
    writeInitIni(shop.folder().string() + "\n");
    run();
    expectEnd(0);
    EXPECT_THAT(told("^(show|hide|message) "), ElementsAre("show frmSplash", "hide frmSplash",
                                                           "show MDICheques", "hide MDICheques"));
    EXPECT_THAT(told("^folder "), ElementsAre("folder " + shop.folder().string()));
}

TEST_F(Program, TheSplashStaysASecond) {
    const ShopDatabase shop;
    writeInitIni(shop.folder().string());
    run();
    const auto after = told("^after ");
    ASSERT_EQ(after.size(), 1U);
    EXPECT_GE(QString::fromStdString(after[0]).section(' ', 1, 1).toInt(), 1000);
}

TEST_F(Program, ClosedByTheWindowManagerTheSplashStaysUntilItsSecondIsOver) {
    const ShopDatabase shop;
    writeInitIni(shop.folder().string());
    splash_ = "close";
    run();
    expectEnd(0);
    EXPECT_THAT(told("^(show|hide|the splash) "),
                ElementsAre("show frmSplash", "the splash stays", "hide frmSplash",
                            "show MDICheques", "hide MDICheques"));
}

TEST_F(Program, EndsWhenTheMainWindowIsClosed) {
    const ShopDatabase shop;
    writeInitIni(shop.folder().string());
    run("close");
    expectEnd(0);
}

TEST_F(Program, EndsWithTheToolbarButton) {
    const ShopDatabase shop;
    writeInitIni(shop.folder().string());
    run("sair");
    expectEnd(0);
}

TEST_F(Program, LeavesNoLockBehind) {
    const ShopDatabase shop;
    writeInitIni(shop.folder().string());
    run();
    expectEnd(0);
    jet::Database database(shop.file());
    EXPECT_FALSE(database.readOnlyReason().has_value());
}

TEST_F(Program, AskedToEndByTheSystemLeavesNothingBehind) {
    const ShopDatabase shop;
    writeInitIni(shop.folder().string());
    QProcess process;
    start(process, "");
    while (!output_.contains("show MDICheques") && process.waitForReadyRead(kPatienceMs))
        output_ += QString::fromUtf8(process.readAllStandardOutput());
    EXPECT_TRUE(std::filesystem::exists(shop.folder() / "automacao.ldb"));
    process.terminate();
    waitForEnd(process);
    expectEnd(1);
    EXPECT_FALSE(std::filesystem::exists(shop.folder() / "automacao.ldb"));
}

TEST_F(Program, MakesTheCopyOfTheDayOrNone) {
    const ShopDatabase shop;
    writeInitIni(shop.folder().string());
    run();
    expectEnd(0);
    ASSERT_TRUE(std::filesystem::is_directory(shop.folder() / "backup"));
    for (const auto& copy : std::filesystem::directory_iterator(shop.folder() / "backup"))
        EXPECT_TRUE(jet::check(copy.path()).clean()) << copy.path();
}

TEST_F(Program, WithoutInitIniTheDatabaseIsBesideTheProgram) {
    const ShopDatabase shop;
    std::filesystem::copy_file(shop.file(), folder_ / "automacao.mdb");
    run();
    expectEnd(0);
    EXPECT_THAT(told("^folder "), ElementsAre("folder " + folder_.string()));
}

TEST_F(Program, OnlyTheFirstLineOfInitIniCounts) {
    const ShopDatabase shop;
    writeInitIni(shop.folder().string() + "\r\n/outra/pasta\r\n");
    run();
    expectEnd(0);
}

TEST_F(Program, ATrailingBackslashStillFindsTheDatabase) {
    const ShopDatabase shop;
    writeInitIni(shop.folder().string() + "\\\n");
    run();
    expectEnd(0);
}

/// Says once what failed, with the path tried, once too, and where it is set, and ends with status
/// 1.
class ProgramWithoutDatabase : public Program {
protected:
    void expectReport(const QString& tried) {
        expectEnd(1);
        EXPECT_EQ(told("^message ").size(), 1U);
        EXPECT_TRUE(output_.contains("message Valtrino: ")) << output_.toStdString();
        EXPECT_EQ(output_.count(tried), 1) << output_.toStdString();
        EXPECT_EQ(output_.count("automacao.mdb"), 1) << output_.toStdString();
        EXPECT_TRUE(output_.contains(QDir::toNativeSeparators(folder() + "/init.ini")));
        EXPECT_THAT(told("^show "), ElementsAre("show frmSplash"));
    }
};

TEST_F(ProgramWithoutDatabase, AWrongFolder) {
    writeInitIni("/pasta/que/nao/existe\n");
    run();
    expectReport("/pasta/que/nao/existe/automacao.mdb");
}

TEST_F(ProgramWithoutDatabase, AnEmptyInitIni) {
    writeInitIni("");
    run();
    expectReport("/automacao.mdb");
}

TEST_F(ProgramWithoutDatabase, NothingBesideTheProgram) {
    run();
    expectReport(folder() + "/automacao.mdb");
}

TEST_F(ProgramWithoutDatabase, WhoHasJustInstalledItIsToldHowToBegin) {
    const char* const hint = "\"Valtrino (novo banco de dados)\"";
    run();
    EXPECT_FALSE(output_.contains(hint)) << output_.toStdString();
    std::filesystem::permissions(folder_, std::filesystem::perms(0555));
    installed_ = true;
    run();
    std::filesystem::permissions(folder_, std::filesystem::perms(0755));
    expectEnd(1);
    EXPECT_TRUE(output_.contains(hint)) << output_.toStdString();
    EXPECT_TRUE(output_.contains(folder() + "/config/valtrino/init.ini"));
}

TEST_F(ProgramWithoutDatabase, AFileThatIsNoDatabase) {
    writeInitIni(folder_.string());
    std::ofstream(folder_ / "automacao.mdb") << std::string(100'000, 'x');
    run();
    expectReport(folder() + "/automacao.mdb");
}

TEST_F(ProgramWithoutDatabase, ADatabaseCutShort) {
    const ShopDatabase shop;
    writeInitIni(folder_.string());
    std::filesystem::copy_file(shop.file(), folder_ / "automacao.mdb");
    std::filesystem::resize_file(folder_ / "automacao.mdb",
                                 std::filesystem::file_size(shop.file()) / 2);
    run();
    expectReport(folder() + "/automacao.mdb");
}

TEST_F(ProgramWithoutDatabase, ADatabaseWithoutTheTables) {
    writeInitIni(folder_.string());
    jet::Database::create(folder_ / "automacao.mdb", jet::Version::jet4);
    run();
    expectReport(folder() + "/automacao.mdb");
}

/// Ends with a failure that can't be tried again, with the bank register open.
class ProgramThatFails : public Program {
protected:
    void SetUp() override {
        Program::SetUp();
        writeInitIni(shop_.folder().string());
    }

    void expectOneMessage() {
        expectEnd(1);
        EXPECT_EQ(output_.count("message "), 1) << output_.toStdString();
    }
    [[nodiscard]] bool says(const char* part) const { return output_.contains(part); }
    [[nodiscard]] static std::int64_t banks(const std::filesystem::path& file) {
        EXPECT_THAT(jet::check(file).findings, testing::IsEmpty()) << file;
        return jet::Database(file).table("bancos").rowCount();
    }
    /// What the disk has, without what lies beside it.
    [[nodiscard]] std::filesystem::path databaseAlone() const {
        auto alone = folder_ / "so.mdb";
        std::filesystem::copy_file(shop_.file(), alone,
                                   std::filesystem::copy_options::overwrite_existing);
        return alone;
    }

    static constexpr char kUndone[] = "O que estava sendo gravado foi desfeito.";
    static constexpr char kToBeUndone[] = "O que estava sendo gravado será desfeito";
    static constexpr char kRepeat[] = "abra-o de novo e repita a última operação.";
    static constexpr char kBank[] = "104|Banco Norte|&s";
    ShopDatabase shop_;
};

TEST_F(ProgramThatFails, WhatWasBeingSavedIsUndoneAndToBeRepeated) {
    run("mnubancos", kBank, "write journal 0");
    expectOneMessage();
    EXPECT_TRUE(says(kUndone)) << output_.toStdString();
    EXPECT_TRUE(says(kRepeat));
    EXPECT_EQ(banks(databaseAlone()), 0);
}

TEST_F(ProgramThatFails, WhatTheDiskLeavesHalfSavedIsntSaidToBeUndoneYet) {
    int halfSaved = 0;
    for (int write = 0; write < 3; ++write) {
        run("mnubancos", kBank, QString("write automacao.mdb %1").arg(write));
        expectOneMessage();
        EXPECT_TRUE(says(kRepeat));
        EXPECT_NE(says(kUndone), says(kToBeUndone)) << output_.toStdString();
        if (says(kUndone))
            EXPECT_EQ(banks(databaseAlone()), 0) << write;
        else
            ++halfSaved;
        jet::Database recovered(shop_.file());
        EXPECT_EQ(recovered.table("bancos").rowCount(), 0);
    }
    EXPECT_GT(halfSaved, 0);
    EXPECT_EQ(banks(shop_.file()), 0);
}

TEST_F(ProgramThatFails, NothingIsUndoneWhereNothingWasBeingSaved) {
    run("mnubancos", "", "read automacao.mdb 0");
    expectOneMessage();
    EXPECT_FALSE(says("desfeito")) << output_.toStdString();
    EXPECT_TRUE(says(kRepeat));
}

TEST_F(ProgramThatFails, ADamagedPageIsNotedAndNothingIsToBeRepeated) {
    std::uint64_t page = 0;
    {
        jet::Database file(shop_.file());
        file.begin();
        jet::Table& table = file.table("bancos");
        for (int i = 0; i < 500; ++i) {
            jet::Row row(table.columns().size());
            row[*table.findColumn("nome")] = std::string("Banco ") + std::to_string(i);
            page = number(table.insert(row).page);
        }
        file.commit();
    }
    // The program would note what it finds when it makes the copy of the day: there is one.
    ASSERT_TRUE(jet::Backup(shop_.file()).makeIfDue());
    {
        std::fstream bytes(shop_.file(), std::ios::binary | std::ios::in | std::ios::out);
        bytes.seekp(static_cast<std::streamoff>(page * 4096));
        bytes << std::string(4096, '\xEE');
    }
    run("mnubancos");
    expectOneMessage();
    EXPECT_FALSE(says("desfeito")) << output_.toStdString();
    EXPECT_FALSE(says("repita"));
    const auto noted = jet::Backup(shop_.file()).damage();
    ASSERT_TRUE(noted);
    EXPECT_TRUE(output_.contains(QString::fromStdString(*noted))) << *noted;
}

TEST_F(ProgramWithoutDatabase, AtTheStartThereIsNothingToRepeat) {
    const ShopDatabase shop;
    writeInitIni(folder_.string());
    std::filesystem::create_directory(folder_ / "automacao.mdb"); // opens, but can't be read
    run();
    expectEnd(1);
    EXPECT_FALSE(output_.contains("repita")) << output_.toStdString();
    EXPECT_FALSE(output_.contains("desfeito"));
}

} // namespace
