// The register of bounced cheques, on files of both formats.
#include "collections/BouncedCheques.h"
#include "collections/FrmLocCHTerceiros.h"
#include "controls/box/DropDownList.h"
#include "shell/Mirtal.h"
#include "support/FormChecks.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

INSTANTIATE_TEST_SUITE_P(, BouncedCheques, everywhere(), keptName);

// ---- as it opens

TEST_P(BouncedCheques, SaysWhatItIs) {
    auto& form = open<FrmLancasSFundos>();
    EXPECT_EQ(form.windowTitle(), "Lançamento de cheques sem fundos");
    expectTexts(form, {
                          {"Label10",      "Informações gerais sobre cheques sem fundos:"},
                          {"Label1",       "Nome do Cliente:"                              },
                          {"Label2",       "Banco:"                                        },
                          {"Label3",       "Agência:"                                     },
                          {"Label4",       "Nº Cheque:"                                   },
                          {"Label5",       "Dt.Emissão:"                                  },
                          {"Label6",       "Valor :"                                       },
                          {"Label7",       "Empresa:"                                      },
                          {"Label8",       "Observações:"                                },
                          {"Label9",       "Nº Cheque:"                                   },
                          {"CmdBuscar",    "B&uscar"                                       },
                          {"CmdNovo",      "No&vo"                                         },
                          {"CmdIncluir",   "&Salvar"                                       },
                          {"cmdExcluir",   "E&xcluir"                                      },
                          {"CmdLocalizar", "&Localizar"                                    },
                          {"CmdSair",      "Sai&r"                                         },
    });
    EXPECT_EQ(control(form, "painelbuscar").property("title"), "Busca dados de cheques digitados:");
}

TEST_P(BouncedCheques, OpensReadyForANewChequeEvenIfSomeAreStored) {
    given("semfundos", {bounced(kAna, "1", 60)});
    auto& form = open<FrmLancasSFundos>();
    EXPECT_EQ(shown(form), newCheque());
    EXPECT_FALSE(panelShown(form));
    EXPECT_EQ(focus(), "txtcliente");
}

TEST_P(BouncedCheques, ListsClientsAndBanksByNameWithTheirCodes) {
    given("cliente_fornecedor", {
                                    {{"nome", words("Atacado")}, {"tipo", yes(false)}}
    });
    auto& form = open<FrmLancasSFundos>();
    const auto& clients = control<DropDownList>(form, "txtcliente");
    ASSERT_EQ(clients.count(), 3);
    EXPECT_EQ(clients.itemText(0), "Ana Costa");
    EXPECT_EQ(clients.itemData(0), kAna);
    EXPECT_EQ(clients.itemText(2), "Carla Reis");
    const auto& banks = control<DropDownList>(form, "txtbanco");
    ASSERT_EQ(banks.count(), 2);
    EXPECT_EQ(banks.itemText(0), "Agrobanco");
    EXPECT_EQ(banks.itemData(0), kAgro);
}

TEST_P(BouncedCheques, HintsAtEachFieldAndEnterGoesOn) {
    auto& form = open<FrmLancasSFundos>();
    const struct {
        const char* field;
        const char* hint;
    } fields[] = {
        {"txtcliente",    "Digite o nome do cliente"                      },
        {"txtbanco",      "Digite o código do banco"                     },
        {"txtagencia",    "Informe nº da agência"                       },
        {"txtnumero",     "Digite o número do cheque"                    },
        {"txtdata",       "Digite a data de emissão do cheque"           },
        {"txtvalor",      "Informe o valor do cheque"                     },
        {"txtEmpresa",    "Nome da empresa que cadastrou cliente"         },
        {"txtobservacao", "Digite observações sobre o cliente ou cheque"},
    };
    enter(form, "txtcliente");
    for (const auto& [field, hint] : fields) {
        EXPECT_EQ(focus(), field);
        EXPECT_EQ(prompt(), hint);
        press(Qt::Key_Return);
    }
    EXPECT_EQ(focus(), "CmdIncluir") << "the last field leads to the save";
    click(form, "CmdSair");
    EXPECT_EQ(prompt(), "");
}

TEST_P(BouncedCheques, WhereverTheRemarksAreLeftForTheSaveComesNext) {
    auto& form = open<FrmLancasSFundos>();
    enter(form, "txtobservacao");
    press(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(focus(), "CmdIncluir");
}

TEST_P(BouncedCheques, CompletesTheNamesOfClientsAndBanks) {
    auto& form = open<FrmLancasSFundos>();
    type(form, "txtcliente", "c");
    EXPECT_EQ(text(form, "txtcliente"), "Carla Reis");
    type(form, "txtbanco", "b");
    EXPECT_EQ(text(form, "txtbanco"), "Banco Norte");
}

// ---- what must be filled in

TEST_P(BouncedCheques, AsksForEachMissingFieldInTurn) {
    auto& form = open<FrmLancasSFundos>();
    const struct {
        const char* field;
        const char* message;
        const char* then; ///< typed into the field to meet the demand
    } demands[] = {
        {"txtcliente", "É necessário preencher o nome do cliente.",   "ana" },
        {"txtbanco",   "É necessário preencher o nome do banco.",     "agro"},
        {"txtnumero",  "É necessário preencher O número do cheque.", "7"   },
        {"txtvalor",   "É necessário preencher o Valor do Cheque.",   "1"   },
        {"txtEmpresa", "É necessário preencher O nome da empresa.",   "Loja"},
    };
    for (const auto& [field, message, then] : demands) {
        expectMessage("Advertência", message);
        click(form, "CmdIncluir");
        EXPECT_EQ(focus(), field);
        EXPECT_THAT(stored(), IsEmpty());
        EXPECT_FALSE(data().Automacao.inTransaction());
        type(form, field, then);
    }
    click(form, "CmdIncluir");
    EXPECT_THAT(stored(), ElementsAre("1|2|2||7|" + today() + "|1,00|Loja|"));
}

TEST_P(BouncedCheques, ANameThatIsOnlyTypedIsNoClient) {
    auto& form = open<FrmLancasSFundos>();
    fill(form, "Ninguem", "1", "10");
    expectMessage("Advertência", "É necessário preencher o nome do cliente.");
    click(form, "CmdIncluir");
    EXPECT_EQ(text(form, "txtcliente"), "Ninguem") << "the fields stay as they are";
    EXPECT_EQ(text(form, "txtvalor"), "10,00");
}

TEST_P(BouncedCheques, AValueOfZeroIsRefusedANegativeOnePasses) {
    auto& form = open<FrmLancasSFundos>();
    fill(form, "Ana", "1", "0,00");
    expectMessage("Advertência", "É necessário preencher o Valor do Cheque.");
    press(Qt::Key_Return);
    press(Qt::Key_Return); // on the save
    EXPECT_EQ(focus(), "txtvalor");
    type("-5");
    click(form, "CmdIncluir");
    EXPECT_THAT(stored(), ElementsAre("1|2|2|0042|1|01/03/2026|-5,00|Loja Dois|"));
}

TEST_P(BouncedCheques, NoMoreCanBeTypedThanTheFileHolds) {
    auto& form = open<FrmLancasSFundos>();
    expectRoom(form, {
                         {"txtagencia",    10 },
                         {"txtnumero",     20 },
                         {"txtEmpresa",    50 },
                         {"txtobservacao", 255},
    });
}

TEST_P(BouncedCheques, WhatTheFileCantHoldIsRefusedAndNothingTypedIsLost) {
    auto& form = open<FrmLancasSFundos>();
    fill(form, "Ana", "1", "10");
    auto& box = control<QLineEdit>(form, "txtagencia");
    box.setMaxLength(100);
    box.setText("mais do que cabe");
    expectMessage("Advertência",
                  "O campo \"Agência\" aceita no máximo 10 caracteres; o texto informado tem 16.");
    click(form, "CmdIncluir");
    EXPECT_EQ(focus(), "txtagencia");
    EXPECT_THAT(stored(), IsEmpty());
}

// ---- saving

TEST_P(BouncedCheques, SavesANewChequeAndIsReadyForTheNext) {
    auto& form = open<FrmLancasSFundos>();
    fill(form, "Ana", "000123", "1234,56");
    EXPECT_EQ(focus(), "txtobservacao");
    type("Cheque de D'Ávila");
    press(Qt::Key_Return);
    press(Qt::Key_Return); // the focus is on the save
    EXPECT_THAT(stored(), ElementsAre("1|2|2|0042|000123|01/03/2026|1234,56|Loja Dois|Cheque de "
                                      "D'Ávila"));
    EXPECT_EQ(shown(form), newCheque());
    EXPECT_EQ(focus(), "txtcliente");
    EXPECT_FALSE(data().Automacao.inTransaction());
    click(form, "btnNavegacao", 3);
    EXPECT_EQ(text(form, "txtlancamento"), "1") << "seen by the walk at once";
}

TEST_P(BouncedCheques, ChangesTheChequeOnShow) {
    given("semfundos", {bounced(kAna, "1", 10), bounced(kCarla, "2", 20), bounced(kAna, "3", 30)});
    auto& form = open<FrmLancasSFundos>();
    click(form, "btnNavegacao", 2);
    EXPECT_EQ(text(form, "txtlancamento"), "2");
    type(form, "txtcliente", "Bento");
    type(form, "txtbanco", "agro");
    type(form, "txtvalor", "25,50");
    click(form, "CmdIncluir");
    EXPECT_THAT(stored(), ElementsAre("1|2|1|0001|1|01/03/2026|10,00|Loja Um|sem fundos",
                                      "2|1|2|0001|2|01/03/2026|25,50|Loja Um|sem fundos",
                                      "3|2|1|0001|3|01/03/2026|30,00|Loja Um|sem fundos"));
    EXPECT_EQ(shown(form), newCheque());
    EXPECT_EQ(focus(), "txtcliente");
}

TEST_P(BouncedCheques, AChequeDeletedMeanwhileFailsAndUndoesTheSaving) {
    given("semfundos", {bounced(kAna, "1", 10), bounced(kCarla, "2", 20)});
    auto& form = open<FrmLancasSFundos>();
    click(form, "btnNavegacao", 0);
    Mirtal::apagarPorChave("SemFundos", "lancamento", "1", false);
    expectFailure("foi excluído");
    click(form, "CmdIncluir");
    EXPECT_FALSE(data().Automacao.inTransaction());
    EXPECT_THAT(stored(), SizeIs(1));
}

// ---- new and delete

TEST_P(BouncedCheques, NewClearsEverything) {
    given("semfundos", {bounced(kAna, "1", 10)});
    auto& form = open<FrmLancasSFundos>();
    click(form, "btnNavegacao", 0);
    press(Qt::Key_V, Qt::AltModifier);
    EXPECT_EQ(shown(form), newCheque());
    EXPECT_EQ(focus(), "txtcliente");
    EXPECT_THAT(stored(), SizeIs(1));
}

TEST_P(BouncedCheques, DeleteWithoutAStoredChequeOnShowDoesNothing) {
    given("semfundos", {bounced(kAna, "1", 10)});
    auto& form = open<FrmLancasSFundos>();
    click(form, "cmdExcluir");
    EXPECT_THAT(stored(), SizeIs(1));
}

TEST_P(BouncedCheques, DeleteAsksAndDoesNothingOnNo) {
    given("semfundos", {bounced(kAna, "1", 10)});
    auto& form = open<FrmLancasSFundos>();
    click(form, "btnNavegacao", 0);
    const std::string before = shown(form);
    expectDeleteQuestion(MessageAnswer::no);
    press(Qt::Key_X, Qt::AltModifier);
    EXPECT_EQ(shown(form), before);
    EXPECT_THAT(stored(), SizeIs(1));
}

TEST_P(BouncedCheques, DeletesTheChequeOnShow) {
    given("semfundos", {bounced(kAna, "1", 10), bounced(kCarla, "2", 20), bounced(kAna, "3", 30)});
    auto& form = open<FrmLancasSFundos>();
    click(form, "btnNavegacao", 2);
    expectDeleteQuestion(MessageAnswer::yes);
    click(form, "cmdExcluir");
    EXPECT_EQ(shown(form), newCheque());
    EXPECT_EQ(focus(), "txtcliente");
    EXPECT_THAT(stored(), ElementsAre("1|2|1|0001|1|01/03/2026|10,00|Loja Um|sem fundos",
                                      "3|2|1|0001|3|01/03/2026|30,00|Loja Um|sem fundos"));
    EXPECT_EQ(data().rsSemFundos.RecordCount(), 2);
    click(form, "btnNavegacao", 2); // the set begins anew
    EXPECT_EQ(text(form, "txtlancamento"), "3");
}

TEST_P(BouncedCheques, DeleteWhereNoneAreLeftSaysSo) {
    given("semfundos", {bounced(kAna, "1", 10)});
    auto& form = open<FrmLancasSFundos>();
    click(form, "btnNavegacao", 0);
    Mirtal::apagarPorChave("SemFundos", "lancamento", "1", false);
    expectMessage("Mensagem", "Não existe registros para excluir !");
    click(form, "cmdExcluir");
    EXPECT_EQ(text(form, "txtlancamento"), "1");
}

TEST_P(BouncedCheques, DeletingAChequeThatIsGoneFails) {
    given("semfundos", {bounced(kAna, "1", 10), bounced(kAna, "2", 20)});
    auto& form = open<FrmLancasSFundos>();
    click(form, "btnNavegacao", 0);
    Mirtal::apagarPorChave("SemFundos", "lancamento", "1", false);
    expectDeleteQuestion(MessageAnswer::yes);
    expectFailure("foi excluído");
    click(form, "cmdExcluir");
    EXPECT_THAT(stored(), SizeIs(1));
}

// ---- walking

TEST_P(BouncedCheques, TheNavigationButtonsWalkAndStopAtTheEnds) {
    given("semfundos",
          {bounced(kAna, "10", 1), bounced(kBento, "20", 2), bounced(kCarla, "30", 3)});
    auto& form = open<FrmLancasSFundos>();
    expectWalk(form, "txtcliente");
}

TEST_P(BouncedCheques, WalkingAnEmptyTableShowsNothing) {
    auto& form = open<FrmLancasSFundos>();
    type(form, "txtnumero", "7");
    const std::string before = shown(form);
    walkNowhere(form);
    EXPECT_EQ(shown(form), before);
}

TEST_P(BouncedCheques, ShowsEveryField) {
    given("semfundos", {bounced(kCarla, "000777", 1'234)});
    auto& form = open<FrmLancasSFundos>();
    click(form, "btnNavegacao", 0);
    EXPECT_EQ(shown(form), "1|Carla Reis|Banco Norte|0001|000777|01/03/2026|1.234,00|Loja Um|sem "
                           "fundos");
}

TEST_P(BouncedCheques, EmptyFieldsShowAsEmptyBoxesDo) {
    given("semfundos",
          {
              bounced(kAna, "1", 10), {{"cliente", number(kBento)}, {"banco", number(kAgro)}}
    });
    auto& form = open<FrmLancasSFundos>();
    click(form, "btnNavegacao", 0);
    click(form, "btnNavegacao", 3);
    EXPECT_EQ(shown(form), "2|Bento Dias|Agrobanco|||" + today() + "|0,00||");
}

TEST_P(BouncedCheques, AClientOrBankThatIsGoneIsNotTheOneShownBefore) {
    given("semfundos", {bounced(kAna, "1", 10), bounced(9, "2", 20)});
    data().rsSemFundos.MoveLast();
    data().rsSemFundos["banco"] = 9;
    data().rsSemFundos.Update();
    auto& form = open<FrmLancasSFundos>();
    click(form, "btnNavegacao", 0);
    click(form, "btnNavegacao", 3);
    EXPECT_EQ(shown(form), "2|||0001|2|01/03/2026|20,00|Loja Um|sem fundos");
    expectMessage("Advertência", "É necessário preencher o nome do cliente.");
    click(form, "CmdIncluir");
}

TEST_P(BouncedCheques, OfClientsWithOneNameTheChequesOwnIsChosen) {
    given("cliente_fornecedor", {client("Ana Costa"), client("Ana Costa e Filhos")});
    given("semfundos", {bounced(4, "1", 10)});
    auto& form = open<FrmLancasSFundos>();
    click(form, "btnNavegacao", 0);
    EXPECT_EQ(text(form, "txtcliente"), "Ana Costa");
    click(form, "CmdIncluir");
    EXPECT_THAT(stored(), ElementsAre("1|4|1|0001|1|01/03/2026|10,00|Loja Um|sem fundos"));
}

// ---- finding

TEST_P(BouncedCheques, FindsAChequeInTheListAndShowsIt) {
    given("semfundos", {bounced(kAna, "1", 10), bounced(kCarla, "2", 20), bounced(kAna, "3", 30)});
    data().rsSemFundos.setFilter("cliente=2"); // as the consultation leaves it
    Mirtal::registroEscolhido = true;
    auto& form = open<FrmLancasSFundos>();
    enter(form, "txtagencia");
    whileModal<FrmLocCHTerceiros>([](FrmLocCHTerceiros& list) {
        EXPECT_EQ(Mirtal::modo, "localizarSF");
        EXPECT_FALSE(Mirtal::registroEscolhido);
        EXPECT_FALSE(control(list, "chkdescontar").isVisible());
        type(list, "txtcliente", "Carla");
        clickRow(list, "lstterceiros", 0);
        clickRow(list, "lstterceiros", 0);
    });
    press(Qt::Key_L, Qt::AltModifier);
    activate(form);
    EXPECT_EQ(shown(form), "2|Carla Reis|Banco Norte|0001|2|01/03/2026|20,00|Loja Um|sem fundos");
    EXPECT_EQ(focus(), "txtcliente");
    EXPECT_EQ(data().rsSemFundos.Filter(), "");
}

TEST_P(BouncedCheques, FindingNothingLeavesAllAsItIs) {
    given("semfundos", {bounced(kAna, "1", 10), bounced(kCarla, "2", 20)});
    data().rsSemFundos.setFilter("cliente=2");
    auto& form = open<FrmLancasSFundos>();
    click(form, "btnNavegacao", 0);
    const std::string before = shown(form);
    whileModal<FrmLocCHTerceiros>([](FrmLocCHTerceiros& list) { click(list, "cmdsair"); });
    click(form, "CmdLocalizar");
    activate(form);
    EXPECT_EQ(shown(form), before);
    EXPECT_EQ(focus(), "txtcliente");
    EXPECT_EQ(data().rsSemFundos.Filter(), "cliente=2");
}

TEST_P(BouncedCheques, AChequeThatIsGoneWhenItIsPickedIsNotShown) {
    given("semfundos", {bounced(kAna, "1", 10)});
    auto& form = open<FrmLancasSFundos>();
    whileModal<FrmLocCHTerceiros>([](FrmLocCHTerceiros& list) {
        type(list, "txtcliente", "Ana");
        Mirtal::apagarPorChave("SemFundos", "lancamento", "1", false);
        clickRow(list, "lstterceiros", 0);
        clickRow(list, "lstterceiros", 0);
    });
    click(form, "CmdLocalizar");
    activate(form);
    EXPECT_TRUE(Mirtal::registroEscolhido);
    EXPECT_EQ(shown(form), newCheque());
    EXPECT_EQ(focus(), "txtcliente");
}

// ---- to be looked at

TEST_P(BouncedCheques, ShownToBeLookedAtNothingCanBeTyped) {
    given("semfundos", {bounced(kAna, "1", 10), bounced(kCarla, "2", 20)});
    data().rsSemFundos.MoveLast();
    whileModal<FrmLancasSFundos>([](FrmLancasSFundos& form) {
        EXPECT_EQ(shown(form),
                  "2|Carla Reis|Banco Norte|0001|2|01/03/2026|20,00|Loja Um|sem fundos");
        for (const char* field : kFields)
            EXPECT_FALSE(control(form, field).isEnabled()) << field;
        EXPECT_FALSE(control(form, "cmbncheque").isEnabled());
        for (const char* command : {"CmdNovo", "CmdIncluir", "cmdExcluir", "CmdBuscar"})
            EXPECT_FALSE(control(form, command).isEnabled()) << command;
        EXPECT_TRUE(control(form, "CmdSair").isEnabled());
        click(form, "btnNavegacao", 0);
        EXPECT_EQ(text(form, "txtcliente"), "Ana Costa");
        EXPECT_FALSE(control(form, "txtcliente").isEnabled());
        click(form, "CmdSair");
    });
    FrmLancasSFundos::instance().consultar();
}

TEST_P(BouncedCheques, TypingIsPossibleAgainOnceTheWindowWasClosed) {
    given("semfundos", {bounced(kAna, "1", 10)});
    whileModal<FrmLancasSFundos>([](FrmLancasSFundos& form) { click(form, "CmdSair"); });
    FrmLancasSFundos::instance().consultar();
    auto& form = open<FrmLancasSFundos>();
    EXPECT_EQ(shown(form), newCheque());
    for (const char* field : kFields)
        EXPECT_TRUE(control(form, field).isEnabled()) << field;
    for (const char* command : {"CmdNovo", "CmdIncluir", "cmdExcluir", "CmdBuscar"})
        EXPECT_TRUE(control(form, command).isEnabled()) << command;
}

// ---- closing, looks

TEST_P(BouncedCheques, CloseAndEscUnloadAndLeaveTheModeToOthers) {
    click(open<FrmLancasSFundos>(), "CmdSair");
    EXPECT_FALSE(FrmLancasSFundos::instance().isLoaded());
    auto& form = open<FrmLancasSFundos>();
    Mirtal::modo = "Consulta";
    press(Qt::Key_Escape);
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(Mirtal::modo, "Consulta");
}

TEST_P(BouncedCheques, IsAccessibleAndCutsNoText) {
    auto& form = open<FrmLancasSFundos>();
    click(form, "CmdBuscar");
    EXPECT_EQ(faultsOf(form), QStringList());
}

TEST_P(BouncedCheques, KeepsItsSizeWhileThePanelComesAndGoes) {
    auto& form = open<FrmLancasSFundos>();
    const QSize before = form.size();
    click(form, "CmdBuscar");
    QCoreApplication::processEvents();
    EXPECT_EQ(form.size(), before);
}

} // namespace
