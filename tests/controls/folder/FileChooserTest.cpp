#include "controls/folder/FileChooser.h"

#include "support/QtPrinters.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>

namespace {

/// What chooseFile() gives when `work` is done in the dialog.
std::optional<QString> chosen(const FileRequest& request,
                              const std::function<void(QFileDialog&)>& work) {
    QTimer::singleShot(0, qApp, [&] {
        auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        work(*dialog);
    });
    return chooseFile(request);
}

TEST(FileChooser, GivesNothingWhenTheOperatorGivesUp) {
    const FileRequest request = {FileChoice::existingFile, "Abrir", QDir::tempPath(),
                                 "Texto (*.txt)"};
    EXPECT_EQ(chosen(request,
                     [](QFileDialog& dialog) {
                         EXPECT_EQ(dialog.windowTitle(), "Abrir");
                         EXPECT_EQ(dialog.nameFilters(), QStringList("Texto (*.txt)"));
                         dialog.reject();
                     }),
              std::nullopt);
}

TEST(FileChooser, GivesTheChosenPath) {
    const QTemporaryDir folder;
    const QString path = folder.filePath("relatório.csv");
    EXPECT_EQ(chosen({FileChoice::newFile, "Salvar", path, "CSV (*.csv)"},
                     [](QFileDialog& dialog) {
                         EXPECT_EQ(dialog.acceptMode(), QFileDialog::AcceptSave);
                         static_cast<QDialog&>(dialog).accept();
                     }),
              path);
    EXPECT_EQ(chosen({FileChoice::folder, "Pasta", folder.path(), ""},
                     [](QFileDialog& dialog) {
                         EXPECT_EQ(dialog.fileMode(), QFileDialog::Directory);
                         static_cast<QDialog&>(dialog).accept();
                     }),
              folder.path());
}

TEST(FileChooser, ProposesABareNameAmongTheOperatorsDocuments) {
    const QTemporaryDir home;
    const QByteArray before = qgetenv("HOME");
    const QByteArray settingsBefore = qgetenv("XDG_CONFIG_HOME");
    qputenv("HOME", home.path().toUtf8());
    qputenv("XDG_CONFIG_HOME", home.path().toUtf8());
    const auto opensIn = [] {
        QString folder;
        (void)chosen({FileChoice::newFile, "Salvar", "relatório.csv", "CSV (*.csv)"},
                     [&](QFileDialog& dialog) {
                         folder = dialog.directory().path();
                         dialog.reject();
                     });
        return folder;
    };
    EXPECT_EQ(opensIn(), home.path());
    ASSERT_TRUE(QDir(home.path()).mkdir("Documents"));
    EXPECT_EQ(opensIn(), home.filePath("Documents"));
    qputenv("HOME", before);
    settingsBefore.isNull() ? qunsetenv("XDG_CONFIG_HOME")
                            : qputenv("XDG_CONFIG_HOME", settingsBefore);
}

TEST(FileChooser, CanBeAnsweredByAFunction) {
    const FileRequest request = {FileChoice::folder, "Pasta", "/dados", ""};
    std::optional<FileRequest> seen;
    setFileFunction([&](const FileRequest& asked) {
        seen = asked;
        return std::optional<QString>("/outra");
    });
    EXPECT_EQ(chooseFile(request), "/outra");
    setFileFunction({});
    EXPECT_EQ(seen, request);
}

} // namespace
