// What a window does with a date that the calendar hasn't got.
#include "controls/box/DatePicker.h"
#include "controls/typing/Formato.h"
#include "controls/window/Form.h"
#include "support/FormTest.h"

#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include <functional>

namespace {

/// What the window under test did, in order.
QStringList deeds;

/// A window with a date, a button that does something and one that closes.
class frmData final : public Form {
public:
    frmData() {
        auto* column = new QVBoxLayout(this);
        const auto add = [&](auto* control, const char* name) {
            control->setObjectName(name);
            column->addWidget(control);
        };
        add(txtdata, "txtdata");
        add(txtNome, "txtNome");
        add(cmdSalvar, "cmdSalvar");
        add(cmdFechar, "cmdFechar");
        txtdata->setValue(QDate(2026, 2, 1));
        enterAsTab({txtdata, txtNome});
        closesWith(cmdFechar);
        gotFocus(txtdata, &frmData::txtdata_GotFocus);
        lostFocus(txtdata, &frmData::txtdata_LostFocus);
        gotFocus(txtNome, &frmData::txtNome_GotFocus);
        on(cmdSalvar, &QPushButton::clicked, &frmData::cmdSalvar_Click);
        on(cmdFechar, &QPushButton::clicked, &frmData::cmdFechar_Click);
    }
    static frmData& instance() { return WindowList::instance().one<frmData>(); }

    DatePicker* txtdata = new DatePicker;
    QLineEdit* txtNome = new QLineEdit;
    QPushButton* cmdSalvar = new QPushButton("&Salvar");
    QPushButton* cmdFechar = new QPushButton("&Fechar");

private:
    void txtdata_GotFocus() { deeds << "entrou"; }
    void txtdata_LostFocus() { deeds << "saiu " + formatDate(txtdata->value()); }
    void txtNome_GotFocus() { deeds << "nome"; }
    void cmdSalvar_Click() { deeds << "salvar"; }
    void cmdFechar_Click() { unload(); }
};

class ImpossibleDate : public FormTest {
protected:
    ImpossibleDate() : form_(open<frmData>()) {
        enter(form_, "txtdata");
        type("31022026");
        deeds.clear();
    }
    void expectRefusal() {
        expectMessage("Advertência", "\"31/02/2026\" não é uma data. Digite dia, mês e ano, como "
                                     "em " +
                                         formatDate(QDate::currentDate()) + ".");
    }
    void expectStays() {
        EXPECT_EQ(focus(), "txtdata");
        EXPECT_EQ(form_.txtdata->selectedText(), "31/02/2026") << "to be typed over";
        EXPECT_EQ(form_.txtdata->value(), QDate(2026, 2, 1));
        EXPECT_EQ(deeds, QStringList());
    }

    frmData& form_;
};

TEST_F(ImpossibleDate, IsToldAndTheFocusStays) {
    const std::function<void()> ways[] = {
        [] { press(Qt::Key_Return); },
        [] { press(Qt::Key_Tab); },
        [this] { click(form_, "cmdSalvar"); },
        [] { press(Qt::Key_S, Qt::AltModifier); },
        [this] {
            QTest::mouseClick(form_.windowHandle(), Qt::LeftButton, {},
                              form_.txtNome->mapTo(&form_, form_.txtNome->rect().center()));
        },
        // As a message box does: the button is let go while it is open.
        [this] {
            QTest::mousePress(form_.windowHandle(), Qt::LeftButton, {},
                              form_.cmdSalvar->mapTo(&form_, form_.cmdSalvar->rect().center()));
            QTest::mouseRelease(form_.windowHandle(), Qt::LeftButton, {}, QPoint(1, 1));
        },
    };
    for (const auto& way : ways) {
        expectRefusal();
        way();
        expectStays();
    }
    QCoreApplication::processEvents();
    type("28022026");
    press(Qt::Key_Return);
    EXPECT_EQ(deeds, (QStringList{"saiu 28/02/2026", "nome"}));
    click(form_, "cmdSalvar");
    EXPECT_EQ(deeds.last(), "salvar") << "no click is swallowed that isn't told of";
}

TEST_F(ImpossibleDate, DoesNotKeepTheWindowOpen) {
    click(form_, "cmdFechar");
    EXPECT_FALSE(frmData::instance().isVisible());
    auto& again = open<frmData>();
    enter(again, "txtdata");
    type("31022026");
    press(Qt::Key_Escape);
    EXPECT_FALSE(frmData::instance().isVisible());
}

} // namespace
