#pragma once

#include "controls/box/DropDownList.h"
#include "registers/frmCliFor.h"
#include "support/ShopTest.h"

#include <QTabWidget>

/// Today as a date box shows it.
inline const QString kToday = formatDate(QDate::currentDate());

/// The client register over a shop's database.
class ClientRegister : public Everywhere<ShopTest> {
protected:
    static Row client(const char* name) {
        return {
            {"nome",           words(name)             },
            {"tipo",           yes(true)               },
            {"vender",         words("SIM")            },
            {"limite_credito", jet::Currency{5'000'000}}
        };
    }
    static Row client(const char* name, std::initializer_list<Field> more) {
        Row row = client(name);
        row.insert(row.end(), more);
        return row;
    }
    /// Keys 1 (the reserved one), 2 and 3.
    void givenThreeClients() {
        given("cliente_fornecedor", {client("Balcão"), client("Ana Lima"), client("Bruno Sá")});
    }
    static std::vector<std::string> stored(const QString& fields) {
        return rows("select " + fields + " from cliente_fornecedor order by codigo");
    }
    static QTabWidget& tabs(const QWidget& form) { return control<QTabWidget>(form, "tabCliFor"); }
    static int tab(const QWidget& form) { return tabs(form).currentIndex(); }
    /// Brings up the tab of a control and gives it the focus.
    static void go(QWidget& form, const char* name) {
        for (int i = 0; i < tabs(form).count(); ++i)
            if (tabs(form).widget(i)->isAncestorOf(&control(form, name)))
                tabs(form).setCurrentIndex(i);
        enter(form, name);
    }
    static void fill(QWidget& form, const char* name, const QString& text) {
        go(form, name);
        type(text);
    }
    /// Sets a box without ever entering it.
    static void put(const QWidget& form, const char* box, const QString& text) {
        control<QLineEdit>(form, box).setText(text);
    }
    static void show(QWidget& form, int row) {
        click(form, "btnNavegacao", 0);
        for (; row > 0; --row)
            click(form, "btnNavegacao", 2);
    }
    static std::string shown(const QWidget& form) {
        return (text(form, "txtCódigo") + "|" + text(form, "txtNome")).toStdString();
    }
    void expectWarning(const char* text) { expectMessage("Advertência", text); }
};

/// Every control but the code, its field, what is typed, and what is stored then if not that.
struct Pair {
    const char* control;
    const char* field;
    const char* typed;
    const char* becomes;

    [[nodiscard]] std::string stored() const { return *becomes ? becomes : typed; }
    [[nodiscard]] std::string shown() const {
        return control == std::string("txtCGCCPF") ? "123.456.789-01" : stored();
    }
};
// clang-format off
inline constexpr Pair kPairs[] = {
    {"txtNome",            "nome",                "João d'Ávila & Cia.", ""},
    {"txtEndereço",        "endereco",            "Rua do Sol, 12 - A",  ""},
    {"txtBairro",          "bairro",              "Centro",              ""},
    {"txtCidade",          "cidade",              "Araraquara",          ""},
    {"txtcep",             "cep",                 "14800123",            "14800-123"},
    {"cmbEstado",          "estado",              "sp",                  "SP"},
    {"txtCGCCPF",          "cgc_cpf",             "12345678901",         ""},
    {"txtInscriçãoRG",     "inscricao_rg",        "12.345.678-X",        ""},
    {"txttelefone",        "fone",                "1632221234",          "(16) 3222-1234"},
    {"txtfax",             "fax",                 "16999998888",         "(16) 99999-8888"},
    {"txtUltCompVend",     "ultima_compra_venda", "28022001",            "28/02/2001"},
    {"txtObservação",      "observacao",          "Paga em dia.",        ""},
    {"txtdatanasc",        "dt_nascimento",       "31121899",            "31/12/1899"},
    {"txtRemuneração",     "renuneração_mensal",  "234,5",               "234,50"},
    {"cboVender",          "vender",              "n",                   "NÃO"},
    {"txtLimiteDeCrédito", "limite_credito",      "800",                 "800,00"},
    {"txtBancos01",        "bancos_trabalha01",   "Banco Norte",         ""},
    {"txtBancos02",        "bancos_trabalha02",   "Banco Sul",           ""},
    {"txtNomePessoa01",    "pessoa_autorizada01", "Rita",                ""},
    {"txtNomePessoa02",    "pessoa_autorizada02", "Raul",                ""},
    {"txtPai",             "pai",                 "João",                ""},
    {"txtMae",             "mae",                 "Inês",                ""},
    {"txtEmpresa",         "empresa",             "Usina",               ""},
    {"txtOcupacao",        "ocupacao",            "Torneira",            ""},
    {"txtfonetrabalho",    "fone_empresa",        "1633334444",          "(16) 3333-4444"},
    {"txtEMailCli",        "emailcli",            "a@exemplo.invalid",   ""},
};
// clang-format on
