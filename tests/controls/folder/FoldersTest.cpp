// What a folder is chosen with: drives, their folders as a tree, a folder's files.
#include "controls/folder/DriveList.h"
#include "controls/folder/FileList.h"
#include "controls/folder/FolderReader.h"
#include "controls/folder/FolderTree.h"
#include "controls/system/Drives.h"
#include "controls/system/MountTable.h"
#include "support/QtPrinters.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

namespace {

// ---- volumes

TEST(Volumes, AreDisksAndFoldersOfOtherMachines) {
    QTemporaryDir disk;
    const QByteArray mounts = "/dev/sda1 / ext4 rw 0 0\n"
                              "proc /proc proc rw 0 0\n"
                              "tmpfs /run tmpfs rw 0 0\n"
                              "/dev/sda2 /boot/efi vfat rw 0 0\n"
                              "/dev/loop0 /snap/qualquer/1 squashfs ro 0 0\n"
                              "/dev/sdb1 " +
                              disk.path().toUtf8() +
                              " vfat rw 0 0\n"
                              "//servidor/Dados /mnt/Base\\040da\\040Loja cifs rw 0 0\n"
                              "servidor:/dados /mnt/nfs nfs4 rw 0 0\n"
                              "maria@caixa: /mnt/caixa fuse.sshfs rw 0 0\n"
                              "portal /run/user/1000/doc fuse.portal rw 0 0\n"
                              "overlay /merged overlay rw 0 0\n"
                              "\n";
    QStringList expected{"/", "/mnt/Base da Loja", "/mnt/caixa", "/mnt/nfs", disk.path()};
    expected.sort();
    EXPECT_EQ(volumesOf(mounts), expected);
}

TEST(Volumes, TheRootIsAlwaysThereAndEachOnce) {
    EXPECT_EQ(volumesOf(""), QStringList("/"));
    EXPECT_EQ(volumesOf("overlay / overlay rw 0 0\n/dev/sda1 / ext4 rw 0 0\n"), QStringList("/"));
}

TEST(Volumes, AMountedFileIsNone) {
    QTemporaryDir folder;
    QFile file(folder.filePath("hosts"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_EQ(volumesOf("/dev/sda1 " + file.fileName().toUtf8() + " ext4 rw 0 0\n"),
              QStringList("/"));
}

TEST(Volumes, ThisMachineHasSome) { EXPECT_FALSE(volumes().isEmpty()); }

TEST(Paths, AreComparedFolderByFolder) {
    EXPECT_EQ(tidyPath("C:\\Dados\\"), "C:/Dados");
    EXPECT_EQ(tidyPath("/loja//dados/"), "/loja/dados");
    EXPECT_EQ(tidyPath("/"), "/");
    EXPECT_TRUE(liesIn("/loja", "/loja"));
    EXPECT_TRUE(liesIn("/loja/dados", "/loja"));
    EXPECT_TRUE(liesIn("/loja", "/"));
    EXPECT_FALSE(liesIn("/lojas", "/loja"));
    EXPECT_FALSE(liesIn("/", "/loja"));
}

// ---- with folders

/// A home of two folders, one of them with folders and files, and one hidden.
class Folders : public testing::Test {
protected:
    void SetUp() override {
        for (const char* folder : {"Loja/Dados", "Loja/Antigos", "Vazia", ".oculta"})
            ASSERT_TRUE(QDir(home()).mkpath(folder));
        for (const char* name : {"automacao.mdb", "Antes.MDB", "leia.txt", "mdb"}) {
            QFile file(home() + "/Loja/" + name);
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        }
        qputenv("HOME", home().toUtf8());
    }
    void TearDown() override { qputenv("HOME", oldHome_); }

    [[nodiscard]] QString home() const { return home_.path(); }

    /// The names under an item, once there are so many.
    static QStringList names(const QTreeWidgetItem& item, int count) {
        EXPECT_TRUE(QTest::qWaitFor([&] { return item.childCount() >= count; }));
        QStringList all;
        for (int i = 0; i < item.childCount(); ++i)
            all << item.child(i)->text(0);
        return all;
    }

private:
    QTemporaryDir home_;
    QByteArray oldHome_ = qgetenv("HOME");
};

TEST_F(Folders, TheDriveOfAFolderIsTheNearestAboveIt) {
    DriveList drives;
    EXPECT_EQ(drives.drive(), "") << "none at first";
    drives.setDriveOf(home() + "/Loja/não há");
    EXPECT_EQ(drives.drive(), home());
    drives.setDriveOf("/");
    EXPECT_EQ(drives.drive(), "/");
    drives.setDriveOf(home().replace('/', '\\'));
    EXPECT_EQ(drives.drive(), home());
    drives.setDriveOf("Z:\\Dados");
    EXPECT_EQ(drives.drive(), "/") << "in no drive: the first volume";
}

TEST_F(Folders, ATreeShowsTheFoldersOfItsDriveWithoutTheHiddenOnes) {
    FolderTree tree;
    const QSignalSpy changes(&tree, &FolderTree::pathChanged);
    EXPECT_EQ(tree.path(), "");
    tree.setDrive(home() + "/");
    EXPECT_EQ(tree.path(), home());
    EXPECT_EQ(changes.count(), 1);
    EXPECT_EQ(names(*tree.topLevelItem(0), 2), QStringList({"Loja", "Vazia"}));
}

TEST_F(Folders, AFolderIsReadWhenItIsOpenedAndEachTimeAgain) {
    FolderTree tree;
    tree.setDrive(home());
    (void)names(*tree.topLevelItem(0), 2);
    QTreeWidgetItem& shop = *tree.topLevelItem(0)->child(0);
    EXPECT_EQ(shop.childCount(), 0);
    EXPECT_EQ(shop.childIndicatorPolicy(), QTreeWidgetItem::ShowIndicator);
    shop.setExpanded(true);
    EXPECT_EQ(names(shop, 2), QStringList({"Antigos", "Dados"}));
    ASSERT_TRUE(QDir(home()).mkdir("Loja/Cópias"));
    shop.setExpanded(false);
    shop.setExpanded(true);
    EXPECT_EQ(names(shop, 3), QStringList({"Antigos", "Cópias", "Dados"}));

    QTreeWidgetItem& empty = *tree.topLevelItem(0)->child(1);
    empty.setExpanded(true);
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return empty.childIndicatorPolicy() == QTreeWidgetItem::DontShowIndicator; }));
}

TEST_F(Folders, ATreeOpensDownToAFolderThatNeedNotBeThere) {
    FolderTree tree;
    tree.setDrive(home());
    tree.setPath(home() + "/Loja/Dados");
    EXPECT_EQ(tree.path(), home() + "/Loja/Dados");
    EXPECT_EQ(names(*tree.topLevelItem(0), 2), QStringList({"Loja", "Vazia"}));
    EXPECT_EQ(names(*tree.topLevelItem(0)->child(0), 2), QStringList({"Antigos", "Dados"}));
    EXPECT_EQ(tree.path(), home() + "/Loja/Dados") << "still, when the rest has come";
    tree.setPath(home() + "/não há/mesmo");
    EXPECT_EQ(tree.path(), home() + "/não há/mesmo");
    tree.setPath("/em outro lugar");
    EXPECT_EQ(tree.path(), "/em outro lugar");
    EXPECT_EQ(tree.topLevelItemCount(), 1);
}

TEST_F(Folders, AClickEnterAndSpaceAreTheSameInTheTree) {
    FolderTree tree;
    tree.resize(300, 300);
    tree.show();
    tree.setDrive(home());
    (void)names(*tree.topLevelItem(0), 2);
    const QSignalSpy clicks(&tree, &FolderTree::folderClicked);
    QTest::keyClick(&tree, Qt::Key_Down);
    EXPECT_EQ(tree.path(), home() + "/Loja");
    EXPECT_EQ(clicks.count(), 0) << "the arrows only go there";
    QTest::keyClick(&tree, Qt::Key_Return);
    QTest::keyClick(&tree, Qt::Key_Space);
    EXPECT_EQ(clicks.count(), 2);
    const QRect place = tree.visualItemRect(tree.topLevelItem(0)->child(1));
    QTest::mouseClick(tree.viewport(), Qt::LeftButton, {}, place.center());
    EXPECT_EQ(clicks.count(), 3);
    EXPECT_EQ(tree.path(), home() + "/Vazia");
}

TEST_F(Folders, FilesAreListedByPatternInAnyLetterCase) {
    FileList files;
    files.setPattern("*.mdb");
    files.setPath(home() + "/Loja");
    ASSERT_TRUE(QTest::qWaitFor([&] { return files.count() > 0; }));
    ASSERT_EQ(files.count(), 2);
    EXPECT_EQ(files.item(0)->text(), "Antes.MDB");
    EXPECT_EQ(files.item(1)->text(), "automacao.mdb");
    const QSignalSpy clicks(&files, &FileList::fileClicked);
    files.setCurrentRow(1);
    QTest::keyClick(&files, Qt::Key_Return);
    EXPECT_EQ(clicks.count(), 1);
    files.setPath(home() + "/Vazia");
    EXPECT_EQ(files.count(), 0) << "at once";
    EXPECT_EQ(files.path(), home() + "/Vazia");
}

TEST_F(Folders, AnAnswerThatComesTooLateIsNotShown) {
    FileList files;
    files.setPattern("*.mdb");
    files.setPath(home() + "/Loja");
    files.setPath(home() + "/Vazia");
    FolderReader last(QDir::Files, {}, nullptr);
    QSignalSpy answers(&last, &FolderReader::answered);
    last.read(home() + "/Loja");
    ASSERT_TRUE(answers.wait());
    QTest::qWait(50);
    EXPECT_EQ(files.count(), 0);
}

TEST_F(Folders, AFolderThatIsNotThereHoldsNothing) {
    FolderReader reader(QDir::Files, {}, nullptr);
    QSignalSpy answers(&reader, &FolderReader::answered);
    reader.read(home() + "/não há");
    ASSERT_TRUE(answers.wait());
    EXPECT_EQ(answers[0][0].toString(), home() + "/não há");
    EXPECT_EQ(answers[0][1].toStringList(), QStringList());
}

TEST_F(Folders, AReaderMayGoBeforeItsAnswersCome) {
    for (int i = 0; i < 50; ++i) {
        auto reader = std::make_unique<FolderReader>(QDir::Files, QStringList(), nullptr);
        for (int n = 0; n < 4; ++n)
            reader->read(home() + "/Loja");
    }
    FolderReader reader(QDir::Files, {}, nullptr);
    QSignalSpy answers(&reader, &FolderReader::answered);
    reader.read(home() + "/Loja");
    EXPECT_TRUE(answers.wait());
}

} // namespace
