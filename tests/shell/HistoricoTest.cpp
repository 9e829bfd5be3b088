// What is done with cheques in the windows stands in the history, in the same transaction.
#include "shell/Historico.h"

#include "cheques/FrmLancarCheques.h"
#include "collections/FrmLancasSFundos.h"
#include "collections/FrmLocCHTerceiros.h"
#include "collections/FrmRenegociar.h"
#include "controls/box/ListView.h"
#include "shell/FailingShop.h"
#include "support/Cluster.h"
#include "support/FileRules.h"
#include "support/MdbTools.h"

#include <cerrno>

namespace {

using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

class KeptHistory : public FailingShop {
protected:
    void SetUp() override {
        FailingShop::SetUp();
        data().historico.aoAvisar(
            [this](const QString& text) { told_.push_back(text.toStdString()); });
    }
    void TearDown() override {
        data().historico.aoAvisar({});
        FailingShop::TearDown();
    }

    [[nodiscard]] static bool isThere() {
        return data().Automacao.store().hasTable(Historico::kTabela);
    }
    /// Of all rows, in order.
    [[nodiscard]] static Strings recorded(const char* fields) {
        return isThere()
                   ? rows(QString("select %1 from valtrino_historico order by id").arg(fields))
                   : Strings();
    }
    static void settle(std::initializer_list<int> ticked) {
        Mirtal::modo = "Baixar";
        auto& form = open<FrmLocCHTerceiros>();
        click(form, "chkdescontar");
        for (const int row : ticked)
            clickCheckBox(form, "lstterceiros", row);
        click(form, "cmdsalvar");
        form.unload();
    }
    void purgeAll() {
        auto& form = open<FrmApagar>();
        expectMessage("Mensagem", "Operação concluída !", MessageIcon::information);
        purge(form);
        form.unload();
    }
    static FrmLancarCheques& first() {
        auto& form = open<FrmLancarCheques>();
        click(form, "btnNavegacao", 0);
        return form;
    }
    /// Another table of that name, as a program might have made it.
    static void makeOthersTable() {
        data().Automacao.store().createTable(
            {.name = Historico::kTabela,
             .columns = {{.name = "id", .type = jet::ColumnType::longInteger}},
             .indexes = {}});
    }

    Strings told_;
};
INSTANTIATE_TEST_SUITE_P(, KeptHistory, everywhere(), keptName);

TEST_P(KeptHistory, IsntMadeBeforeAnythingIsDoneWithAStoredCheque) {
    given("cheques", {cheque(6)});
    settle({});
    EXPECT_FALSE(isThere());
    EXPECT_FALSE(data().historico.legivel());
}

TEST_P(KeptHistory, ASettlementIsOneGroup) {
    settle({0, 2});
    EXPECT_TRUE(data().historico.legivel());
    EXPECT_THAT(recorded("operacao, tabela, lancamento, cliente, banco, numero, valor, bompara"),
                ElementsAre("baixa|cheques|1|2|1|000001|10,00|01/01/2024",
                            "baixa|cheques|3|2|1|000001|10,00|03/01/2024"));
    const Strings groups = recorded("grupo");
    EXPECT_EQ(groups[0], groups[1]);
    EXPECT_NE(groups[0], "");
    settle({0});
    EXPECT_NE(recorded("grupo")[2], groups[0]);
}

TEST_P(KeptHistory, TellsWhenAndAtWhichStation) {
    const jet::Date before = jet::Date::now();
    settle({0});
    ado::Recordset rs;
    rs.Open("valtrino_historico", data().Automacao);
    EXPECT_GE(rs["quando"].date().days, before.days);
    EXPECT_LE(rs["quando"].date().days, jet::Date::now().days);
    EXPECT_EQ(rs["estacao"].text(), QSysInfo::machineHostName().left(64).toStdString());
}

TEST_P(KeptHistory, APurgeIsOneGroupOfAllThatItTook) {
    purgeAll(); // which leaves the second
    EXPECT_THAT(recorded("operacao, lancamento"),
                ElementsAre("expurgo|1", "expurgo|3", "expurgo|4", "expurgo|5"));
    const Strings groups = recorded("grupo");
    EXPECT_THAT(groups, Each(groups[0]));
}

TEST_P(KeptHistory, ADeletedChequeStandsThereWhole) {
    expectDeleteQuestion(MessageAnswer::yes);
    click(first(), "CmdExcluir");
    EXPECT_THAT(recorded("operacao, depois"), ElementsAre("exclusão|"));
    EXPECT_THAT(recorded("antes")[0],
                AllOf(HasSubstr("[lancamento]=1 [cliente]=2 [banco]=1 [agencia]=nulo "
                                "[numero]=\"000001\" [data]=nulo [bompara]=2024-01-01 "
                                "[valor]=10,0000 "),
                      HasSubstr("[descontar]=verdadeiro")));
}

TEST_P(KeptHistory, AChangedChequeStandsThereBeforeAndAfter) {
    auto& form = first();
    type(form, "txtnumero", "777");
    click(form, "CmdIncluir");
    EXPECT_THAT(recorded("operacao, lancamento, numero"), ElementsAre("alteração|1|000001"));
    EXPECT_THAT(recorded("antes")[0], HasSubstr("[numero]=\"000001\""));
    EXPECT_THAT(recorded("depois")[0], HasSubstr("[numero]=\"777\""));
}

TEST_P(KeptHistory, AChequeSavedAsItWasOrEnteredIsNoChange) {
    click(first(), "CmdIncluir");
    auto& form = open<FrmLancarCheques>();
    click(form, "CmdNovo");
    type(form, "txtNome", "ana");
    type(form, "txtbanco", "agro");
    type(form, "txtnumero", "9");
    type(form, "txtvalor", "5");
    click(form, "CmdIncluir");
    EXPECT_EQ(rows("select lancamento from cheques").size(), 6U);
    EXPECT_THAT(recorded("id"), IsEmpty());
}

TEST_P(KeptHistory, ARenegotiationIsCalledSo) {
    auto& form = open<FrmRenegociar>();
    whileModal<FrmLocCHTerceiros>([](FrmLocCHTerceiros& list) {
        click(list, "chkdescontar");
        clickRow(list, "lstterceiros", 1);
        clickRow(list, "lstterceiros", 1);
    });
    click(form, "CmdLocalizar");
    activate(form);
    type(form, "txtnovo_vencto", "10022024");
    click(form, "CmdIncluir");
    EXPECT_THAT(recorded("operacao, lancamento, bompara"),
                ElementsAre("renegociação|2|02/01/2024"));
    EXPECT_THAT(recorded("depois")[0], HasSubstr("[bompara]=2024-02-10"));
}

TEST_P(KeptHistory, ABouncedChequeStandsThereFromItsRecordOn) {
    auto& form = open<FrmLancasSFundos>();
    type(form, "txtcliente", "ana");
    type(form, "txtbanco", "agro");
    type(form, "txtnumero", "901");
    type(form, "txtvalor", "75");
    type(form, "txtEmpresa", "Loja");
    click(form, "CmdIncluir");
    EXPECT_THAT(recorded("operacao, lancamento, numero, valor, antes"),
                ElementsAre("sem fundos|1|901|75,00|"));
    click(form, "btnNavegacao", 0);
    type(form, "txtEmpresa", "Outra");
    click(form, "CmdIncluir");
    click(form, "btnNavegacao", 0);
    expectDeleteQuestion(MessageAnswer::yes);
    click(form, "cmdExcluir");
    EXPECT_THAT(recorded("operacao"), ElementsAre("sem fundos", "alteração", "exclusão"));
    EXPECT_THAT(recorded("depois")[1], HasSubstr("[empresa]=\"Outra\""));
}

TEST_P(KeptHistory, OtherTablesHaveNone) {
    data().rsBancos.MoveFirst();
    data().rsBancos["nome"] = "Outro";
    data().rsBancos.Update();
    EXPECT_FALSE(isThere());
}

TEST_P(KeptHistory, AnotherProgramReadsIt) {
    if (onServer())
        GTEST_SKIP() << kByTheFile;
    if (!hasMdbTools())
        GTEST_SKIP() << "without mdb-export";
    settle({0, 1});
    const auto read = exportedByMdbTools(shop().file(), Historico::kTabela);
    ASSERT_THAT(read, SizeIs(3));
    const auto at = [&](const char* name) {
        return static_cast<std::size_t>(std::ranges::find(read[0], name) - read[0].begin());
    };
    EXPECT_EQ(read[1][at("operacao")], "baixa");
    EXPECT_EQ(read[2][at("lancamento")], "2");
    EXPECT_EQ(read[2][at("bompara")], "2024-01-02T00:00:00");
    EXPECT_EQ(read[1][at("antes")], recorded("antes")[0]);
    EXPECT_EQ(read[1][at("grupo")], read[2][at("grupo")]);
    // And finds its own tables as they were.
    EXPECT_THAT(exportedByMdbTools(shop().file(), "cheques"), SizeIs(4));
}

TEST_P(KeptHistory, WhatIsUndoneIsntRecorded) {
    {
        const ado::Transaction undone(data().Automacao);
        data().rsCheques.MoveFirst();
        data().rsCheques.Delete();
        EXPECT_TRUE(isThere());
    }
    EXPECT_FALSE(isThere());
    settle({0});
    EXPECT_THAT(recorded("lancamento"), ElementsAre("1"));
}

TEST_P(KeptHistory, AFullDiskRefusesTheChequeWithItsHistory) {
    if (onServer())
        GTEST_SKIP() << kByTheFile;
    settle({0});
    fail(ENOSPC);
    settle({0});
    disk_.refused.clear();
    EXPECT_THAT(failed_, SizeIs(1));
    data().Automacao.flush();
    EXPECT_THAT(onDisk(), ElementsAre("2", "3", "4", "5"));
    EXPECT_THAT(recorded("lancamento"), ElementsAre("1"));
}

// There deleting makes no room, so nothing goes without its history.
TEST_P(KeptHistory, AFullServerRefusesTheChequeWithItsHistory) {
    if (!onServer())
        GTEST_SKIP() << "AFullDiskRefusesTheChequeWithItsHistory";
    settle({0});
    static_cast<void>(Cluster::answer(
        Mirtal::DatabaseFolder.toStdString(),
        "do $do$ begin create function cheio() returns trigger language plpgsql as $f$ begin "
        "raise exception using errcode = 'disk_full'; end $f$; create trigger cheio before insert "
        "on valtrino_historico for each row execute function cheio(); end $do$"));
    settle({0, 1});
    EXPECT_THAT(failed_, ElementsAre(AllOf(HasSubstr("O servidor não tem mais espaço"),
                                           HasSubstr("Nenhum cheque foi baixado."),
                                           HasSubstr("Os outros continuam cadastrados."))));
    EXPECT_THAT(rows("select lancamento from cheques order by lancamento"),
                ElementsAre("2", "3", "4", "5"));
    EXPECT_THAT(recorded("lancamento"), ElementsAre("1"));
    EXPECT_EQ(data().historico.impedimento(), "");
    EXPECT_THAT(told_, IsEmpty());
}

TEST_P(KeptHistory, TwoStationsShareOne) {
    ado::Connection other;
    other.Open(data().Automacao.ConnectionString());
    Historico theirs(other);
    other.Close();
    other.setRecorder(&theirs);
    other.Open();
    ado::Recordset list;
    list.Open("cheques", other);
    settle({0}); // makes the table while the other station has the file open
    list.Requery();
    list["numero"] = "9";
    list.Update();
    list.Close();
    other.Close();
    EXPECT_THAT(recorded("operacao, lancamento"), ElementsAre("baixa|1", "alteração|2"));
    const Strings groups = recorded("grupo");
    EXPECT_NE(groups[0], groups[1]);
}

TEST_P(KeptHistory, TwoStationsMayMakeItAtOnce) {
    if (onServer())
        GTEST_SKIP() << kTheyWait;
    ado::Connection other;
    Historico theirs(other);
    other.setRecorder(&theirs);
    other.Open(data().Automacao.ConnectionString());
    ado::Recordset list;
    list.Open("cheques", other);
    data().Automacao.BeginTrans(); // it has looked already, and found none
    data().rsCheques.MoveLast();
    list["numero"] = "9";
    list.Update();
    other.flush();
    data().rsCheques.Delete();
    data().Automacao.CommitTrans();
    list.Close();
    other.Close();
    EXPECT_THAT(recorded("operacao, lancamento"), ElementsAre("alteração|1", "exclusão|5"));
}

TEST_P(KeptHistory, AnotherProgramsTableOfThatNameStopsNoWorkAndIsToldOnce) {
    makeOthersTable();
    settle({0, 1});
    settle({0});
    EXPECT_THAT(rows("select lancamento from cheques order by lancamento"), ElementsAre("4", "5"));
    EXPECT_THAT(told_, ElementsAre("O histórico não está sendo gravado: a tabela "
                                   "\"valtrino_historico\" é de outro programa."));
    EXPECT_EQ(data().historico.impedimento().toStdString(), told_[0]);
    EXPECT_FALSE(data().historico.legivel());
    EXPECT_THAT(failed_, IsEmpty());
}

TEST_P(KeptHistory, ARuleOfThatTableStopsNoWork) {
    if (onServer())
        GTEST_SKIP() << kByTheFile;
    settle({0});
    setRules(data().Automacao.database(), Historico::kTabela,
             {
                 {.column = "valor", .rule = ">1000", .message = "só grandes"}
    });
    data().Automacao.flush();
    settle({0, 1});
    EXPECT_THAT(rows("select lancamento from cheques order by lancamento"), ElementsAre("4", "5"));
    EXPECT_THAT(failed_, IsEmpty());
    EXPECT_THAT(told_, ElementsAre("O histórico não está sendo gravado: só grandes"));
    EXPECT_THAT(recorded("lancamento"), ElementsAre("1"));
}

TEST_P(KeptHistory, AFileMayBeWithoutOne) {
    data().Automacao.store().createTable(
        {.name = Historico::kDesligado,
         .columns = {{.name = "desde", .type = jet::ColumnType::date}},
         .indexes = {}});
    settle({0});
    EXPECT_FALSE(isThere());
    EXPECT_THAT(told_, IsEmpty());
}

} // namespace
