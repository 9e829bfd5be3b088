#include "agenda/Agenda.h"
#include "cheques/FrmLancarCheques.h"

#include <QCheckBox>

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

INSTANTIATE_TEST_SUITE_P(, Agenda, everywhere(), keptName);

TEST_P(Agenda, BeginsWithTheSevenDaysFromToday) {
    givenCheques();
    auto& form = open<FrmAgenda>();
    EXPECT_EQ(text(form, "cmbperiodo"), "Semana (7 dias)");
    EXPECT_THAT(numeros(form), ElementsAre("000103", "000104", "000105", "000106"));
    EXPECT_EQ(text(form, "lblsoma"),
              "Na lista: 4 cheques, R$ 3.100,99     Marcados: 0 cheques, R$ 0,00");
    EXPECT_EQ(focus(), "cmbperiodo");
}

TEST_P(Agenda, ShowsTheChequesOfAPeriod) {
    givenCheques();
    auto& form = open<FrmAgenda>();
    escolher(form, "cmbperiodo", "Hoj");
    EXPECT_THAT(numeros(form), ElementsAre("000103", "000104"));
    escolher(form, "cmbperiodo", "Ama");
    EXPECT_THAT(numeros(form), ElementsAre("000105"));
    escolher(form, "cmbperiodo", "M");
    EXPECT_THAT(numeros(form),
                ElementsAre("000103", "000104", "000105", "000106", "000107", "000108"));
    escolher(form, "cmbperiodo", "Atr");
    EXPECT_THAT(numeros(form), ElementsAre("000101", "000102"));
    EXPECT_EQ(text(form, "txtinicio"), formatDate(daqui(-40)));
    EXPECT_EQ(text(form, "txtfim"), formatDate(daqui(-1)));
    EXPECT_FALSE(control(form, "txtinicio").isEnabled());
    escolher(form, "cmbperiodo", "De");
    EXPECT_THAT(numeros(form), ElementsAre("000101", "000102")); // its days stay
    type(form, "txtinicio", daqui(1).toString("ddMMyyyy"));
    type(form, "txtfim", daqui(30).toString("ddMMyyyy"));
    EXPECT_THAT(numeros(form), ElementsAre("000105", "000106", "000107", "000108", "000109"));
    type(form, "txtfim", "31129999");
    EXPECT_EQ(numeros(form).size(), 5U);
}

TEST_P(Agenda, ShowsTheChequesThatHaveNoDueDate) {
    givenCheques();
    auto& form = open<FrmAgenda>();
    escolher(form, "cmbperiodo", "Sem v");
    EXPECT_EQ(text(form, "cmbperiodo"), "Sem vencimento");
    EXPECT_THAT(numeros(form), ElementsAre("000110"));
    EXPECT_EQ(linha(form, "lstcheques", 0),
              "000110|Carla Reis|Banco Norte|0042|" + formatDate(daqui(-10)).toStdString() +
                  "||||32.000,00|" + coluna(form, "lstcheques", ListaDaAgenda::kPrazos)[0] + '|');
    EXPECT_EQ(linha(form, "lstdias", 0), "Nenhum||1|32.000,00|0|0,00");
    clickCheckBox(form, "lstcheques", 0);
    EXPECT_EQ(linha(form, "lstdias", 0), "Nenhum||1|32.000,00|1|32.000,00");
    escolher(form, "cmbperiodo", "De");
    EXPECT_THAT(numeros(form), ElementsAre("000103", "000104", "000105", "000106"));
}

TEST_P(Agenda, TakesATextThatIsNoPeriodForTheLastOne) {
    givenCheques();
    auto& form = open<FrmAgenda>();
    escolher(form, "cmbperiodo", "Hoj");
    escolher(form, "cmbperiodo", "xyz");
    EXPECT_EQ(text(form, "cmbperiodo"), "Hoje");
    escolher(form, "cmbdestino", "xyz");
    EXPECT_EQ(text(form, "cmbdestino"), "Todos");
    EXPECT_THAT(numeros(form), ElementsAre("000103", "000104"));
}

TEST_P(Agenda, ShowsThoseOfAClientABankOrADestination) {
    givenCheques();
    auto& form = open<FrmAgenda>();
    escolher(form, "txtcliente", "bento");
    EXPECT_THAT(numeros(form), ElementsAre("000106"));
    escolher(form, "cmbperiodo", "M");
    EXPECT_THAT(numeros(form), ElementsAre("000106", "000107"));
    escolher(form, "txtbanco", "agro");
    EXPECT_THAT(numeros(form), ElementsAre("000107"));
    enter(form, "txtcliente");
    press(Qt::Key_Delete); // no client: all of them
    EXPECT_THAT(numeros(form), ElementsAre("000104", "000105", "000107"));
    escolher(form, "cmbdestino", "Tro");
    EXPECT_THAT(numeros(form), ElementsAre("000104"));
    escolher(form, "cmbdestino", "Des");
    EXPECT_THAT(numeros(form), ElementsAre("000105", "000107"));
}

TEST_P(Agenda, TellsBankingDayDistanceTermsAndMark) {
    // A Thursday that was a holiday, and a due date ahead.
    const QDate feriado(2025, 11, 20);
    given("cheques", {cheque(kAna, kNorte, "000101", feriado, money(10)),
                      cheque(kAna, kNorte, "000102", daqui(3), money(20))});
    auto& form = open<FrmAgenda>();
    escolher(form, "cmbperiodo", "De");
    type(form, "txtinicio", "20112025");
    type(form, "txtfim", "31129999");
    const QDate emissao = daqui(-10);
    const std::string comum = "|0042|" + formatDate(emissao).toStdString() + '|';
    const std::string prazos = emissao.addDays(30).toString("dd/MM").toStdString() + " ou " +
                               emissao.addDays(60).toString("dd/MM").toStdString();
    EXPECT_EQ(linha(form, "lstcheques", 0),
              "000101|Ana Costa|Banco Norte" + comum + "20/11/2025|sex 21/11|há " +
                  std::to_string(feriado.daysTo(QDate::currentDate())) + " dias|10,00|" + prazos +
                  "|");
    const std::string segunda = linha(form, "lstcheques", 1);
    EXPECT_THAT(segunda, testing::HasSubstr("|em 3 dias|20,00|" + prazos + "|◷ Cedo demais"));
}

TEST_P(Agenda, SumsEachDayAllThatIsShownAndAllThatIsMarked) {
    givenCheques();
    auto& form = open<FrmAgenda>();
    clickCheckBox(form, "lstcheques", 1);
    enter(form, "lstcheques");
    press(Qt::Key_End);
    press(Qt::Key_Space);
    EXPECT_THAT(coluna(form, "lstdias", 2), ElementsAre("2", "1", "1"));
    EXPECT_THAT(coluna(form, "lstdias", 3), ElementsAre("100,99", "1.000,00", "2.000,00"));
    EXPECT_THAT(coluna(form, "lstdias", 4), ElementsAre("1", "0", "1"));
    EXPECT_THAT(coluna(form, "lstdias", 5), ElementsAre("0,99", "0,00", "2.000,00"));
    EXPECT_EQ(text(form, "lblsoma"),
              "Na lista: 4 cheques, R$ 3.100,99     Marcados: 2 cheques, R$ 2.000,99");
    press(Qt::Key_Space);
    EXPECT_EQ(text(form, "lblsoma"),
              "Na lista: 4 cheques, R$ 3.100,99     Marcados: 1 cheque, R$ 0,99");
    click(form, "cmdmarcar");
    EXPECT_THAT(coluna(form, "lstdias", 5), ElementsAre("100,99", "1.000,00", "2.000,00"));
    EXPECT_EQ(text(form, "lblsoma"),
              "Na lista: 4 cheques, R$ 3.100,99     Marcados: 4 cheques, R$ 3.100,99");
    click(form, "cmdmarcar");
    EXPECT_THAT(coluna(form, "lstdias", 4), ElementsAre("0", "0", "0"));
    EXPECT_FALSE(control<ListView>(form, "lstcheques").isChecked(0));
}

TEST_P(Agenda, KeepsMarksAndRowInEveryOrderAndWhenItReadsAnew) {
    givenCheques();
    auto& form = open<FrmAgenda>();
    auto& lista = control<ListView>(form, "lstcheques");
    clickCheckBox(form, "lstcheques", 2); // 000105, of Carla
    const auto marcados = [&] {
        std::vector<std::string> quais;
        for (int i = 0; i < lista.count(); ++i)
            if (lista.isChecked(i))
                quais.push_back(lista.text(i, 0).toStdString());
        return quais;
    };
    clickColumn(form, "lstcheques", ListaDaAgenda::kValor);
    EXPECT_THAT(numeros(form), ElementsAre("000104", "000103", "000105", "000106"));
    clickColumn(form, "lstcheques", ListaDaAgenda::kValor);
    EXPECT_THAT(numeros(form), ElementsAre("000106", "000105", "000103", "000104"));
    EXPECT_TRUE(control<QCheckBox>(form, "chkinvertida").isChecked());
    click(form, "chkinvertida");
    EXPECT_THAT(numeros(form), ElementsAre("000104", "000103", "000105", "000106"));
    clickColumn(form, "lstcheques", ListaDaAgenda::kCliente);
    EXPECT_THAT(numeros(form), ElementsAre("000104", "000103", "000106", "000105"));
    EXPECT_EQ(text(form, "cmbordem"), "Cliente");
    escolher(form, "cmbordem", "Ban");
    EXPECT_THAT(numeros(form), ElementsAre("000104", "000105", "000103", "000106"));
    given("cheques", {cheque(kAna, kAgro, "000199", daqui(2), money(1))});
    press(Qt::Key_F5);
    EXPECT_THAT(numeros(form), ElementsAre("000104", "000105", "000199", "000103", "000106"));
    EXPECT_THAT(marcados(), ElementsAre("000105"));
    EXPECT_EQ(lista.currentRow(), 1);
    clickColumn(form, "lstcheques", ListaDaAgenda::kDistancia); // the same as the due date
    EXPECT_EQ(text(form, "cmbordem"), "Vencimento");
    EXPECT_EQ(text(form, "lblsoma"),
              "Na lista: 5 cheques, R$ 3.101,99     Marcados: 1 cheque, R$ 1.000,00");
}

// Of so many the whole register is read rather than one after the other.
TEST_P(Agenda, NamesTheClientsOfManyCheques) {
    constexpr int kMany = 501;
    for (int i = 0; i < kMany; ++i) {
        const std::string nome = "Freguês " + std::to_string(i);
        given("cliente_fornecedor", {
                                        {{"nome", words(nome.c_str())}, {"tipo", yes(true)}}
        });
        given("cheques", {cheque(kCarla + 1 + i, kNorte, "000101", daqui(0), money(1))});
    }
    given("cheques", {cheque(kCarla + 1 + kMany, kAgro, "000102", daqui(0), money(1))});
    const auto& form = open<FrmAgenda>();
    const auto nomes = coluna(form, "lstcheques", ListaDaAgenda::kCliente);
    ASSERT_EQ(nomes.size(), kMany + 1U);
    for (int i = 0; i < kMany; ++i)
        EXPECT_EQ(nomes[static_cast<std::size_t>(i)], "Freguês " + std::to_string(i));
    EXPECT_EQ(nomes.back(), "(não cadastrado: código 505)");
}

// No cheque's value may be missing from the sums.
TEST_P(Agenda, SumsChequesOfSuppliersAndOfNobody) {
    given("cliente_fornecedor", {
                                    {{"nome", words("Zeca Fornecedor")}, {"tipo", yes(false)}}
    });
    constexpr int kZeca = 4, kNinguem = 77;
    Row semNome = cheque(kAna, kNorte, "000103", daqui(0), money(4));
    semNome[0].value = {};
    given("cheques", {cheque(kZeca, kNorte, "000101", daqui(0), money(1)),
                      cheque(kNinguem, kNinguem, "000102", daqui(0), money(2)), semNome});
    const auto& form = open<FrmAgenda>();
    EXPECT_THAT(coluna(form, "lstcheques", ListaDaAgenda::kCliente),
                ElementsAre("Zeca Fornecedor", "(não cadastrado: código 77)", ""));
    EXPECT_THAT(coluna(form, "lstdias", 3), ElementsAre("7,00"));
}

TEST_P(Agenda, CountsAChequeOfTheLastDayWhateverItsTimeOfDay) {
    Row tarde = cheque(kAna, kNorte, "000101", daqui(0), money(1));
    tarde[5].value = jet::Date{std::get<jet::Date>(tarde[5].value).days + 0.75};
    given("cheques", {tarde});
    auto& form = open<FrmAgenda>();
    escolher(form, "cmbperiodo", "Hoj");
    EXPECT_THAT(numeros(form), ElementsAre("000101"));
    EXPECT_THAT(coluna(form, "lstdias", 0), ElementsAre(formatDate(daqui(0)).toStdString()));
}

TEST_P(Agenda, OpensAChequeByEnterAndByTwoClicks) {
    givenCheques();
    auto& form = open<FrmAgenda>();
    const auto vista = [](const char* numero) {
        return [numero](FrmLancarCheques& entrada) {
            EXPECT_TRUE(QTest::qWaitFor([&] { return text(entrada, "txtnumero") == numero; }));
            press(Qt::Key_Escape);
        };
    };
    whileModal<FrmLancarCheques>(vista("000104"));
    enter(form, "lstcheques");
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    EXPECT_TRUE(QTest::qWaitFor([] { return !FrmLancarCheques::instance().isVisible(); }));
    QCoreApplication::processEvents();
    activate(form);
    whileModal<FrmLancarCheques>(vista("000105"));
    auto& lista = control<ListView>(form, "lstcheques");
    QTest::mouseDClick(lista.viewport(), Qt::LeftButton, {}, lista.rowRect(2).center());
    QCoreApplication::processEvents();
}

TEST_P(Agenda, SaysThatAChequeHasGoneAndListsTheOthers) {
    givenCheques();
    auto& form = open<FrmAgenda>();
    enter(form, "lstcheques");
    data().Automacao.flush();
    ado::Connection outra; // another station
    outra.Open(data().Automacao.ConnectionString());
    ado::Recordset cheques;
    cheques.Open("select * from cheques where numero='000103'", outra);
    cheques.Delete();
    outra.Close();
    expectMessage("Mensagem", "O cheque do lançamento 3 não está mais cadastrado: foi excluído ou "
                              "baixado depois de listado.");
    press(Qt::Key_Return);
    EXPECT_TRUE(QTest::qWaitFor([&] { return numeros(form).size() == 3; }));
    EXPECT_THAT(numeros(form), ElementsAre("000104", "000105", "000106"));
}

TEST_P(Agenda, AsksBeforeWhatIsTypedInTheEntryIsLost) {
    givenCheques();
    auto& entrada = open<FrmLancarCheques>();
    type(entrada, "txtnumero", "777");
    auto& form = open<FrmAgenda>();
    enter(form, "lstcheques");
    expectMessage("Mensagem", "O que foi digitado ainda não foi salvo.\n\nSair sem salvar?",
                  MessageIcon::question, MessageButtons::yesNo, MessageAnswer::no);
    press(Qt::Key_Return);
    QCoreApplication::processEvents();
    EXPECT_EQ(text(entrada, "txtnumero"), "777");
    EXPECT_TRUE(entrada.isVisible());
}

TEST_P(Agenda, WorksWithoutFieldsThatItCanDoWithout) {
    remake([](jet::TableSpec& made) {
        if (made.name == "cheques")
            std::erase_if(made.columns, [](const jet::ColumnSpec& column) {
                return column.name == "agencia" || column.name == "data" ||
                       column.name == "descontar";
            });
    });
    given("cheques", {
                         {{"cliente", number(1)},
                          {"banco", number(1)},
                          {"numero", words("000101")},
                          {"bompara", noDia(daqui(0))},
                          {"valor", money(5)}}
    });
    const QString falta =
        "Falta o campo \"%1\" na tabela \"cheques\" da base de dados. Peça a quem "
        "cuida dela que o acrescente.\n";
    expectMessage("Advertência",
                  falta.arg("agencia") + falta.arg("data") + falta.arg("descontar") +
                      "O que falta não é mostrado nem gravado; o resto da janela funciona.");
    const auto& form = open<FrmAgenda>();
    EXPECT_FALSE(control(form, "cmbdestino").isEnabled());
    EXPECT_THAT(numeros(form), ElementsAre("000101"));
    EXPECT_THAT(coluna(form, "lstcheques", ListaDaAgenda::kEmissao), ElementsAre(""));
    EXPECT_THAT(coluna(form, "lstcheques", ListaDaAgenda::kPrazos), ElementsAre(""));
}

TEST_P(Agenda, SaysWhichFieldItNeeds) {
    remake([](jet::TableSpec& made) {
        if (made.name != "cheques")
            return;
        std::erase_if(made.columns,
                      [](const jet::ColumnSpec& column) { return column.name == "bompara"; });
        std::erase_if(made.indexes, [](const jet::IndexSpec& index) {
            return index.columns.front().name == "bompara";
        });
    });
    expectFailure("Falta o campo \"bompara\"");
    FrmAgenda::instance().show();
    EXPECT_FALSE(FrmAgenda::instance().isVisible());
}

} // namespace
