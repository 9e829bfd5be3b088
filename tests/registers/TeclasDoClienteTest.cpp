// The keys of the clients' window: where Enter, Tab and the access keys lead.
#include "registers/ClientRegister.h"

#include <QApplication>
#include <QToolButton>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

TEST_P(ClientRegister, EnterLeadsThroughTheFirstTabToSave) {
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

TEST_P(ClientRegister, EnterHeldDownInTheEMailStopsAtSave) {
    givenThreeClients();
    auto& form = open<frmCliFor>();
    show(form, 1);
    fill(form, "txtEMailCli", "ana@lima.example");
    const auto hold = [](bool again) {
        QTest::simulateEvent(QApplication::focusWidget(), true, Qt::Key_Return, Qt::NoModifier,
                             "\r", again, 0);
    };
    hold(false);
    for (int i = 0; i < 20; ++i)
        hold(true);
    EXPECT_EQ(focus(), "cmdSalvar");
    EXPECT_EQ(shown(form), "2|Ana Lima");
    EXPECT_THAT(stored("emailcli"), Each("")) << "not saved";
    form.findChild<NavigationBar*>()->button(2)->setFocus();
    for (int i = 0; i < 20; ++i)
        hold(true);
    EXPECT_EQ(shown(form), "2|Ana Lima") << "not walked";
}

TEST_P(ClientRegister, ADocumentNumberThatIsOnlyLookedAtIsNotTyped) {
    given("cliente_fornecedor",
          {
              client("Balcão"), client("Ana Lima", {{"cgc_cpf", words("12345678909")}}
                )
    });
    auto& form = open<frmCliFor>();
    show(form, 1);
    enter(form, "txtCGCCPF");
    EXPECT_EQ(text(form, "txtCGCCPF"), "12345678909");
    press(Qt::Key_Escape);
    EXPECT_FALSE(form.isVisible());
}

TEST_P(ClientRegister, TabsThatAreOnlyLookedAtAreNotTyped) {
    given("cliente_fornecedor",
          {
              client("Balcão"),
              client("Ana Lima", {{"endereco", words("Rua 1")}, {"pai", words("João")}}
               )
    });
    auto& form = open<frmCliFor>();
    show(form, 1);
    for (Qt::Key key : {Qt::Key_U, Qt::Key_H}) {
        press(key, Qt::AltModifier);
        EXPECT_NE(tab(form), 0);
    }
    press(Qt::Key_Escape);
    EXPECT_FALSE(form.isVisible());
}

TEST_P(ClientRegister, EnterLeadsThroughTheOtherTabsToSave) {
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

TEST_P(ClientRegister, EnterFromTheLastAuthorisedGoesToTheFirstParentWhoeverWasThereBefore) {
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

TEST_P(ClientRegister, ControlEnterBeginsALineInTheRemarks) {
    auto& form = open<frmCliFor>();
    fill(form, "txtObservação", "um");
    press(Qt::Key_Return, Qt::ControlModifier);
    type("dois");
    EXPECT_EQ(text(form, "txtObservação"), "um\r\ndois");
    EXPECT_EQ(tab(form), 0);
}

TEST_P(ClientRegister, TheListsCompleteWhatIsTyped) {
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

TEST_P(ClientRegister, TabGoesThroughTheFirstTabAndTheFoot) {
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

TEST_P(ClientRegister, TheTabsHaveAccessKeys) {
    auto& form = open<frmCliFor>();
    press(Qt::Key_H, Qt::AltModifier);
    EXPECT_EQ(tab(form), 2);
    press(Qt::Key_U, Qt::AltModifier);
    EXPECT_EQ(tab(form), 1);
    press(Qt::Key_C, Qt::AltModifier);
    EXPECT_EQ(tab(form), 0);
}

} // namespace
