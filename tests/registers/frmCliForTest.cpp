#include "registers/ClientRegister.h"
#include "shell/frmlocalizar.h"
#include "support/FormChecks.h"

#include <QGroupBox>
#include <QLabel>
#include <QToolButton>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

// ---- as it opens

INSTANTIATE_TEST_SUITE_P(, ClientRegister, everywhere(), keptName);

TEST_P(ClientRegister, SaysWhatItIs) {
    auto& form = open<frmCliFor>();
    EXPECT_EQ(form.windowTitle(), "Cadastro Cliente");
    EXPECT_EQ(text(form, "Label24"), "Informações cadastrais de clientes ");
    EXPECT_EQ(text(form, "Label26"), "Informações adicionais do cliente.");
    // clang-format off
    const std::pair<const char*, const char*> labels[] = {
        {"txtCódigo",          "Código:"},
        {"txtNome",            "Nome:"},
        {"txtEndereço",        "Endereço:"},
        {"txtBairro",          "Bairro:"},
        {"txtCidade",          "Cidade:"},
        {"txtcep",             "CEP:"},
        {"txtCGCCPF",          "CPF:"},
        {"txtInscriçãoRG",     "Insc. Est./RG:"},
        {"txttelefone",        "Telefone:"},
        {"txtfax",             "Fax:"},
        {"txtUltCompVend",     "Última Compra:"},
        {"txtdatanasc",        "Dat. Nasc:"},
        {"txtRemuneração",     "Ren. Mensal:"},
        {"cboVender",          "Vender:"},
        {"txtLimiteDeCrédito", "Lim. de Crédito:"},
        {"txtEMailCli",        "E-Mail:"},
        {"txtObservação",      "Observações:"},
        {"txtBancos01",        "Nome:"},
        {"txtBancos02",        "Nome:"},
        {"txtNomePessoa01",    "Nome:"},
        {"txtNomePessoa02",    "Nome:"},
        {"txtPai",             "Nome do Pai:"},
        {"txtMae",             "Nome da Mãe:"},
        {"txtEmpresa",         "Empresa:"},
        {"txtOcupacao",        "Ocupação:"},
        {"txtfonetrabalho",    "Telefone:"},
    };
    // clang-format on
    for (const auto& [name, caption] : labels) {
        const QLabel* label = nullptr;
        for (const auto* each : form.findChildren<QLabel*>())
            if (each->buddy() == &control(form, name))
                label = each;
        ASSERT_NE(label, nullptr) << name;
        EXPECT_EQ(label->text().remove('&'), caption);
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

TEST_P(ClientRegister, HasNoFaultsOnAnyTab) {
    givenThreeClients();
    auto& form = open<frmCliFor>();
    for (int i = 0; i < 3; ++i) {
        tabs(form).setCurrentIndex(i);
        EXPECT_EQ(faultsOf(form), QStringList()) << i;
        EXPECT_EQ(control(form, "Label24").isVisible(), i == 0);
        EXPECT_EQ(control(form, "Label26").isVisible(), i != 0);
    }
}

TEST_P(ClientRegister, FitsTheShopsScreen) {
    auto& form = open<frmCliFor>();
    constexpr QSize kScreen(1366, 768);
    constexpr int kFrameAndPanels = 100;
    EXPECT_LE(form.sizeHint().height(), kScreen.height() - kFrameAndPanels);
    EXPECT_LE(form.height(), kScreen.height() - kFrameAndPanels);
    EXPECT_LE(form.width(), kScreen.width());
}

TEST_P(ClientRegister, OpensOnTheFirstClient) {
    givenThreeClients();
    auto& form = open<frmCliFor>();
    EXPECT_EQ(shown(form), "1|Balcão");
    EXPECT_EQ(text(form, "cboVender"), "SIM");
    EXPECT_EQ(text(form, "txtLimiteDeCrédito"), "500,00");
    EXPECT_EQ(tab(form), 0);
    EXPECT_EQ(focus(), "txtNome");
}

TEST_P(ClientRegister, OpensAsDesignedOverAnEmptyTable) {
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

TEST_P(ClientRegister, SuppliersAreNotClients) {
    given("cliente_fornecedor", {
                                    {{"nome", words("Fornecedor")}, {"tipo", yes(false)}}
    });
    EXPECT_EQ(shown(open<frmCliFor>()), "|");
}

TEST_P(ClientRegister, OffersTheStatesAndTheTwoAnswers) {
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

// ---- the document number

TEST_P(ClientRegister, TheDocumentNumberIsBareWhileItIsTyped) {
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

TEST_P(ClientRegister, ADocumentNumberOfAnotherLengthIsRefusedAndTheFocusGoesOn) {
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

TEST_P(ClientRegister, ADocumentNumberRefusedOnTheWayToSaveIsSavedEmpty) {
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

TEST_P(ClientRegister, ADocumentNumberTypedLastIsSavedWhole) {
    auto& form = open<frmCliFor>();
    fill(form, "txtNome", "Ana");
    fill(form, "txtLimiteDeCrédito", "1");
    fill(form, "txtCGCCPF", "12345678000195");
    click(form, "cmdSalvar");
    EXPECT_THAT(stored("cgc_cpf"), ElementsAre("12345678000195"));
}

// Deliberate: 14 bare digits are taken for a punctuated CPF.
TEST_P(ClientRegister, FourteenBareDigitsLoseThree) {
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

TEST_P(ClientRegister, AStoredDocumentNumberOfAnotherLengthIsToldWhenShown) {
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

TEST_P(ClientRegister, WalkingOnFromTheDocumentNumberShowsTheNextOnesPunctuated) {
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

TEST_P(ClientRegister, TheNavigationButtonsWalkAndStopAtTheEnds) {
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

TEST_P(ClientRegister, WalkingKeepsTheTab) {
    givenThreeClients();
    auto& form = open<frmCliFor>();
    tabs(form).setCurrentIndex(1);
    click(form, "btnNavegacao", 2);
    EXPECT_EQ(tab(form), 1);
}

// ---- the other commands

TEST_P(ClientRegister, NewEmptiesAllAndProposesToSell) {
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

TEST_P(ClientRegister, NeverDeletes) {
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

TEST_P(ClientRegister, DeleteOfTheReservedOrOfNoneOnlyGoesToTheName) {
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

TEST_P(ClientRegister, FindsAClientByName) {
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

TEST_P(ClientRegister, FindsAClientWithTheKeyboardAlone) {
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

TEST_P(ClientRegister, ALookupGivenUpChangesNothing) {
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

TEST_P(ClientRegister, WithoutClientsThereIsNoLookup) {
    auto& form = open<frmCliFor>();
    go(form, "txtPai");
    click(form, "cmdLocalizar");
    EXPECT_EQ(tab(form), 0);
    EXPECT_EQ(focus(), "txtNome");
}

TEST_P(ClientRegister, CloseAndEscUnload) {
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

/// One of the design that takes what is typed or chosen.
bool isEntry(const QWidget& widget) {
    return !widget.objectName().isEmpty() && !widget.objectName().startsWith("qt_") &&
           (widget.inherits("QLineEdit") || widget.inherits("QComboBox") ||
            widget.inherits("QPlainTextEdit") || widget.inherits("QCheckBox"));
}

// What isn't in that table is neither saved, shown nor prompted for by any of these tests.
TEST_P(ClientRegister, EveryEntryControlStandsInTheTableOfWhatIsTyped) {
    auto& form = open<frmCliFor>();
    QStringList controls;
    for (const QWidget* widget : form.findChildren<QWidget*>())
        if (isEntry(*widget) && widget->objectName() != "txtCódigo")
            controls << widget->objectName();
    QStringList typed;
    for (const Pair& pair : kPairs)
        typed << pair.control;
    controls.sort();
    typed.sort();
    EXPECT_EQ(controls, typed);
}

TEST_P(ClientRegister, EveryEntryControlHasAPrompt) {
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
