// Printing, on a printer that is a PDF file.
#include "print/ReportPrinting.h"

#include "print/OtherPrograms.h"
#include "print/ReportFixture.h"

#include <QPageRanges>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Printing : public ReportTest {
protected:
    Printing() {
        setPrinterFunctions({[this] { return installed_; },
                             [this](QPrinter& printer, int pageCount, QWidget*) {
                                 EXPECT_EQ(pageCount, report_.pageCount());
                                 asked_ = true;
                                 printer.setOutputFormat(QPrinter::PdfFormat);
                                 printer.setOutputFileName(path("paper.pdf"));
                                 return choose_(printer);
                             }});
    }
    ~Printing() override { setPrinterFunctions({}); }

    PrintOutcome print(int page = 1) { return printReport(report_, page, nullptr, goOn); }

    /// The number printed on each sheet.
    QStringList sheets() {
        QStringList numbers;
        const int count = propertyOf(path("paper.pdf"), "Pages").toInt();
        for (int sheet = 1; sheet <= count; ++sheet)
            numbers += linesOfPage(path("paper.pdf"), sheet)[0].simplified().split(' ').last();
        return numbers;
    }

    bool installed_ = true;
    bool asked_ = false;
    std::function<bool(QPrinter&)> choose_ = [](QPrinter&) { return true; };
};

TEST_F(Printing, WithoutAPrinterIsRefusedAtOnce) {
    installed_ = false;
    ASSERT_TRUE(shop_.begin(inventedRows(1000)));
    EXPECT_EQ(print(), PrintOutcome::refused);
    EXPECT_THAT(errors_, ElementsAre(errorCode(ReportError::noPrinter)));
    EXPECT_FALSE(asked_);
    EXPECT_FALSE(report_.isComplete());
    // Files need no printer.
    EXPECT_EQ(savePdf(report_, path("r.pdf"), goOn).outcome, SaveOutcome::saved);
}

TEST_F(Printing, PutsEveryPageOnPaperWithItsTotal) {
    ASSERT_TRUE(shop_.begin(inventedRows(100)));
    EXPECT_EQ(print(), PrintOutcome::printed);
    EXPECT_THAT(sheets(), ElementsAre("1", "2", "3"));
    EXPECT_EQ(linesOfPage(path("paper.pdf"), 3).last().simplified(),
              "Total: " + formatMoney(shop_.total));
    EXPECT_EQ(shop_.details, 100);
    EXPECT_THAT(errors_, IsEmpty());
}

TEST_F(Printing, PlacesThePageAsThePdfDoes) {
    ASSERT_TRUE(shop_.begin(inventedRows(3)));
    choose_ = [](QPrinter& printer) {
        printer.setResolution(300); // as a coarse printer's
        return true;
    };
    ASSERT_EQ(print(), PrintOutcome::printed);
    ASSERT_EQ(savePdf(report_, path("r.pdf"), goOn).outcome, SaveOutcome::saved);
    const std::vector<Word> paper = wordsOfPage(path("paper.pdf"), 1);
    const std::vector<Word> pdf = wordsOfPage(path("r.pdf"), 1);
    ASSERT_EQ(paper.size(), pdf.size());
    for (std::size_t i = 0; i < paper.size(); ++i) {
        EXPECT_EQ(paper[i].text, pdf[i].text);
        EXPECT_NEAR(paper[i].place.left(), pdf[i].place.left(), 0.2);
        EXPECT_NEAR(paper[i].place.top(), pdf[i].place.top(), 0.2);
    }
}

TEST_F(Printing, PrintsThePagesAskedFor) {
    ASSERT_TRUE(shop_.begin(inventedRows(300)));
    choose_ = [](QPrinter& printer) {
        printer.setPrintRange(QPrinter::PageRange);
        printer.setPageRanges(QPageRanges::fromString("2-3,5"));
        return true;
    };
    EXPECT_EQ(print(), PrintOutcome::printed);
    EXPECT_THAT(sheets(), ElementsAre("2", "3", "5"));
}

TEST_F(Printing, PrintsThePageOnShow) {
    ASSERT_TRUE(shop_.begin(inventedRows(300)));
    choose_ = [](QPrinter& printer) {
        printer.setPrintRange(QPrinter::CurrentPage);
        return true;
    };
    EXPECT_EQ(print(4), PrintOutcome::printed);
    EXPECT_THAT(sheets(), ElementsAre("4"));
}

TEST_F(Printing, PrintsCopiesWhereThePrinterCant) {
    ASSERT_TRUE(shop_.begin(inventedRows(50)));
    for (const auto& [collate, expected] : {
             std::pair(true, QStringList{"1",  "2", "1", "2"}
              ), {false, {"1", "1", "2", "2"}   }
    }) {
        choose_ = [collate = collate](QPrinter& printer) {
            printer.setCopyCount(2);
            printer.setCollateCopies(collate);
            return true;
        };
        EXPECT_EQ(print(), PrintOutcome::printed);
        EXPECT_EQ(sheets(), expected);
    }
}

TEST_F(Printing, NeedsPaperWithRoomForThePage) {
    ASSERT_TRUE(shop_.begin(inventedRows(50)));
    choose_ = [](QPrinter& printer) { return printer.setPageSize(QPageSize(QPageSize::A5)); };
    EXPECT_EQ(print(), PrintOutcome::refused);
    EXPECT_THAT(errors_, ElementsAre(errorCode(ReportError::pageTooSmall)));
    EXPECT_THAT(files(), IsEmpty());
    choose_ = [](QPrinter& printer) { return printer.setPageSize(QPageSize(QPageSize::A3)); };
    EXPECT_EQ(print(), PrintOutcome::printed);
}

TEST_F(Printing, CanBeGivenUp) {
    ASSERT_TRUE(shop_.begin(inventedRows(300)));
    choose_ = [](QPrinter&) { return false; };
    EXPECT_EQ(print(), PrintOutcome::givenUp);
    EXPECT_THAT(files(), IsEmpty());
    choose_ = [](QPrinter&) { return true; };
    EXPECT_EQ(printReport(report_, 1, nullptr, [](qint64 done, qint64) { return done < 2; }),
              PrintOutcome::givenUp);
    EXPECT_THAT(errors_, IsEmpty());
    EXPECT_TRUE(shop_.begin(inventedRows(1)));
}

TEST_F(Printing, ThatThePrinterDoesntTakeFails) {
    ASSERT_TRUE(shop_.begin(inventedRows(3)));
    choose_ = [this](QPrinter& printer) {
        printer.setOutputFileName(path("nenhuma/paper.pdf"));
        return true;
    };
    EXPECT_EQ(print(), PrintOutcome::failed);
}

TEST_F(Printing, IsOneAtATime) {
    ASSERT_TRUE(shop_.begin(inventedRows(3)));
    choose_ = [this](QPrinter&) {
        EXPECT_FALSE(report_.begin(inventedRows(3)));
        EXPECT_EQ(print(), PrintOutcome::refused);
        return true;
    };
    EXPECT_EQ(print(), PrintOutcome::printed);
    EXPECT_THAT(errors_, ElementsAre(errorCode(ReportError::alreadyRunning),
                                     errorCode(ReportError::alreadyRunning)));
}

} // namespace
