#include "controls/box/FigureButton.h"

#include "support/Colours.h"
#include "support/FormTest.h"

#include <QAccessible>
#include <QSignalSpy>

namespace {

class Figure : public FormTest {
protected:
    Figure() {
        button_.setFigure("R$ 10,00", "2 cheques");
        button_.resize(button_.sizeHint());
        button_.show();
        activate(button_);
        QCoreApplication::processEvents();
    }

    FigureButton button_{"Vencem hoje"};
};

TEST_F(Figure, IsAButtonThatIsCalledByAllThatItShows) {
    EXPECT_EQ(button_.accessibleName(), "Vencem hoje: 2 cheques, R$ 10,00");
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&button_)->role(), QAccessible::PushButton);
    button_.setFigure("…", "");
    EXPECT_EQ(button_.accessibleName(), "Vencem hoje: …");
    button_.setFigure("", "");
    EXPECT_EQ(button_.accessibleName(), "Vencem hoje");
    const QSignalSpy pressed(&button_, &FigureButton::clicked);
    button_.setFocus();
    press(Qt::Key_Space);
    QTest::mouseClick(&button_, Qt::LeftButton);
    EXPECT_EQ(pressed.size(), 2);
}

TEST_F(Figure, HasRoomForItsFigureWhateverItIs) {
    const QSize before = button_.sizeHint();
    button_.setFigure("R$ 1.234.567.890,00", "2 cheques");
    EXPECT_GT(button_.sizeHint().width(), before.width());
    EXPECT_EQ(button_.sizeHint().height(), before.height());
    EXPECT_EQ(button_.minimumSizeHint(), button_.sizeHint());
}

TEST_F(Figure, LooksAnotherWayUnderTheHandAndPressed) {
    button_.clearFocus();
    const QPoint ground(button_.width() - 5, 5);
    const auto colour = [&] { return button_.grab().toImage().pixelColor(ground); };
    const QColor plain = colour();
    QTest::mousePress(&button_, Qt::LeftButton);
    EXPECT_NE(colour(), plain);
    QTest::mouseRelease(&button_, Qt::LeftButton);
}

} // namespace
