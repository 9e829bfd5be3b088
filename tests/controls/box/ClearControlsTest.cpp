#include "controls/box/ClearControls.h"

#include "controls/box/ActiveText.h"
#include "controls/box/DatePicker.h"
#include "controls/box/DropDownList.h"
#include "controls/box/MoneyEdit.h"
#include "support/QtPrinters.h"

#include <QCheckBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QSpinBox>
#include <QTabWidget>

#include <gtest/gtest.h>

namespace {

TEST(ClearControls, ClearsEachControlByItsKind) {
    QWidget window;
    QTabWidget tabs(&window);
    auto* page = new QWidget;
    tabs.addTab(new QWidget, "um");
    tabs.addTab(page, "dois");

    QLineEdit box("texto", &window);
    QLineEdit deep("mais texto", page);
    QLineEdit fixed("12", &window);
    fixed.setReadOnly(true);
    fixed.hide();
    QPlainTextEdit note("linhas", &window);
    DropDownList list(&window);
    list.addItem("SIM", 1);
    list.setListIndex(0);
    DropDownList typed(page);
    typed.setText("livre");
    QCheckBox check("&Descontar", &window);
    check.setChecked(true);
    MoneyEdit money(&window);
    money.setValor({12'300});
    DatePicker date(page);
    date.setValue(QDate(2001, 2, 3));
    ActiveText masked(&window);
    masked.setMasks("99999-999");
    masked.setText("14800-123");
    QLabel label("Nome:", &window);
    QSpinBox spin(&window);
    spin.setValue(7);

    limparControles(window);

    EXPECT_EQ(box.text(), "");
    EXPECT_EQ(deep.text(), "");
    EXPECT_EQ(fixed.text(), "");
    EXPECT_EQ(note.toPlainText(), "");
    EXPECT_EQ(list.listIndex(), -1);
    EXPECT_EQ(list.text(), "");
    EXPECT_EQ(list.count(), 1) << "the entries stay";
    EXPECT_EQ(typed.text(), "");
    EXPECT_FALSE(check.isChecked());
    EXPECT_EQ(money.valor(), Amount{0});
    EXPECT_EQ(money.text(), "0,00");
    EXPECT_EQ(date.value(), QDate::currentDate());
    EXPECT_EQ(masked.text(), "");
    EXPECT_EQ(label.text(), "Nome:");
    EXPECT_EQ(spin.value(), 7);
    EXPECT_EQ(spin.text(), "7");
}

} // namespace
