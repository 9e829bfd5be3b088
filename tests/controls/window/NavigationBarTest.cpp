#include "controls/window/NavigationBar.h"

#include "support/FormTest.h"

#include <QSignalSpy>
#include <QToolButton>

namespace {

class Navigation : public FormTest {
protected:
    Navigation() {
        bar_.show();
        activate(bar_);
    }
    NavigationBar bar_;
};

TEST_F(Navigation, TellsTheIndexOfThePressedButton) {
    const QSignalSpy clicks(&bar_, &NavigationBar::clicked);
    for (int index = 0; index < NavigationBar::kCount; ++index)
        QTest::mouseClick(bar_.button(index), Qt::LeftButton);
    ASSERT_EQ(clicks.count(), 4);
    for (int index = 0; index < NavigationBar::kCount; ++index)
        EXPECT_EQ(clicks[index][0].toInt(), index);
}

TEST_F(Navigation, HasToolTipsThatAreAlsoItsAccessibleNames) {
    const char* tips[] = {"Início do Arquivo", "Registro Anterior", "Próximo Registro",
                          "Fim do Arquivo"};
    for (int index = 0; index < NavigationBar::kCount; ++index) {
        EXPECT_EQ(bar_.button(index)->toolTip(), QString(tips[index]));
        EXPECT_EQ(bar_.button(index)->accessibleName(), QString(tips[index]));
        EXPECT_FALSE(bar_.button(index)->icon().isNull());
    }
}

TEST_F(Navigation, IsWorkedByKeys) {
    const QSignalSpy clicks(&bar_, &NavigationBar::clicked);
    bar_.button(0)->setFocus();
    press(Qt::Key_Tab);
    press(Qt::Key_Space);
    ASSERT_EQ(clicks.count(), 1);
    EXPECT_EQ(clicks[0][0].toInt(), 1);
}

TEST_F(Navigation, TakesTheFocusWhenClicked) {
    QTest::mouseClick(bar_.button(2), Qt::LeftButton);
    EXPECT_TRUE(bar_.button(2)->hasFocus());
}

} // namespace
