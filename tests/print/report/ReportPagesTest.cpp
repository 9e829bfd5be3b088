// What stands on the pages, read back from their PDF by other programs.
#include "print/OtherPrograms.h"
#include "print/ReportFixture.h"
#include "print/report/PagePainter.h"

#include <QRegularExpression>

#include <algorithm>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr qreal kPointsPerMm = 72 / 25.4;

class Pages : public ReportTest {
protected:
    /// The report of these rows as PDF.
    QString pdfOf(std::unique_ptr<RowSource> rows) {
        EXPECT_TRUE(shop_.begin(std::move(rows)));
        EXPECT_EQ(savePdf(report_, path("r.pdf"), goOn).outcome, SaveOutcome::saved);
        return path("r.pdf");
    }

    static QStringList columnsOf(const QString& line) {
        static const QRegularExpression kGap("\\s{2,}");
        return line.trimmed().split(kGap);
    }

    static QString lineWith(const QStringList& lines, const QString& part) {
        for (const QString& line : lines)
            if (line.contains(part))
                return line.simplified();
        return {};
    }

    /// How many rows stand on a page, by their cheques' numbers.
    static qsizetype rowsOf(const QString& pdf, int page) {
        static const QRegularExpression kNumber("^\\d{6}$");
        return std::ranges::count_if(wordsOfPage(pdf, page),
                                     [](const Word& word) { return word.text.contains(kNumber); });
    }

    /// Pairs of words that touch each other.
    static std::vector<QString> overlaps(const std::vector<Word>& words) {
        std::vector<QString> found;
        for (auto one = words.begin(); one != words.end(); ++one)
            for (auto other = words.begin(); other != one; ++other) {
                const QRectF shared = one->place.intersected(other->place);
                if (shared.width() > 0.5 && shared.height() > 2)
                    found.push_back(one->text + " / " + other->text);
            }
        return found;
    }
};

ShopRow row(const QString& client, std::int64_t cents) {
    return {QString("000123"),         client,           QDate(2026, 3, 1), Amount{cents * 100},
            QString("Banco do Norte"), QDate(2026, 4, 5)};
}

TEST_F(Pages, OfOneRowTotalToItsAmount) {
    const QStringList lines = linesOfPage(pdfOf(givenRows({row("Maria da Conceição", 123456)})), 1);
    ASSERT_EQ(lines.size(), 5);
    EXPECT_THAT(columnsOf(lines[0]), ElementsAre("Relatório de Cheques", "Página: 1"));
    EXPECT_EQ(lines[1].simplified(),
              "Referente ao período: 01/01/2026 a 31/12/2026 Data: 20/11/2026");
    EXPECT_EQ(lines[2].simplified(), "Cheque Nome Dt. Emissão Valor Cheque Banco Bom Para");
    EXPECT_EQ(lines[3].simplified(),
              "000123 Maria da Conceição 01/03/2026 1.234,56 Banco do Norte 05/04/2026");
    EXPECT_EQ(lines[4].simplified(), "Total: 1.234,56");
}

TEST_F(Pages, AreAsManyAsThereAreAndEachHasItsNumber) {
    const QString pdf = pdfOf(inventedRows(kRowsOnPage + 1));
    EXPECT_EQ(propertyOf(pdf, "Pages"), "2");
    EXPECT_EQ(propertyOf(pdf, "Title"), "Relatório de Cheques");
    EXPECT_TRUE(propertyOf(pdf, "Page size").contains("A4"));
    for (const int page : {1, 2})
        EXPECT_EQ(columnsOf(linesOfPage(pdf, page)[0]).last(), QString("Página: %1").arg(page));
    EXPECT_EQ(rowsOf(pdf, 1) + rowsOf(pdf, 2), kRowsOnPage + 1);
}

TEST_F(Pages, TellTheirLanguage) {
    report_.setTitle("Relatório de <A & B>");
    const QString pdf = pdfOf(inventedRows(1));
    EXPECT_EQ(propertyOf(pdf, "Title"), "Relatório de <A & B>");
    const QString metadata = outputOf("pdfinfo", {"-meta", pdf});
    EXPECT_TRUE(metadata.contains("<dc:language><rdf:Bag><rdf:li>pt-BR</rdf:li>"))
        << metadata.toStdString();
    EXPECT_TRUE(metadata.contains(">Relatório de &lt;A &amp; B&gt;</rdf:li>"));
}

// A total alone on its page belongs to nothing.
TEST_F(Pages, CarryTwoRowsOnWithATotalThatHasNoRoom) {
    struct Case {
        int rows;
        std::vector<qsizetype> onPages;
    };
    for (const auto& [rows, onPages] : {
             Case{1,                   {1}                              },
             Case{2,                   {2}                              },
             Case{kRowsAboveTotal,     {kRowsAboveTotal}                },
             Case{kRowsOnPage,         {kRowsOnPage - 2, 2}             },
             Case{kRowsOnPage + 1,     {kRowsOnPage - 1, 2}             },
             Case{kRowsOnPage + 2,     {kRowsOnPage, 2}                 },
             Case{kRowsOnPage + 3,     {kRowsOnPage, 3}                 },
             Case{kRowsOnPage * 2,     {kRowsOnPage, kRowsOnPage - 2, 2}},
             Case{kRowsOnPage * 2 + 1, {kRowsOnPage, kRowsOnPage - 1, 2}},
    }) {
        const QString pdf = pdfOf(inventedRows(rows));
        const int pages = propertyOf(pdf, "Pages").toInt();
        std::vector<qsizetype> found;
        for (int page = 1; page <= pages; ++page) {
            found.push_back(rowsOf(pdf, page));
            EXPECT_EQ(lineWith(linesOfPage(pdf, page), "Total").isEmpty(), page < pages);
        }
        EXPECT_EQ(found, onPages) << rows;
        EXPECT_EQ(linesOfPage(pdf, pages).last().simplified(),
                  "Total: " + formatMoney(shop_.total));
        for (qint64 row = 0; row < rows; ++row) {
            const Relatorio::Rows there = report_.rowsOf(report_.pageOf(row));
            EXPECT_TRUE(there.first <= row && row < there.end) << row;
        }
    }
}

TEST_F(Pages, HaveLabelsBesideTheirValues) {
    const std::vector<Word> words = wordsOfPage(pdfOf(inventedRows(3)), 1);
    int labels = 0;
    for (std::size_t i = 0; i + 1 < words.size(); ++i)
        if (words[i].text.endsWith(':')) {
            ++labels;
            EXPECT_TRUE(words[i].text != "período:" || words[i + 1].text == "01/01/2026");
            EXPECT_NEAR(words[i].place.center().y(), words[i + 1].place.center().y(), 1);
            EXPECT_GT(words[i + 1].place.left(), words[i].place.right());
            EXPECT_LT(words[i + 1].place.left(), words[i].place.right() + 4)
                << words[i].text.toStdString();
        }
    EXPECT_EQ(labels, 4);
    const auto until = std::ranges::find(words, QString("a"), &Word::text);
    ASSERT_TRUE(until != words.begin() && until != words.end());
    EXPECT_LT(until->place.left(), (until - 1)->place.right() + 6);
}

// Whoever copies or searches a name in the file finds its letters, not signs that are two of them.
TEST_F(Pages, HaveEachLetterOfATextByItself) {
    const QStringList names = {"Figueira Oficina fim", "difícil aflito", "Rafael e Cefas efficient",
                               "José" + QString(QChar(0x0301)) + " fica"};
    std::vector<ShopRow> rows;
    for (const QString& name : names)
        rows.push_back(row(name, 100));
    rows.push_back(row("Oficina " + QString("muito fina ").repeated(300), 100)); // cut off
    const QString pdf = pdfOf(givenRows(rows));
    const QStringList lines = linesOfPage(pdf, 1);
    for (const QString& name : names.first(3))
        EXPECT_NE(lineWith(lines, name), QString()) << name.toStdString();
    EXPECT_NE(lineWith(lines, "fica"), QString());
    for (const QString& line : lines)
        for (const QChar c : line)
            EXPECT_FALSE(c >= QChar(0xFB00) && c <= QChar(0xFB06)) << line.toStdString();
}

TEST_F(Pages, TotalToTheCentOverManyRows) {
    const QString pdf = pdfOf(inventedRows(5000));
    std::int64_t cents = 0;
    for (qint64 i = 0; i < 5000; ++i)
        cents += inventedAmount(i).tenThousandths / 100;
    EXPECT_EQ(lineWith(linesOfPage(pdf, 109), "Total"), "Total: " + formatMoney({cents * 100}));
    EXPECT_EQ(propertyOf(pdf, "Pages"), "109");
}

TEST_F(Pages, HaveTheDatesOfTheFilterAsTheyWereWhenTheReportBegan) {
    ASSERT_TRUE(shop_.begin(inventedRows(100)));
    shop_.first = QDate(1999, 1, 1);
    shop_.last = QDate(1999, 1, 2);
    shop_.today = QDate(1999, 1, 3);
    ASSERT_EQ(savePdf(report_, path("r.pdf"), goOn).outcome, SaveOutcome::saved);
    for (const int page : {1, 3})
        EXPECT_EQ(linesOfPage(path("r.pdf"), page)[1].simplified(),
                  "Referente ao período: 01/01/2026 a 31/12/2026 Data: 20/11/2026");
}

TEST_F(Pages, KeepTheTitleTheyBeganWith) {
    ASSERT_TRUE(shop_.begin(inventedRows(1)));
    report_.setTitle("Relatório de Cheques Sem Fundos");
    EXPECT_EQ(report_.title(), "Relatório de Cheques");
    ASSERT_TRUE(shop_.begin(inventedRows(1)));
    EXPECT_EQ(report_.title(), "Relatório de Cheques Sem Fundos");
}

TEST_F(Pages, LeaveEmptyWhatIsNull) {
    const QStringList lines =
        linesOfPage(pdfOf(givenRows({
                        ShopRow{QString("7"), {}, {}, {}, {}, {}},
                        row("Ana", 100)
    })),
                    1);
    EXPECT_EQ(lines[3].simplified(), "7");
    EXPECT_EQ(lines.back().simplified(), "Total: 1,00");
}

TEST_F(Pages, HaveTheirFontsWithThem) {
    const QStringList fonts =
        outputOf("pdffonts", {pdfOf(inventedRows(3))}).split('\n', Qt::SkipEmptyParts).sliced(2);
    ASSERT_FALSE(fonts.isEmpty());
    for (const QString& font : fonts) {
        EXPECT_TRUE(font.contains("yes")) << font.toStdString();
        EXPECT_TRUE(font.contains("DejaVuSans")) << font.toStdString();
    }
}

TEST_F(Pages, CutLongNamesWithAnEllipsis) {
    const QString name = "Comercial de Tecidos " + QString("muito ").repeated(2000);
    const QString pdf = pdfOf(givenRows({row(name, 100), row("Ana", 200)}));
    EXPECT_EQ(propertyOf(pdf, "Pages"), "1");
    EXPECT_TRUE(linesOfPage(pdf, 1).join(' ').contains("…"));
    const qreal right = (15 + 16 + 4 + 56) * kPointsPerMm; // of the names' column
    for (const Word& word : wordsOfPage(pdf, 1))
        if (word.text.contains("…")) {
            EXPECT_LE(word.place.right(), right + 0.1);
            EXPECT_GE(word.place.right(), right - 25);
        }
    EXPECT_THAT(overlaps(wordsOfPage(pdf, 1)), IsEmpty());
}

TEST_F(Pages, NeverCutAnAmount) {
    const std::int64_t large = 12'345'678'901'234;
    const QString pdf = pdfOf(givenRows({row("Ana", large), row("Bia", 100)}));
    const QStringList lines = linesOfPage(pdf, 1);
    EXPECT_TRUE(lineWith(lines, "Ana").contains(" 123.456.789.012,34 "))
        << lines.join('\n').toStdString();
    for (const Word& word : wordsOfPage(pdf, 1))
        if (word.text.startsWith("123.") && word.place.top() < 130) {
            EXPECT_GE(word.place.left(), (15 + 99) * kPointsPerMm - 0.1);
            EXPECT_LE(word.place.right(), (15 + 123) * kPointsPerMm + 0.1);
        }
    EXPECT_THAT(overlaps(wordsOfPage(pdf, 1)), IsEmpty());
}

TEST_F(Pages, NeverCutANumber) {
    const QStringList numbers = {"1234567890", "1234567890123456", "98765432109876543210",
                                 "12345678901234567890123456789012345678901234567890"};
    std::vector<ShopRow> rows;
    for (const QString& number : numbers) {
        rows.push_back(row("Ana", 100));
        rows.back().number = number;
    }
    const QString pdf = pdfOf(givenRows(rows));
    const qreal left = 15 * kPointsPerMm - 0.1;
    const qreal right = (15 + 16) * kPointsPerMm + 0.1;
    QString found; // downwards
    for (const Word& word : wordsOfPage(pdf, 1))
        if (word.place.left() >= left && word.place.right() <= right && word.text[0].isDigit())
            found += word.text;
    EXPECT_EQ(found, numbers.join(""));
    EXPECT_THAT(overlaps(wordsOfPage(pdf, 1)), IsEmpty());
}

// As far as two lines take them: that is all a client's or a bank's name can have.
TEST_F(Pages, ShowNamesWhole) {
    const QString client = "Comercial de Tecidos e Armarinhos Nossa Senhora da Penha de "
                           "França Importação e Exportação Ltda. ME";
    ShopRow one = row(client, 100);
    one.bank = QString("Banco Cooperativo de Desenvolvimento do Vale do Paraíba S.A.");
    one.number = QString("000000123456789-A");
    const QString pdf = pdfOf(givenRows({one, row(QString("X").repeated(60), 100)}));
    QStringList found;
    for (const Word& word : wordsOfPage(pdf, 1))
        found += word.text;
    const QString text = found.join(' ');
    EXPECT_FALSE(text.contains("…")) << text.toStdString();
    for (const QString& word : client.split(' ') + std::get<QString>(one.bank).split(' '))
        EXPECT_TRUE(found.contains(word)) << word.toStdString();
    EXPECT_EQ(text.count('X'), 60);
    EXPECT_THAT(overlaps(wordsOfPage(pdf, 1)), IsEmpty());
}

TEST_F(Pages, HoldHostileTexts) {
    const QString pdf = pdfOf(givenRows({
        row("um\tdois\ntres\r\nde\x01\x02\x1b\x7f", 100),
        row("שלום עולם", 200),
        row(QString("R$ ") + QChar(0x202E) + "99,99", 300),
        row("Festa 😀🎉 Ltda", 400),
        row(QString(QChar(0xD800)) + "só metade", 500),
        row(QString("a") + QString(QChar(0x0301)).repeated(300), 600),
        row(QString("W̷̛").repeated(200), 700),
        row("<b>&amp;</b>", 800),
    }));
    EXPECT_EQ(propertyOf(pdf, "Pages"), "1");
    const QStringList lines = linesOfPage(pdf, 1);
    EXPECT_TRUE(lineWith(lines, "um dois tres de").contains(" 1,00 "))
        << lines.join('\n').toStdString();
    EXPECT_TRUE(lineWith(lines, "R$ 99,99").contains(" 3,00 "));
    EXPECT_TRUE(lineWith(lines, "<b>&amp;</b>").contains(" 8,00 "));
    EXPECT_EQ(lines.back().simplified(), "Total: 36,00");
    std::vector<QString> amounts;
    for (const Word& word : wordsOfPage(pdf, 1))
        if (word.text.endsWith(",00") && word.text != "36,00")
            amounts.push_back(word.text);
    EXPECT_EQ(amounts.size(), 8U);
}

TEST_F(Pages, OverlapNowhere) {
    const QString pdf = pdfOf(inventedRows(qint64{2} * kRowsOnPage));
    for (const int page : {1, 2, 3}) {
        const std::vector<Word> words = wordsOfPage(pdf, page);
        EXPECT_THAT(overlaps(words), IsEmpty());
        for (const Word& word : words) {
            EXPECT_GE(word.place.left(), 15 * kPointsPerMm - 0.1) << word.text.toStdString();
            EXPECT_LE(word.place.right(), 195 * kPointsPerMm + 0.5) << word.text.toStdString();
        }
    }
}

TEST_F(Pages, HaveAmountsWithTheirCommasBelowEachOther) {
    const std::vector<ShopRow> rows = {row("a", 1), row("b", 123456789), row("c", -777)};
    ASSERT_TRUE(shop_.begin(givenRows(rows)));
    const auto commaOf = [&](qint64 at, const QString& amount) {
        return report_.placeOf(at, 3, amount.indexOf(','), 1).left();
    };
    const qreal comma = commaOf(0, "0,01");
    EXPECT_NEAR(commaOf(1, "1.234.567,89"), comma, 0.01);
    EXPECT_NEAR(commaOf(2, "-7,77"), comma, 0.01);

    // The total is bold, its decimals wider.
    ReportLayout layout = LayoutDoRelatorio::leiaute();
    PagePainter painter(layout);
    const ReportField& detail = layout.detail.fields[3];
    const ReportField& total = layout.footer.fields[0];
    EXPECT_NEAR(painter.placeOf(detail, "1,00", 1, 1).left(),
                painter.placeOf(total, "1,00", 1, 1).left(), 0.01);
}

TEST_F(Pages, PlaceCharactersWhereTheyStand) {
    ASSERT_TRUE(shop_.begin(
        givenRows({row("Maria da Conceição", 100), row(QString("muito ").repeated(100), 100)})));
    const QRectF all = report_.placeOf(0, 1, 0, 18);
    const QRectF first = report_.placeOf(0, 1, 0, 5);
    const QRectF rest = report_.placeOf(0, 1, 5, 13);
    EXPECT_NEAR(all.left(), 15 + 16 + 4, 0.01);
    EXPECT_NEAR(first.left(), all.left(), 0.01);
    EXPECT_NEAR(first.right(), rest.left(), 0.2);
    EXPECT_NEAR(rest.right(), all.right(), 0.2);
    EXPECT_LT(all.width(), 40);
    // On a line of its own, cut off, and on both lines: the whole place.
    ASSERT_TRUE(shop_.begin(
        givenRows({row("Maria da Conceição Aparecida dos Santos Cavalcanti de Albuquerque", 100),
                   row(QString("muito ").repeated(100), 100)})));
    const QRectF above = report_.placeOf(0, 1, 0, 5);
    const QRectF below = report_.placeOf(0, 1, 54, 11);
    EXPECT_LE(above.bottom(), below.top() + 0.01);
    EXPECT_LT(above.width(), 10);
    EXPECT_LT(below.width(), 20);
    EXPECT_NEAR(report_.placeOf(0, 1, 0, 65).width(), 50, 0.01);
    EXPECT_NEAR(report_.placeOf(1, 1, 500, 5).width(), 50, 0.01);
}

} // namespace
