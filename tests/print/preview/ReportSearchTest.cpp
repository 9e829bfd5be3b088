#include "print/ReportSearch.h"

#include "print/ReportFixture.h"

namespace {

using testing::IsEmpty;

ShopRow rowOf(const QString& client, std::int64_t cents = 0) {
    return {{}, client, {}, Amount{cents * 100}, {}, {}};
}

class Search : public ReportTest {
protected:
    /// The rows in which hits follow each other, from the first on.
    std::vector<qint64> walk(const QString& text, SearchDirection direction, int steps) {
        std::vector<qint64> rows;
        std::optional<ReportHit> from;
        for (int i = 0; i < steps; ++i) {
            const SearchResult result = findText(report_, text, direction, from, 0, goOn);
            if (!result.hit)
                break;
            from = result.hit;
            rows.push_back(result.hit->row);
        }
        return rows;
    }
    SearchResult find(const QString& text) {
        return findText(report_, text, SearchDirection::forward, {}, 0, goOn);
    }
};

using testing::ElementsAre;

TEST_F(Search, WalksTheHitsForwardAndRoundAgain) {
    ASSERT_TRUE(shop_.begin(givenRows({rowOf("Ana"), rowOf("Bia"), rowOf("Joana"), rowOf("ANA")})));
    EXPECT_THAT(walk("ana", SearchDirection::forward, 5), ElementsAre(0, 2, 3, 0, 2));
    EXPECT_THAT(walk("ana", SearchDirection::backward, 5), ElementsAre(3, 2, 0, 3, 2));
}

TEST_F(Search, TellsWhenItGoesOnAtTheOtherEnd) {
    ASSERT_TRUE(shop_.begin(givenRows({rowOf("Ana"), rowOf("Bia"), rowOf("Ana")})));
    const SearchResult first = find("ana");
    EXPECT_FALSE(first.wrapped);
    const SearchResult second =
        findText(report_, "ana", SearchDirection::forward, first.hit, 0, goOn);
    EXPECT_FALSE(second.wrapped);
    const SearchResult third =
        findText(report_, "ana", SearchDirection::forward, second.hit, 0, goOn);
    EXPECT_TRUE(third.wrapped);
    EXPECT_EQ(third.hit, first.hit);
}

TEST_F(Search, FindsTheOnlyHitAgain) {
    ASSERT_TRUE(shop_.begin(givenRows({rowOf("Bia"), rowOf("Ana"), rowOf("Bia")})));
    EXPECT_THAT(walk("ana", SearchDirection::forward, 3), ElementsAre(1, 1, 1));
    EXPECT_THAT(walk("ana", SearchDirection::backward, 3), ElementsAre(1, 1, 1));
}

TEST_F(Search, WalksTheFieldsOfARow) {
    ASSERT_TRUE(shop_.begin(givenRows({
        {QString("11"), QString("11"), {}, {}, QString("11"), {}},
        {QString("11"), {},            {}, {}, {},            {}}
    })));
    std::vector<qsizetype> fields;
    std::optional<ReportHit> from;
    for (int i = 0; i < 4; ++i) {
        from = findText(report_, "11", SearchDirection::forward, from, 0, goOn).hit;
        fields.push_back(from->field);
    }
    EXPECT_THAT(fields, ElementsAre(0, 1, 4, 0));
    EXPECT_EQ(from->row, 1);
    from = findText(report_, "11", SearchDirection::backward, from, 0, goOn).hit;
    EXPECT_EQ(from->field, 4);
    EXPECT_EQ(from->row, 0);
}

TEST_F(Search, CountsNeitherCaseNorAccents) {
    ASSERT_TRUE(shop_.begin(givenRows({rowOf("Maria da Conceição")})));
    for (const char* text : {"conceicao", "CONCEIÇÃO", "Conceição"}) {
        const SearchResult result = find(QString::fromUtf8(text));
        ASSERT_TRUE(result.hit) << text;
        EXPECT_EQ(result.hit->start, 9);
        EXPECT_EQ(result.hit->length, 9);
    }
}

TEST_F(Search, CountsNoCombiningAccents) {
    ASSERT_TRUE(shop_.begin(givenRows({rowOf("Jose\u0301 Luiz")})));
    const SearchResult result = find("josé l");
    ASSERT_TRUE(result.hit);
    EXPECT_EQ(result.hit->start, 0);
    EXPECT_EQ(result.hit->length, 7);
}

TEST_F(Search, FindsAmountsWithAndWithoutPoints) {
    ASSERT_TRUE(shop_.begin(givenRows({rowOf("Ana", 123456)})));
    for (const char* text : {"1.234,56", "1234,56", "234,5"}) {
        const SearchResult result = find(text);
        ASSERT_TRUE(result.hit) << text;
        EXPECT_EQ(result.hit->field, 3);
    }
    EXPECT_EQ(find("1234,56").hit->start, 0);
    EXPECT_EQ(find("1234,56").hit->length, 8);
    EXPECT_FALSE(find(".").hit); // of what separates thousands alone nothing is left
}

TEST_F(Search, FindsDatesAsTheyAreShown) {
    ASSERT_TRUE(shop_.begin(givenRows({
        {{}, {}, QDate(2026, 3, 1), {}, {}, {}}
    })));
    ASSERT_TRUE(find("01/03/2026").hit);
    EXPECT_EQ(find("01/03/2026").hit->field, 2);
}

TEST_F(Search, FindsWhatIsCutOffOnPaper) {
    ASSERT_TRUE(shop_.begin(givenRows({rowOf(QString("muito ").repeated(100) + "longe")})));
    EXPECT_TRUE(find("longe").hit);
}

TEST_F(Search, OfWhatIsntThereLooksThroughAllRows) {
    ASSERT_TRUE(shop_.begin(inventedRows(3000)));
    const SearchResult result = find("não está aqui");
    EXPECT_FALSE(result.hit);
    EXPECT_TRUE(result.wrapped);
    EXPECT_FALSE(result.cancelled);
    EXPECT_TRUE(report_.isComplete());
    EXPECT_FALSE(find("").hit);
}

TEST_F(Search, TakesInTheRowsItNeeds) {
    ASSERT_TRUE(shop_.begin(inventedRows(3000)));
    ASSERT_TRUE(find("100010").hit);
    EXPECT_FALSE(report_.isComplete());
    EXPECT_EQ(find("102999").hit->row, 2999);
    EXPECT_TRUE(report_.isComplete());
}

TEST_F(Search, FindsTheTotal) {
    ASSERT_TRUE(shop_.begin(givenRows({rowOf("Ana", 100'000), rowOf("Bia", 23'456)})));
    for (const char* text : {"total", "1.234,56", "1234,56", "Total: 1.234"}) {
        const SearchResult result = find(text);
        ASSERT_TRUE(result.hit) << text;
        EXPECT_EQ(result.hit->row, 2);
        EXPECT_EQ(result.hit->field, 0);
        EXPECT_EQ(report_.pageOf(result.hit->row), 1);
        EXPECT_EQ(hitsOnPage(report_, text, 1), std::vector{*result.hit}) << text;
    }
    EXPECT_THAT(walk("4,56", SearchDirection::forward, 4), ElementsAre(1, 2, 1, 2));
    EXPECT_THAT(walk("4,56", SearchDirection::backward, 4), ElementsAre(2, 1, 2, 1));
    // Above the line that the search marks is the last row.
    const QRectF total = report_.placeOf(2, 0, 0, 6);
    EXPECT_GT(total.top(), report_.placeOf(1, 0, 0, 0).bottom());
}

TEST_F(Search, FindsTheTotalOnAPageOfItsOwn) {
    ASSERT_TRUE(shop_.begin(inventedRows(kRowsOnPage)));
    EXPECT_EQ(report_.pageOf(find("total").hit->row), 2);
    EXPECT_THAT(hitsOnPage(report_, "total", 1), IsEmpty());
    EXPECT_EQ(hitsOnPage(report_, "total", 2).size(), 1U);
}

TEST_F(Search, CountsTheHits) {
    ASSERT_TRUE(shop_.begin(inventedRows(3000)));
    const auto counted = [&](const QString& text, const ReportHit& hit) {
        const auto count = countHits(report_, text, hit, goOn);
        return count ? std::pair(count->all, count->until) : std::pair(qint64{-1}, qint64{-1});
    };
    const ReportHit first = *find("caixa").hit;
    EXPECT_EQ(counted("caixa", first), std::pair(qint64{1000}, qint64{1}));
    const auto second = findText(report_, "caixa", SearchDirection::forward, first, 0, goOn).hit;
    EXPECT_EQ(counted("caixa", *second), std::pair(qint64{1000}, qint64{2}));
    const auto last = findText(report_, "caixa", SearchDirection::backward, first, 0, goOn).hit;
    EXPECT_EQ(counted("caixa", *last), std::pair(qint64{1000}, qint64{1000}));
    EXPECT_EQ(counted("total", *find("total").hit), std::pair(qint64{1}, qint64{1}));
    EXPECT_FALSE(countHits(report_, "caixa", first, [](qint64, qint64) { return false; }));
}

TEST_F(Search, CrossesItsStepsBothWays) {
    ASSERT_TRUE(shop_.begin(inventedRows(5000)));
    takeAll();
    EXPECT_EQ(walk("104242", SearchDirection::backward, 1).front(), 4242);
    EXPECT_EQ(walk("104242", SearchDirection::forward, 1).front(), 4242);
}

TEST_F(Search, CanBeStopped) {
    ASSERT_TRUE(shop_.begin(inventedRows(5000)));
    for (const SearchDirection direction : {SearchDirection::forward, SearchDirection::backward}) {
        const SearchResult result =
            findText(report_, "nada", direction, {}, 0, [](qint64, qint64) { return false; });
        EXPECT_TRUE(result.cancelled);
        EXPECT_FALSE(result.hit);
    }
}

TEST_F(Search, StartsOnThePageOnShow) {
    ASSERT_TRUE(shop_.begin(inventedRows(200)));
    takeAll();
    const qint64 start = report_.rowsOf(3).first;
    const auto hit = findText(report_, "caixa", SearchDirection::forward, {}, start, goOn).hit;
    ASSERT_TRUE(hit);
    EXPECT_GE(hit->row, start);
    EXPECT_LT(hit->row, start + 3);
}

TEST_F(Search, TellsTheHitsOfAPage) {
    ASSERT_TRUE(shop_.begin(inventedRows(200)));
    takeAll();
    const std::vector<ReportHit> hits = hitsOnPage(report_, "CAIXA", 2);
    EXPECT_EQ(hits.size(), 15U); // every third of 46 rows
    for (const ReportHit& hit : hits) {
        EXPECT_EQ(report_.pageOf(hit.row), 2);
        EXPECT_EQ(hit.field, 4);
    }
    EXPECT_THAT(hitsOnPage(report_, "", 2), IsEmpty());
}

} // namespace
