// What is wrong with a layout, told by the numbers of the error event.
#include "print/ReportFixture.h"

#include <array>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

ReportField field(const QRectF& place, const QString& format = {}) {
    return {FieldKind::text, "x", place, {}, format};
}

class Layout : public ReportTest {
protected:
    Layout() { layout_ = LayoutDoRelatorio::leiaute(); }

    /// The numbers that a report of this layout ends with.
    std::vector<qint32> errorsOf(const ReportLayout& layout) {
        errors_.clear();
        report_.setLayout(layout);
        const bool begun = shop_.begin(inventedRows(1));
        EXPECT_EQ(begun, errors_.empty());
        for (qint32& code : errors_)
            code -= static_cast<qint32>(0x80040000U);
        return errors_;
    }

    ReportLayout layout_;
};

TEST(ReportErrors, AreSevenNegativeNumbers) {
    EXPECT_EQ(errorCode(ReportError::noPrinter), -2147220503);
    EXPECT_EQ(static_cast<quint32>(errorCode(ReportError::noPrinter)), 0x800403E9U);
    EXPECT_EQ(static_cast<quint32>(errorCode(ReportError::alreadyRunning)), 0x800403EFU);
}

TEST_F(Layout, OfTheShopIsRight) {
    EXPECT_THAT(errorsOf(layout_), IsEmpty());
    EXPECT_EQ(layout_.rowsPerPage(), kRowsOnPage);
    EXPECT_TRUE(layout_.footerFitsBelow(kRowsAboveTotal));
    EXPECT_FALSE(layout_.footerFitsBelow(kRowsAboveTotal + 1));
}

TEST_F(Layout, NeedsAColumnOfTheSource) {
    layout_.detail.fields[1].name = "cliente.nome";
    EXPECT_THAT(errorsOf(layout_), ElementsAre(1003));
}

TEST_F(Layout, ShowsColumnsInTheDetailOnly) {
    layout_.footer.fields.push_back({
        FieldKind::column, "numero", {0, 2, 10, 4}
    });
    EXPECT_THAT(errorsOf(layout_), ElementsAre(1003));
}

TEST_F(Layout, StaysWithinItsBands) {
    const std::array wrong = {QRectF(175, 0, 6, 4), QRectF(-1, 0, 5, 4), QRectF(0, 5, 5, 4),
                              QRectF(0, -1, 5, 4), QRectF(0, 0, -5, 4)};
    for (const QRectF& place : wrong) {
        ReportLayout layout = LayoutDoRelatorio::leiaute();
        layout.detail.fields = {field(place)};
        EXPECT_THAT(errorsOf(layout), ElementsAre(1004));
        layout.detail.fields.clear();
        layout.detail.frames = {{place}};
        EXPECT_THAT(errorsOf(layout), ElementsAre(1004));
    }
    layout_.detail.lines = {
        {"", {0, 0}, {181, 0}}
    };
    EXPECT_THAT(errorsOf(layout_), ElementsAre(1004));
}

TEST_F(Layout, HasNoFieldsOverEachOther) {
    layout_.pageHeader.fields = {field({0, 0, 50, 5}), field({49, 4, 50, 5})};
    EXPECT_THAT(errorsOf(layout_), ElementsAre(1004));
    layout_.pageHeader.fields = {field({0, 0, 50, 5}), field({50, 0, 50, 5}), field({0, 5, 50, 5})};
    EXPECT_THAT(errorsOf(layout_), IsEmpty());
}

TEST_F(Layout, HasNoBandOfNegativeHeight) {
    layout_.footer = {-1};
    EXPECT_THAT(errorsOf(layout_), ElementsAre(1004));
}

TEST_F(Layout, KnowsTheFormats) {
    layout_.pageHeader.fields.push_back(field({0, 19, 5, 3}, "Long Date"));
    EXPECT_THAT(errorsOf(layout_), ElementsAre(1005));
}

TEST_F(Layout, NeedsAPageWithRoomForOneDetail) {
    const qreal margins = layout_.margins.top() + layout_.margins.bottom();
    const qreal bands = layout_.pageHeader.height + layout_.columnHeadings.height;
    layout_.footer = {};
    layout_.page.setHeight(margins + bands + layout_.detail.height);
    EXPECT_THAT(errorsOf(layout_), IsEmpty());
    layout_.page.setHeight(layout_.page.height() - 0.1);
    EXPECT_THAT(errorsOf(layout_), ElementsAre(1006));
}

TEST_F(Layout, NeedsAPageWithRoomForTheFooter) {
    const qreal bands = layout_.pageHeader.height + layout_.columnHeadings.height;
    layout_.footer.height = layout_.body().height() - bands - 0.05;
    EXPECT_THAT(errorsOf(layout_), IsEmpty());
    layout_.footer.height += 0.1;
    EXPECT_THAT(errorsOf(layout_), ElementsAre(1006));
}

TEST_F(Layout, NeedsADetailWithSomeHeight) {
    layout_.detail = {};
    EXPECT_THAT(errorsOf(layout_), ElementsAre(1006));
}

TEST_F(Layout, ThatIsWrongLeavesTheReportBefore) {
    ASSERT_TRUE(shop_.begin(inventedRows(100)));
    layout_.detail.fields[1].name = "cliente.nome";
    EXPECT_THAT(errorsOf(layout_), ElementsAre(1003));
    takeAll();
    EXPECT_EQ(report_.rows().size(), 100);
}

TEST(ReportColumnsOfALayout, StandBelowTheirHeadings) {
    const std::array columns = {
        ReportColumn{"Cheque", "numero",  20        },
        ReportColumn{ "Valor", "valor", 30, Qt::AlignRight, "Standard"}
    };
    ReportLayout layout;
    layout.columnHeadings = {8};
    layout.detail = {5};
    addColumns(layout, columns, 2, 4, {9, true}, {8});
    ASSERT_EQ(layout.columnHeadings.fields.size(), 2U);
    ASSERT_EQ(layout.detail.fields.size(), 2U);
    EXPECT_EQ(layout.columnHeadings.fields[1].place, QRectF(22, 2, 30, 4));
    EXPECT_EQ(layout.columnHeadings.fields[1].name, "Valor");
    EXPECT_TRUE(layout.columnHeadings.fields[1].look.bold);
    EXPECT_EQ(layout.detail.fields[1].place, QRectF(22, 0.5, 30, 4));
    EXPECT_EQ(layout.detail.fields[1].name, "valor");
    EXPECT_EQ(layout.detail.fields[1].heading, "Valor");
    EXPECT_EQ(layout.detail.fields[1].format, "Standard");
    EXPECT_EQ(layout.detail.fields[1].look.align, Qt::AlignRight);
}

} // namespace
