#include "shell/Configuracao.h"

#include "jet/Error.h"
#include "support/QtPrinters.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>
#include <sys/resource.h>

namespace {

/// A program's folder with an init.ini in it, or without.
class InitIni : public testing::Test {
protected:
    void write(const QByteArray& bytes) {
        QFile file(folder_.filePath("init.ini"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    QByteArray bytes() {
        QFile file(folder_.filePath("init.ini"));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
    }
    QString read() { return Configuracao::pastaDosDados(folder_.path()); }

    QTemporaryDir folder_;
};

TEST_F(InitIni, IsLookedForInTheProgramFolder) {
    EXPECT_EQ(Configuracao::caminho("pasta"), QString("pasta") + QDir::separator() + "init.ini");
    EXPECT_EQ(Configuracao::pastaDoPrograma(),
              QDir::toNativeSeparators(QCoreApplication::applicationDirPath()));
}

TEST_F(InitIni, WithoutItTheProgramFolderHoldsTheDatabase) { EXPECT_EQ(read(), folder_.path()); }

TEST_F(InitIni, OnlyTheFirstLineCounts) {
    write("C:\\Dados\nD:\\Outra\n\nmais");
    EXPECT_EQ(read(), "C:\\Dados");
}

TEST_F(InitIni, TheLastLineNeedsNoLineBreak) {
    write("C:\\Dados");
    EXPECT_EQ(read(), "C:\\Dados");
}

TEST_F(InitIni, LineBreaksOfAnySystemEndTheLine) {
    write("C:\\Dados\r\nresto");
    EXPECT_EQ(read(), "C:\\Dados");
    write("C:\\Dados\rresto");
    EXPECT_EQ(read(), "C:\\Dados");
}

TEST_F(InitIni, TheLineIsTakenWhole) {
    write("  pasta=[C:\\Meus Dados\\] \t\n");
    EXPECT_EQ(read(), "  pasta=[C:\\Meus Dados\\] \t");
}

TEST_F(InitIni, AnEmptyFirstLineIsAnEmptyFolder) {
    write("\nC:\\Dados\n");
    EXPECT_EQ(read(), "");
    write("\r\nC:\\Dados\r\n");
    EXPECT_EQ(read(), "");
}

TEST_F(InitIni, AnEmptyFileIsAnEmptyFolder) {
    write("");
    EXPECT_EQ(read(), "");
}

TEST_F(InitIni, AccentsMayBeInUtf8OrInOneByteEach) {
    write("C:\\Automação\n");
    EXPECT_EQ(read(), "C:\\Automação");
    write("C:\\Automa\xE7\xE3o\n");
    EXPECT_EQ(read(), "C:\\Automação");
}

TEST_F(InitIni, AByteOrderMarkIsNoPartOfTheFolder) {
    write("\xEF\xBB\xBF"
          "C:\\Automação\r\n");
    EXPECT_EQ(read(), "C:\\Automação");
}

// ---- writing

TEST_F(InitIni, IsWrittenAsOneLineAndReadBack) {
    for (const char* folder : {"C:\\Dados", "/loja/Automação de cheques/", "  com brancos  ",
                               "\\\\servidor\\São João", "", "ß 漢字 €"}) {
        Configuracao::gravarPasta(folder_.path(), folder);
        EXPECT_EQ(bytes(), QByteArray(folder) + '\n');
        EXPECT_EQ(read(), folder);
    }
}

TEST_F(InitIni, NothingOfTheOldFileStays) {
    write("C:\\Uma pasta bem longa\nlinha 2\nlinha 3\n");
    Configuracao::gravarPasta(folder_.path(), "D:\\");
    EXPECT_EQ(bytes(), "D:\\\n");
    EXPECT_EQ(QDir(folder_.path()).entryList(QDir::Files), QStringList("init.ini"));
}

TEST_F(InitIni, ALineBreakMakesNoSecondLine) {
    Configuracao::gravarPasta(folder_.path(), "/loja\r\n/dados\n");
    EXPECT_EQ(bytes(), "/loja/dados\n");
}

TEST_F(InitIni, ALinkToTheSettingStaysOne) {
    const QTemporaryDir elsewhere;
    ASSERT_TRUE(QFile::link(elsewhere.filePath("init.ini"), folder_.filePath("init.ini")));
    Configuracao::gravarPasta(folder_.path(), "/loja/dados");
    EXPECT_TRUE(QFileInfo(folder_.filePath("init.ini")).isSymLink());
    EXPECT_TRUE(QFileInfo(elsewhere.filePath("init.ini")).isFile());
    EXPECT_EQ(read(), "/loja/dados");
}

TEST_F(InitIni, AFailureToWriteLeavesTheOldFile) {
    try {
        Configuracao::gravarPasta(folder_.filePath("nenhuma"), "x");
        FAIL();
    } catch (const jet::Error& error) {
        EXPECT_EQ(error.code(), jet::Errc::readOnly); // may be tried again
    }
    write("C:\\Dados\n");
    rlimit old{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &old), 0);
    const rlimit none{0, old.rlim_max};
    auto* const oldHandler = std::signal(SIGXFSZ, SIG_IGN); // the write fails, as on a full disk
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &none), 0);
    EXPECT_THROW(Configuracao::gravarPasta(folder_.path(), "D:\\Outra"), jet::Error);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &old), 0);
    std::signal(SIGXFSZ, oldHandler);
    EXPECT_EQ(bytes(), "C:\\Dados\n");
    EXPECT_EQ(QDir(folder_.path()).entryList(QDir::Files), QStringList("init.ini"));
}

TEST_F(InitIni, AFolderOfThatNameIsNoConfiguration) {
    ASSERT_TRUE(QDir(folder_.path()).mkdir("init.ini"));
    EXPECT_EQ(read(), folder_.path());
}

} // namespace
