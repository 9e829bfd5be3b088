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
    void start(QProcess& process, const char* action) {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("QT_QPA_PLATFORM", "offscreen");
        environment.insert("XDG_CONFIG_HOME", folder() + "/config");
        environment.insert("OBSERVED_ACTION", action);
        if (splash_)
            environment.insert("OBSERVED_SPLASH", splash_);
        process.setProcessEnvironment(environment);
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
    std::filesystem::path folder_ = makeTestFolder();
    const char* splash_ = nullptr; ///< what befalls the splash
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

} // namespace
