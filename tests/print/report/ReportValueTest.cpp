#include "print/ReportValue.h"

#include "print/ReportRows.h"
#include "support/QtPrinters.h"

#include <QLocale>

#include <gmock/gmock.h>

#include <limits>

namespace {

using testing::ElementsAre;

TEST(ReportValueText, IsTheShopsWhateverTheMachinesLocale) {
    const QLocale before;
    for (const QLocale& locale : {QLocale(QLocale::English), QLocale(QLocale::Portuguese)}) {
        QLocale::setDefault(locale);
        EXPECT_EQ(shown(QDate(2026, 2, 1), ValueFormat::shortDate), "01/02/2026");
        EXPECT_EQ(shown(Amount{12'345'600}, ValueFormat::standard), "1.234,56");
    }
    QLocale::setDefault(before);
}

TEST(ReportValueText, StandardHasPointsAndTwoDecimals) {
    EXPECT_EQ(shown(Amount{0}, ValueFormat::standard), "0,00");
    EXPECT_EQ(shown(Amount{-5'000}, ValueFormat::standard), "-0,50");
    EXPECT_EQ(shown(Amount{12'345'678}, ValueFormat::standard), "1.234,57");
    EXPECT_EQ(shown(qint64{1234}, ValueFormat::standard), "1.234,00");
    EXPECT_EQ(shown(std::numeric_limits<qint64>::max(), ValueFormat::standard),
              "9223372036854775807");
}

TEST(ReportValueText, AFormatThatDoesntSuitTheValueLeavesItGeneral) {
    EXPECT_EQ(shown(QString("abc"), ValueFormat::standard), "abc");
    EXPECT_EQ(shown(QDate(2026, 2, 1), ValueFormat::standard), "01/02/2026");
    EXPECT_EQ(shown(Amount{12'345'678}, ValueFormat::shortDate), "1.234,5678");
    EXPECT_EQ(shown(qint64{1234}, ValueFormat::general), "1234");
}

TEST(ReportValueText, NothingIsEmpty) {
    for (const ValueFormat format :
         {ValueFormat::general, ValueFormat::shortDate, ValueFormat::standard}) {
        EXPECT_EQ(shown({}, format), "");
        EXPECT_EQ(shown(QDate(), format), "");
    }
}

TEST(ReportValueText, StandsOnOneLine) {
    const QString hostile = QString("a\tb\nc\r") + QChar(0x2028) + "d" + QChar(0x1B) + QChar(0);
    EXPECT_EQ(shown(hostile, ValueFormat::general), "a b c  d  ");
}

TEST(ReportValueText, CantBeTurnedAround) {
    const QString turned = QString("R$ ") + QChar(0x202E) + "00,1" + QChar(0x202C);
    EXPECT_EQ(shown(turned, ValueFormat::general), "R$ 00,1");
    EXPECT_EQ(shown(QString("שלום 😀"), ValueFormat::general), "שלום 😀");
}

TEST(ReportValueText, KeepsNoPilesOfAccents) {
    const QString accent(QChar(0x301));
    EXPECT_EQ(shown("a" + accent.repeated(300) + "b" + accent, ValueFormat::general),
              "a" + accent.repeated(2) + "b" + accent);
}

TEST(ReportFormats, AreThree) {
    EXPECT_EQ(formatNamed(""), ValueFormat::general);
    EXPECT_EQ(formatNamed("Short Date"), ValueFormat::shortDate);
    EXPECT_EQ(formatNamed("Standard"), ValueFormat::standard);
    EXPECT_EQ(formatNamed("standard"), std::nullopt);
    EXPECT_EQ(formatNamed("Long Date"), std::nullopt);
}

TEST(ReportColumns, AreFoundWithoutCaseAndBlanksAtTheEnd) {
    const QStringList columns = {"numero", "cliente_fornecedor.nome ", "bancos.nome"};
    EXPECT_EQ(columnNamed(columns, "Cliente_Fornecedor.nome"), 1);
    EXPECT_EQ(columnNamed(columns, "NUMERO  "), 0);
    EXPECT_EQ(columnNamed(columns, "nome"), -1);
    EXPECT_EQ(columnNamed(columns, " numero"), -1);
}

TEST(ReportRows, GivesBackWhatItTook) {
    const std::vector<ReportValue> values = {{},
                                             QString(),
                                             QString("Açougue 😀"),
                                             QDate(1899, 12, 30),
                                             QDate(9999, 12, 31),
                                             QDate(100, 1, 1),
                                             Amount{std::numeric_limits<std::int64_t>::max()},
                                             Amount{std::numeric_limits<std::int64_t>::min()},
                                             qint64{0},
                                             qint64{-1},
                                             qint64{127},
                                             qint64{128},
                                             std::numeric_limits<qint64>::min()};
    ReportRows rows;
    rows.clear(static_cast<qsizetype>(values.size()));
    for (int i = 0; i < 3; ++i)
        rows.add(values);
    ASSERT_EQ(rows.size(), 3);
    rows.visit(1, 2, [&](qint64 row, const std::vector<ReportValue>& found) {
        EXPECT_EQ(row, 1);
        EXPECT_TRUE(found == values);
        return true;
    });
}

TEST(ReportRows, KeepsAnInvalidDateAsNothing) {
    ReportRows rows;
    rows.clear(1);
    rows.add({QDate()});
    rows.visit(0, 1, [](qint64, const std::vector<ReportValue>& values) {
        EXPECT_TRUE(std::holds_alternative<std::monostate>(values[0]));
        return true;
    });
}

TEST(ReportRows, FindsAnyRowAndStopsWhenToldTo) {
    ReportRows rows;
    rows.clear(2);
    for (qint64 i = 0; i < 1000; ++i)
        rows.add({i, QString(static_cast<qsizetype>(i % 7), 'x')});
    std::vector<qint64> seen;
    rows.visit(62, 1000, [&](qint64 row, const std::vector<ReportValue>& values) {
        EXPECT_EQ(std::get<qint64>(values[0]), row);
        EXPECT_EQ(std::get<QString>(values[1]).size(), row % 7);
        seen.push_back(row);
        return row < 66;
    });
    EXPECT_THAT(seen, ElementsAre(62, 63, 64, 65, 66));
    rows.visit(1000, 1000, [](qint64, const std::vector<ReportValue>&) {
        ADD_FAILURE() << "there is no such row";
        return true;
    });
}

TEST(ReportRows, TakesLittleMoreThanTheRows) {
    ReportRows rows;
    rows.clear(2);
    for (int i = 0; i < 64 * 100; ++i)
        rows.add({QString(40, 'x'), Amount{100}});
    EXPECT_LE(rows.bytes(), 64 * 100 * 50);
    rows.clear(2);
    EXPECT_EQ(rows.size(), 0);
    EXPECT_EQ(rows.bytes(), 0);
}

} // namespace
