// The entry of received cheques: what it shows, its keys and its other commands.
#include "cheques/ChequeEntry.h"
#include "controls/box/DropDownList.h"
#include "shell/Mirtal.h"
#include "support/FormChecks.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

using ReceivedCheques = ChequeEntry;

// ---- as it opens

INSTANTIATE_TEST_SUITE_P(, ReceivedCheques, everywhere(), keptName);

TEST_P(ReceivedCheques, SaysWhatItIs) {
    auto& form = open<FrmLancarCheques>();
    EXPECT_EQ(form.windowTitle(), "Cadastro de Cheques Recebidos");
    expectTexts(form, {
                          {"Label10",      "Informações gerais sobre cheques recebidos:"},
                          {"Label1",       "Nome do Cliente:"                             },
                          {"Label2",       "Banco:"                                       },
                          {"Label3",       "Agência:"                                    },
                          {"Label4",       "Nº Cheque:"                                  },
                          {"Label5",       "Dt.Emissão:"                                 },
                          {"Label6",       "Dt.Vencto:"                                   },
                          {"Label7",       "Valor :"                                      },
                          {"Label8",       "Quem Autorizou:"                              },
                          {"Label9",       "Observações:"                               },
                          {"txtdescontar", "&Descontar"                                   },
                          {"cmbcheques",   "Vários C&heques"                             },
                          {"CmdNovo",      "No&vo"                                        },
                          {"CmdIncluir",   "&Salvar"                                      },
                          {"CmdExcluir",   "E&xcluir"                                     },
                          {"CmdLocalizar", "&Localizar"                                   },
                          {"CmdSair",      "Sai&r"                                        },
    });
}

TEST_P(ReceivedCheques, OpensReadyForANewChequeEvenIfSomeAreStored) {
    given("cheques", {cheque(kAna, "1", 60)});
    auto& form = open<FrmLancarCheques>();
    EXPECT_EQ(shown(form), newCheque(30, "descontar|"));
    EXPECT_EQ(focus(), "txtNome");
}

TEST_P(ReceivedCheques, ListsClientsAndBanksByNameWithTheirCodes) {
    given("cliente_fornecedor", {
                                    {{"nome", words("Atacado")}, {"tipo", yes(false)}}
    });
    auto& form = open<FrmLancarCheques>();
    const auto listed = [&](const char* name) {
        const auto& list = control<DropDownList>(form, name);
        std::vector<std::string> entries;
        entries.reserve(static_cast<std::size_t>(list.count()));
        for (int i = 0; i < list.count(); ++i)
            entries.push_back(
                (QString::number(list.itemData(i)) + " " + list.itemText(i)).toStdString());
        return entries;
    };
    EXPECT_THAT(listed("txtNome"), ElementsAre("2 Ana Costa", "1 Bento Dias", "3 Carla Reis"));
    EXPECT_THAT(listed("txtbanco"), ElementsAre("2 Agrobanco", "1 Banco Norte"));
}

TEST_P(ReceivedCheques, HasANameForEachControlNoSharedKeysAndNoCutText) {
    auto& form = open<FrmLancarCheques>();
    EXPECT_EQ(faultsOf(form), QStringList());
}

TEST_P(ReceivedCheques, TheEntryNumberIsNotForTyping) {
    given("cheques", {cheque(kAna, "1", 60)});
    auto& form = open<FrmLancarCheques>();
    click(form, "btnNavegacao", 0);
    EXPECT_EQ(text(form, "txtlancamento"), "1");
    EXPECT_FALSE(control(form, "txtlancamento").isVisible());
    EXPECT_EQ(control<HeadingStrip>(form, "Label10").record(), "Lançamento 1");
}

// ---- keys and prompts

TEST_P(ReceivedCheques, EachControlHasItsPrompt) {
    auto& form = open<FrmLancarCheques>();
    const struct {
        const char* control;
        const char* prompt;
    } table[] = {
        {"txtNome",       "Digite o nome do cliente"                                             },
        {"txtbanco",      "Digite o código do banco"                                            },
        {"txtagencia",    "Digite o nº da Agência"                                             },
        {"txtnumero",     "Digite o número do cheque"                                           },
        {"txtdata",       "Digite a data de emissão do cheque"                                  },
        {"txtbompara",    "Digite a data de vencimento do cheque"                                },
        {"txtvalor",      "Digite o valor do cheque"                                             },
        {"txtautorizou",  "Digite o nome da pessoa que autorizou"                                },
        {"txtobservacao", "Digite alguma observação a respeito do cliente ou cheque"           },
        {"txtdescontar",  "Informe se o cliente vem trocar o cheque na empresa ou é p/descontar"},
        {"cmbcheques",    "Marque se deseja lançar vários cheques do mesmo cliente"            },
    };
    for (const auto& [name, wanted] : table) {
        enter(form, name);
        if (focus() == "CmdIncluir") // left the last field
            enter(form, name);
        EXPECT_EQ(focus(), name);
        EXPECT_EQ(prompt(), wanted);
    }
    click(form, "CmdSair");
    EXPECT_EQ(prompt(), "");
}

TEST_P(ReceivedCheques, EnterLeadsThroughTheFieldsStraightToTheSave) {
    open<FrmLancarCheques>();
    std::vector<std::string> way;
    for (int i = 0; i < 9; ++i) {
        way.push_back(focus().toStdString());
        press(i % 2 == 0 ? Qt::Key_Return : Qt::Key_Enter);
    }
    EXPECT_THAT(way, ElementsAre("txtNome", "txtbanco", "txtagencia", "txtnumero", "txtdata",
                                 "txtbompara", "txtvalor", "txtautorizou", "txtobservacao"));
    EXPECT_EQ(focus(), "CmdIncluir");
}

TEST_P(ReceivedCheques, TheLastFieldLeadsToTheSaveWhicheverWayItIsLeft) {
    auto& form = open<FrmLancarCheques>();
    enter(form, "txtobservacao");
    press(Qt::Key_Tab);
    EXPECT_EQ(focus(), "CmdIncluir");
    enter(form, "txtobservacao");
    press(Qt::Key_Backtab);
    EXPECT_EQ(focus(), "CmdIncluir");
    enter(form, "txtobservacao");
    click(form, "cmbcheques"); // ticked all the same
    EXPECT_EQ(focus(), "CmdIncluir");
    EXPECT_TRUE(ticked(form, "cmbcheques"));
}

TEST_P(ReceivedCheques, EnterMovesOnFromTheCheckBoxesToo) {
    auto& form = open<FrmLancarCheques>();
    enter(form, "txtdescontar");
    press(Qt::Key_Return);
    EXPECT_EQ(focus(), "cmbcheques");
    press(Qt::Key_Return);
    EXPECT_EQ(focus(), "CmdNovo");
    EXPECT_EQ(shown(form), newCheque(30, "descontar|"));
}

TEST_P(ReceivedCheques, TabGoesThroughTheCommandsInTheirOrder) {
    auto& form = open<FrmLancarCheques>();
    enter(form, "CmdNovo");
    std::vector<std::string> order;
    for (int i = 0; i < 5; ++i) {
        order.push_back(focus().toStdString());
        press(Qt::Key_Tab);
    }
    EXPECT_THAT(order,
                ElementsAre("CmdNovo", "CmdIncluir", "CmdExcluir", "CmdLocalizar", "CmdSair"));
}

TEST_P(ReceivedCheques, TypingCompletesClientAndBank) {
    auto& form = open<FrmLancarCheques>();
    type("b");
    EXPECT_EQ(text(form, "txtNome"), "Bento Dias");
    type("x");
    EXPECT_EQ(text(form, "txtNome"), "Bx"); // no such client
    press(Qt::Key_Return);
    type(form, "txtNome", "CAR");
    EXPECT_EQ(text(form, "txtNome"), "Carla Reis");
    press(Qt::Key_Return);
    type("BAN");
    EXPECT_EQ(text(form, "txtbanco"), "Banco Norte");
}

// ---- new and delete

TEST_P(ReceivedCheques, NewClearsEverythingAndTheRunToo) {
    given("cheques", {cheque(kAna, "1", 10)});
    auto& form = open<FrmLancarCheques>();
    click(form, "btnNavegacao", 0);
    click(form, "cmbcheques");
    click(form, "txtdescontar");
    press(Qt::Key_V, Qt::AltModifier);
    EXPECT_EQ(shown(form), newCheque(30, "descontar|"));
    EXPECT_EQ(focus(), "txtNome");
    EXPECT_THAT(stored(), SizeIs(1));
}

TEST_P(ReceivedCheques, DeleteWithoutAStoredChequeOnShowDoesNothing) {
    given("cheques", {cheque(kAna, "1", 10)});
    auto& form = open<FrmLancarCheques>();
    click(form, "CmdExcluir");
    EXPECT_THAT(stored(), SizeIs(1));
    EXPECT_EQ(shown(form), newCheque(30, "descontar|"));
}

TEST_P(ReceivedCheques, DeleteAsksAndDoesNothingOnNo) {
    given("cheques", {cheque(kAna, "1", 10)});
    auto& form = open<FrmLancarCheques>();
    click(form, "btnNavegacao", 0);
    const std::string before = shown(form);
    expectDeleteQuestion(MessageAnswer::no);
    click(form, "CmdExcluir");
    EXPECT_EQ(shown(form), before);
    EXPECT_THAT(stored(), SizeIs(1));
}

TEST_P(ReceivedCheques, ADeleteLeavesTodaysDatesAndNoTicks) {
    given("cheques", {cheque(kAna, "1", 10), cheque(kCarla, "2", 20), cheque(kAna, "3", 30)});
    auto& form = open<FrmLancarCheques>();
    click(form, "btnNavegacao", 2);
    click(form, "cmbcheques");
    expectDeleteQuestion(MessageAnswer::yes);
    click(form, "CmdExcluir");
    EXPECT_EQ(shown(form), newCheque(0, "|"));
    EXPECT_EQ(focus(), "txtNome");
    EXPECT_THAT(stored(), ElementsAre("1|2|1||1|01/03/2026|01/04/2026|10,00|||Verdadeiro",
                                      "3|2|1||3|01/03/2026|01/04/2026|30,00|||Verdadeiro"));
    EXPECT_EQ(data().rsCheques.RecordCount(), 2);
    click(form, "btnNavegacao", 2); // the set begins anew
    EXPECT_EQ(text(form, "txtlancamento"), "3");
}

// ---- walking and showing

TEST_P(ReceivedCheques, TheNavigationButtonsWalkAndStopAtTheEnds) {
    given("cheques", {cheque(kAna, "10", 1), cheque(kBento, "20", 2), cheque(kCarla, "30", 3)});
    auto& form = open<FrmLancarCheques>();
    expectWalk(form, "txtNome");
}

TEST_P(ReceivedCheques, WalkingAnEmptyTableShowsNothing) {
    auto& form = open<FrmLancarCheques>();
    walkNowhere(form);
    EXPECT_EQ(shown(form), newCheque(30, "descontar|"));
}

TEST_P(ReceivedCheques, ShowsEveryField) {
    given("cheques", {
                         {{"cliente", number(kCarla)},
                          {"banco", number(2)},
                          {"agencia", words("0042-1")},
                          {"numero", words("000777")},
                          {"data", day(2026, 2, 3)},
                          {"bompara", day(2026, 12, 31)},
                          {"valor", jet::Currency{12345600}},
                          {"observacao", words("De um amigo")},
                          {"autorizou", words("Rita")},
                          {"descontar", yes(false)}}
    });
    auto& form = open<FrmLancarCheques>();
    click(form, "btnNavegacao", 0);
    EXPECT_EQ(shown(form), "1|Carla Reis|Agrobanco|0042-1|000777|03/02/2026|31/12/2026|1.234,56|"
                           "Rita|De um amigo||");
    click(form, "CmdIncluir");
    EXPECT_THAT(stored(), ElementsAre("1|3|2|0042-1|000777|03/02/2026|31/12/2026|1234,56|De um "
                                      "amigo|Rita|Falso"));
}

TEST_P(ReceivedCheques, EmptyFieldsShowAsEmptyBoxesDo) {
    given("cheques", {
                         cheque(kAna, "1", 10), {{"cliente", number(kAna)}, {"banco", number(1)}}
    });
    auto& form = open<FrmLancarCheques>();
    type(form, "txtobservacao", "algo");
    click(form, "btnNavegacao", 0);
    click(form, "btnNavegacao", 3);
    const std::string today = formatDate(QDate::currentDate()).toStdString();
    EXPECT_EQ(shown(form), "2|Ana Costa|Banco Norte|||" + today + "|" + today + "|0,00||||");
}

TEST_P(ReceivedCheques, OfClientsWithOneNameTheChequesOwnIsChosen) {
    given("cliente_fornecedor", {client("Ana Costa", 0), client("Ana Costa e Filhos", 0)});
    given("cheques", {cheque(4, "1", 10)});
    auto& form = open<FrmLancarCheques>();
    click(form, "btnNavegacao", 0);
    EXPECT_EQ(text(form, "txtNome"), "Ana Costa");
    click(form, "CmdIncluir");
    EXPECT_THAT(stored(), ElementsAre("1|4|1||1|01/03/2026|01/04/2026|10,00|||Verdadeiro"));
}

TEST_P(ReceivedCheques, AChequeIsShownForOthersOnlyWhileOnShow) {
    given("cheques", {cheque(kAna, "1", 10), cheque(kCarla, "2", 20)});
    EXPECT_TRUE(FrmLancarCheques::instance().mostrarCheque(2));
    EXPECT_EQ(data().rsCheques["lancamento"].integer(), 2);
    auto& form = open<FrmLancarCheques>();
    EXPECT_EQ(shown(form), newCheque(30, "descontar|"));
    EXPECT_TRUE(form.mostrarCheque(2));
    EXPECT_EQ(text(form, "txtlancamento"), "2");
    EXPECT_EQ(text(form, "txtNome"), "Carla Reis");
}

TEST_P(ReceivedCheques, AnEntryNumberHasSixteenBits) {
    Row last = cheque(kAna, "1", 10);
    last.push_back({"lancamento", number(32767)});
    Row beyond = cheque(kAna, "2", 20);
    beyond.push_back({"lancamento", number(32768)});
    given("cheques", {last, beyond});
    auto& form = open<FrmLancarCheques>();
    click(form, "btnNavegacao", 0);
    EXPECT_EQ(text(form, "txtlancamento"), "32767");
    const QString told = "O lançamento %1 não pode ser mostrado na entrada de cheques, que só "
                         "mostra lançamentos até 32767.";
    expectMessage("Mensagem", told.arg(32768));
    click(form, "btnNavegacao", 3);
    EXPECT_EQ(text(form, "txtlancamento"), "32767");
    for (const int other : {32768, -32769}) {
        expectMessage("Mensagem", told.arg(other));
        EXPECT_FALSE(form.mostrarCheque(other));
    }
    EXPECT_EQ(text(form, "txtlancamento"), "32767");
}

TEST_P(ReceivedCheques, AChequeWhoseClientIsGoneIsShownWithoutOne) {
    given("cheques", {cheque(kAna, "1", 10), cheque(9, "2", 20)});
    auto& form = open<FrmLancarCheques>();
    click(form, "btnNavegacao", 0);
    click(form, "btnNavegacao", 3);
    EXPECT_EQ(text(form, "txtlancamento"), "2");
    EXPECT_EQ(text(form, "txtNome"), "");
    EXPECT_EQ(text(form, "txtbanco"), "Banco Norte");
    expectMessage("Advertência", "É necessário preencher o nome do cliente.");
    click(form, "CmdIncluir");
}

TEST_P(ReceivedCheques, NoOtherClientIsChosenForTheBeginningOfHisName) {
    given("cheques", {cheque(kCarla, "1", 10), cheque(4, "2", 20)});
    auto& form = open<FrmLancarCheques>(); // whose list was made before him
    given("cliente_fornecedor", {client("Ana")});
    click(form, "btnNavegacao", 0);
    EXPECT_EQ(text(form, "txtNome"), "Carla Reis");
    click(form, "btnNavegacao", 3);
    EXPECT_EQ(text(form, "txtNome"), "Ana"); // listed now, and not taken for a longer name
    click(form, "CmdIncluir");
    EXPECT_EQ(rows("select cliente from cheques where numero='2'"), std::vector<std::string>{"4"});
}

// ---- finding

TEST_P(ReceivedCheques, FindOpensTheListAndComesBackToTheClient) {
    given("cheques", {cheque(kAna, "1", 10), cheque(kCarla, "2", 20)});
    QString mode;
    bool chosen = true;
    FrmLancarCheques::aoLocalizar([&] {
        mode = Mirtal::modo;
        chosen = Mirtal::registroEscolhido;
        FrmLancarCheques::instance().mostrarCheque(2); // as the list does when one is picked
    });
    Mirtal::registroEscolhido = true;
    auto& form = open<FrmLancarCheques>();
    enter(form, "txtagencia");
    press(Qt::Key_L, Qt::AltModifier);
    EXPECT_EQ(mode, "localizarCH");
    EXPECT_FALSE(chosen);
    EXPECT_EQ(text(form, "txtlancamento"), "2");
    EXPECT_EQ(focus(), "txtNome");
    click(form, "CmdSair");
    EXPECT_EQ(Mirtal::modo, "");
}

TEST_P(ReceivedCheques, AChequeFoundOutsideTheClientsAtHandBringsThemAllBack) {
    given("cheques", {cheque(kAna, "1", 10), cheque(kCarla, "2", 20)});
    FrmLancarCheques::aoLocalizar([] { FrmLancarCheques::instance().mostrarCheque(2); });
    auto& form = open<FrmLancarCheques>();
    type(form, "txtNome", "Ana");
    press(Qt::Key_Return);
    enter(form, "txtvalor");
    press(Qt::Key_Return);
    EXPECT_EQ(data().rsCheques.Filter(), "cliente=2");
    click(form, "CmdLocalizar");
    EXPECT_EQ(text(form, "txtlancamento"), "2");
    EXPECT_EQ(data().rsCheques.Filter(), "");
}

// ---- closing

TEST_P(ReceivedCheques, CloseAndEscUnloadAndForgetTheMode) {
    click(open<FrmLancarCheques>(), "CmdSair");
    EXPECT_FALSE(FrmLancarCheques::instance().isLoaded());
    auto& form = open<FrmLancarCheques>();
    Mirtal::modo = "localizarCH";
    press(Qt::Key_Escape);
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(Mirtal::modo, "");
    EXPECT_EQ(shown(open<FrmLancarCheques>()), newCheque(30, "descontar|"));
}

} // namespace
