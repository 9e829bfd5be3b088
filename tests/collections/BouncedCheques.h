#pragma once

#include "collections/FrmLancasSFundos.h"
#include "support/ChequeShop.h"

#include <string>
#include <vector>

/// Tests of the bounced cheques, over a shop without any.
class BouncedCheques : public Everywhere<ChequeShop> {
protected:
    static constexpr const char* kFields[] = {"txtcliente", "txtbanco",     "txtagencia",
                                              "txtnumero",  "txtdata",      "txtvalor",
                                              "txtEmpresa", "txtobservacao"};

    static Row bounced(int clientCode, const char* numero, std::int64_t reais) {
        // clang-format off
        return {
            {"cliente",    number(clientCode)},
            {"banco",      number(kNorte)},
            {"agencia",    words("0001")},
            {"numero",     words(numero)},
            {"data",       day(2026, 3, 1)},
            {"valor",      jet::Value(jet::Currency{reais * 10'000})},
            {"empresa",    words("Loja Um")},
            {"observacao", words("sem fundos")}
        };
        // clang-format on
    }
    static Row received(int clientCode, int bankCode, const char* numero, const char* remark) {
        // clang-format off
        return {
            {"cliente",    number(clientCode)},
            {"banco",      number(bankCode)},
            {"agencia",    words("0042-1")},
            {"numero",     words(numero)},
            {"data",       day(2026, 2, 3)},
            {"bompara",    day(2026, 4, 5)},
            {"valor",      jet::Value(jet::Currency{12'345'600})},
            {"observacao", words(remark)},
            {"autorizou",  words("Rita")},
            {"descontar",  yes(true)}
        };
        // clang-format on
    }

    static std::vector<std::string> stored() {
        return rows("select lancamento, cliente, banco, agencia, numero, data, valor, empresa, "
                    "observacao from semfundos order by lancamento");
    }
    static std::vector<std::string> receivedCheques() {
        return rows("select * from cheques order by lancamento");
    }

    /// What stands on the screen, the key first.
    static std::string shown(const QWidget& form) {
        QString all = text(form, "txtlancamento");
        for (const char* field : kFields)
            all += "|" + text(form, field);
        return all.toStdString();
    }
    static std::string today() { return formatDate(QDate::currentDate()).toStdString(); }
    /// The same of a new cheque.
    static std::string newCheque() { return "|||||" + today() + "|0,00||"; }

    /// Types the fields one after the other, as a clerk does; ends in the remarks.
    static void fill(QWidget& form, const char* name, const char* numero, const char* value) {
        type(form, "txtcliente", name);
        for (const char* next : {"agro", "0042", numero, "01032026", value, "Loja Dois"}) {
            press(Qt::Key_Return);
            type(next);
        }
        press(Qt::Key_Return);
    }
    /// Asks for the copy of a received cheque by its number.
    static void copy(QWidget& form, const char* numero) {
        click(form, "CmdBuscar");
        type(numero);
        press(Qt::Key_Return);
    }
    static bool panelShown(const QWidget& form) {
        return control(form, "painelbuscar").isVisible();
    }
};
