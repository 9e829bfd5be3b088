#pragma once

#include "controls/box/ListView.h"
#include "registers/frmBancos.h"
#include "support/ShopTest.h"

#include <QLineEdit>

#include <string>
#include <vector>

/// Tests of the banks.
class BankRegister : public Everywhere<ShopTest> {
protected:
    static Row bank(int code, const char* name) {
        return {
            {"cod_banco", number(code)},
            {"nome",      words(name) }
        };
    }
    /// Keys 1, 2, 3; neither in the order of codes nor in that of names.
    void givenThreeBanks() {
        given("bancos",
              {bank(341, "Banco Leste"), bank(104, "Banco Norte"), bank(237, "Agrobanco")});
    }
    static std::vector<std::string> stored() {
        return rows("select codigo, cod_banco, nome from bancos order by codigo");
    }
    /// What stands in the boxes: key, code and name.
    static std::string shown(const QWidget& form) {
        return (text(form, "lblCodigo") + "|" + text(form, "txtCodigo") + "|" +
                text(form, "txtNome"))
            .toStdString();
    }
    static std::vector<std::string> listed(const QWidget& form) {
        const auto& list = control<ListView>(form, "lstListagem");
        std::vector<std::string> lines;
        lines.reserve(static_cast<std::size_t>(list.count()));
        for (int row = 0; row < list.count(); ++row)
            lines.push_back((list.text(row, 0) + "|" + list.text(row, 1)).toStdString());
        return lines;
    }
    /// Sets a box without ever entering it.
    static void put(const QWidget& form, const char* box, const char* text) {
        control<QLineEdit>(form, box).setText(text);
    }
};
