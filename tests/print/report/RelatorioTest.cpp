// Rows, events, pages and who may be at work when.
#include "print/ReportFixture.h"

#include <QImage>
#include <QPainter>

#include <array>
#include <stdexcept>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// Counts what is taken of it; runs something, or throws, at one of its rows.
class WatchedRows final : public RowSource {
public:
    WatchedRows(qint64 count, qint64& taken, qint64 at = -1, std::function<void()> work = {})
        : rows_(inventedRows(count)), taken_(taken), at_(at), work_(std::move(work)) {}

    [[nodiscard]] QStringList columns() const override { return rows_->columns(); }
    NextRow next(std::vector<ReportValue>& values) override {
        if (taken_ == at_)
            work_();
        const NextRow found = rows_->next(values);
        taken_ += found == NextRow::row ? 1 : 0;
        return found;
    }

private:
    std::unique_ptr<RowSource> rows_;
    qint64& taken_;
    qint64 at_;
    std::function<void()> work_;
};

Amount sumOf(qint64 rows) {
    Amount sum;
    for (qint64 row = 0; row < rows; ++row)
        sum.tenThousandths += inventedAmount(row).tenThousandths;
    return sum;
}

class Report : public ReportTest {
protected:
    void paint(int page) {
        QImage paper(400, 560, QImage::Format_RGB32);
        QPainter painter(&paper);
        report_.paintPage(painter, page, 48);
    }
};

TEST_F(Report, WithoutRowsHasNothingToPrint) {
    EXPECT_FALSE(shop_.begin(inventedRows(0)));
    EXPECT_THAT(errors_, ElementsAre(errorCode(ReportError::nothingToPrint)));
    EXPECT_EQ(report_.pageCount(), 0);
    EXPECT_TRUE(report_.isComplete());
}

TEST_F(Report, TakesTheRowsOfTheFirstPageToBegin) {
    qint64 taken = 0;
    ASSERT_TRUE(shop_.begin(std::make_unique<WatchedRows>(100'000, taken)));
    EXPECT_EQ(taken, kRowsOnPage + 1);
    EXPECT_EQ(report_.pageCount(), 2);
    EXPECT_FALSE(report_.isComplete());
}

TEST_F(Report, TakesTheRestWhileTheProgramIsIdle) {
    ASSERT_TRUE(shop_.begin(inventedRows(3000)));
    int news = 0;
    QObject::connect(&report_, &Relatorio::rowsTaken, &shop_, [&] { ++news; });
    ASSERT_TRUE(QTest::qWaitFor([&] { return report_.isComplete(); }, 60'000));
    EXPECT_GT(news, 0);
    EXPECT_EQ(report_.rows().size(), 3000);
    EXPECT_EQ(shop_.total, sumOf(3000));
    EXPECT_EQ(report_.pageCount(), 66);
}

TEST_F(Report, ToldItsProgressCanBeStoppedAndGoesOnByItself) {
    ASSERT_TRUE(shop_.begin(inventedRows(3000)));
    {
        const Relatorio::Run run(report_);
        EXPECT_EQ(report_.takeAll(run,
                                  [](qint64 done, qint64 total) {
                                      EXPECT_EQ(total, 0);
                                      return done < 1000;
                                  }),
                  RowsState::coming);
    }
    EXPECT_FALSE(report_.isComplete());
    EXPECT_GE(report_.rows().size(), 1000);
    ASSERT_TRUE(QTest::qWaitFor([&] { return report_.isComplete(); }, 60'000));
    EXPECT_EQ(shop_.total, sumOf(3000));
}

TEST_F(Report, TellsOfEachDetailOnceHoweverOftenItIsPainted) {
    std::vector<QString> numbers;
    QObject::connect(&report_, &Relatorio::detail, &shop_, [&](const ReportRow& row) {
        numbers.push_back(std::get<QString>(row["NUMERO"]));
    });
    ASSERT_TRUE(shop_.begin(inventedRows(100)));
    paint(2);
    paint(1);
    takeAll();
    paint(report_.pageCount());
    paint(1);
    EXPECT_EQ(shop_.details, 100);
    ASSERT_EQ(numbers.size(), 100U);
    EXPECT_EQ(numbers.front(), "100000");
    EXPECT_EQ(numbers.back(), "100099");
    EXPECT_EQ(shop_.total, sumOf(100));
}

TEST_F(Report, BeginsAnewWithATotalOfItsOwn) {
    ASSERT_TRUE(shop_.begin(inventedRows(100)));
    ASSERT_TRUE(shop_.begin(inventedRows(60)));
    takeAll();
    EXPECT_EQ(shop_.total, sumOf(60));
    EXPECT_EQ(report_.rows().size(), 60);
}

TEST_F(Report, HasAsManyPagesAsRowsAndTotalNeed) {
    struct Case {
        int rows;
        int pages;
    };
    for (const auto& [rows, pages] : {
             Case{1,                             1},
             Case{kRowsAboveTotal,               1},
             Case{kRowsOnPage,                   2},
             Case{kRowsOnPage + 1,               2},
             Case{kRowsOnPage + kRowsAboveTotal, 2},
             Case{2 * kRowsOnPage,               3}
    }) {
        ASSERT_TRUE(shop_.begin(inventedRows(rows)));
        takeAll();
        EXPECT_EQ(report_.pageCount(), pages) << rows << " rows";
    }
}

TEST_F(Report, KnowsWhichRowsStandOnAPage) {
    ASSERT_TRUE(shop_.begin(inventedRows(qint64{2} * kRowsOnPage)));
    takeAll();
    EXPECT_EQ(report_.rowsOf(1).first, 0);
    EXPECT_EQ(report_.rowsOf(1).end, kRowsOnPage);
    EXPECT_EQ(report_.rowsOf(2).end, 2 * kRowsOnPage - 2);
    EXPECT_EQ(report_.rowsOf(3).first, 2 * kRowsOnPage - 2); // two go with the total
    EXPECT_EQ(report_.rowsOf(3).end, 2 * kRowsOnPage);
    EXPECT_EQ(report_.pageOf(kRowsOnPage - 1), 1);
    EXPECT_EQ(report_.pageOf(kRowsOnPage), 2);
}

TEST_F(Report, AsksForTheTotalOnTheLastPageOnlyWhenAllRowsAreIn) {
    std::vector<QString> asked;
    report_.setComputedField([&](const QString& name, ReportValue&) { asked.push_back(name); });
    ASSERT_TRUE(shop_.begin(inventedRows(kRowsOnPage + 2)));
    asked.clear();
    paint(2); // its rows aren't all there yet
    EXPECT_THAT(asked, ElementsAre("Pagina"));
    takeAll();
    asked.clear();
    paint(1);
    EXPECT_THAT(asked, ElementsAre("Pagina"));
    asked.clear();
    paint(2);
    EXPECT_THAT(asked, ElementsAre("Pagina", "Total"));
}

TEST_F(Report, AsksOnceForWhatIsTheSameOnEveryPage) {
    std::vector<QString> asked;
    report_.setComputedField([&](const QString& name, ReportValue&) { asked.push_back(name); });
    ASSERT_TRUE(shop_.begin(inventedRows(10)));
    EXPECT_THAT(asked, ElementsAre("DTInicial", "DTFinal", "Data"));
}

TEST_F(Report, TellsThePageWhileItIsPainted) {
    std::vector<int> pages;
    report_.setComputedField([&](const QString& name, ReportValue&) {
        if (name == "Pagina")
            pages.push_back(report_.currentPage());
    });
    ASSERT_TRUE(shop_.begin(inventedRows(200)));
    takeAll();
    for (const int page : {3, 1, 5})
        paint(page);
    EXPECT_THAT(pages, ElementsAre(3, 1, 5));
}

TEST_F(Report, LetsTheTotalsLineBeMovedWhenTheTotalIsPrinted) {
    ASSERT_TRUE(shop_.begin(inventedRows(3)));
    takeAll();
    EXPECT_EQ(report_.layout().footer.lines[0].to, QPointF(180, 1));
    paint(1);
    EXPECT_EQ(report_.layout().footer.lines[0].from, LayoutDoRelatorio::linhaDoTotal().p1());
    EXPECT_EQ(report_.layout().footer.lines[0].to, LayoutDoRelatorio::linhaDoTotal().p2());
}

// ---- Already running

TEST_F(Report, CantBeginWithinAnother) {
    qint64 taken = 0;
    bool second = true;
    ASSERT_TRUE(shop_.begin(std::make_unique<WatchedRows>(
        10, taken, 5, [&] { second = report_.begin(inventedRows(5)); })));
    EXPECT_FALSE(second);
    EXPECT_THAT(errors_, ElementsAre(errorCode(ReportError::alreadyRunning)));
    takeAll();
    EXPECT_EQ(report_.rows().size(), 10);
}

TEST_F(Report, CantBeginWhileAFileOfAnotherIsWritten) {
    ShopReport other;
    std::vector<qint32> errors;
    QObject::connect(&other.report, &Relatorio::error, &other,
                     [&](qint32 code) { errors.push_back(code); });
    ASSERT_TRUE(shop_.begin(inventedRows(10)));
    const SaveResult result = saveCsv(report_, path("r.csv"), [&](qint64, qint64) {
        EXPECT_FALSE(other.begin(inventedRows(1)));
        EXPECT_EQ(savePdf(report_, path("r.pdf"), goOn).outcome, SaveOutcome::refused);
        return true;
    });
    EXPECT_EQ(result.outcome, SaveOutcome::saved);
    EXPECT_THAT(errors, ElementsAre(errorCode(ReportError::alreadyRunning)));
    EXPECT_THAT(errors_, ElementsAre(errorCode(ReportError::alreadyRunning)));
    EXPECT_THAT(files(), ElementsAre("r.csv"));
    EXPECT_TRUE(other.begin(inventedRows(1)));
}

TEST_F(Report, CantBeginWhileItsRowsAreTakenForAFile) {
    ASSERT_TRUE(shop_.begin(inventedRows(1000)));
    bool refused = false;
    EXPECT_EQ(savePdf(report_, path("r.pdf"),
                      [&](qint64, qint64 total) {
                          if (total == 0)
                              refused = !shop_.report.begin(inventedRows(1));
                          return total == 0;
                      })
                  .outcome,
              SaveOutcome::cancelled);
    EXPECT_TRUE(refused);
}

TEST_F(Report, CantBeginWithinAnIdleSlice) {
    qint64 taken = 0;
    bool second = true;
    ASSERT_TRUE(shop_.begin(std::make_unique<WatchedRows>(
        200, taken, 100, [&] { second = report_.begin(inventedRows(5)); })));
    ASSERT_TRUE(QTest::qWaitFor([&] { return report_.isComplete(); }, 60'000));
    EXPECT_FALSE(second);
    EXPECT_EQ(report_.rows().size(), 200);
}

TEST_F(Report, OnShowOnlyGivesWayToAnother) {
    ASSERT_TRUE(shop_.begin(inventedRows(100'000)));
    ASSERT_FALSE(report_.isComplete());
    ASSERT_TRUE(shop_.begin(inventedRows(7)));
    ASSERT_TRUE(QTest::qWaitFor([&] { return report_.isComplete(); }, 60'000));
    EXPECT_EQ(report_.rows().size(), 7);
    EXPECT_EQ(shop_.details, 7);
    EXPECT_THAT(errors_, IsEmpty());
}

// ---- A source that fails

const auto kBreak = [] { throw std::runtime_error("a tabela sumiu"); };

TEST_F(Report, LetsOutWhatItsSourceThrows) {
    qint64 taken = 0;
    EXPECT_THROW(shop_.begin(std::make_unique<WatchedRows>(10, taken, 5, kBreak)),
                 std::runtime_error);
    EXPECT_TRUE(shop_.begin(inventedRows(3))); // nothing is at work any more
}

TEST_F(Report, WhoseSourceFailsAtOnceLeavesTheOneBefore) {
    ASSERT_TRUE(shop_.begin(inventedRows(3)));
    qint64 taken = 0;
    EXPECT_THROW(report_.begin(std::make_unique<WatchedRows>(10, taken, 0, kBreak)),
                 std::runtime_error);
    takeAll();
    EXPECT_EQ(report_.rows().size(), 3);
}

TEST_F(Report, HandsWhatFailsInAnIdleSliceToTheFailureHandler) {
    qint64 taken = 0;
    bool broken = false;
    ASSERT_TRUE(shop_.begin(std::make_unique<WatchedRows>(200, taken, 100, [&] {
        broken = true;
        kBreak();
    })));
    expectFailure("a tabela sumiu");
    ASSERT_TRUE(QTest::qWaitFor([&] { return broken; }, 60'000));
    EXPECT_EQ(report_.state(), RowsState::failed);
    // What is there is not all: no file, no print, no total.
    for (const auto save : {saveCsv, saveXlsx, savePdf}) {
        const SaveResult result = save(report_, path("r"), goOn);
        EXPECT_EQ(result.outcome, SaveOutcome::failed);
        EXPECT_EQ(result.reason, kIncomplete);
    }
    EXPECT_THAT(files(), IsEmpty());
    std::vector<QString> asked;
    report_.setComputedField([&](const QString& name, ReportValue&) { asked.push_back(name); });
    for (int page = 1; page <= report_.pageCount(); ++page)
        paint(page);
    EXPECT_THAT(asked, testing::Not(testing::Contains("Total")));
}

TEST_F(Report, WhoseSourceFailsWithinTheFirstPageLeavesTheOneBeforeComingIn) {
    ASSERT_TRUE(shop_.begin(inventedRows(3000)));
    const QString title = report_.title();
    report_.setTitle("Outro");
    qint64 taken = 0;
    EXPECT_THROW(report_.begin(std::make_unique<WatchedRows>(100, taken, 20, kBreak)),
                 std::runtime_error);
    EXPECT_EQ(report_.title(), title);
    EXPECT_EQ(report_.rows().size(), kRowsOnPage + 1);
    ASSERT_TRUE(QTest::qWaitFor([&] { return report_.isComplete(); }, 60'000));
    EXPECT_EQ(report_.rows().size(), 3000);
}

// ---- Rows that change while they come in

/// Two states of the rows: those of the first come until `changesAt`, then all of the second.
class ChangingRows final : public RowSource {
public:
    ChangingRows(qint64 first, qint64 changesAt, std::vector<ShopRow> second)
        : rows_(inventedRows(first)), changesAt_(changesAt), second_(std::move(second)) {}

    [[nodiscard]] QStringList columns() const override { return LayoutDoRelatorio::colunas(); }
    NextRow next(std::vector<ReportValue>& values) override {
        if (given_++ != changesAt_)
            return rows_->next(values);
        rows_ = givenRows(second_);
        return NextRow::anew;
    }

private:
    std::unique_ptr<RowSource> rows_;
    qint64 given_ = 0;
    qint64 changesAt_;
    std::vector<ShopRow> second_;
};

std::vector<ShopRow> secondState(int rows) {
    return std::vector<ShopRow>(static_cast<std::size_t>(rows),
                                ShopRow{.number = QString("NOVO"), .amount = Amount{10'000}});
}

/// How many of the rows on show are of the second state.
qint64 ofSecondState(const Relatorio& report) {
    qint64 count = 0;
    report.rows().visit(0, report.rows().size(), [&](qint64, const std::vector<ReportValue>& row) {
        count += std::get<QString>(row[0]) == "NOVO" ? 1 : 0;
        return true;
    });
    return count;
}

TEST_F(Report, OfRowsThatChangeMeanwhileIsOfOneStateAtEveryMoment) {
    ASSERT_TRUE(shop_.begin(std::make_unique<ChangingRows>(3000, 1000, secondState(2500))));
    int replaced = 0;
    QObject::connect(&report_, &Relatorio::rowsReplaced, &shop_, [&] { ++replaced; });
    const auto whole = [&] {
        const qint64 second = ofSecondState(report_);
        EXPECT_TRUE(second == 0 || second == report_.rows().size()) << second;
        EXPECT_TRUE(second > 0 || report_.rows().size() <= 1000);
    };
    QObject::connect(&report_, &Relatorio::detail, &shop_, [&, n = 0](const ReportRow&) mutable {
        if (++n % 100 == 0)
            whole();
    });
    QObject::connect(&report_, &Relatorio::rowsTaken, &shop_, whole);
    takeAll();
    whole();
    EXPECT_EQ(replaced, 1);
    EXPECT_EQ(report_.rows().size(), 2500);
    EXPECT_EQ(shop_.details, 2500);
    EXPECT_EQ(shop_.total, Amount{qint64{2500} * 10'000});
    EXPECT_EQ(report_.pageCount(), 55);
}

TEST_F(Report, OfRowsThatBecameFewerShowsTheFewer) {
    ASSERT_TRUE(shop_.begin(std::make_unique<ChangingRows>(3000, 1000, secondState(10))));
    takeAll();
    EXPECT_EQ(ofSecondState(report_), 10);
    EXPECT_EQ(report_.pageCount(), 1);
    EXPECT_EQ(shop_.total, Amount{100'000});
}

TEST_F(Report, WhoseRowsChangeWithinTheFirstPageBeginsWithTheNewOnes) {
    ASSERT_TRUE(shop_.begin(std::make_unique<ChangingRows>(3000, 20, secondState(60))));
    EXPECT_EQ(ofSecondState(report_), kRowsOnPage + 1);
    takeAll();
    EXPECT_EQ(shop_.total, Amount{600'000});
}

TEST_F(Report, WhoseRowsAllGoWhileTheyComeInHasNothingToPrint) {
    ASSERT_TRUE(shop_.begin(std::make_unique<ChangingRows>(3000, 1000, secondState(0))));
    takeAll();
    EXPECT_EQ(report_.pageCount(), 0);
    EXPECT_EQ(saveCsv(report_, path("r.csv"), goOn).outcome, SaveOutcome::refused);
    EXPECT_THAT(errors_, ElementsAre(errorCode(ReportError::nothingToPrint)));
}

} // namespace
