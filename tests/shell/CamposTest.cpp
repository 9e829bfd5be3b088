// What the fields of all windows hold and take: a save changes what the operator changed and
// nothing else, and what the file can't hold is refused, not cut.
#include "shell/Campos.h"

#include "cheques/FrmLancarCheques.h"
#include "collections/FrmLancasSFundos.h"
#include "registers/frmBancos.h"
#include "registers/frmCliFor.h"
#include "support/ChequeShop.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QTabWidget>

#include <gmock/gmock.h>

#include <algorithm>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class FieldsOfAllWindows : public Everywhere<ChequeShop> {
protected:
    static std::vector<std::string> banks() {
        return rows("select cod_banco, nome from bancos order by codigo");
    }
    static jet::Value morning(int year, int month, int dayOfMonth) {
        return jet::Date::of(
            {.year = year, .month = month, .day = dayOfMonth, .hour = 8, .minute = 30});
    }
    static Row cheque(std::initializer_list<Field> more) {
        Row row = {
            {"cliente", number(kBento) },
            {"banco",   number(kAgro)  },
            {"numero",  words("000777")}
        };
        row.insert(row.end(), more);
        return row;
    }
    /// Types over what stands in a field and goes on with Enter.
    static void retype(QWidget& form, const char* field, const QString& text) {
        enter(form, field);
        press(Qt::Key_A, Qt::ControlModifier);
        type(text);
        press(Qt::Key_Return);
    }
    static void paste(QWidget& form, const char* field, const QString& text) {
        enter(form, field);
        press(Qt::Key_A, Qt::ControlModifier);
        QGuiApplication::clipboard()->setText(text);
        press(Qt::Key_V, Qt::ControlModifier);
    }
    /// A shop whose client fields have these widths.
    void givenWidths(std::initializer_list<std::pair<const char*, int>> widths) {
        remake([&](jet::TableSpec& made) {
            for (jet::ColumnSpec& column : made.columns)
                for (const auto& [name, width] : widths)
                    if (made.name == "cliente_fornecedor" && column.name == name)
                        column.width = static_cast<std::uint16_t>(width);
        });
    }
    static Row client(std::initializer_list<Field> more) {
        Row row = {
            {"nome",           words("Ana Costa")},
            {"tipo",           yes(true)         },
            {"vender",         words("SIM")      },
            {"limite_credito", money(1)          }
        };
        row.insert(row.end(), more);
        return row;
    }
};

INSTANTIATE_TEST_SUITE_P(, FieldsOfAllWindows, everywhere(), keptName);

// ---- numbers

TEST_P(FieldsOfAllWindows, ABankCodeOfTenDigitsIsShownAndKeptWhole) {
    given("bancos", {
                        {{"cod_banco", number(2'147'483'647)},  {"nome", words("Banco Sul")}  },
                        {{"cod_banco", number(-2'147'483'648)}, {"nome", words("Sem código")}}
    });
    auto& form = open<frmBancos>();
    click(form, "btnNavegacao", 3);
    EXPECT_EQ(text(form, "txtCodigo"), "-2147483648");
    click(form, "btnNavegacao", 1);
    EXPECT_EQ(text(form, "txtCodigo"), "2147483647");
    enter(form, "txtCodigo");
    press(Qt::Key_Return);
    EXPECT_EQ(text(form, "txtNome"), "Banco Sul");
    type("Banco do Sul");
    press(Qt::Key_Return);
    click(form, "cmdSalvar");
    EXPECT_THAT(banks(), ElementsAre("104|Banco Norte", "237|Agrobanco", "2147483647|Banco do Sul",
                                     "-2147483648|Sem código"));
}

TEST_P(FieldsOfAllWindows, ANumberTooLargeForABankCodeIsRefusedWhole) {
    auto& form = open<frmBancos>();
    click(form, "cmdNovo");
    type("9999999999");
    press(Qt::Key_Return);
    EXPECT_EQ(focus(), "txtNome");
    type("Banco Sul");
    press(Qt::Key_Return);
    expectMessage("Advertência", "O valor informado não cabe no campo \"Código\".");
    click(form, "cmdSalvar");
    EXPECT_EQ(focus(), "txtCodigo");
    EXPECT_EQ(text(form, "txtCodigo"), "9999999999");
    EXPECT_EQ(banks().size(), 2U);
    retype(form, "txtCodigo", "1999999999");
    click(form, "cmdSalvar");
    EXPECT_THAT(banks(), ElementsAre("104|Banco Norte", "237|Agrobanco", "1999999999|Banco Sul"));
}

// ---- masks

TEST_P(FieldsOfAllWindows, AMaskWiderThanItsFieldLeavesItsSignsOutAndNoDigit) {
    givenWidths({
        {"cep",          8 },
        {"fone",         11},
        {"fone_empresa", 14}
    });
    const Row old = client({
        {"cep",  words("14800123")},
        {"fone", words("32221234")}
    });
    given("cliente_fornecedor", {client({}), old});
    auto& form = open<frmCliFor>();
    click(form, "btnNavegacao", 3);
    EXPECT_EQ(text(form, "txtcep"), "14800123");
    retype(form, "txtBairro", "Centro");
    click(form, "cmdSalvar");
    click(form, "cmdNovo");
    retype(form, "txtNome", "Bento Dias");
    retype(form, "txtcep", "13560999");
    EXPECT_EQ(text(form, "txtcep"), "13560999");
    paste(form, "txtcep", "13560-998");
    EXPECT_EQ(text(form, "txtcep"), "13560998");
    retype(form, "txttelefone", "16999998888");
    retype(form, "txtLimiteDeCrédito", "1");
    for (const char* typed : {"1633334444", "16933334444"}) {
        control<QTabWidget>(form, "tabCliFor").setCurrentIndex(2);
        retype(form, "txtfonetrabalho", typed);
        EXPECT_EQ(text(form, "txtfonetrabalho"),
                  typed == std::string("1633334444") ? "(16) 3333-4444" : typed);
    }
    click(form, "cmdSalvar");
    EXPECT_THAT(rows("select cep, fone, fone_empresa from cliente_fornecedor order by codigo"),
                ElementsAre("||", "14800123|32221234|", "13560998|16999998888|16933334444"));
}

// ---- what nobody changed

TEST_P(FieldsOfAllWindows, ASaveLeavesAloneWhatNobodyChanged) {
    given("cheques", {
                         cheque({{"data", morning(2026, 2, 1)},
                                 {"valor", jet::Currency{1'234'567}},
                                 {"observacao", words("voltou\nduas vezes")}}
                         )
    });
    given("semfundos", {
                           cheque({{"data", morning(2026, 3, 1)},
                                   {"valor", money(1)},
                                   {"empresa", words("Loja Dois")}}
                           )
    });
    auto& entry = open<FrmLancarCheques>();
    click(entry, "btnNavegacao", 0);
    EXPECT_EQ(text(entry, "txtbompara"), formatDate(QDate::currentDate()));
    retype(entry, "txtnumero", "000778");
    for (const char* field : {"txtNome", "txtbanco", "txtagencia", "txtdata", "txtbompara"}) {
        enter(entry, field);
        press(Qt::Key_Return);
    }
    click(entry, "CmdIncluir");
    EXPECT_THAT(rows("select cliente, banco, numero, data, bompara, valor, observacao, agencia, "
                     "autorizou from cheques"),
                ElementsAre("1|2|000778|01/02/2026 08:30:00||123,4567|voltou\nduas vezes||"));

    auto& bounced = open<FrmLancasSFundos>();
    click(bounced, "btnNavegacao", 0);
    retype(bounced, "txtagencia", "0042");
    click(bounced, "CmdIncluir");
    EXPECT_THAT(rows("select numero, data, agencia, observacao from semfundos"),
                ElementsAre("000777|01/03/2026 08:30:00|0042|"));
}

TEST_P(FieldsOfAllWindows, WhatIsChangedAndChangedBackIsStored) {
    given("cheques", {
                         cheque({{"data", day(2026, 2, 1)},
                                 {"valor", money(1)},
                                 {"bompara", day(2026, 3, 1)},
                                 {"agencia", words("1")}}
                         )
    });
    auto& form = open<FrmLancarCheques>();
    click(form, "btnNavegacao", 0);
    click(form, "cmbcheques"); // the cheque stays on the screen after the save
    for (const char* agency : {"2", "1"}) {
        retype(form, "txtagencia", agency);
        retype(form, "txtnumero", "000778");
        click(form, "CmdIncluir");
        EXPECT_THAT(rows("select agencia from cheques"), ElementsAre(agency));
    }
}

// ---- characters

TEST_P(FieldsOfAllWindows, ACharacterThatTheFileHasNotGotIsToldByItsField) {
    given("cheques", {
                         cheque({{"data", day(2026, 2, 1)}, {"valor", money(1)}}
                         )
    });
    given("semfundos", {
                           cheque({{"data", day(2026, 3, 1)},
                                   {"valor", money(1)},
                                   {"empresa", words("Loja Dois")}}
                           )
    });
    const struct {
        Form& form;
        const char* field;
        const char* label;
        const char* save;
        const char* stored;
    } windows[] = {
        {frmBancos::instance(),        "txtNome",      "Nome",           "cmdSalvar",
         "select nome from bancos order by codigo"},
        {FrmLancarCheques::instance(), "txtautorizou", "Quem Autorizou", "CmdIncluir",
         "select autorizou from cheques"          },
        {FrmLancasSFundos::instance(), "txtEmpresa",   "Empresa",        "CmdIncluir",
         "select empresa from semfundos"          },
    };
    for (const auto& [form, field, label, save, stored] : windows) {
        form.show();
        activate(form);
        click(form, "btnNavegacao", 0);
        const std::vector<std::string> before = rows(stored);
        paste(form, field, "José Жуков");
        if (GetParam() == jet::Version::jet3) {
            expectMessage("Advertência",
                          QString("O campo \"%1\" tem o caractere \"Ж\", que não "
                                  "pode ser gravado nesta base de dados. Apague-o ou "
                                  "troque-o por outro.")
                              .arg(label));
            click(form, save);
            EXPECT_EQ(focus(), field);
            EXPECT_EQ(text(form, field), "José Жуков");
            EXPECT_EQ(rows(stored), before);
        } else {
            click(form, save);
            EXPECT_EQ(rows(stored).front(), "José Жуков");
        }
        form.hide();
    }
}

TEST_P(FieldsOfAllWindows, ACharacterThatCannotBeSeenIsToldByItsPlace) {
    if (GetParam() != jet::Version::jet3)
        return;
    auto& form = open<frmBancos>();
    for (const auto& [pasted, where] :
         {std::pair("Banco do Norte\u200B S.A.", "depois de \"Banco do "
                                                 "Norte\""),
          std::pair("\u200BBanco", "no começo")}) {
        paste(form, "txtNome", pasted);
        expectMessage("Advertência",
                      QString("O campo \"Nome\" tem um caractere invisível %1, que não pode ser "
                              "gravado nesta base de dados. Apague-o ou troque-o por outro.")
                          .arg(where));
        click(form, "cmdSalvar");
    }
    EXPECT_EQ(banks().front(), "104|Banco Norte");
}

} // namespace
