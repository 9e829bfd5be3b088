#include "controls/look/ScreenFit.h"

#include "controls/window/Form.h"
#include "support/FormChecks.h"
#include "support/FormTest.h"

#include <QGridLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QVBoxLayout>

namespace {

/// A heading, more fields than the screen has room for, and a foot.
class frmLonga final : public Form {
public:
    explicit frmLonga(int widthOfFoot = 100) {
        auto* column = new QVBoxLayout(this);
        auto* body = new QWidget;
        auto* grid = new QGridLayout(body);
        for (int row = 0; row < kFields; ++row) {
            fields_.append(new QLineEdit);
            fields_.last()->setObjectName(QString("txt%1").arg(row));
            grid->addWidget(fields_.last(), row, 0);
            enterAsTab({fields_.last()});
        }
        cmdSalvar->setObjectName("cmdSalvar");
        cmdSalvar->setMinimumWidth(widthOfFoot);
        column->addWidget(body, 1);
        column->addWidget(cmdSalvar);
    }

    static constexpr int kFields = 60;
    QList<QLineEdit*> fields_;
    QPushButton* cmdSalvar = new QPushButton("Salvar");
};

class ScreenFit : public FormTest {
protected:
    static void expectToFit(const QWidget& window) {
        const QSize screen = window.screen()->availableSize();
        EXPECT_LE(window.frameGeometry().width(), screen.width());
        EXPECT_LE(window.frameGeometry().height(), screen.height());
    }
};

TEST_F(ScreenFit, AWindowWithRoomDoesNotScroll) {
    QWidget window;
    auto* column = new QVBoxLayout(&window);
    column->addWidget(new QLineEdit, 1);
    EXPECT_FALSE(scrollWhereTooLarge(window, {600, 400}));
    EXPECT_FALSE(window.findChild<QScrollArea*>());
    EXPECT_TRUE(scrollWhereTooLarge(window, {600, 10}));
    EXPECT_FALSE(scrollWhereTooLarge(window, {600, 10})) << "as small as it can be";
}

TEST_F(ScreenFit, ATooHighWindowKeepsItsButtonsInSightAndFollowsTheFocus) {
    frmLonga form;
    form.show();
    activate(form);
    expectToFit(form);
    EXPECT_EQ(seenOf(*form.cmdSalvar).size(), form.cmdSalvar->size());
    EXPECT_EQ(focus(), "txt0");
    for (int row = 0; row < frmLonga::kFields; ++row) {
        EXPECT_EQ(focus(), QString("txt%1").arg(row)) << "in their order";
        const auto& field = *form.fields_[row];
        EXPECT_EQ(seenOf(field).size(), field.size()) << row;
        press(Qt::Key_Return);
    }
    EXPECT_EQ(focus(), "cmdSalvar");
    press(Qt::Key_Tab);
    EXPECT_EQ(seenOf(*form.fields_[0]).size(), form.fields_[0]->size()) << "back at the top";
}

TEST_F(ScreenFit, TheFocusStaysWhereTheWindowHasPutIt) {
    frmLonga form;
    form.fields_[40]->setFocus();
    form.show();
    activate(form);
    EXPECT_EQ(focus(), "txt40");
    EXPECT_EQ(seenOf(*form.fields_[40]).size(), form.fields_[40]->size());
}

TEST_F(ScreenFit, ATooWideFootScrollsWithTheWindow) {
    frmLonga form(QGuiApplication::primaryScreen()->size().width() + 100);
    form.show();
    activate(form);
    expectToFit(form);
    form.cmdSalvar->setFocus(Qt::TabFocusReason);
    const QPoint corner = form.cmdSalvar->mapTo(&form, QPoint());
    EXPECT_TRUE(seenOf(*form.cmdSalvar).contains(corner)) << "its beginning";
    form.fields_.last()->setFocus(Qt::TabFocusReason);
    EXPECT_FALSE(seenOf(*form.fields_.last()).isEmpty());
}

TEST_F(ScreenFit, AWindowThatGrowsBeyondItsScreenBeginsToScroll) {
    frmLonga form;
    for (QLineEdit* field : form.fields_)
        field->hide();
    form.show();
    activate(form);
    EXPECT_FALSE(form.findChild<QScrollArea*>());
    for (QLineEdit* field : form.fields_)
        field->show();
    QCoreApplication::processEvents();
    EXPECT_TRUE(form.findChild<QScrollArea*>());
    expectToFit(form);
}

} // namespace
