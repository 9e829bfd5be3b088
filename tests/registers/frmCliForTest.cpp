#include "registers/frmCliFor.h"

#include "controls/DropDownList.h"
#include "controls/MemoEdit.h"
#include "shell/frmlocalizar.h"
#include "support/CpuTimer.h"
#include "support/FormChecks.h"
#include "support/ShopTest.h"

#include <QClipboard>
#include <QGroupBox>
#include <QLabel>
#include <QTabWidget>
#include <QToolButton>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const QString kToday = formatDate(QDate::currentDate());

class ClientRegister : public ShopTest {
protected:
    using ShopTest::ShopTest;

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
constexpr Pair kPairs[] = {
    {"txtNome",             "nome",                 "João d'Ávila & Cia.", ""               },
    {"txtEndereço",        "endereco",             "Rua do Sol, 12 - A",    ""               },
    {"txtBairro",           "bairro",               "Centro",                ""               },
    {"txtCidade",           "cidade",               "Araraquara",            ""               },
    {"txtcep",              "cep",                  "14800123",              "14800-123"      },
    {"cmbEstado",           "estado",               "sp",                    "SP"             },
    {"txtCGCCPF",           "cgc_cpf",              "12345678901",           ""               },
    {"txtInscriçãoRG",    "inscricao_rg",         "12.345.678-X",          ""               },
    {"txttelefone",         "fone",                 "1632221234",            "(16) 3222-1234" },
    {"txtfax",              "fax",                  "16999998888",           "(16) 99999-8888"},
    {"txtUltCompVend",      "ultima_compra_venda",  "28022001",              "28/02/2001"     },
    {"txtObservação",     "observacao",           "Paga em dia.",          ""               },
    {"txtdatanasc",         "dt_nascimento",        "31121899",              "31/12/1899"     },
    {"txtRemuneração",    "renuneração_mensal", "234,5",                 "234,50"         },
    {"cboVender",           "vender",               "n",                     "NÃO"           },
    {"txtLimiteDeCrédito", "limite_credito",       "800",                   "800,00"         },
    {"txtBancos01",         "bancos_trabalha01",    "Banco Norte",           ""               },
    {"txtBancos02",         "bancos_trabalha02",    "Banco Sul",             ""               },
    {"txtNomePessoa01",     "pessoa_autorizada01",  "Rita",                  ""               },
    {"txtNomePessoa02",     "pessoa_autorizada02",  "Raul",                  ""               },
    {"txtPai",              "pai",                  "João",                 ""               },
    {"txtMae",              "mae",                  "Inês",                 ""               },
    {"txtEmpresa",          "empresa",              "Usina",                 ""               },
    {"txtOcupacao",         "ocupacao",             "Torneira",              ""               },
    {"txtfonetrabalho",     "fone_empresa",         "1633334444",            "(16) 3333-4444" },
    {"txtEMailCli",         "emailcli",             "a@exemplo.invalid",     ""               },
};

// ---- as it opens

TEST_F(ClientRegister, SaysWhatItIs) {
    auto& form = open<frmCliFor>();
    EXPECT_EQ(form.windowTitle(), "Cadastro Cliente");
    EXPECT_EQ(text(form, "Label24"), "Informações cadastrais de clientes ");
    EXPECT_EQ(text(form, "Label26"), "Informações adicionais do cliente.");
    const std::pair<const char*, const char*> labels[] = {
        {"txtCódigo",          "Código:"         },
        {"txtNome",             "Nome:"            },
        {"txtEndereço",        "Endereço:"       },
        {"txtBairro",           "Bairro:"          },
        {"txtCidade",           "Cidade:"          },
        {"txtcep",              "CEP:"             },
        {"txtCGCCPF",           "CPF:"             },
        {"txtInscriçãoRG",    "Insc. Est./RG:"   },
        {"txttelefone",         "Telefone:"        },
        {"txtfax",              "Fax:"             },
        {"txtUltCompVend",      "Última Compra:"  },
        {"txtdatanasc",         "Dat. Nasc:"       },
        {"txtRemuneração",    "Ren. Mensal:"     },
        {"cboVender",           "Vender:"          },
        {"txtLimiteDeCrédito", "Lim. de Crédito:"},
        {"txtEMailCli",         "E-Mail:"          },
        {"txtObservação",     "Observações:"   },
        {"txtBancos01",         "Nome:"            },
        {"txtBancos02",         "Nome:"            },
        {"txtNomePessoa01",     "Nome:"            },
        {"txtNomePessoa02",     "Nome:"            },
        {"txtPai",              "Nome do Pai:"     },
        {"txtMae",              "Nome da Mãe:"    },
        {"txtEmpresa",          "Empresa:"         },
        {"txtOcupacao",         "Ocupação:"      },
        {"txtfonetrabalho",     "Telefone:"        },
    };
    for (const auto& [name, caption] : labels) {
        const QLabel* label = nullptr;
        for (const auto* each : form.findChildren<QLabel*>())
            if (each->buddy() == &control(form, name))
                label = each;
        ASSERT_NE(label, nullptr) << name;
        EXPECT_EQ(label->text(), caption);
    }
    for (const auto& [name, title] : {
             std::pair{"Frame1", "Bancos que Trabalha:"},
             {"Frame2", "Pessoas Autorizadas:"},
             {"Frame3", "Dados dos Pais:"     },
             {"Frame4", "Trabalho:"           }
    })
        EXPECT_EQ(control<QGroupBox>(form, name).title(), title);
    const char* tips[] = {"Início do Arquivo", "Registro Anterior", "Próximo Registro",
                          "Fim do Arquivo"};
    for (int i = 0; i < NavigationBar::kCount; ++i)
        EXPECT_EQ(control<NavigationBar>(form, "btnNavegacao").button(i)->toolTip(), tips[i]);
}

TEST_F(ClientRegister, HasNoFaultsOnAnyTab) {
    givenThreeClients();
    auto& form = open<frmCliFor>();
    for (int i = 0; i < 3; ++i) {
        tabs(form).setCurrentIndex(i);
        EXPECT_EQ(faultsOf(form), QStringList()) << i;
        EXPECT_EQ(control(form, "Label24").isVisible(), i == 0);
        EXPECT_EQ(control(form, "Label26").isVisible(), i != 0);
    }
}

TEST_F(ClientRegister, FitsTheShopsScreen) {
    auto& form = open<frmCliFor>();
    constexpr QSize kScreen(1366, 768);
    constexpr int kFrameAndPanels = 100;
    EXPECT_LE(form.sizeHint().height(), kScreen.height() - kFrameAndPanels);
    EXPECT_LE(form.height(), kScreen.height() - kFrameAndPanels);
    EXPECT_LE(form.width(), kScreen.width());
}

TEST_F(ClientRegister, OpensOnTheFirstClient) {
    givenThreeClients();
    auto& form = open<frmCliFor>();
    EXPECT_EQ(shown(form), "1|Balcão");
    EXPECT_EQ(text(form, "cboVender"), "SIM");
    EXPECT_EQ(text(form, "txtLimiteDeCrédito"), "500,00");
    EXPECT_EQ(tab(form), 0);
    EXPECT_EQ(focus(), "txtNome");
}

TEST_F(ClientRegister, OpensAsDesignedOverAnEmptyTable) {
    auto& form = open<frmCliFor>();
    for (int i = 0; i < NavigationBar::kCount; ++i)
        click(form, "btnNavegacao", i);
    EXPECT_EQ(shown(form), "|");
    EXPECT_EQ(text(form, "cboVender"), "NÃO!");
    EXPECT_EQ(text(form, "cmbEstado"), "");
    EXPECT_EQ(text(form, "txtLimiteDeCrédito"), "0,00");
    EXPECT_EQ(text(form, "txtUltCompVend"), kToday);
    EXPECT_EQ(text(form, "txtdatanasc"), kToday);
}

TEST_F(ClientRegister, SuppliersAreNotClients) {
    given("cliente_fornecedor", {
                                    {{"nome", words("Fornecedor")}, {"tipo", yes(false)}}
    });
    EXPECT_EQ(shown(open<frmCliFor>()), "|");
}

TEST_F(ClientRegister, OffersTheStatesAndTheTwoAnswers) {
    auto& form = open<frmCliFor>();
    const auto& states = control<DropDownList>(form, "cmbEstado");
    EXPECT_EQ(states.count(), 27);
    EXPECT_EQ(states.itemText(0), "AC");
    EXPECT_EQ(states.itemText(26), "TO");
    const auto& answers = control<DropDownList>(form, "cboVender");
    EXPECT_EQ(answers.count(), 2);
    EXPECT_EQ(answers.itemText(0), "SIM");
    EXPECT_EQ(answers.itemText(1), "NÃO");
}

// ---- showing and saving

TEST_F(ClientRegister, SavesEachControlInItsField) {
    auto& form = open<frmCliFor>();
    click(form, "cmdNovo");
    for (const Pair& pair : kPairs)
        fill(form, pair.control, pair.typed);
    click(form, "cmdSalvar");
    EXPECT_THAT(stored("codigo, tipo"), ElementsAre("1|Verdadeiro"));
    for (const Pair& pair : kPairs)
        EXPECT_THAT(stored(pair.field), ElementsAre(pair.stored())) << pair.control;
    EXPECT_FALSE(data().Automacao.inTransaction());
}

TEST_F(ClientRegister, ShowsEachFieldInItsControl) {
    auto& form = open<frmCliFor>();
    click(form, "cmdNovo");
    for (const Pair& pair : kPairs)
        fill(form, pair.control, pair.typed);
    click(form, "cmdSalvar");
    click(form, "btnNavegacao", 0);
    EXPECT_EQ(text(form, "txtCódigo"), "1");
    for (const Pair& pair : kPairs)
        EXPECT_EQ(text(form, pair.control).toStdString(), pair.shown()) << pair.control;
}

TEST_F(ClientRegister, AfterASaveIsEmptyWithFocusAndTabWhereTheyWere) {
    givenThreeClients();
    auto& form = open<frmCliFor>();
    for (const int row : {1, 0}) { // a stored client, then a new one
        if (row > 0)
            show(form, row);
        else
            click(form, "cmdNovo");
        for (const Pair& pair : kPairs)
            fill(form, pair.control, pair.typed);
        go(form, "txtPai");
        press(Qt::Key_S, Qt::AltModifier);
        EXPECT_EQ(text(form, "txtCódigo"), "");
        for (const Pair& pair : kPairs) {
            const std::string name = pair.control;
            const bool date = name == "txtUltCompVend" || name == "txtdatanasc";
            const bool money = name == "txtRemuneração" || name == "txtLimiteDeCrédito";
            EXPECT_EQ(text(form, pair.control), date ? kToday : money ? "0,00" : "") << name;
        }
        EXPECT_EQ(control<DropDownList>(form, "cboVender").listIndex(), -1);
        EXPECT_EQ(tab(form), 2);
        EXPECT_EQ(focus(), "cmdSalvar");
    }
    EXPECT_THAT(stored("codigo, nome"), ElementsAre("1|Balcão", "2|João d'Ávila & Cia.",
                                                    "3|Bruno Sá", "4|João d'Ávila & Cia."));
    EXPECT_EQ(data().rsCliente["codigo"].integer(), 1) << "on the first client";
}

TEST_F(ClientRegister, ChangesTheClientOnShow) {
    givenThreeClients();
    auto& form = open<frmCliFor>();
    show(form, 2);
    fill(form, "txtNome", "Bruno Sá Filho");
    fill(form, "txtLimiteDeCrédito", "1234,56");
    click(form, "cmdSalvar");
    EXPECT_THAT(stored("codigo, nome, limite_credito"),
                ElementsAre("1|Balcão|500,00", "2|Ana Lima|500,00", "3|Bruno Sá Filho|1234,56"));
}

TEST_F(ClientRegister, EverySaveMakesTheRowAClientsRow) {
    givenThreeClients();
    auto& form = open<frmCliFor>();
    show(form, 1);
    ado::Recordset other;
    other.Open("select * from cliente_fornecedor where codigo=2", data().Automacao);
    other["tipo"] = false;
    other.Update();
    click(form, "cmdSalvar");
    EXPECT_THAT(stored("codigo, tipo"),
                ElementsAre("1|Verdadeiro", "2|Verdadeiro", "3|Verdadeiro"));
}

TEST_F(ClientRegister, NeverSavesTheReservedClient) {
    givenThreeClients();
    auto& form = open<frmCliFor>();
    fill(form, "txtNome", "Outro nome");
    go(form, "txtPai");
    click(form, "cmdSalvar");
    EXPECT_EQ(tab(form), 0);
    EXPECT_EQ(focus(), "txtNome");
    EXPECT_EQ(shown(form), "1|Outro nome");
    EXPECT_THAT(stored("nome"), ElementsAre("Balcão", "Ana Lima", "Bruno Sá"));
}

TEST_F(ClientRegister, TheReservedClientIsNotEvenChecked) {
    givenThreeClients();
    auto& form = open<frmCliFor>();
    put(form, "txtNome", "");
    click(form, "cmdSalvar"); // no message
    EXPECT_EQ(focus(), "txtNome");
}

TEST_F(ClientRegister, TheCodeIsNotForTyping) {
    givenThreeClients();
    auto& form = open<frmCliFor>();
    fill(form, "txtCódigo", "3");
    press(Qt::Key_Backspace);
    EXPECT_EQ(text(form, "txtCódigo"), "1");
    press(Qt::Key_Return);
    EXPECT_EQ(focus(), "txtNome");
}

TEST_F(ClientRegister, AClientDeletedMeanwhileFailsAndNothingIsSaved) {
    givenThreeClients();
    auto& form = open<frmCliFor>();
    show(form, 1);
    ado::Recordset other;
    other.Open("select * from cliente_fornecedor where codigo=2", data().Automacao);
    other.Delete();
    expectFailure("registro atual");
    click(form, "cmdSalvar");
    EXPECT_FALSE(data().Automacao.inTransaction());
    EXPECT_THAT(stored("nome"), ElementsAre("Balcão", "Bruno Sá"));
}

// Deliberate: what a client hasn't got stays as the one before had it.
TEST_F(ClientRegister, AnEmptyFieldKeepsWhatTheClientBeforeHad) {
    given("cliente_fornecedor",
          {
              client("Balcão"),
              client("Ana Lima", {{"emailcli", words("ana@exemplo.invalid")},
                                  {"dt_nascimento", day(1980, 5, 17)},
                                  {"renuneração_mensal", jet::Currency{12'345'600}},
                                  {"estado", words("SP")},
                                  {"cgc_cpf", words("12345678901")}}
               ),
              client("Bruno Sá")
    });
    auto& form = open<frmCliFor>();
    show(form, 2);
    EXPECT_EQ(shown(form), "3|Bruno Sá");
    EXPECT_EQ(text(form, "txtEMailCli"), "ana@exemplo.invalid");
    EXPECT_EQ(text(form, "txtdatanasc"), "17/05/1980");
    EXPECT_EQ(text(form, "txtRemuneração"), "1.234,56");
    EXPECT_EQ(text(form, "cmbEstado"), "SP");
    EXPECT_EQ(text(form, "txtCGCCPF"), "123.456.789-01");
    click(form, "cmdSalvar");
    EXPECT_THAT(rows("select emailcli, dt_nascimento, renuneração_mensal, estado, cgc_cpf from "
                     "cliente_fornecedor where codigo=3"),
                ElementsAre("ana@exemplo.invalid|17/05/1980|1234,56|SP|12345678901"));
}

TEST_F(ClientRegister, AnEmptyTextIsShownUnlikeNone) {
    given("cliente_fornecedor", {
                                    client("Balcão", {{"emailcli", words("a@b")}}
                                     ),
                                    client("Ana Lima", {{"emailcli", words("")}   }
                                     )
    });
    auto& form = open<frmCliFor>();
    show(form, 1);
    EXPECT_EQ(text(form, "txtEMailCli"), "");
}

TEST_F(ClientRegister, TheTimeOfADateSurvivesASave) {
    given("cliente_fornecedor", {client("Balcão"), client("Ana Lima")});
    ado::Recordset other;
    other.Open("select * from cliente_fornecedor where codigo=2", data().Automacao);
    other["ultima_compra_venda"] = "17/05/2024 14:30:00";
    other["dt_nascimento"] = "17/05/1980 08:00:00";
    other.Update();
    auto& form = open<frmCliFor>();
    show(form, 1);
    fill(form, "txtdatanasc", "18051980");
    click(form, "cmdSalvar");
    EXPECT_THAT(rows("select ultima_compra_venda, dt_nascimento from cliente_fornecedor where "
                     "codigo=2"),
                ElementsAre("17/05/2024 14:30:00|18/05/1980"));
}

TEST_F(ClientRegister, RemarksOfSeveralLinesSurviveASave) {
    given("cliente_fornecedor",
          {
              client("Balcão"),
              client("Ana Lima", {{"observacao", words("um\ndois\r\n\r\ntrês ")}}
               )
    });
    auto& form = open<frmCliFor>();
    show(form, 1);
    click(form, "cmdSalvar");
    EXPECT_THAT(rows("select observacao from cliente_fornecedor where codigo=2"),
                ElementsAre("um\ndois\r\n\r\ntrês "));
}

TEST_F(ClientRegister, TwentyThousandClientsAreNotWaitedFor) {
    constexpr int kClients = 20'000;
    {
        ado::Recordset& rs = data().rsCliente;
        ado::Transaction all(data().Automacao);
        for (int i = 0; i < kClients; ++i) {
            rs.AddNew();
            for (const Field& field : client("Ana Lima"))
                rs[field.name] = field.value;
            rs.Update();
        }
        all.commit();
        rs.Requery();
    }
    // Limits for a program that isn't optimised; it takes far less when it is.
    CpuTimer timer;
    auto& form = open<frmCliFor>();
    EXPECT_LT(timer.milliseconds(), 300);
    timer.restart();
    click(form, "btnNavegacao", 3);
    EXPECT_LT(timer.milliseconds(), 100);
    EXPECT_EQ(shown(form), "20000|Ana Lima");
    timer.restart();
    click(form, "cmdSalvar");
    EXPECT_LT(timer.milliseconds(), 200);
    EXPECT_EQ(shown(form), "|");
}

// ---- what must be filled in

TEST_F(ClientRegister, AsksForNameThenAnswerThenLimit) {
    auto& form = open<frmCliFor>();
    put(form, "txtNome", "");
    control<DropDownList>(form, "cboVender").setListIndex(-1);
    go(form, "txtPai");
    expectWarning("O nome deve ser preenchido.");
    click(form, "cmdSalvar");
    EXPECT_EQ(tab(form), 0);
    EXPECT_EQ(focus(), "txtNome");

    type("Ana");
    go(form, "txtBancos01");
    expectWarning("O campo vender deve ser preenchido.");
    click(form, "cmdSalvar");
    EXPECT_EQ(tab(form), 0);
    EXPECT_EQ(focus(), "cboVender");

    type("s");
    go(form, "txtPai");
    expectWarning("O limite de crédito deve ser preenchido.");
    click(form, "cmdSalvar");
    EXPECT_EQ(tab(form), 0);
    EXPECT_EQ(focus(), "txtLimiteDeCrédito");
    EXPECT_THAT(stored("nome"), IsEmpty());

    type("0,01");
    click(form, "cmdSalvar");
    EXPECT_THAT(stored("nome, vender, limite_credito"), ElementsAre("Ana|SIM|0,01"));
}

TEST_F(ClientRegister, ANegativeLimitPasses) {
    auto& form = open<frmCliFor>();
    fill(form, "txtNome", "Ana");
    fill(form, "txtLimiteDeCrédito", "-5");
    click(form, "cmdSalvar");
    EXPECT_THAT(stored("limite_credito, vender"), ElementsAre("-5,00|NÃO!")) << "as designed";
}

TEST_F(ClientRegister, AFreeAnswerPasses) {
    auto& form = open<frmCliFor>();
    click(form, "cmdNovo");
    fill(form, "txtNome", "Ana");
    fill(form, "txtLimiteDeCrédito", "5");
    control<DropDownList>(form, "cboVender").setText("");
    fill(form, "cboVender", "XX");
    click(form, "cmdSalvar");
    EXPECT_THAT(stored("vender"), ElementsAre("XX"));
}

// ---- what the file holds

TEST_F(ClientRegister, NoMoreCanBeTypedThanAFieldHolds) {
    auto& form = open<frmCliFor>();
    click(form, "cmdNovo");
    fill(form, "txtLimiteDeCrédito", "1");
    const std::pair<const char*, int> boxes[] = {
        {"txtNome",          60},
        {"txtEndereço",     60},
        {"txtBairro",        40},
        {"txtCidade",        40},
        {"txtInscriçãoRG", 20},
        {"txtBancos01",      40},
        {"txtBancos02",      40},
        {"txtNomePessoa01",  50},
        {"txtNomePessoa02",  50},
        {"txtPai",           50},
        {"txtMae",           50},
        {"txtEmpresa",       50},
        {"txtOcupacao",      40},
        {"txtEMailCli",      60},
        {"cmbEstado",        2 },
    };
    for (const auto& [name, width] : boxes) {
        fill(form, name, QString(width + 5, u'é'));
        EXPECT_EQ(text(form, name), QString(width, u'é')) << name;
    }
    click(form, "cmdSalvar");
    for (const auto& [name, width] : boxes) {
        const auto* pair = std::ranges::find(kPairs, std::string_view(name), &Pair::control);
        EXPECT_THAT(stored(pair->field), ElementsAre(QString(width, u'é').toStdString())) << name;
    }
}

TEST_F(ClientRegister, RemarksMayBeLong) {
    auto& form = open<frmCliFor>();
    click(form, "cmdNovo");
    fill(form, "txtNome", "Ana");
    fill(form, "txtLimiteDeCrédito", "1");
    const QString story = QString("Pagou à vista. ").repeated(2000);
    control<MemoEdit>(form, "txtObservação").setPlainText(story);
    click(form, "cmdSalvar");
    EXPECT_THAT(stored("observacao"), ElementsAre(story.toStdString()));
}

TEST_F(ClientRegister, AmountsGoToTheEndOfTheirRange) {
    auto& form = open<frmCliFor>();
    click(form, "cmdNovo");
    fill(form, "txtNome", "Ana");
    fill(form, "txtRemuneração", "922337203685477,58");
    EXPECT_EQ(text(form, "txtRemuneração"), "922337203685477,58");
    fill(form, "txtLimiteDeCrédito", "-922337203685477,58");
    click(form, "cmdSalvar");
    EXPECT_THAT(stored("renuneração_mensal, limite_credito"),
                ElementsAre("922337203685477,58|-922337203685477,58"));
    click(form, "btnNavegacao", 0);
    EXPECT_EQ(text(form, "txtRemuneração"), "922.337.203.685.477,58");
}

TEST_F(ClientRegister, AnAmountBeyondTheRangeCannotBeTyped) {
    auto& form = open<frmCliFor>();
    fill(form, "txtLimiteDeCrédito", "922337203685477,59");
    EXPECT_EQ(text(form, "txtLimiteDeCrédito"), "922337203685477,5");
}

TEST_F(ClientRegister, AmountsOfFourDecimalsSurviveASave) {
    given("cliente_fornecedor",
          {
              client("Balcão"),
              client("Ana Lima", {{"renuneração_mensal",
                                   jet::Currency{std::numeric_limits<std::int64_t>::max()}}}
               )
    });
    auto& form = open<frmCliFor>();
    show(form, 1);
    click(form, "cmdSalvar");
    EXPECT_THAT(rows("select renuneração_mensal from cliente_fornecedor where codigo=2"),
                ElementsAre("922337203685477,5807"));
}

TEST_F(ClientRegister, DatesGoFromTheYear100To9999) {
    auto& form = open<frmCliFor>();
    for (const auto& [typed, day] : {
             std::pair{"01010100", "01/01/0100"},
             {"29121899", "29/12/1899"},
             {"30121899", "30/12/1899"},
             {"31129999", "31/12/9999"}
    }) {
        click(form, "cmdNovo");
        fill(form, "txtNome", day);
        fill(form, "txtLimiteDeCrédito", "1");
        fill(form, "txtdatanasc", typed);
        click(form, "cmdSalvar");
        EXPECT_THAT(
            rows(QString("select dt_nascimento from cliente_fornecedor where nome='%1'").arg(day)),
            ElementsAre(day));
    }
    click(form, "btnNavegacao", 0);
    EXPECT_EQ(text(form, "txtdatanasc"), "01/01/0100");
}

TEST_F(ClientRegister, ADateThatIsNoneGoesBack) {
    auto& form = open<frmCliFor>();
    fill(form, "txtdatanasc", "31022001");
    press(Qt::Key_Return);
    EXPECT_EQ(text(form, "txtdatanasc"), kToday);
}

/// A file that stores one byte a character.
class ClientRegisterOfTheOldFormat : public ClientRegister {
protected:
    ClientRegisterOfTheOldFormat() : ClientRegister(jet::Version::jet3) {}
};

TEST_F(ClientRegisterOfTheOldFormat, SavesSixtyAccentedCharacters) {
    auto& form = open<frmCliFor>();
    click(form, "cmdNovo");
    const QString name = QString("ÁçÕü").repeated(15);
    fill(form, "txtNome", name + "x");
    fill(form, "txtLimiteDeCrédito", "1");
    click(form, "cmdSalvar");
    EXPECT_THAT(stored("nome"), ElementsAre(name.toStdString()));
}

TEST_F(ClientRegisterOfTheOldFormat, RefusesASignThatTheFileHasNotGotAndLosesNothing) {
    const std::pair<const char*, int> boxes[] = {
        {"txtNome",         0},
        {"txtObservação", 0},
        {"txtEMailCli",     0},
        {"txtPai",          2},
    };
    auto& form = open<frmCliFor>();
    for (const auto& [name, place] : boxes) {
        click(form, "cmdNovo");
        fill(form, "txtNome", "Ana");
        fill(form, "txtLimiteDeCrédito", "1");
        go(form, name);
        QGuiApplication::clipboard()->setText("José \u2192");
        press(Qt::Key_End);
        press(Qt::Key_V, Qt::ControlModifier);
        go(form, "txtBancos01");
        expectWarning("O caractere \"\u2192\" (U+2192) não pode ser gravado neste banco de dados: "
                      "não existe na página de código 1252.");
        click(form, "cmdSalvar");
        EXPECT_EQ(tab(form), place) << name;
        EXPECT_EQ(focus(), name);
        EXPECT_TRUE(text(form, name).endsWith("José \u2192"));
        EXPECT_EQ(text(form, "txtLimiteDeCrédito"), "1,00");
    }
    EXPECT_THAT(stored("nome"), IsEmpty());
}

// ---- the document number

TEST_F(ClientRegister, TheDocumentNumberIsBareWhileItIsTyped) {
    auto& form = open<frmCliFor>();
    fill(form, "txtCGCCPF", "1a2.3-4 5");
    EXPECT_EQ(text(form, "txtCGCCPF"), "12345");
    press(Qt::Key_Backspace);
    type("5678901");
    EXPECT_EQ(text(form, "txtCGCCPF"), "12345678901");
    press(Qt::Key_Return);
    EXPECT_EQ(focus(), "txtInscriçãoRG");
    EXPECT_EQ(text(form, "txtCGCCPF"), "123.456.789-01");
    press(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(text(form, "txtCGCCPF"), "12345678901");
    type("12345678000195");
    EXPECT_EQ(text(form, "txtCGCCPF"), "12345678000195") << "typed over";
    press(Qt::Key_Tab);
    EXPECT_EQ(text(form, "txtCGCCPF"), "12.345.678/0001-95");
    enter(form, "txtCGCCPF");
    EXPECT_EQ(text(form, "txtCGCCPF"), "12345678000195");
}

TEST_F(ClientRegister, ADocumentNumberOfAnotherLengthIsRefusedAndTheFocusGoesOn) {
    auto& form = open<frmCliFor>();
    for (const char* typed : {"1234567890", "123456789012", "123456789012345"}) {
        fill(form, "txtCGCCPF", typed);
        expectMessage("Mensagem", "CGC/CPF Inválido !", MessageIcon::none);
        press(Qt::Key_Return);
        EXPECT_EQ(text(form, "txtCGCCPF"), "");
        EXPECT_EQ(focus(), "txtInscriçãoRG");
    }
    fill(form, "txtCGCCPF", "1");
    press(Qt::Key_Return); // no message
    EXPECT_EQ(text(form, "txtCGCCPF"), "");
}

TEST_F(ClientRegister, ADocumentNumberRefusedOnTheWayToSaveIsSavedEmpty) {
    given("cliente_fornecedor",
          {
              client("Balcão"), client("Ana Lima", {{"cgc_cpf", words("12345678901")}}
                )
    });
    auto& form = open<frmCliFor>();
    show(form, 1);
    fill(form, "txtCGCCPF", "1234567890");
    expectMessage("Mensagem", "CGC/CPF Inválido !", MessageIcon::none);
    press(Qt::Key_S, Qt::AltModifier);
    EXPECT_THAT(rows("select cgc_cpf from cliente_fornecedor where codigo=2"), ElementsAre(""));
    EXPECT_EQ(shown(form), "|");
}

TEST_F(ClientRegister, ADocumentNumberTypedLastIsSavedWhole) {
    auto& form = open<frmCliFor>();
    fill(form, "txtNome", "Ana");
    fill(form, "txtLimiteDeCrédito", "1");
    fill(form, "txtCGCCPF", "12345678000195");
    click(form, "cmdSalvar");
    EXPECT_THAT(stored("cgc_cpf"), ElementsAre("12345678000195"));
}

// Deliberate: 14 bare digits are taken for a punctuated CPF.
TEST_F(ClientRegister, FourteenBareDigitsLoseThree) {
    auto& form = open<frmCliFor>();
    put(form, "txtCGCCPF", "12345678000195");
    enter(form, "txtCGCCPF");
    EXPECT_EQ(text(form, "txtCGCCPF"), "12356700095");
    put(form, "txtCGCCPF", "");
    fill(form, "txtNome", "Ana");
    fill(form, "txtLimiteDeCrédito", "1");
    put(form, "txtCGCCPF", "12345678000195");
    click(form, "cmdSalvar");
    EXPECT_THAT(stored("cgc_cpf"), ElementsAre("12356700095"));
}

TEST_F(ClientRegister, AStoredDocumentNumberOfAnotherLengthIsToldWhenShown) {
    given("cliente_fornecedor",
          {
              client("Balcão", {{"cgc_cpf", words("12345678901")} }
               ),
              client("Ana Lima", { {"cgc_cpf", words("123")}, {"fone", words("(16) 3222-1234")}}
               )
    });
    auto& form = open<frmCliFor>();
    expectMessage("Mensagem", "CGC/CPF Inválido !", MessageIcon::none);
    click(form, "btnNavegacao", 2);
    EXPECT_EQ(shown(form), "2|Ana Lima");
    EXPECT_EQ(text(form, "txtCGCCPF"), "");
    EXPECT_EQ(text(form, "txttelefone"), "(16) 3222-1234");
    click(form, "btnNavegacao", 0);
    expectMessage("Mensagem", "CGC/CPF Inválido !", MessageIcon::none);
    click(form, "btnNavegacao", 3);
}

TEST_F(ClientRegister, WalkingOnFromTheDocumentNumberShowsTheNextOnesPunctuated) {
    given("cliente_fornecedor", {
                                    client("Balcão", {{"cgc_cpf", words("11111111111")}}
                                     ),
                                    client("Ana Lima", {{"cgc_cpf", words("22222222222")}}
                                     )
    });
    auto& form = open<frmCliFor>();
    enter(form, "txtCGCCPF");
    click(form, "btnNavegacao", 2);
    EXPECT_EQ(text(form, "txtCGCCPF"), "222.222.222-22");
}

// ---- walking

TEST_F(ClientRegister, TheNavigationButtonsWalkAndStopAtTheEnds) {
    givenThreeClients();
    auto& form = open<frmCliFor>();
    const struct {
        int button;
        const char* shows;
    } steps[] = {
        {1, "1|Balcão"  },
        {2, "2|Ana Lima" },
        {2, "3|Bruno Sá"},
        {2, "3|Bruno Sá"},
        {1, "2|Ana Lima" },
        {0, "1|Balcão"  },
        {3, "3|Bruno Sá"},
    };
    for (const auto& [button, shows] : steps) {
        click(form, "btnNavegacao", button);
        EXPECT_EQ(shown(form), shows);
    }
}

TEST_F(ClientRegister, WalkingKeepsTheTab) {
    givenThreeClients();
    auto& form = open<frmCliFor>();
    tabs(form).setCurrentIndex(1);
    click(form, "btnNavegacao", 2);
    EXPECT_EQ(tab(form), 1);
}

// ---- the other commands

TEST_F(ClientRegister, NewEmptiesAllAndProposesToSell) {
    givenThreeClients();
    auto& form = open<frmCliFor>();
    fill(form, "txtPai", "João");
    click(form, "cmdNovo");
    EXPECT_EQ(shown(form), "|");
    EXPECT_EQ(text(form, "txtPai"), "");
    EXPECT_EQ(text(form, "cboVender"), "SIM");
    EXPECT_EQ(control<DropDownList>(form, "cboVender").listIndex(), 0);
    EXPECT_EQ(text(form, "txtLimiteDeCrédito"), "0,00");
    EXPECT_EQ(tab(form), 0);
    EXPECT_EQ(focus(), "txtNome");
}

TEST_F(ClientRegister, NeverDeletes) {
    givenThreeClients();
    auto& form = open<frmCliFor>();
    show(form, 1);
    tabs(form).setCurrentIndex(2);
    expectMessage("Informação", "Não é possível excluir clientes neste sistema. Tente excluir "
                                "pelo sistema de Automação.");
    click(form, "cmdExcluir");
    EXPECT_EQ(stored("codigo").size(), 3U);
    EXPECT_EQ(shown(form), "2|Ana Lima");
    EXPECT_EQ(tab(form), 2);
}

TEST_F(ClientRegister, DeleteOfTheReservedOrOfNoneOnlyGoesToTheName) {
    givenThreeClients();
    auto& form = open<frmCliFor>();
    for (const bool reserved : {true, false}) {
        if (!reserved)
            click(form, "cmdNovo");
        go(form, "txtPai");
        click(form, "cmdExcluir");
        EXPECT_EQ(tab(form), 0);
        EXPECT_EQ(focus(), "txtNome");
    }
}

TEST_F(ClientRegister, FindsAClientByName) {
    givenThreeClients();
    auto& form = open<frmCliFor>();
    tabs(form).setCurrentIndex(2);
    whileModal<frmlocalizar>([](frmlocalizar& lookup) {
        EXPECT_TRUE(lookup.isModal());
        type("bru");
        clickRow(lookup, "LstEncontrado", 0);
        clickRow(lookup, "LstEncontrado", 0);
    });
    click(form, "cmdLocalizar");
    activate(form);
    EXPECT_EQ(shown(form), "3|Bruno Sá");
    EXPECT_EQ(tab(form), 0);
    EXPECT_EQ(focus(), "txtNome");
    click(form, "btnNavegacao", 1);
    EXPECT_EQ(shown(form), "2|Ana Lima") << "the walk goes on from there";
}

TEST_F(ClientRegister, FindsAClientWithTheKeyboardAlone) {
    givenThreeClients();
    auto& form = open<frmCliFor>();
    whileModal<frmlocalizar>([](frmlocalizar&) {
        type("a");
        press(Qt::Key_Return);
        press(Qt::Key_Return);
        press(Qt::Key_Return);
    });
    press(Qt::Key_L, Qt::AltModifier);
    EXPECT_EQ(shown(form), "2|Ana Lima");
}

TEST_F(ClientRegister, ALookupGivenUpChangesNothing) {
    givenThreeClients();
    auto& form = open<frmCliFor>();
    show(form, 1);
    fill(form, "txtBairro", "Centro");
    whileModal<frmlocalizar>([](frmlocalizar&) { press(Qt::Key_Escape); });
    click(form, "cmdLocalizar");
    activate(form);
    EXPECT_EQ(shown(form), "2|Ana Lima");
    EXPECT_EQ(text(form, "txtBairro"), "Centro");
    EXPECT_EQ(focus(), "txtNome");
}

TEST_F(ClientRegister, WithoutClientsThereIsNoLookup) {
    auto& form = open<frmCliFor>();
    go(form, "txtPai");
    click(form, "cmdLocalizar");
    EXPECT_EQ(tab(form), 0);
    EXPECT_EQ(focus(), "txtNome");
}

TEST_F(ClientRegister, CloseAndEscUnload) {
    click(open<frmCliFor>(), "cmdFechar");
    EXPECT_FALSE(frmCliFor::instance().isLoaded());
    auto& form = open<frmCliFor>();
    EXPECT_NE(prompt(), "");
    press(Qt::Key_Escape);
    EXPECT_FALSE(form.isVisible());
    EXPECT_FALSE(frmCliFor::instance().isLoaded());
    EXPECT_EQ(prompt(), "");
}

// ---- keys

TEST_F(ClientRegister, EnterLeadsThroughTheFirstTabToSave) {
    auto& form = open<frmCliFor>();
    click(form, "cmdNovo");
    enter(form, "txtCódigo");
    std::vector<std::string> order;
    while (focus() != "cmdSalvar" && order.size() < 30) {
        order.push_back(focus().toStdString());
        press(Qt::Key_Return);
    }
    EXPECT_THAT(order,
                ElementsAre("txtCódigo", "txtNome", "txtEndereço", "txtBairro", "txtCidade",
                            "txtcep", "cmbEstado", "txtCGCCPF", "txtInscriçãoRG", "txttelefone",
                            "txtfax", "txtUltCompVend", "txtdatanasc", "txtRemuneração",
                            "cboVender", "txtLimiteDeCrédito", "txtEMailCli"));
    EXPECT_THAT(stored("codigo"), IsEmpty()) << "not saved yet";
}

TEST_F(ClientRegister, EnterLeadsThroughTheOtherTabsToSave) {
    auto& form = open<frmCliFor>();
    enter(form, "txtObservação");
    std::vector<std::pair<int, std::string>> order;
    while (focus() != "cmdSalvar" && order.size() < 30) {
        order.emplace_back(tab(form), focus().toStdString());
        press(Qt::Key_Return);
    }
    EXPECT_THAT(order, ElementsAre(std::pair{0, "txtObservação"}, std::pair{1, "txtBancos01"},
                                   std::pair{1, "txtBancos02"}, std::pair{1, "txtNomePessoa01"},
                                   std::pair{1, "txtNomePessoa02"}, std::pair{2, "txtPai"},
                                   std::pair{2, "txtMae"}, std::pair{2, "txtEmpresa"},
                                   std::pair{2, "txtOcupacao"}, std::pair{2, "txtfonetrabalho"}));
    EXPECT_EQ(text(form, "txtObservação"), "") << "no empty line";
}

TEST_F(ClientRegister, EnterFromTheLastAuthorisedGoesToTheFirstParentWhoeverWasThereBefore) {
    auto& form = open<frmCliFor>();
    go(form, "txtMae");
    go(form, "txtNomePessoa02");
    press(Qt::Key_Return);
    EXPECT_EQ(focus(), "txtPai");
    go(form, "txtNomePessoa01");
    go(form, "txtObservação");
    press(Qt::Key_Return);
    EXPECT_EQ(focus(), "txtBancos01");
}

TEST_F(ClientRegister, ControlEnterBeginsALineInTheRemarks) {
    auto& form = open<frmCliFor>();
    fill(form, "txtObservação", "um");
    press(Qt::Key_Return, Qt::ControlModifier);
    type("dois");
    EXPECT_EQ(text(form, "txtObservação"), "um\r\ndois");
    EXPECT_EQ(tab(form), 0);
}

TEST_F(ClientRegister, TheListsCompleteWhatIsTyped) {
    auto& form = open<frmCliFor>();
    click(form, "cmdNovo");
    fill(form, "cmbEstado", "m");
    EXPECT_EQ(text(form, "cmbEstado"), "MA");
    type("t");
    EXPECT_EQ(text(form, "cmbEstado"), "MT");
    press(Qt::Key_Return);
    EXPECT_EQ(focus(), "txtCGCCPF");
    EXPECT_EQ(text(form, "cmbEstado"), "MT");
    fill(form, "cboVender", "n");
    EXPECT_EQ(text(form, "cboVender"), "NÃO");
}

TEST_F(ClientRegister, TabGoesThroughTheFirstTabAndTheFoot) {
    auto& form = open<frmCliFor>();
    enter(form, "txtEMailCli");
    std::vector<std::string> order;
    for (int i = 0; i < 7; ++i) {
        order.push_back(focus().toStdString());
        press(Qt::Key_Tab);
    }
    EXPECT_THAT(order, ElementsAre("txtEMailCli", "txtObservação", "cmdSalvar", "cmdNovo",
                                   "cmdExcluir", "cmdLocalizar", "cmdFechar"));
}

TEST_F(ClientRegister, TheTabsHaveAccessKeys) {
    auto& form = open<frmCliFor>();
    press(Qt::Key_P, Qt::AltModifier);
    EXPECT_EQ(tab(form), 2);
    press(Qt::Key_B, Qt::AltModifier);
    EXPECT_EQ(tab(form), 1);
    press(Qt::Key_C, Qt::AltModifier);
    EXPECT_EQ(tab(form), 0);
}

TEST_F(ClientRegister, EveryEntryControlHasAPrompt) {
    auto& form = open<frmCliFor>();
    for (const Pair& pair : kPairs) {
        go(form, "txtCódigo");
        const QString before = prompt();
        go(form, pair.control);
        EXPECT_NE(prompt(), "") << pair.control;
        EXPECT_NE(prompt(), before) << pair.control;
    }
}

} // namespace
