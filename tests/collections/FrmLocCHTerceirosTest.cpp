#include "cheques/FrmLancarCheques.h"
#include "collections/ChequeList.h"
#include "support/FormChecks.h"

#include <QScrollBar>

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// ---- as it opens

INSTANTIATE_TEST_SUITE_P(, ChequeList, everywhere(), keptName);

TEST_P(ChequeList, SaysWhatItIs) {
    auto& form = openFor("localizarCH");
    EXPECT_EQ(form.windowTitle(), "Localizar Cheque Recebidos");
    EXPECT_EQ(text(form, "Label5"), "Localizar cheques recebidos:");
    EXPECT_EQ(text(form, "Label1"), "Informe o Banco:");
    EXPECT_EQ(text(form, "Label2"), "Nome do Cliente:");
    EXPECT_EQ(text(form, "Label3"), "Inicial:");
    EXPECT_EQ(text(form, "Label4"), "Final:");
    EXPECT_EQ(text(form, "chkdescontar"), "&descontar no banco");
    EXPECT_EQ(text(form, "chkmostrar"), "&Mostrar datas entre:");
    const char* captions[] = {"",        "Nº  Cheque", "Nome do Cliente",
                              "Agência", "Dt.Vencto",  "Valor R$"};
    for (int column = 0; column < 6; ++column)
        EXPECT_EQ(list(form).columnCaption(column), captions[column]);
}

TEST_P(ChequeList, InSettlementHasCheckBoxesTotalAndSave) {
    givenCheques();
    auto& form = openFor("Baixar");
    EXPECT_EQ(form.windowTitle(), "Baixa de cheques recebidos");
    EXPECT_TRUE(control(form, "cmdsalvar").isVisible());
    EXPECT_TRUE(control(form, "lbltotal").isVisible());
    EXPECT_EQ(text(form, "lbltotal"), "Total:");
    click(form, "chkdescontar");
    QCoreApplication::processEvents();
    EXPECT_TRUE(list(form).model()->index(0, 0).data(Qt::CheckStateRole).isValid());
}

TEST_P(ChequeList, InTheFindModesHasNeither) {
    givenCheques();
    givenBounced();
    for (const char* mode : {"localizarCH", "localizarSF"}) {
        auto& form = openFor(mode);
        EXPECT_EQ(form.windowTitle(), "Localizar Cheque Recebidos");
        EXPECT_FALSE(control(form, "cmdsalvar").isVisible());
        EXPECT_FALSE(control(form, "lbltotal").isVisible());
        enter(form, "txtcliente");
        press(Qt::Key_Down);
        QCoreApplication::processEvents();
        ASSERT_EQ(list(form).model()->rowCount(), mode == std::string("localizarCH") ? 2 : 1);
        EXPECT_FALSE(list(form).model()->index(0, 0).data(Qt::CheckStateRole).isValid());
        click(form, "cmdsair");
    }
}

TEST_P(ChequeList, TheFirstColumnIsNarrowerInSettlement) {
    constexpr int kOthers = 9050; // the widths of the other columns, in the same unit
    const std::pair<const char*, int> widths[] = {
        {"Baixar",      250},
        {"localizarCH", 300},
        {"localizarSF", 300}
    };
    for (const auto& [mode, width] : widths) {
        auto& form = openFor(mode);
        form.resize(6000, 580); // so wide that check box and icon don't ask for more
        QCoreApplication::processEvents();
        const int all = list(form).maximumViewportSize().width() -
                        list(form).verticalScrollBar()->sizeHint().width();
        const int share = all * width / (kOthers + width);
        EXPECT_NEAR(list(form).columnWidth(0), share, 1) << mode;
        click(form, "cmdsair");
    }
}

TEST_P(ChequeList, TheFirstColumnIsNarrowerInSettlementAsTheWindowOpensAndStaysSo) {
    givenCheques();
    std::vector<int> widths;
    for (const char* mode : {"Baixar", "localizarCH"}) {
        auto& form = openFor(mode);
        const int empty = list(form).columnWidth(0);
        click(form, "chkdescontar");
        QCoreApplication::processEvents();
        ASSERT_GT(list(form).count(), 0);
        EXPECT_EQ(list(form).columnWidth(0), empty) << mode << ": no jump when it is filled";
        widths.push_back(empty);
        click(form, "cmdsair");
    }
    EXPECT_LT(widths[0], widths[1]);
}

TEST_P(ChequeList, OpensOnTodayWithBanksAndClientsByNameAndAnEmptyList) {
    givenCheques();
    auto& form = openFor("Baixar");
    const QDate today = QDate::currentDate();
    EXPECT_EQ(control<DatePicker>(form, "txtinicio").value(), today);
    EXPECT_EQ(control<DatePicker>(form, "txtfim").value(), today);
    const auto& banks = control<DropDownList>(form, "txtbanco");
    ASSERT_EQ(banks.count(), 2);
    EXPECT_EQ(banks.itemText(0), "Agrobanco");
    EXPECT_EQ(banks.itemData(0), 2);
    EXPECT_EQ(banks.itemText(1), "Caixa da Serra");
    const auto& clients = control<DropDownList>(form, "txtcliente");
    ASSERT_EQ(clients.count(), 2) << "suppliers aren't seen";
    EXPECT_EQ(clients.itemText(0), "Ana");
    EXPECT_EQ(clients.itemData(0), 2);
    EXPECT_EQ(text(form, "txtbanco"), "");
    EXPECT_EQ(text(form, "txtcliente"), "");
    EXPECT_THAT(listed(form), IsEmpty());
    EXPECT_EQ(focus(), "txtbanco");
}

TEST_P(ChequeList, TheCheckBoxCanBeHiddenUntilTheWindowCloses) {
    Mirtal::modo = "localizarSF";
    FrmLocCHTerceiros::instance().ocultarDescontar();
    auto& form = open<FrmLocCHTerceiros>();
    EXPECT_FALSE(control(form, "chkdescontar").isVisible());
    click(form, "cmdsair");
    EXPECT_TRUE(control(openFor("Baixar"), "chkdescontar").isVisible());
}

// ---- filters

TEST_P(ChequeList, ListsAllThatAColumnShows) {
    givenCheques();
    auto& form = openFor("Baixar");
    click(form, "chkdescontar");
    EXPECT_THAT(listed(form), ElementsAre("4|000104|Ana|0001|01/03/2024|999,00",
                                          "3|000103|Maria|0002|15/01/2024|100,00",
                                          "1|000101|Maria|0001|01/02/2024|1.234,56"));
    EXPECT_FALSE(list(form).item(0).icon.isNull());
    const auto alignment = [&](int column) {
        return list(form)
            .model()
            ->index(0, column)
            .data(Qt::TextAlignmentRole)
            .value<Qt::Alignment>();
    };
    QCoreApplication::processEvents();
    EXPECT_TRUE(alignment(5) & Qt::AlignRight);
    EXPECT_TRUE(alignment(4) & Qt::AlignHCenter);
}

TEST_P(ChequeList, EmptyFieldsAreEmptyCells) {
    givenCheques();
    auto& form = openFor("localizarCH");
    click(form, "chkdescontar");
    click(form, "chkdescontar");
    EXPECT_THAT(listed(form), ElementsAre("2|000102|Ana|||150,50"));
}

TEST_P(ChequeList, TheCheckBoxEmptiesBothListsAndKeepsTheNameTitle) {
    givenCheques();
    auto& form = openFor("Baixar");
    type(form, "txtcliente", "M");
    EXPECT_EQ(list(form).columnCaption(2), "Nome do Banco");
    click(form, "chkdescontar");
    EXPECT_EQ(text(form, "txtcliente"), "");
    EXPECT_EQ(control<DropDownList>(form, "txtcliente").listIndex(), -1);
    EXPECT_EQ(numbers(form), "4 3 1");
    EXPECT_EQ(list(form).text(0, 2), "Ana");
    EXPECT_EQ(list(form).columnCaption(2), "Nome do Banco") << "deliberate: the title stays";
    type(form, "txtbanco", "A");
    click(form, "chkdescontar");
    EXPECT_EQ(text(form, "txtbanco"), "");
    EXPECT_EQ(numbers(form), "2");
}

TEST_P(ChequeList, ABankListsItsChequesWhateverTheCheckBoxSays) {
    givenCheques();
    auto& form = openFor("Baixar");
    click(form, "chkdescontar");
    type(form, "txtcliente", "M");
    type(form, "txtbanco", "a");
    EXPECT_EQ(text(form, "txtbanco"), "Agrobanco");
    EXPECT_EQ(text(form, "txtcliente"), "");
    EXPECT_EQ(list(form).columnCaption(2), "Nome do Cliente");
    EXPECT_THAT(listed(form),
                ElementsAre("2|000102|Ana|||150,50", "3|000103|Maria|0002|15/01/2024|100,00"));
    press(Qt::Key_Down);
    EXPECT_EQ(numbers(form), "4 1");
}

TEST_P(ChequeList, AClientListsHisChequesWithTheirBanks) {
    givenCheques();
    auto& form = openFor("Baixar");
    type(form, "txtbanco", "A");
    type(form, "txtcliente", "maria");
    EXPECT_EQ(text(form, "txtbanco"), "");
    EXPECT_EQ(list(form).columnCaption(2), "Nome do Banco");
    EXPECT_THAT(listed(form), ElementsAre("3|000103|Agrobanco|0002|15/01/2024|100,00",
                                          "1|000101|Caixa da Serra|0001|01/02/2024|1.234,56"));
}

TEST_P(ChequeList, ATextThatNoEntryBeginsWithListsNothingNew) {
    givenCheques();
    auto& form = openFor("Baixar");
    type(form, "txtbanco", "A");
    type(form, "txtcliente", "x");
    EXPECT_EQ(text(form, "txtcliente"), "x");
    EXPECT_EQ(text(form, "txtbanco"), "Agrobanco");
    EXPECT_EQ(numbers(form), "2 3");
}

TEST_P(ChequeList, TheDatesAreOpenToTypingOnlyWhileTicked) {
    auto& form = openFor("Baixar");
    for (const bool on : {false, true, false}) {
        EXPECT_EQ(control(form, "txtinicio").isEnabled(), on);
        EXPECT_EQ(control(form, "txtfim").isEnabled(), on);
        click(form, "chkmostrar");
    }
}

TEST_P(ChequeList, LeavingTheLastDateListsWhatFallsDueBothDaysIncluded) {
    givenCheques();
    auto& form = openFor("Baixar");
    type(form, "txtcliente", "Maria");
    click(form, "chkmostrar");
    type(form, "txtinicio", "15012024");
    press(Qt::Key_Return);
    EXPECT_EQ(focus(), "txtfim");
    EXPECT_EQ(numbers(form), "3 1") << "leaving the first date lists nothing";
    EXPECT_EQ(list(form).columnCaption(2), "Nome do Banco");
    type("01022024");
    press(Qt::Key_Return);
    EXPECT_EQ(focus(), "lstterceiros");
    EXPECT_EQ(list(form).columnCaption(2), "Nome do Cliente");
    EXPECT_THAT(listed(form), ElementsAre("3|000103|Maria|0002|15/01/2024|100,00",
                                          "1|000101|Maria|0001|01/02/2024|1.234,56"));
    EXPECT_EQ(text(form, "txtcliente"), "Maria") << "the dates leave the lists alone";
    dates(form, "16012024", "31012024");
    EXPECT_EQ(numbers(form), "");
    dates(form, "01022024", "01032024");
    EXPECT_EQ(numbers(form), "4 1");
}

TEST_P(ChequeList, UntickingTheDatesWhileInTheLastOneListsFirst) {
    givenCheques();
    auto& form = openFor("Baixar");
    click(form, "chkmostrar");
    type(form, "txtinicio", "01012024");
    type(form, "txtfim", "31012024");
    click(form, "chkmostrar");
    EXPECT_EQ(numbers(form), "3");
    EXPECT_FALSE(control(form, "txtfim").isEnabled());
}

TEST_P(ChequeList, BouncedChequesAreListedByIssueDate) {
    givenCheques();
    givenBounced();
    auto& form = openFor("localizarSF");
    dates(form, "01122023", "05122023");
    EXPECT_THAT(listed(form),
                ElementsAre("2|901|Ana||05/12/2023|20,00", "1|900|Maria|0001|01/12/2023|10,00"));
    dates(form, "02122023", "31122023");
    EXPECT_EQ(numbers(form), "2");
    type(form, "txtcliente", "M");
    EXPECT_THAT(listed(form), ElementsAre("1|900|Caixa da Serra|0001|01/12/2023|10,00"));
    type(form, "txtbanco", "A");
    EXPECT_THAT(listed(form), ElementsAre("2|901|Ana||05/12/2023|20,00"));
}

TEST_P(ChequeList, AFilterThatFindsNothingEmptiesTheList) {
    givenCheques();
    auto& form = openFor("Baixar");
    click(form, "chkdescontar");
    dates(form, "01011990", "31011990");
    EXPECT_THAT(listed(form), IsEmpty());
    EXPECT_EQ(text(form, "lbltotal"), "Total Selecionado :0,00");
}

// ---- picking

TEST_P(ChequeList, InSettlementClicksPickNothing) {
    givenCheques();
    auto& form = openFor("Baixar");
    click(form, "chkdescontar");
    for (int i = 0; i < 3; ++i)
        clickRow(form, "lstterceiros", 0);
    EXPECT_TRUE(form.isVisible());
    EXPECT_FALSE(Mirtal::registroEscolhido);
    EXPECT_FALSE(list(form).isChecked(0));
}

TEST_P(ChequeList, ASecondClickOnARowPicksItsReceivedCheque) {
    givenCheques();
    auto& form = openFor("localizarCH");
    click(form, "chkdescontar");
    clickRow(form, "lstterceiros", 0);
    EXPECT_FALSE(Mirtal::registroEscolhido);
    clickRow(form, "lstterceiros", 1);
    clickRow(form, "lstterceiros", 0);
    EXPECT_FALSE(Mirtal::registroEscolhido) << "another row was clicked in between";
    EXPECT_TRUE(form.isVisible());
    clickRow(form, "lstterceiros", 0);
    EXPECT_TRUE(Mirtal::registroEscolhido);
    EXPECT_EQ(Mirtal::lancamentoEscolhido, 4);
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(data().rsCheques["lancamento"].integer(), 4);
    EXPECT_FALSE(FrmLancarCheques::instance().isLoaded()) << "nobody has opened it";
}

TEST_P(ChequeList, ThePickedChequeIsShownByTheEntryOnShow) {
    givenCheques();
    auto& entry = open<FrmLancarCheques>();
    auto& form = openFor("localizarCH");
    click(form, "chkdescontar");
    clickRow(form, "lstterceiros", 0);
    clickRow(form, "lstterceiros", 0);
    EXPECT_EQ(text(entry, "txtlancamento"), "4");
    EXPECT_EQ(text(entry, "txtnumero"), "000104");
}

TEST_P(ChequeList, TheLastClickIsRememberedAcrossFilters) {
    givenCheques();
    auto& form = openFor("localizarCH");
    click(form, "chkdescontar");
    clickRow(form, "lstterceiros", 1); // entry number 3
    type(form, "txtbanco", "A");       // 2, 3
    clickRow(form, "lstterceiros", 1);
    EXPECT_TRUE(Mirtal::registroEscolhido);
    EXPECT_EQ(Mirtal::lancamentoEscolhido, 3);
}

TEST_P(ChequeList, EnterTwiceOnARowPicksIt) {
    givenCheques();
    auto& form = openFor("localizarCH");
    click(form, "chkdescontar");
    enter(form, "lstterceiros");
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    EXPECT_TRUE(form.isVisible());
    press(Qt::Key_Return);
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(Mirtal::lancamentoEscolhido, 3);
}

TEST_P(ChequeList, PickingABouncedChequeLeavesTheEntryWindowAlone) {
    givenCheques();
    givenBounced();
    auto& form = openFor("localizarSF");
    type(form, "txtcliente", "Ana");
    clickRow(form, "lstterceiros", 0);
    clickRow(form, "lstterceiros", 0);
    EXPECT_TRUE(Mirtal::registroEscolhido);
    EXPECT_EQ(Mirtal::lancamentoEscolhido, 2);
    EXPECT_FALSE(form.isVisible());
    EXPECT_FALSE(FrmLancarCheques::instance().isLoaded());
}

// The number chosen is kept in single precision, which has 24 bits for it.
TEST_P(ChequeList, AnEntryNumberIsChosenInSinglePrecision) {
    givenBounced();
    auto& form = openFor("localizarSF");
    type(form, "txtcliente", "Ana");
    list(form).setText(0, 0, "16777217");
    clickRow(form, "lstterceiros", 0);
    clickRow(form, "lstterceiros", 0);
    EXPECT_EQ(Mirtal::lancamentoEscolhido, 16777216);
}

// Entry numbers pass to the entry window through a 16-bit whole number.
TEST_P(ChequeList, AnEntryNumberAbove32767CannotBePicked) {
    givenCheques();
    auto& form = openFor("localizarCH");
    click(form, "chkdescontar");
    list(form).setText(0, 0, "32768");
    clickRow(form, "lstterceiros", 0);
    expectMessage("Mensagem", "O lançamento 32768 não pode ser mostrado na entrada de cheques, "
                              "que só mostra lançamentos até 32767.");
    clickRow(form, "lstterceiros", 0);
    EXPECT_FALSE(Mirtal::registroEscolhido);
    EXPECT_TRUE(form.isVisible());
}

// ---- keys, closing, looks

TEST_P(ChequeList, EnterGoesOnAndTabGoesAsTheEyeDoes) {
    auto& form = openFor("Baixar");
    click(form, "chkmostrar");
    enter(form, "txtbanco");
    std::vector<std::string> order;
    for (int i = 0; i < 6; ++i) {
        order.push_back(focus().toStdString());
        press(Qt::Key_Return);
    }
    for (int i = 0; i < 3; ++i) {
        order.push_back(focus().toStdString());
        press(Qt::Key_Tab);
    }
    EXPECT_THAT(order, ElementsAre("txtbanco", "txtcliente", "chkdescontar", "chkmostrar",
                                   "txtinicio", "txtfim", "lstterceiros", "cmdsalvar", "cmdsair"));
}

TEST_P(ChequeList, CloseAndEscUnloadAndClearThePrompt) {
    openFor("localizarCH");
    Mirtal::mensagem("");
    click(FrmLocCHTerceiros::instance(), "cmdsair");
    EXPECT_FALSE(FrmLocCHTerceiros::instance().isLoaded());
    auto& form = openFor("localizarCH");
    press(Qt::Key_Escape);
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(prompt(), "");
    EXPECT_FALSE(Mirtal::registroEscolhido);
    EXPECT_EQ(Mirtal::modo, "localizarCH") << "the mode is its caller's";
}

TEST_P(ChequeList, IsAccessibleAndCutsNoText) {
    givenCheques();
    for (const char* mode : {"Baixar", "localizarCH", "localizarSF"}) {
        auto& form = openFor(mode);
        EXPECT_EQ(faultsOf(form), QStringList()) << mode;
        click(form, "cmdsair");
    }
}

} // namespace
