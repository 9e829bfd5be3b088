#include "reports/ReportFilter.h"
#include "reports/frm_Msg.h"

#include <QApplication>
#include <QScreen>

namespace {

using testing::ElementsAre;

INSTANTIATE_TEST_SUITE_P(, ReportFilter, everywhere(), keptName);

TEST_P(ReportFilter, OffersTheOrdersOfReceivedCheques) {
    auto& form = openFor("relch");
    EXPECT_EQ(form.windowTitle(), "Relatório de Cheques Recebidos");
    EXPECT_THAT(entries(form, "cmbordem"),
                ElementsAre("Banco", "Número", "Cliente", "Emissão", "Vencimento"));
}

TEST_P(ReportFilter, OffersTheOrdersOfBouncedCheques) {
    auto& form = openFor("relsf");
    EXPECT_EQ(form.windowTitle(), "Relatório de Cheques sem fundos");
    EXPECT_THAT(entries(form, "cmbordem"), ElementsAre("Banco", "Número", "Cliente", "Data"));
}

TEST_P(ReportFilter, OpensWithTodayAndNothingChosen) {
    auto& form = openFor("relch");
    EXPECT_FALSE(form.isModal());
    EXPECT_EQ(control<DatePicker>(form, "txtdtinicial").value(), QDate::currentDate());
    EXPECT_EQ(control<DatePicker>(form, "txtdtfinal").value(), QDate::currentDate());
    EXPECT_THAT(entries(form, "txtcliente"), ElementsAre("João", "Maria"));
    EXPECT_THAT(entries(form, "txtbanco"), ElementsAre("Banco do Vale", "Caixa"));
    for (const char* list : {"txtcliente", "txtbanco", "cmbordem"})
        EXPECT_EQ(control<DropDownList>(form, list).listIndex(), -1) << list;
    EXPECT_EQ(focus(), "txtcliente");
}

TEST_P(ReportFilter, StandsAtTheTopOfTheScreen) {
    auto& form = openFor("relch");
    const QRect screen = form.screen()->availableGeometry();
    EXPECT_EQ(form.y(), screen.top() + 13);
    EXPECT_NEAR(form.frameGeometry().center().x(), screen.center().x(), 2);
}

TEST_P(ReportFilter, PromptsForEachField) {
    auto& form = openFor("relch");
    const struct {
        const char* control;
        const char* prompt;
    } fields[] = {
        {"txtbanco",     "Informe nome do banco"           },
        {"txtcliente",   "Informe nome do cliente a listar"},
        {"txtdtinicial", "Informe data inicial"            },
        {"txtdtfinal",   "Informe data final"              },
    };
    for (const auto& [name, shown] : fields) {
        enter(form, name);
        EXPECT_EQ(prompt(), shown);
    }
}

TEST_P(ReportFilter, EnterGoesThroughTheFields) {
    openFor("relch");
    for (const char* next : {"txtbanco", "txtdtinicial", "txtdtfinal", "cmbordem", "CmdImprimir"}) {
        press(Qt::Key_Return);
        EXPECT_EQ(focus(), next);
    }
}

TEST_P(ReportFilter, TypingChoosesTheFirstEntryThatBeginsSo) {
    auto& form = openFor("relch");
    type(form, "txtcliente", "ma");
    EXPECT_EQ(text(form, "txtcliente"), "Maria");
    type(form, "cmbordem", "v");
    EXPECT_EQ(control<DropDownList>(form, "cmbordem").listIndex(), 4);
}

TEST_P(ReportFilter, AClientOrBankThatIsNotListedHasASignAtItsField) {
    auto& form = openFor("relch");
    for (const char* field : {"txtcliente", "txtbanco"}) {
        auto& list = control<DropDownList>(form, field);
        const auto picture = [&] { return list.grab().toImage(); };
        const auto sign = [&] { return list.lineEdit()->actions().first()->isVisible(); };
        EXPECT_FALSE(sign());
        type(form, field, "x");
        EXPECT_TRUE(sign()) << field;
        EXPECT_THAT(list.toolTip().toStdString(),
                    testing::StartsWith("Este nome não está na lista"));
        EXPECT_EQ(list.accessibleDescription(), list.toolTip() + " " + prompt());
        const QImage signedPicture = picture();
        list.lineEdit()->actions().first()->setVisible(false);
        EXPECT_NE(signedPicture, picture()) << "it can be seen";
        list.lineEdit()->actions().first()->setVisible(true);
        press(Qt::Key_Backspace);
        EXPECT_FALSE(sign()) << "an empty field stands for all";
        type(list.itemText(0).first(1));
        EXPECT_FALSE(sign()) << field;
        EXPECT_EQ(list.toolTip(), "");
        EXPECT_EQ(list.accessibleDescription(), prompt());
    }
}

TEST_P(ReportFilter, StaysAsItIsWhenTheOtherReportIsAskedForUntilItIsLoadedAnew) {
    const QPointer<FrmFiltroRelat> first = &openFor("relch");
    type(*first, "txtcliente", "ma");
    auto& form = openFor("relsf");
    EXPECT_EQ(&form, first);
    EXPECT_EQ(form.windowTitle(), "Relatório de Cheques Recebidos");
    EXPECT_EQ(control<DropDownList>(form, "cmbordem").count(), 5);
    EXPECT_EQ(text(form, "txtcliente"), "Maria");
    click(form, "cmdsair");
    auto& anew = openFor("relsf");
    EXPECT_EQ(anew.windowTitle(), "Relatório de Cheques sem fundos");
    EXPECT_EQ(control<DropDownList>(anew, "cmbordem").count(), 4);
    EXPECT_EQ(text(anew, "txtcliente"), "");
}

TEST_P(ReportFilter, KeepsItsChoicesWhenTheSameReportIsAskedForAgain) {
    type(openFor("relch"), "txtcliente", "ma");
    EXPECT_EQ(text(openFor("relch"), "txtcliente"), "Maria");
}

TEST_P(ReportFilter, SairClosesIt) {
    const QPointer<FrmFiltroRelat> form = &openFor("relch");
    click(*form, "cmdsair");
    EXPECT_FALSE(form && form->isVisible());
}

// ---- from the filter to the report

INSTANTIATE_TEST_SUITE_P(, ReportFromFilter, everywhere(), keptName);

TEST_P(ReportFromFilter, ChoosesByIssueAndComesByClient) {
    print("relch", "", "", "");
    EXPECT_EQ(frmRel_ChequesSF::instance().windowTitle(), "Relatório de Cheques");
    EXPECT_TRUE(frmRel_ChequesSF::instance().isVisible());
    EXPECT_THAT(details(),
                ElementsAre("000002|João|10/01/2026|123,45|Banco do Vale|01/02/2026",
                            "000003|Maria|31/01/2026|0,05|Caixa|15/02/2026",
                            "000001|Maria|10/01/2026|1.000,00|Banco do Vale|01/03/2026"));
}

TEST_P(ReportFromFilter, GivesTheReportsTopFreeUnlessTheOperatorHasPutItSomewhere) {
    auto& form = openFor("relch");
    const int top = form.y();
    const QRect screen = form.screen()->availableGeometry();
    period(form, "01012020", "31012020");
    expectMessage("Impressão", "Não há registros a imprimir.");
    click(form, "CmdImprimir");
    EXPECT_EQ(form.y(), top) << "there is no report";
    activate(form);
    period(form, "01012026", "31012026");
    click(form, "CmdImprimir");
    EXPECT_GT(form.y(), screen.center().y());
    EXPECT_TRUE(screen.contains(form.frameGeometry()));
    form.move(20, 30);
    click(form, "CmdImprimir");
    EXPECT_EQ(form.pos(), QPoint(20, 30));
}

TEST_P(ReportFromFilter, TakesClientBankAndOrder) {
    print("relch", "Maria", "", "Emi");
    EXPECT_THAT(details(),
                ElementsAre(testing::StartsWith("000001"), testing::StartsWith("000003")));
    print("relch", "Maria", "Banco", "Venc");
    EXPECT_THAT(details(), ElementsAre(testing::StartsWith("000001")));
}

TEST_P(ReportFromFilter, ShowsBouncedChequesWithoutADueDate) {
    print("relsf", "", "", "Data");
    EXPECT_EQ(frmRel_ChequesSF::instance().windowTitle(), "Relatório de Cheques Sem Fundos");
    EXPECT_THAT(details(), ElementsAre("900001|João|05/01/2026|77,00|Banco do Vale|"));
}

TEST_P(ReportFromFilter, TheFilterKeepsItsReportThoughAnotherWindowChangesTheMode) {
    auto& form = openFor("relch");
    period(form, "01012026", "31012026");
    Mirtal::modo = "Baixar";
    click(form, "CmdImprimir");
    EXPECT_EQ(details().size(), 3U);
}

TEST_P(ReportFromFilter, ThePrintedReportIsTheOpenFiltersThoughTheOtherWasAskedForMeanwhile) {
    period(openFor("relch"), "01012026", "31012026");
    click(openFor("relsf"), "CmdImprimir");
    EXPECT_EQ(frmRel_ChequesSF::instance().windowTitle(), "Relatório de Cheques");
    EXPECT_EQ(details().size(), 3U);
}

TEST_P(ReportFromFilter, NothingToPrintIsSaidWhenTheWaitWindowHasGone) {
    auto& form = openFor("relch");
    period(form, "31012026", "01012026"); // the last day before the first
    expectMessage("Impressão", "Não há registros a imprimir.");
    click(form, "CmdImprimir");
    EXPECT_FALSE(frm_Msg::instance().isVisible());
    EXPECT_FALSE(frmRel_ChequesSF::instance().isVisible());
    EXPECT_TRUE(form.isVisible());
}

TEST_P(ReportFromFilter, AReportThatFindsNothingLeavesTheOneOnShow) {
    print("relch", "", "", "");
    click(openFor("relch"), "cmdsair");
    auto& form = openFor("relsf");
    period(form, "01012020", "31012020");
    expectMessage("Impressão", "Não há registros a imprimir.");
    click(form, "CmdImprimir");
    EXPECT_EQ(frmRel_ChequesSF::instance().windowTitle(), "Relatório de Cheques");
    EXPECT_EQ(details().size(), 3U);
}

TEST_P(ReportFromFilter, ClosingTheReportEndsIt) {
    print("relch", "", "", "");
    const QPointer<frmRel_ChequesSF> first = &frmRel_ChequesSF::instance();
    first->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(first);
    print("relch", "", "", "");
    EXPECT_EQ(details().size(), 3U);
}

} // namespace
