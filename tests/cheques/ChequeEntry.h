#pragma once

#include "cheques/FrmLancarCheques.h"
#include "support/ShopTest.h"

#include <QCheckBox>

#include <string>
#include <vector>

/// Tests of the entry of cheques, over a shop of three clients and two banks without any cheque.
class ChequeEntry : public ShopTest {
protected:
    void SetUp() override {
        ShopTest::SetUp();
        given("cliente_fornecedor",
              {client("Bento Dias", 0), client("Ana Costa", 100), client("Carla Reis", 1500)});
        given("bancos", {
                            {{"cod_banco", number(104)}, {"nome", words("Banco Norte")}},
                            {{"cod_banco", number(237)}, {"nome", words("Agrobanco")}  }
        });
    }
    void TearDown() override {
        FrmLancarCheques::aoLocalizar({});
        ShopTest::TearDown();
    }

    // The codes that the rows above get.
    static constexpr int kBento = 1;
    static constexpr int kAna = 2;
    static constexpr int kCarla = 3;

    static jet::Value money(std::int64_t reais, int cents = 0) {
        return jet::Currency{(reais * 100 + cents) * 100};
    }
    static Row client(const char* name, std::int64_t limit) {
        return {
            {"nome",           words(name) },
            {"tipo",           yes(true)   },
            {"limite_credito", money(limit)}
        };
    }
    static Row cheque(int clientCode, const char* numero, std::int64_t reais, int cents = 0) {
        return {
            {"cliente", number(clientCode)},
            {"banco",   number(1)         },
            {"numero",  words(numero)     },
            {"data",    day(2026,           3, 1)},
            {"bompara",       day(2026,                         4, 1)},
            {"valor",money(reais,cents)},
            {"descontar",         yes(true)                    }
        };
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
