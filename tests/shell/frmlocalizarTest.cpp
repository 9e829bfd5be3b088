#include "shell/frmlocalizar.h"

#include "controls/window/Failure.h"
#include "shell/Programa.h"
#include "support/CpuTimer.h"
#include "support/FormChecks.h"
#include "support/ShopTest.h"

#include <QClipboard>
#include <QGuiApplication>

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ClientLookup : public Everywhere<ShopTest> {
protected:
    static Row client(const char* name, bool isClient = true) {
        return {
            {"nome", words(name)  },
            {"tipo", yes(isClient)}
        };
    }
    /// Keys 1 to 6, the last of them no client.
    void givenClients() {
        given("cliente_fornecedor", {client("Marina Prado"), client("Ana Lima"),
                                     client("MARIA DE SOUZA"), client("Márcio D'Ávila"),
                                     client("Maria de Souza"), client("Mara Ferragens", false)});
    }
    /// What the window tells the register.
    frmlocalizar& opened() {
        auto& form = open<frmlocalizar>();
        QObject::connect(&form, &frmlocalizar::clienteEscolhido, &form,
                         [this] { chosen_.push_back(data().rsCliente["codigo"].text()); });
        return form;
    }
    void expectNobody() {
        expectMessage("Mensagem", "Não foi encontrado nenhum registro.", MessageIcon::information);
    }
    static void paste(const QString& text) {
        QGuiApplication::clipboard()->setText(text);
        press(Qt::Key_A, Qt::ControlModifier);
        press(Qt::Key_V, Qt::ControlModifier);
    }
    static ListView& list(const QWidget& form) { return control<ListView>(form, "LstEncontrado"); }
    static std::vector<std::string> found(const QWidget& form) {
        std::vector<std::string> names;
        names.reserve(static_cast<std::size_t>(list(form).count()));
        for (int row = 0; row < list(form).count(); ++row)
            names.push_back(list(form).text(row, 0).toStdString());
        return names;
    }

    std::vector<std::string> chosen_;
};

INSTANTIATE_TEST_SUITE_P(, ClientLookup, everywhere(), keptName);

TEST_P(ClientLookup, SaysWhatItIs) {
    auto& form = opened();
    EXPECT_EQ(form.windowTitle(), "Localizar Cliente");
    EXPECT_EQ(text(form, "cmdsair"), "Sai&r");
    EXPECT_EQ(focus(), "txtpesquisar");
    EXPECT_EQ(prompt(), "Quem você deseja pesquisar");
    EXPECT_THAT(found(form), IsEmpty());
}

TEST_P(ClientLookup, HasNoFaults) {
    givenClients();
    auto& form = opened();
    type("M");
    EXPECT_EQ(faultsOf(form), QStringList());
}

TEST_P(ClientLookup, TheListFollowsEachKey) {
    givenClients();
    auto& form = opened();
    type("m");
    EXPECT_THAT(found(form),
                ElementsAre("Márcio D'Ávila", "MARIA DE SOUZA", "Maria de Souza", "Marina Prado"));
    type("ari");
    EXPECT_THAT(found(form), ElementsAre("MARIA DE SOUZA", "Maria de Souza", "Marina Prado"));
    type("n");
    EXPECT_THAT(found(form), ElementsAre("Marina Prado"));
    press(Qt::Key_Backspace);
    EXPECT_THAT(found(form), ElementsAre("MARIA DE SOUZA", "Maria de Souza", "Marina Prado"));
    EXPECT_EQ(focus(), "txtpesquisar");
}

TEST_P(ClientLookup, AccentsCount) {
    givenClients();
    auto& form = opened();
    type("má");
    EXPECT_THAT(found(form), ElementsAre("Márcio D'Ávila"));
}

TEST_P(ClientLookup, FindsWithOtherAccentsWhereNobodyBeginsExactlySo) {
    givenClients();
    auto& form = opened();
    type("marc");
    EXPECT_THAT(found(form), ElementsAre("Márcio D'Ávila"));
    paste("MÁRI");
    EXPECT_THAT(found(form), ElementsAre("MARIA DE SOUZA", "Maria de Souza", "Marina Prado"));
    expectNobody(); // a supplier isn't found this way either
    paste("mára");
}

TEST_P(ClientLookup, AnEmptyTextListsAllClientsByName) {
    givenClients();
    auto& form = opened();
    type("a");
    press(Qt::Key_Backspace);
    EXPECT_THAT(found(form), ElementsAre("Ana Lima", "Márcio D'Ávila", "MARIA DE SOUZA",
                                         "Maria de Souza", "Marina Prado"));
}

TEST_P(ClientLookup, RowsAreKnownByTheCodeFilledUpWithZeros) {
    givenClients();
    auto& form = opened();
    type("an");
    EXPECT_EQ(list(form).item(0).key, "0000000002");
    EXPECT_EQ(list(form).text(0, 1), "2");
}

TEST_P(ClientLookup, WhereNobodyIsFoundSaysSoAndListsEverybody) {
    givenClients();
    auto& form = opened();
    expectNobody();
    type("z");
    EXPECT_EQ(text(form, "txtpesquisar"), "");
    EXPECT_EQ(found(form).size(), 5U);
    EXPECT_EQ(focus(), "txtpesquisar");
}

TEST_P(ClientLookup, SuppliersAreNotFound) {
    givenClients();
    auto& form = opened();
    type("Mar");
    expectNobody();
    type("a");
    EXPECT_EQ(found(form).size(), 5U);
}

TEST_P(ClientLookup, WithoutClientsSaysSoForTheTextAndForNone) {
    opened();
    expectNobody();
    expectNobody(); // for the empty text that the first one leaves
    type("a");
}

// Deliberate: the text is compared as it was typed, but measured without its outer blanks.
TEST_P(ClientLookup, ATextWithOuterBlanksFindsNobody) {
    givenClients();
    auto& form = opened();
    type("maria");
    expectNobody();
    type(" ");
    EXPECT_EQ(text(form, "txtpesquisar"), "");
    expectNobody();
    type(" ");
    expectNobody();
    paste("  maria");
    paste("maria de");
    EXPECT_EQ(found(form).size(), 2U) << "within it a blank counts";
}

TEST_P(ClientLookup, AnApostropheBreaksTheSearch) {
    givenClients();
    opened();
    expectFailure("apóstrofo");
    paste("Márcio D'");
}

TEST_P(ClientLookup, TheFirstClickOnlySelects) {
    givenClients();
    auto& form = opened();
    type("mari");
    clickRow(form, "LstEncontrado", 0);
    clickRow(form, "LstEncontrado", 1);
    clickRow(form, "LstEncontrado", 0);
    EXPECT_TRUE(form.isVisible());
    EXPECT_THAT(chosen_, IsEmpty());
}

TEST_P(ClientLookup, TheSecondClickChoosesAndCloses) {
    givenClients();
    auto& form = opened();
    type("mari");
    clickRow(form, "LstEncontrado", 1);
    clickRow(form, "LstEncontrado", 1);
    EXPECT_FALSE(form.isVisible());
    EXPECT_THAT(chosen_, ElementsAre("5"));
    EXPECT_FALSE(frmlocalizar::instance().isLoaded());
}

TEST_P(ClientLookup, ChoosesByKeyboard) {
    givenClients();
    auto& form = opened();
    type("mari");
    press(Qt::Key_Return);
    EXPECT_EQ(focus(), "LstEncontrado");
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    EXPECT_TRUE(form.isVisible());
    press(Qt::Key_Return);
    EXPECT_FALSE(form.isVisible());
    EXPECT_THAT(chosen_, ElementsAre("1"));
}

// A new search doesn't forget the click before it.
TEST_P(ClientLookup, AClickAcrossASearchCountsAsTheSecond) {
    givenClients();
    auto& form = opened();
    type("mari");
    clickRow(form, "LstEncontrado", 2);
    type(form, "txtpesquisar", "marin");
    clickRow(form, "LstEncontrado", 0);
    EXPECT_THAT(chosen_, ElementsAre("1"));
}

TEST_P(ClientLookup, ChoosesUnderANegativeCodeToo) {
    given("cliente_fornecedor",
          {
              {{"codigo", number(-12)}, {"nome", words("Zulmira")}, {"tipo", yes(true)}}
    });
    auto& form = opened();
    type("z");
    clickRow(form, "LstEncontrado", 0);
    clickRow(form, "LstEncontrado", 0);
    EXPECT_THAT(chosen_, ElementsAre("-12"));
}

TEST_P(ClientLookup, AKeyAmongTwentyThousandClientsIsNotWaitedFor) {
    const char* names[] = {"Marina", "Ana", "Carlos", "Paulo", "Maria", "Zélia", "José", "Rita"};
    int clients = 0;
    const auto addClients = [&](int count) {
        ado::Transaction all(data().Automacao);
        for (; count > 0; --count, ++clients) {
            ado::Recordset& rs = data().rsCliente;
            rs.AddNew();
            rs["nome"] = QString("%1 Pereira %2").arg(names[clients % 8]).arg(clients);
            rs["tipo"] = true;
            rs.Update();
        }
        all.commit();
    };
    auto& form = opened();
    const auto cost = [&] {
        CpuTimer timer;
        type("maria");
        const double typing = timer.milliseconds();
        EXPECT_EQ(list(form).count(), clients / 8);
        timer.restart();
        control<QLineEdit>(form, "txtpesquisar").clear();
        EXPECT_EQ(list(form).count(), clients);
        return std::pair(typing, timer.milliseconds());
    };
    addClients(2'000);
    const auto [typingFew, clearingFew] = cost();
    addClients(18'000);
    const auto [typing, clearing] = cost();
    // Ten times as many: three times that leaves room for what else the machine does.
    EXPECT_LT(typing, 3 * 10 * typingFew);
    EXPECT_LT(clearing, 3 * 10 * clearingFew);
}

TEST_P(ClientLookup, CloseAndEscChooseNobody) {
    givenClients();
    data().rsCliente.MoveLast();
    click(opened(), "cmdsair");
    auto& form = opened();
    type("a");
    press(Qt::Key_Escape);
    EXPECT_FALSE(form.isVisible());
    EXPECT_THAT(chosen_, IsEmpty());
    EXPECT_EQ(data().rsCliente["codigo"].text(), "5");
    EXPECT_EQ(prompt(), "");
}

TEST_P(ClientLookup, AJoinTypedForANameIsToldAndTheSearchGoesOn) {
    if (onServer())
        GTEST_SKIP() << kItsOwnLimits;
    setFailureHandler(&atenderFalha);
    givenClients();
    auto& form = opened();
    expectMessage("Mensagem", "A consulta pede mais do que o programa pode fazer de uma vez. "
                              "Procure por menos e tente de novo.");
    QString tables = "cliente_fornecedor as a";
    for (const char* more : {"b", "c", "d", "e", "f", "g"})
        tables += QString(", cliente_fornecedor as ") + more;
    paste("x' union all select a.codigo, a.nome & '" + QString(10'000, 'x') + "' & b.nome from " +
          tables + " where a.nome<>'");
    paste("Ana");
    EXPECT_THAT(found(form), ElementsAre("Ana Lima"));
    EXPECT_FALSE(data().Automacao.inTransaction());
}

} // namespace
