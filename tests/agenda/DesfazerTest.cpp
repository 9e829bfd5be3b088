// The way back from the history: all of an operation, or nothing and why.
#include "agenda/Desfazer.h"

#include "agenda/History.h"
#include "support/Cluster.h"
#include "support/FileRules.h"

#include <algorithm>
#include <iterator>
#include <thread>

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

/// Over a server, which may be a long way off.
class UndoingFarAway : public Undoing {
protected:
    /// How often that waits for the server.
    static std::uint64_t waits(std::int32_t group, const char* says = "") {
        const ado::Store& store = data().Automacao.store();
        const std::uint64_t before = store.tally().waits;
        EXPECT_EQ(Desfazer::desfazer(group), says);
        return store.tally().waits - before;
    }
};
INSTANTIATE_TEST_SUITE_P(, UndoingFarAway, onServers(), keptName);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(UndoingFarAway);

TEST_P(UndoingFarAway, AsksAndWritesAtOnceHoweverManyThereAre) {
    constexpr std::uint64_t kWays = 3; // what the history says, all that is written, the end
    const Strings before = cheques();
    settle({0});
    EXPECT_EQ(waits(std::stoi(recorded("grupo").back())), kWays);
    data().rsCheques.Requery();
    EXPECT_EQ(cheques(), before);
    purgeAll();
    const auto rows = static_cast<std::ptrdiff_t>(before.size());
    EXPECT_EQ(waits(std::stoi(recorded("grupo").back())), kWays);
    data().rsCheques.Requery();
    EXPECT_EQ(cheques(), before);
    const Strings history = recorded("operacao, desfeito_por");
    for (std::ptrdiff_t back = 1; back <= rows; ++back) {
        EXPECT_EQ(history.end()[-back], "desfazer|");
        EXPECT_THAT(history.end()[-rows - back], testing::MatchesRegex("expurgo\\|[0-9]+"));
    }
}

TEST_P(UndoingFarAway, RefusesInTwoWays) {
    constexpr std::uint64_t kWays = 2; // what the history says, at once and one after the other
    settle({0});
    const std::int32_t group = std::stoi(recorded("grupo").back());
    EXPECT_EQ(waits(group), 3U);
    const Strings after = cheques();
    EXPECT_EQ(waits(group, "Isto já foi desfeito."), kWays);
    EXPECT_EQ(cheques(), after);
}

/// A table beside the shop's, whose rows go with the cheques, and clients whose cheques go with
/// them.
class UndoingCascades : public Undoing {
protected:
    void SetUp() override {
        Undoing::SetUp();
        jet::TableSpec seen{
            .name = "vistos",
            .columns = {{.name = "dia", .type = jet::ColumnType::date},
                        {.name = "quem", .type = jet::ColumnType::text, .width = 20},
                        {.name = "cheque", .type = jet::ColumnType::longInteger}},
            .indexes = {                                                       }
        };
        seen.indexes.push_back({
            .name = "PrimaryKey", .columns = {{"dia"}, {"quem"}, {"cheque"}},
                 .primary = true
        });
        if (hasDecimals())
            seen.columns.push_back({.name = "fator", .type = jet::ColumnType::numeric, .scale = 2});
        data().Automacao.store().createTable(seen);
        given("vistos", {seenBy(1, "o dono"), seenBy(1, "D'Ávila"), seenBy(3, "o dono")});
    }
    [[nodiscard]] bool hasDecimals() const {
        return static_cast<jet::Version>(GetParam()) == jet::Version::jet4;
    }
    [[nodiscard]] Row seenBy(int cheque, const char* who) const {
        Row row{
            {"dia", day(2026, 1, 9)},
            {"quem",   words(who)          }
        };
        row.push_back({"cheque", number(cheque)});
        if (hasDecimals())
            row.push_back({"fator", words("-12,50")});
        return row;
    }
    void relate(const char* child, const char* column, const char* parent, const char* key,
                std::int64_t flags) {
        using Flags = FileRelationship;
        if (!onServer()) {
            const FileRelationship bond{
                std::string(child) + parent, child, {column}, parent, {key}, flags};
            addRelationship(data().Automacao.database(), bond);
            return data().Automacao.flush();
        }
        const auto before = data().Automacao.store().generation();
        Cluster::relate(shop().line(),
                        QString("%1 add foreign key (%2) references %3 (%4)%5%6")
                            .arg(child, column, parent, key,
                                 (flags & Flags::kCascadeUpdate) != 0 ? " on update cascade" : "",
                                 (flags & Flags::kCascadeDelete) != 0 ? " on delete cascade"
                                 : (flags & Flags::kCascadeNull) != 0 ? " on delete set null"
                                                                      : "")
                            .toStdString());
        while (data().Automacao.store().generation() == before)
            std::this_thread::yield(); // until it has been told
    }
    static Strings all() {
        Strings rows = cheques();
        for (const char* table :
             {"vistos order by quem, cheque", "cliente_fornecedor order by codigo"})
            std::ranges::copy(ShopTest::rows(QString("select * from %1").arg(table)),
                              std::back_inserter(rows));
        return rows;
    }
    static void deleteAna() {
        execute("cliente_fornecedor", "nome='Ana Costa'", [](ado::Recordset& rs) { rs.Delete(); });
    }
    static constexpr auto kDeletes = FileRelationship::kCascadeDelete;
    static constexpr auto kNulls = FileRelationship::kCascadeNull;
    static constexpr auto kUpdates = FileRelationship::kCascadeUpdate;
};
INSTANTIATE_TEST_SUITE_P(, UndoingCascades, everywhere(), keptName);

TEST_P(UndoingCascades, BringsAClientBackWithTheChequesThatWentAlong) {
    relate("cheques", "cliente", "cliente_fornecedor", "codigo", kDeletes);
    relate("vistos", "cheque", "cheques", "lancamento", kDeletes);
    const Strings before = all();
    deleteAna();
    EXPECT_THAT(numbers(), ElementsAre("2", "4"));
    EXPECT_THAT(rows("select * from vistos"), SizeIs(0));
    EXPECT_THAT(recorded("operacao, tabela, cliente"),
                testing::UnorderedElementsAre(
                    "exclusão|vistos|", "exclusão|vistos|", "exclusão|vistos|",
                    "exclusão|cheques|2", "exclusão|cheques|2", "exclusão|cliente_fornecedor|"));
    EXPECT_EQ(recorded("tabela").back(), "cliente_fornecedor");
    EXPECT_THAT(recorded("grupo"), testing::Each(recorded("grupo")[0]));
    EXPECT_EQ(undoLast(), "");
    EXPECT_EQ(all(), before);
}

TEST_P(UndoingCascades, GivesChequesTheirClientBackThatStayedWithoutOne) {
    relate("cheques", "cliente", "cliente_fornecedor", "codigo", kNulls);
    const Strings before = all();
    deleteAna();
    EXPECT_THAT(rows("select * from cheques where cliente is null"), SizeIs(2));
    EXPECT_EQ(undoLast(), "");
    EXPECT_EQ(all(), before);
}

TEST_P(UndoingCascades, BringsASettledChequeBackWithWhatWentAlong) {
    relate("vistos", "cheque", "cheques", "lancamento", kDeletes);
    const Strings before = all();
    settle({0, 1});
    EXPECT_THAT(rows("select * from vistos"), SizeIs(0));
    EXPECT_THAT(recorded("operacao, tabela"),
                ElementsAre("exclusão|vistos", "exclusão|vistos", "baixa|cheques",
                            "exclusão|vistos", "baixa|cheques"));
    EXPECT_EQ(undoLast(), "");
    EXPECT_EQ(all(), before);
    EXPECT_THAT(recorded("desfeito_por"), testing::Contains("").Times(5)) << "all but the undoing";
}

TEST_P(UndoingCascades, TakesANewKeyBackWithAllThatHasFollowedIt) {
    data().Automacao.store().createTable(
        {.name = "caixas",
         .columns = {{.name = "nome", .type = jet::ColumnType::text, .width = 20}},
         .indexes = {{.name = "PrimaryKey", .columns = {{"nome"}}, .primary = true}}});
    for (const char* name : {"o dono", "D'Ávila"})
        given("caixas", {{{"nome", words(name)}}});
    execute("cheques", "lancamento<3", [](ado::Recordset& rs) {
        for (; !rs.EOF(); rs.MoveNext()) {
            rs["autorizou"] = "D'Ávila";
            rs.Update();
        }
    });
    relate("cheques", "autorizou", "caixas", "nome", kUpdates);
    relate("vistos", "quem", "caixas", "nome", kUpdates); // in whose key it stands
    const Strings before = all();
    execute("caixas", "nome='D''Ávila'", [](ado::Recordset& rs) {
        rs["nome"] = "Dora";
        rs.Update();
    });
    EXPECT_THAT(rows("select * from cheques where autorizou='Dora'"), SizeIs(2));
    EXPECT_THAT(rows("select * from vistos where quem='Dora'"), SizeIs(1));
    EXPECT_EQ(undoLast(), "");
    EXPECT_EQ(all(), before);
    EXPECT_THAT(rows("select * from caixas where nome='Dora'"), SizeIs(0));
}

TEST_P(UndoingCascades, IsRefusedWhereWhatWentAlongCantComeBack) {
    relate("cheques", "cliente", "cliente_fornecedor", "codigo", kDeletes);
    deleteAna();
    Row other = client("Outra Ana");
    other.push_back({"codigo", number(kAna)});
    given("cliente_fornecedor", {other});
    const Strings before = all();
    EXPECT_EQ(undoLast(), "O registro da tabela \"cliente_fornecedor\", que foi com um cheque, não "
                          "pode voltar: já há outro registro com a mesma chave.\n\nNada foi "
                          "desfeito.");
    EXPECT_EQ(all(), before);
}

TEST_P(UndoingCascades, StandInTheListByTheirTablesAndDontCountAsCheques) {
    relate("cheques", "cliente", "cliente_fornecedor", "codigo", kDeletes);
    deleteAna();
    auto& form = FormTest::open<FrmHistorico>();
    EXPECT_THAT(listed(form, 3), testing::Contains("(cliente_fornecedor)").Times(1));
    EXPECT_EQ(text(form, "lblsoma"), "2 cheques. Total: 41,00");
    undo(form, 0, "Deseja realmente desfazer a operação \"exclusão\" de 2 cheques ?");
    EXPECT_THAT(numbers(), SizeIs(4));
    form.unload();
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
