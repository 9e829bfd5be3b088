#pragma once

#include "cheques/FrmLancarCheques.h"
#include "support/ChequeShop.h"

#include <QCheckBox>

#include <string>
#include <vector>

/// Tests of the entry of cheques, over a shop without any.
class ChequeEntry : public Everywhere<ChequeShop> {
protected:
    void TearDown() override {
        FrmLancarCheques::aoLocalizar({});
        ChequeShop::TearDown();
    }

    static Row cheque(int clientCode, const char* numero, std::int64_t reais, int cents = 0) {
        // clang-format off
        return {
            {"cliente",   number(clientCode)},
            {"banco",     number(1)},
            {"numero",    words(numero)},
            {"data",      day(2026, 3, 1)},
            {"bompara",   day(2026, 4, 1)},
            {"valor",     money(reais, cents)},
            {"descontar", yes(true)}
        };
        // clang-format on
    }

    static std::vector<std::string> stored() {
        return rows("select lancamento, cliente, banco, agencia, numero, data, bompara, valor, "
                    "observacao, autorizou, descontar from cheques order by lancamento");
    }

    /// What stands on the screen, in the order of the fields: the key first, the ticks last.
    static std::string shown(const QWidget& form) {
        QString all;
        for (const char* box :
             {"txtlancamento", "txtNome", "txtbanco", "txtagencia", "txtnumero", "txtdata",
              "txtbompara", "txtvalor", "txtautorizou", "txtobservacao"})
            all += text(form, box) + "|";
        all += ticked(form, "txtdescontar") ? "descontar" : "";
        all += ticked(form, "cmbcheques") ? "|varios" : "|";
        return all.toStdString();
    }
    /// The same of a new cheque due in so many days.
    static std::string newCheque(int days, const char* ticks) {
        const QDate today = QDate::currentDate();
        return ("|||||" + formatDate(today) + "|" + formatDate(today.addDays(days)) + "|0,00|||" +
                ticks)
            .toStdString();
    }
    static bool ticked(const QWidget& form, const char* box) {
        return control<QCheckBox>(form, box).isChecked();
    }

    /// Types the fields of a cheque one after the other, as a clerk does; ends in the value.
    static void fill(QWidget& form, const char* name, const char* numero, const char* value) {
        type(form, "txtNome", name);
        press(Qt::Key_Return);
        type("agro");
        press(Qt::Key_Return);
        type("0042");
        press(Qt::Key_Return);
        type(numero);
        press(Qt::Key_Return);
        type("01032026");
        press(Qt::Key_Return);
        type("31032026");
        press(Qt::Key_Return);
        type(value);
    }
};
