// What the client register shows of a row and saves of it.
#include "controls/box/MemoEdit.h"
#include "registers/ClientRegister.h"
#include "support/CpuTimer.h"

#include <QClipboard>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// ---- showing and saving

TEST_P(ClientRegister, SavesEachControlInItsField) {
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

TEST_P(ClientRegister, ShowsEachFieldInItsControl) {
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

TEST_P(ClientRegister, AfterASaveIsEmptyWithFocusAndTabWhereTheyWere) {
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

TEST_P(ClientRegister, ChangesTheClientOnShow) {
    givenThreeClients();
    auto& form = open<frmCliFor>();
    show(form, 2);
    fill(form, "txtNome", "Bruno Sá Filho");
    fill(form, "txtLimiteDeCrédito", "1234,56");
    click(form, "cmdSalvar");
    EXPECT_THAT(stored("codigo, nome, limite_credito"),
                ElementsAre("1|Balcão|500,00", "2|Ana Lima|500,00", "3|Bruno Sá Filho|1234,56"));
}

TEST_P(ClientRegister, EverySaveMakesTheRowAClientsRow) {
    if (onServer())
        GTEST_SKIP() << kNewsAtOnce;
    givenThreeClients();
    auto& form = open<frmCliFor>();
    ado::Recordset other;
    other.Open("select * from cliente_fornecedor where codigo=2", data().Automacao);
    other["tipo"] = false;
    other.Update();
    show(form, 1);
    EXPECT_EQ(text(form, "txtNome"), "Ana Lima");
    click(form, "cmdSalvar");
    EXPECT_THAT(stored("codigo, tipo"),
                ElementsAre("1|Verdadeiro", "2|Verdadeiro", "3|Verdadeiro"));
}

TEST_P(ClientRegister, NeverSavesTheReservedClient) {
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

TEST_P(ClientRegister, TheReservedClientIsNotEvenChecked) {
    givenThreeClients();
    auto& form = open<frmCliFor>();
    put(form, "txtNome", "");
    click(form, "cmdSalvar"); // no message
    EXPECT_EQ(focus(), "txtNome");
}

TEST_P(ClientRegister, TheCodeIsNotForTyping) {
    givenThreeClients();
    auto& form = open<frmCliFor>();
    fill(form, "txtCódigo", "3");
    press(Qt::Key_Backspace);
    EXPECT_EQ(text(form, "txtCódigo"), "1");
    press(Qt::Key_Return);
    EXPECT_EQ(focus(), "txtNome");
}

TEST_P(ClientRegister, AClientDeletedMeanwhileFailsAndNothingIsSaved) {
    givenThreeClients();
    auto& form = open<frmCliFor>();
    show(form, 1);
    ado::Recordset other;
    other.Open("select * from cliente_fornecedor where codigo=2", data().Automacao);
    other.Delete();
    expectFailure("foi excluído");
    click(form, "cmdSalvar");
    EXPECT_FALSE(data().Automacao.inTransaction());
    EXPECT_THAT(stored("nome"), ElementsAre("Balcão", "Bruno Sá"));
}

// Deliberate: what a client hasn't got stays as the one before had it.
TEST_P(ClientRegister, AnEmptyFieldKeepsWhatTheClientBeforeHad) {
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

TEST_P(ClientRegister, AnEmptyTextIsShownUnlikeNone) {
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

TEST_P(ClientRegister, TheTimeOfADateSurvivesASave) {
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

TEST_P(ClientRegister, RemarksOfSeveralLinesSurviveASave) {
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

TEST_P(ClientRegister, TwentyThousandClientsAreNotWaitedFor) {
    constexpr int kClients = 20'000;
    ado::Recordset& rs = data().rsCliente;
    {
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
    CpuTimer timer;
    for (rs.MoveFirst(); !rs.EOF(); rs.MoveNext())
        EXPECT_EQ(rs["nome"].text(), "Ana Lima");
    const double readingAll = timer.milliseconds();
    timer.restart();
    auto& form = open<frmCliFor>();
    const double opening = timer.milliseconds();
    timer.restart();
    click(form, "btnNavegacao", 3);
    const double goingToTheLast = timer.milliseconds();
    EXPECT_EQ(shown(form), "20000|Ana Lima");
    timer.restart();
    click(form, "cmdSalvar");
    const double saving = timer.milliseconds();
    EXPECT_EQ(shown(form), "|");
    EXPECT_LT(opening, readingAll);
    EXPECT_LT(goingToTheLast, readingAll / 4);
    EXPECT_LT(saving, readingAll / 2);
}

// ---- what must be filled in

TEST_P(ClientRegister, AsksForNameThenAnswerThenLimit) {
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

TEST_P(ClientRegister, ANegativeLimitPasses) {
    auto& form = open<frmCliFor>();
    fill(form, "txtNome", "Ana");
    fill(form, "txtLimiteDeCrédito", "-5");
    click(form, "cmdSalvar");
    EXPECT_THAT(stored("limite_credito, vender"), ElementsAre("-5,00|NÃO!")) << "as designed";
}

TEST_P(ClientRegister, AFreeAnswerPasses) {
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

TEST_P(ClientRegister, NoMoreCanBeTypedThanAFieldHolds) {
    auto& form = open<frmCliFor>();
    click(form, "cmdNovo");
    fill(form, "txtLimiteDeCrédito", "1");
    // clang-format off
    const std::pair<const char*, int> boxes[] = {
        {"txtNome",         60},
        {"txtEndereço",     60},
        {"txtBairro",       40},
        {"txtCidade",       40},
        {"txtInscriçãoRG",  20},
        {"txtBancos01",     40},
        {"txtBancos02",     40},
        {"txtNomePessoa01", 50},
        {"txtNomePessoa02", 50},
        {"txtPai",          50},
        {"txtMae",          50},
        {"txtEmpresa",      50},
        {"txtOcupacao",     40},
        {"txtEMailCli",     60},
        {"cmbEstado",       2},
    };
    // clang-format on
    for (const auto& [name, width] : boxes) {
        fill(form, name, QString(width + 5, u'ü'));
        EXPECT_EQ(text(form, name), QString(width, u'ü')) << name;
    }
    click(form, "cmdSalvar");
    for (const auto& [name, width] : boxes) {
        const auto* pair = std::ranges::find(kPairs, std::string_view(name), &Pair::control);
        EXPECT_THAT(stored(pair->field), ElementsAre(QString(width, u'ü').toStdString())) << name;
    }
}

TEST_P(ClientRegister, RemarksMayBeLong) {
    auto& form = open<frmCliFor>();
    click(form, "cmdNovo");
    fill(form, "txtNome", "Ana");
    fill(form, "txtLimiteDeCrédito", "1");
    const QString story = QString("Pagou à vista. ").repeated(2000);
    control<MemoEdit>(form, "txtObservação").setPlainText(story);
    click(form, "cmdSalvar");
    EXPECT_THAT(stored("observacao"), ElementsAre(story.toStdString()));
}

TEST_P(ClientRegister, AmountsGoToTheEndOfTheirRange) {
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

TEST_P(ClientRegister, AnAmountBeyondTheRangeCannotBeTyped) {
    auto& form = open<frmCliFor>();
    fill(form, "txtLimiteDeCrédito", "922337203685477,59");
    EXPECT_EQ(text(form, "txtLimiteDeCrédito"), "922337203685477,5");
}

TEST_P(ClientRegister, AmountsOfFourDecimalsSurviveASave) {
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

TEST_P(ClientRegister, DatesGoFromTheYear100To9999) {
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

TEST_P(ClientRegister, ADateThatIsNoneIsToldAndNothingIsSavedBehindIt) {
    auto& form = open<frmCliFor>();
    click(form, "cmdNovo");
    fill(form, "txtNome", "Ana");
    fill(form, "txtLimiteDeCrédito", "1");
    fill(form, "txtdatanasc", "31022001");
    for (const bool byMouse : {false, true}) {
        expectWarning(
            ("\"31/02/2001\" não é uma data. Digite dia, mês e ano, como em " + kToday + ".")
                .toUtf8()
                .constData());
        if (byMouse)
            click(form, "cmdSalvar");
        else
            press(Qt::Key_Return);
        EXPECT_EQ(focus(), "txtdatanasc");
        EXPECT_THAT(stored("nome"), IsEmpty());
    }
    type("28022001");
    click(form, "cmdSalvar");
    EXPECT_THAT(stored("dt_nascimento"), ElementsAre("28/02/2001"));
}

/// A file that stores one byte a character.
class ClientRegisterOfTheOldFormat : public ClientRegister {};

INSTANTIATE_TEST_SUITE_P(, ClientRegisterOfTheOldFormat, testing::Values(Kept(jet::Version::jet3)),
                         keptName);

TEST_P(ClientRegisterOfTheOldFormat, SavesSixtyAccentedCharacters) {
    auto& form = open<frmCliFor>();
    click(form, "cmdNovo");
    const QString name = QString("ÁçÕü").repeated(15);
    fill(form, "txtNome", name + "x");
    fill(form, "txtLimiteDeCrédito", "1");
    click(form, "cmdSalvar");
    EXPECT_THAT(stored("nome"), ElementsAre(name.toStdString()));
}

TEST_P(ClientRegisterOfTheOldFormat, RefusesASignThatTheFileHasNotGotAndLosesNothing) {
    // clang-format off
    const std::pair<const char*, int> boxes[] = {
        {"txtNome",       0},
        {"txtObservação", 0},
        {"txtEMailCli",   0},
        {"txtPai",        2},
    };
    // clang-format on
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
        expectWarning(("O campo \"" + control(form, name).accessibleName() +
                       "\" tem o caractere \"\u2192\", que não pode ser gravado nesta base de "
                       "dados. Apague-o ou troque-o por outro.")
                          .toUtf8()
                          .constData());
        click(form, "cmdSalvar");
        EXPECT_EQ(tab(form), place) << name;
        EXPECT_EQ(focus(), name);
        EXPECT_TRUE(text(form, name).endsWith("José \u2192"));
        EXPECT_EQ(text(form, "txtLimiteDeCrédito"), "1,00");
    }
    EXPECT_THAT(stored("nome"), IsEmpty());
}

} // namespace
