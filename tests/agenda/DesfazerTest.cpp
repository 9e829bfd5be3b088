// The way back from the history: all of an operation, or nothing and why.
#include "agenda/Desfazer.h"

#include "agenda/History.h"

namespace {

using testing::ElementsAre;
using testing::SizeIs;

class Undoing : public History {
protected:
    /// Undoes the operation of the history's last row. @return what it says.
    static std::string undoLast() {
        const auto said = Desfazer::desfazer(std::stoi(recorded("grupo").back()));
        data().rsCheques.Requery();
        return said.toStdString();
    }
    static void execute(const char* table, const char* condition,
                        const std::function<void(ado::Recordset&)>& work) {
        ado::Recordset rs;
        rs.Open(QString("select * from %1 where %2").arg(table, condition), data().Automacao);
        work(rs);
    }
    /// The last operation can't be undone, and nothing of it is.
    static void expectRefusal(const char* cheque, const char* why) {
        const Strings before = cheques();
        const Strings history = recorded("*");
        EXPECT_EQ(undoLast(), "O cheque Nº " + std::string(cheque) + ", não pode voltar: " + why +
                                  "\n\nNada foi desfeito.");
        EXPECT_EQ(cheques(), before);
        EXPECT_EQ(recorded("*"), history);
    }
};
INSTANTIATE_TEST_SUITE_P(, Undoing, everywhere(), keptName);

TEST_P(Undoing, BringsSettledChequesBackWithTheirNumbers) {
    const Strings before = cheques();
    settle({0, 1});
    EXPECT_THAT(numbers(), SizeIs(2));
    EXPECT_EQ(undoLast(), "");
    EXPECT_EQ(cheques(), before);
}

TEST_P(Undoing, BringsAWholePurgeBackAsOne) {
    const Strings before = cheques();
    purgeAll();
    EXPECT_THAT(numbers(), SizeIs(0));
    EXPECT_EQ(undoLast(), "");
    EXPECT_EQ(cheques(), before);
}

TEST_P(Undoing, GivesNewChequesNumbersThatNoneHasHad) {
    purgeAll();
    EXPECT_EQ(undoLast(), "");
    given("cheques", {cheque(kAna, "105", 1)});
    EXPECT_EQ(numbers().back(), "5");
}

TEST_P(Undoing, TakesARenegotiationBack) {
    const Strings before = cheques();
    change(Historico::kRenegociacao, 2, "bompara", "10/03/2026");
    EXPECT_EQ(undoLast(), "");
    EXPECT_EQ(cheques(), before);
}

TEST_P(Undoing, TakesTheRecordOfABouncedChequeBack) {
    execute("semfundos", "1=1", [](ado::Recordset& rs) {
        rs.AddNew();
        rs["cliente"] = kAna;
        rs["numero"] = "901";
        rs.Update();
    });
    EXPECT_EQ(undoLast(), "");
    EXPECT_THAT(rows("select * from semfundos"), SizeIs(0));
    EXPECT_THAT(recorded("operacao, tabela"),
                ElementsAre("sem fundos|semfundos", "desfazer|semfundos"));
}

TEST_P(Undoing, StandsInTheHistoryAndIsDoneOnce) {
    settle({0, 1});
    const auto group = std::stoi(recorded("grupo")[0]);
    EXPECT_EQ(undoLast(), "");
    EXPECT_THAT(recorded("operacao, lancamento"),
                ElementsAre("baixa|1", "baixa|3", "desfazer|3", "desfazer|1"));
    const Strings groups = recorded("grupo");
    const Strings marks = recorded("desfeito_por");
    EXPECT_THAT(marks, ElementsAre(groups[2], groups[2], "", ""));
    EXPECT_EQ(Desfazer::desfazer(group), "Isto já foi desfeito.");
    EXPECT_EQ(undoLast(), "Isto já é o que desfez outra operação, e não pode ser desfeito.");
    EXPECT_THAT(numbers(), SizeIs(4));
}

TEST_P(Undoing, ASecondSettlementOfTheSameChequeCanBeUndoneAgain) {
    const Strings before = cheques();
    settle({0});
    EXPECT_EQ(undoLast(), "");
    settle({0});
    EXPECT_EQ(undoLast(), "");
    EXPECT_EQ(cheques(), before);
}

TEST_P(Undoing, RefusesANumberThatWasGivenOutAgain) {
    settle({0, 1});
    Row other = cheque(kBento, "999", 1);
    other.push_back({"lancamento", number(1)});
    given("cheques", {other});
    expectRefusal("101, lançamento 1", "o lançamento foi dado a outro cheque.");
}

TEST_P(Undoing, RefusesAClientOrABankThatHasGone) {
    settle({0});
    execute("cliente_fornecedor", "nome='Ana Costa'", [](ado::Recordset& rs) { rs.Delete(); });
    expectRefusal("101, lançamento 1", "o cliente não está mais cadastrado.");
    settle({0}); // the list shows no cheque without its client
    execute("bancos", "nome='Banco Norte'", [](ado::Recordset& rs) { rs.Delete(); });
    expectRefusal("102, lançamento 2", "o banco não está mais cadastrado.");
}

TEST_P(Undoing, RefusesAChequeThatWasChangedOrDeletedSince) {
    change(Historico::kRenegociacao, 2, "bompara", "10/03/2026");
    const auto group = std::stoi(recorded("grupo").back());
    change(Historico::kAlteracao, 2, "valor", "7");
    const auto said = [&] { return Desfazer::desfazer(group).toStdString(); };
    EXPECT_EQ(said(), "O cheque Nº 102, lançamento 2, não pode voltar: ele foi alterado depois.\n\n"
                      "Nada foi desfeito.");
    EXPECT_EQ(undoLast(), ""); // the last first
    EXPECT_EQ(said(), "");
    change(Historico::kRenegociacao, 2, "bompara", "10/03/2026");
    execute("cheques", "lancamento=2", [](ado::Recordset& rs) { rs.Delete(); });
    const auto changed = std::stoi(recorded("grupo")[recorded("grupo").size() - 2]);
    EXPECT_EQ(Desfazer::desfazer(changed).toStdString(),
              "O cheque Nº 102, lançamento 2, não pode voltar: ele foi excluído ou baixado "
              "depois.\n\nNada foi desfeito.");
}

TEST_P(Undoing, IsRefusedWhereNoHistoryIsKept) {
    settle({0});
    data().Automacao.store().createTable(
        {.name = Historico::kDesligado,
         .columns = {{.name = "desde", .type = jet::ColumnType::date}},
         .indexes = {}});
    EXPECT_EQ(undoLast(), "O histórico desta base de dados não está sendo gravado, e por isso nada "
                          "é desfeito.");
    EXPECT_THAT(numbers(), SizeIs(3));
}

TEST_P(Undoing, OfWhatAnotherStationHasDone) {
    const Strings before = cheques();
    data().Automacao.flush();
    ado::Connection other;
    Historico theirs(other);
    other.setRecorder(&theirs);
    other.Open(data().Automacao.ConnectionString());
    ado::Recordset list;
    list.Open("cheques", other);
    list.Delete();
    other.flush();
    EXPECT_EQ(undoLast(), "");
    EXPECT_EQ(cheques(), before);
    // And it sees what was undone here.
    list.Requery();
    EXPECT_EQ(list.RecordCount(), 4);
    list["numero"] = "777";
    list.Update();
    list.Close();
    other.Close();
    EXPECT_EQ(undoLast(), "");
    EXPECT_EQ(cheques(), before);
}

} // namespace
