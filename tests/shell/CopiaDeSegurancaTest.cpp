#include "shell/CopiaDeSeguranca.h"

#include "jet/Backup.h"
#include "jet/Check.h"
#include "support/QtPrinters.h"
#include "support/ShopDatabase.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>

#include <gtest/gtest.h>

#include <fstream>

namespace {

/// What a copy tells, waited for.
QString told(const std::filesystem::path& file) {
    QString text;
    const CopiaDeSeguranca copy(
        file, [&](const QString& said) { text = said; }, [](const std::optional<Dano>&) {});
    for (const QDeadlineTimer patience(20'000); text.isEmpty() && !patience.hasExpired();)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
    return text;
}

std::size_t copiesOf(const ShopDatabase& shop) { return jet::Backup(shop.file()).copies().size(); }

TEST(DailyCopy, IsMadeWhileTheDatabaseIsOpen) {
    const ShopDatabase shop;
    jet::Database open(shop.file());
    const QString text = told(shop.file());
    const auto copies = jet::Backup(shop.file()).copies();
    ASSERT_EQ(copies.size(), 1U);
    EXPECT_EQ(text, "Cópia de segurança do dia feita: " +
                        QString::fromStdString(copies.front().filename().string()));
    EXPECT_TRUE(jet::check(copies.front()).clean());
}

TEST(DailyCopy, FailsWithASentenceAndNothingElse) {
    const ShopDatabase shop;
    std::ofstream(shop.folder() / "backup") << "um arquivo, e não uma pasta";
    EXPECT_TRUE(told(shop.file()).startsWith("A cópia de segurança não foi feita. "));
}

TEST(DailyCopy, IsBrokenOffAtTheEndOfTheProgram) {
    const ShopDatabase shop;
    bool said = false;
    {
        const CopiaDeSeguranca copy(
            shop.file(), [&](const QString&) { said = true; },
            [&](const std::optional<Dano>&) { said = true; });
    }
    QCoreApplication::processEvents();
    EXPECT_FALSE(said); // whoever would show it is gone
    EXPECT_LE(copiesOf(shop), 1U);
    for (const auto& entry : std::filesystem::recursive_directory_iterator(shop.folder()))
        EXPECT_EQ(entry.path().string().find("parcial"), std::string::npos) << entry.path();
}

} // namespace
