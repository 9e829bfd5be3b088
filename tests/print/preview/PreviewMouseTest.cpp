// What the mouse does on the pages: it drags them, and marks text that is copied.
#include "print/preview/Preview.h"

#include <QApplication>
#include <QClipboard>
#include <QMouseEvent>
#include <QScrollBar>

namespace {

class PagesUnderTheMouse : public Preview {
protected:
    PagesUnderTheMouse() {
        begin(100);
        view().setZoom(100);
    }
    /// On the viewport, where a field of a row shows its text.
    [[nodiscard]] QRect placeOf(qint64 row, qsizetype field, qsizetype length = 1) const {
        const qreal dots = view().logicalDpiX() / 25.4;
        const QRectF place = report_.placeOf(row, field, 0, length);
        return QRectF(place.topLeft() * dots, place.size() * dots)
            .translated(view().pageRect(report_.pageOf(row)).topLeft())
            .toRect();
    }
    void drag(QPoint from, QPoint to, Qt::MouseButton button = Qt::LeftButton) {
        QWidget* const pages = view().viewport();
        QTest::mousePress(pages, button, {}, from);
        QMouseEvent move(QEvent::MouseMove, to, pages->mapToGlobal(to), Qt::NoButton, button, {});
        QCoreApplication::sendEvent(pages, &move);
        QTest::mouseRelease(pages, button, {}, to);
    }
    QString copied() {
        QApplication::clipboard()->clear();
        press(Qt::Key_C, Qt::ControlModifier);
        return QApplication::clipboard()->text();
    }
};

TEST_F(PagesUnderTheMouse, AreDraggedFromWhereNoTextIs) {
    const int before = view().verticalScrollBar()->value();
    const QPoint margin = view().pageRect(1).topLeft() + QPoint(20, 300);
    drag(margin, margin - QPoint(0, 150));
    EXPECT_EQ(view().verticalScrollBar()->value(), before + 150);
    drag(placeOf(20, 1).center(), placeOf(20, 1).center() + QPoint(0, 100), Qt::MiddleButton);
    EXPECT_EQ(view().verticalScrollBar()->value(), before + 50);
    EXPECT_EQ(copied(), "");
    EXPECT_EQ(view().viewport()->cursor().shape() == Qt::ClosedHandCursor, false);
}

TEST_F(PagesUnderTheMouse, MarkTextThatIsCopied) {
    const QColor mark(0xb4, 0xd5, 0xfe);
    EXPECT_EQ(spots(mark), 0);
    const QRect name = placeOf(1, 1, 5); // "Maria Aparecida da Conceição"
    drag(QPoint(name.left(), name.center().y()), QPoint(name.right() + 1, name.center().y()));
    EXPECT_EQ(copied(), "Maria");
    EXPECT_EQ(said("news"), "O texto marcado foi copiado.");
    EXPECT_GT(spots(mark), 100);
    // From right to left it is the same.
    drag(QPoint(name.right() + 1, name.center().y()), QPoint(name.left(), name.center().y()));
    EXPECT_EQ(copied(), "Maria");
    // Over several rows: columns by tabs, as a spreadsheet takes them.
    drag(placeOf(1, 0).topLeft() + QPoint(0, 4), placeOf(2, 5, 10).bottomRight());
    EXPECT_EQ(copied(), "100001\tMaria Aparecida da Conceição\t02/01/2026\t79,20\tBanco Comercial "
                        "do Vale do Paraíba\t01/02/2026\n"
                        "100002\tJoão Batista dos Santos\t03/01/2026\t158,39\tCaixa\t02/02/2026");
    // A click takes the mark away.
    QTest::mouseClick(view().viewport(), Qt::LeftButton, {}, name.center());
    EXPECT_EQ(spots(mark), 0);
    EXPECT_EQ(copied(), "");
}

TEST_F(PagesUnderTheMouse, ShowWhetherTextsAreThere) {
    QTest::mouseMove(view().viewport(), placeOf(1, 1, 5).center());
    EXPECT_EQ(view().viewport()->cursor().shape(), Qt::IBeamCursor);
    QTest::mouseMove(view().viewport(), view().pageRect(1).topLeft() + QPoint(20, 300));
    EXPECT_EQ(view().viewport()->cursor().shape(), Qt::OpenHandCursor);
}

TEST_F(PagesUnderTheMouse, AreCopiedAsAWhole) {
    press(Qt::Key_A, Qt::ControlModifier);
    const QStringList lines = copied().split('\n');
    ASSERT_EQ(lines.size(), 3 + 100 + 1); // header and headings once
    EXPECT_EQ(lines[0], "Relatório de Cheques\tPágina: 1");
    EXPECT_EQ(lines[1], "Referente ao período: 01/01/2026\ta 31/12/2026\tData: 20/11/2026");
    EXPECT_EQ(lines[2], "Cheque\tNome\tDt. Emissão\tValor Cheque\tBanco\tBom Para");
    EXPECT_EQ(lines.last(), "Total: " + formatMoney(shop_.total));
    // In the search box the keys are the box's.
    press(Qt::Key_F, Qt::ControlModifier);
    type("ana");
    press(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(copied(), "ana");
}

} // namespace
