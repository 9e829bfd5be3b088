#include "agenda/History.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using HistoryWindow = History;
INSTANTIATE_TEST_SUITE_P(, HistoryWindow, everywhere(), keptName);

TEST_P(HistoryWindow, SaysThatThereIsNoneYet) {
    auto& form = open<FrmHistorico>();
    EXPECT_THAT(listed(form, 0), IsEmpty());
    EXPECT_EQ(text(form, "lblsoma"), "Ainda não há histórico.");
    press(Qt::Key_Escape);
    EXPECT_FALSE(form.isVisible());
}

TEST_P(HistoryWindow, ListsTheNewestFirstWithCountAndSum) {
    settle({0, 1});
    change(Historico::kRenegociacao, 2, "bompara", "10/03/2026");
    auto& form = open<FrmHistorico>();
    EXPECT_THAT(listed(form, 1), ElementsAre("renegociação", "baixa", "baixa"));
    EXPECT_THAT(listed(form, 2), ElementsAre("102", "103", "101"));
    EXPECT_THAT(listed(form, 3), ElementsAre("Bento Dias", "Ana Costa", "Ana Costa"));
    EXPECT_THAT(listed(form, 4), testing::Each("Banco Norte"));
    EXPECT_THAT(listed(form, 5), testing::Each("05/02/2026"));
    EXPECT_THAT(listed(form, 6), ElementsAre("20,50", "30,50", "10,50"));
    EXPECT_EQ(text(form, "lblsoma"), "3 cheques. Total: 61,50");
}

TEST_P(HistoryWindow, ListsByOperationClientAndText) {
    settle({0, 1});
    change(Historico::kRenegociacao, 2, "bompara", "10/03/2026");
    auto& form = open<FrmHistorico>();
    choose(form, "txtoperacao", "baixa");
    EXPECT_THAT(listed(form, 2), ElementsAre("103", "101"));
    type(form, "txtoperacao", "");
    press(Qt::Key_Delete);
    choose(form, "txtcliente", "bento");
    click(form, "cmdlocalizar");
    EXPECT_THAT(listed(form, 2), ElementsAre("102"));
    enter(form, "txtcliente");
    press(Qt::Key_Delete);
    choose(form, "txttexto", "\"103\"");
    EXPECT_THAT(listed(form, 2), ElementsAre("103"));
    choose(form, "txttexto", "COSTA");
    EXPECT_THAT(listed(form, 2), ElementsAre("103", "101"));
    EXPECT_EQ(text(form, "lblsoma"), "2 cheques. Total: 41,00");
}

TEST_P(HistoryWindow, ListsAPeriodWithBothItsDays) {
    settle({0});
    const QString today = QDate::currentDate().toString("ddMMyyyy");
    const QString yesterday = QDate::currentDate().addDays(-1).toString("ddMMyyyy");
    auto& form = open<FrmHistorico>();
    choose(form, "txtinicio", qUtf8Printable(today));
    choose(form, "txtfim", qUtf8Printable(today));
    EXPECT_THAT(listed(form, 2), ElementsAre("101"));
    choose(form, "txtinicio", qUtf8Printable(yesterday));
    choose(form, "txtfim", qUtf8Printable(yesterday));
    EXPECT_THAT(listed(form, 2), IsEmpty());
    EXPECT_EQ(text(form, "lblsoma"), "0 cheques. Total: 0,00");
}

TEST_P(HistoryWindow, SumsWhatWasSettledByClientAndHowLate) {
    settle({0, 1, 2, 3});
    auto& form = open<FrmHistorico>();
    choose(form, "txtoperacao", "baixa");
    choose(form, "txtsoma", "cliente");
    EXPECT_THAT(listed(form, 0), ElementsAre("Ana Costa", "Bento Dias", "Carla Reis"));
    EXPECT_THAT(listed(form, 1), ElementsAre("2", "1", "1"));
    EXPECT_THAT(listed(form, 2), ElementsAre("41,00", "20,50", "40,50"));
    const qint64 late = QDate(2026, 2, 5).daysTo(QDate::currentDate());
    EXPECT_THAT(listed(form, 3), testing::Each(std::to_string(late) + ",0 dias"));
    EXPECT_EQ(text(form, "lblsoma"), "4 cheques, sem o que foi desfeito. Total: 102,00");
    choose(form, "txtsoma", "mês");
    EXPECT_THAT(listed(form, 0),
                ElementsAre(QDate::currentDate().toString("yyyy/MM").toStdString()));
    EXPECT_THAT(listed(form, 1), ElementsAre("4"));
    choose(form, "txtsoma", "banco");
    EXPECT_THAT(listed(form, 0), ElementsAre("Banco Norte"));
    // Of a sum nothing can be undone.
    clickRow(form, "lsthistorico", 0);
    expectMessage("Advertência", "Escolha na lista o que deve ser desfeito.");
    click(form, "cmddesfazer");
}

TEST_P(HistoryWindow, AsksBeforeItUndoesAndMarksWhatIsUndone) {
    settle({0, 1});
    auto& form = open<FrmHistorico>();
    expectMessage("Advertência", "Escolha na lista o que deve ser desfeito.");
    click(form, "cmddesfazer");
    constexpr char kQuestion[] = "Deseja realmente desfazer a operação \"baixa\" de 2 cheques ?";
    undo(form, 0, kQuestion, MessageAnswer::no);
    EXPECT_THAT(numbers(), ElementsAre("2", "4"));
    undo(form, 0, kQuestion);
    EXPECT_THAT(numbers(), ElementsAre("1", "2", "3", "4"));
    EXPECT_THAT(listed(form, 1),
                ElementsAre("desfazer", "desfazer", "baixa (desfeita)", "baixa (desfeita)"));
    clickRow(form, "lsthistorico", 2);
    expectMessage("Desfazer", kQuestion, MessageIcon::question, MessageButtons::yesNo,
                  MessageAnswer::yes);
    expectMessage("Desfazer", "Isto já foi desfeito.");
    click(form, "cmddesfazer");
    EXPECT_EQ(focus(), "lsthistorico");
}

} // namespace
