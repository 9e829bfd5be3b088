#include "shell/Configuracao.h"

#include "support/QtPrinters.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

/// A program's folder with an init.ini in it, or without.
class InitIni : public testing::Test {
protected:
    void write(const QByteArray& bytes) {
        QFile file(folder_.filePath("init.ini"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
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

TEST_F(InitIni, AFolderOfThatNameIsNoConfiguration) {
    ASSERT_TRUE(QDir(folder_.path()).mkdir("init.ini"));
    EXPECT_EQ(read(), folder_.path());
}

} // namespace
