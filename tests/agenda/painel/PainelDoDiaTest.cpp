#include "agenda/painel/PainelDoDia.h"

#include "agenda/Agenda.h"
#include "agenda/FrmFicha.h"
#include "collections/FrmLancasSFundos.h"
#include "controls/box/BarChart.h"
#include "controls/box/FigureButton.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

/// The panel in a window of its own, over the agenda's cheques.
class Painel : public Agenda {
protected:
    void SetUp() override {
        Agenda::SetUp();
        hoje_ = QDate::currentDate();
        painel_ = std::make_unique<PainelDoDia>([] { return hoje_; });
        painel_->resize(1000, 560);
    }
    void TearDown() override {
        painel_.reset();
        Agenda::TearDown();
    }

    /// On show, with the sums of all that is in the file.
    PainelDoDia& somado() {
        painel_->show();
        activate(*painel_);
        EXPECT_TRUE(QTest::qWaitFor([&] { return !diz("lblemmaos").contains("Somando"); }));
        return *painel_;
    }
    [[nodiscard]] QString diz(const char* nome) const { return text(*painel_, nome); }
    /// "2 cheques, R$ 10,00"
    [[nodiscard]] std::string figura(const char* nome) const {
        const auto& botao = control<FigureButton>(*painel_, nome);
        return (botao.note() + ", " + botao.figure()).toStdString();
    }
    [[nodiscard]] BarChart& grafico() const {
        return control<BarChart>(*painel_, "grfvencimentos");
    }
    [[nodiscard]] bool visivel(const char* nome) const {
        return control(*painel_, nome).isVisible();
    }
    /// What the agenda lists once `abrir` has opened it, and of which period.
    std::vector<std::string> listados(const std::function<void()>& abrir) {
        std::vector<std::string> vistos;
        whileModal<FrmAgenda>([&](FrmAgenda& agenda) {
            vistos = numeros(agenda);
            vistos.push_back(text(agenda, "cmbperiodo").toStdString());
            press(Qt::Key_Escape);
        });
        abrir();
        activate(*painel_);
        return vistos;
    }
    /// The client whose sheet `abrir` opens.
    std::string ficha(const std::function<void()>& abrir) {
        std::string nome;
        whileModal<FrmFicha>([&](FrmFicha& form) {
            nome = text(form, "txtcliente").toStdString();
            press(Qt::Key_Escape);
        });
        abrir();
        EXPECT_TRUE(QTest::qWaitFor([&] { return !nome.empty(); }));
        activate(*painel_);
        return nome;
    }
    /// Another station, which sees the file as the program has left it.
    static void outraEstacao(const QString& comando,
                             const std::function<void(ado::Recordset&)>& work) {
        data().Automacao.flush();
        ado::Connection outra;
        outra.Open(data().Automacao.ConnectionString());
        ado::Recordset rs;
        rs.Open(comando, outra);
        work(rs);
        outra.Close();
    }

    static inline QDate hoje_;
    std::unique_ptr<PainelDoDia> painel_;
};

INSTANTIATE_TEST_SUITE_P(, Painel, everywhere(), keptName);

TEST_P(Painel, TellsWhatIsDueLateAndBounced) {
    givenCheques();
    given("semfundos", {
                           {{"cliente", number(kAna)}, {"valor", money(75, 50)}}
    });
    somado();
    EXPECT_EQ(diz("lblemmaos"), "Em mãos: 10 cheques, R$ 63.131,04");
    EXPECT_EQ(figura("cmdhoje"), "2 cheques, R$ 100,99");
    EXPECT_EQ(figura("cmdsemana"), "4 cheques, R$ 3.100,99");
    EXPECT_EQ(figura("cmdatrasados"), "2 cheques, R$ 30,05");
    EXPECT_EQ(figura("cmdsemfundos"), "1 cheque, R$ 75,50");
    EXPECT_EQ(control(*painel_, "cmdhoje").accessibleName(), "Vencem hoje: 2 cheques, R$ 100,99");
    EXPECT_EQ(grafico().accessibleName(), "Vencem por dia, em 30 dias");
}

TEST_P(Painel, IsWalkedThroughByWhatIsUsedEveryDayFirst) {
    givenCheques();
    enter(somado(), "cmdhoje");
    for (const char* nome : {"cmdsemana", "cmdatrasados", "cmdsemfundos", "cmdgrafico",
                             "grfvencimentos", "lstclientes", "cmdocultar", "cmdhoje"}) {
        press(Qt::Key_Tab);
        EXPECT_EQ(focus(), nome);
    }
}

TEST_P(Painel, TellsNoSumBeforeAllIsRead) {
    givenCheques();
    painel_->show();
    EXPECT_THAT(diz("lblemmaos").toStdString(), HasSubstr("Somando os cheques"));
    for (const char* nome : {"cmdhoje", "cmdsemana", "cmdatrasados", "cmdsemfundos"})
        EXPECT_EQ(control<FigureButton>(*painel_, nome).figure(), "…");
    EXPECT_TRUE(grafico().bars().empty());
    somado();
    EXPECT_EQ(figura("cmdhoje"), "2 cheques, R$ 100,99");
}

/// How often a widget was asked to lay itself out.
struct Layouts : QObject {
    bool eventFilter(QObject*, QEvent* event) override {
        count += event->type() == QEvent::LayoutRequest ? 1 : 0;
        return false;
    }
    int count = 0;
};

TEST_P(Painel, RestsWhenItIsLaidOut) {
    givenCheques();
    auto& painel = somado();
    for (const int largura : {1000, 300}) {
        painel.resize(largura, 560);
        for (int i = 0; i < 20; ++i)
            QCoreApplication::processEvents();
        Layouts layouts;
        painel.installEventFilter(&layouts);
        for (int i = 0; i < 20; ++i)
            QCoreApplication::processEvents();
        EXPECT_EQ(layouts.count, 0) << largura;
    }
}

TEST_P(Painel, TellsNoSumWithoutADatabase) {
    data().fechar();
    painel_->show();
    QCoreApplication::processEvents();
    EXPECT_EQ(diz("lblemmaos"), "Nenhuma base de dados está aberta.");
    EXPECT_EQ(control<FigureButton>(*painel_, "cmdhoje").figure(), "…");
    data().abrir();
}

TEST_P(Painel, TellsThatTheChequesCantBeSummed) {
    remake([](jet::TableSpec& made) {
        if (made.name == "cheques")
            std::erase_if(made.columns,
                          [](const jet::ColumnSpec& column) { return column.name == "valor"; });
    });
    painel_->show();
    EXPECT_TRUE(
        QTest::qWaitFor([&] { return diz("lblemmaos") == "Os cheques não puderam ser somados."; }));
    EXPECT_EQ(control<FigureButton>(*painel_, "cmdhoje").figure(), "…");
    EXPECT_EQ(control<ListView>(*painel_, "lstclientes").count(), 0);
}

TEST_P(Painel, OpensTheListOfEachFigureByMouseAndKeys) {
    givenCheques();
    auto& painel = somado();
    EXPECT_THAT(listados([&] { click(painel, "cmdhoje"); }),
                ElementsAre("000103", "000104", "Hoje"));
    enter(painel, "cmdsemana");
    EXPECT_THAT(listados([] { press(Qt::Key_Return); }),
                ElementsAre("000103", "000104", "000105", "000106", "Semana (7 dias)"));
    enter(painel, "cmdatrasados");
    EXPECT_THAT(listados([] { press(Qt::Key_Space); }),
                ElementsAre("000101", "000102", "Atrasados"));
    EXPECT_EQ(focus(), "cmdatrasados");
    bool aberta = false;
    whileModal<FrmLancasSFundos>([&](FrmLancasSFundos&) {
        aberta = true;
        press(Qt::Key_Escape);
    });
    click(painel, "cmdsemfundos");
    EXPECT_TRUE(aberta);
}

TEST_P(Painel, ChartsThirtyDaysAndOpensEach) {
    givenCheques();
    auto& painel = somado();
    ASSERT_EQ(grafico().bars().size(), 30U);
    EXPECT_EQ(grafico().bars()[0].words, formatDate(hoje_) + ": 2 cheques, R$ 100,99");
    EXPECT_EQ(grafico().bars()[29].words, formatDate(daqui(29)) + ": 1 cheque, R$ 8.000,00");
    EXPECT_EQ(grafico().bars()[2].height, 0);
    enter(painel, "grfvencimentos");
    press(Qt::Key_Right);
    EXPECT_EQ(diz("lblbarra"), formatDate(daqui(1)) + ": 1 cheque, R$ 1.000,00");
    EXPECT_THAT(listados([] { press(Qt::Key_Return); }), ElementsAre("000105", "Amanhã"));
    EXPECT_THAT(listados([&] {
                    QTest::mouseClick(&grafico(), Qt::LeftButton, {},
                                      grafico().columnRect(29).center());
                }),
                ElementsAre("000108", "De - até"));
}

TEST_P(Painel, ChartsTwelveWeeksAndOpensEach) {
    givenCheques();
    auto& painel = somado();
    click(painel, "cmdgrafico");
    ASSERT_EQ(grafico().bars().size(), 12U);
    EXPECT_EQ(grafico().accessibleName(), "Vencem por semana, em 12 semanas");
    EXPECT_EQ(grafico().bars()[0].words,
              formatDate(hoje_) + " a " + formatDate(daqui(6)) + ": 4 cheques, R$ 3.100,99");
    EXPECT_EQ(grafico().bars()[4].words,
              formatDate(daqui(28)) + " a " + formatDate(daqui(34)) + ": 2 cheques, R$ 24.000,00");
    enter(painel, "grfvencimentos");
    grafico().setCurrentBar(4);
    EXPECT_THAT(listados([] { press(Qt::Key_Space); }),
                ElementsAre("000108", "000109", "De - até"));
    click(painel, "cmdgrafico");
    EXPECT_EQ(grafico().bars().size(), 30U);
}

TEST_P(Painel, ShowsWhoHasMostBesideHisLimit) {
    given("cliente_fornecedor", {
                                    {{"nome", words("Zeca Fornecedor")}, {"tipo", yes(false)}}
    });
    constexpr int kZeca = 4, kNinguem = 77;
    given("cheques", {cheque(kCarla, kNorte, "000101", daqui(0), money(1000)),
                      cheque(kCarla, kNorte, "000102", daqui(9), money(234, 50)),
                      cheque(kAna, kNorte, "000103", {}, money(150)),
                      cheque(kZeca, kNorte, "000104", daqui(-9), money(3000)),
                      cheque(kNinguem, kNorte, "000105", daqui(0), money(20)),
                      cheque(kBento, kNorte, "000106", daqui(0), money(10))});
    somado();
    const auto linha = [&](int qual) { return Agenda::linha(*painel_, "lstclientes", qual); };
    ASSERT_EQ(control<ListView>(*painel_, "lstclientes").count(), 5);
    EXPECT_EQ(linha(0), "Zeca Fornecedor|1|3.000,00||sem limite");
    EXPECT_EQ(linha(1), "Carla Reis|2|1.234,50|1.500,00|265,50");
    EXPECT_EQ(linha(2), "Ana Costa|1|150,00|100,00|passou 50,00");
    EXPECT_EQ(linha(3), "(não cadastrado: código 77)|1|20,00||sem limite");
    EXPECT_EQ(linha(4), "Bento Dias|1|10,00||sem limite");
}

TEST_P(Painel, OpensTheSheetOfAClient) {
    givenCheques();
    auto& painel = somado();
    EXPECT_EQ(painel.clienteMostrado(), std::nullopt);
    enter(painel, "lstclientes");
    EXPECT_EQ(painel.clienteMostrado(), kCarla);
    EXPECT_EQ(ficha([] { press(Qt::Key_Return); }), "Carla Reis");
    auto& lista = control<ListView>(painel, "lstclientes");
    EXPECT_EQ(ficha([&] {
                  QTest::mouseDClick(lista.viewport(), Qt::LeftButton, {},
                                     lista.rowRect(1).center());
              }),
              "Bento Dias");
    EXPECT_EQ(painel.clienteMostrado(), kBento);
}

TEST_P(Painel, FollowsWhatAnotherStationDoes) {
    givenCheques();
    auto& painel = somado();
    enter(painel, "lstclientes");
    press(Qt::Key_Down);
    EXPECT_EQ(painel.clienteMostrado(), kBento);
    outraEstacao("select * from cheques where numero='000104'", [](ado::Recordset& cheques) {
        cheques["valor"] = 90'000;
        cheques["cliente"] = kAna;
        cheques.Update();
    });
    EXPECT_TRUE(QTest::qWaitFor([&] { return figura("cmdhoje") == "2 cheques, R$ 90.100,00"; }));
    EXPECT_EQ(linha(painel, "lstclientes", 0), "Ana Costa|3|90.110,00|100,00|passou 90.010,00");
    EXPECT_EQ(painel.clienteMostrado(), kBento);
    EXPECT_EQ(focus(), "lstclientes");
}

TEST_P(Painel, RestsWhileItIsOutOfSight) {
    givenCheques();
    auto& painel = somado();
    const auto& relogio = *painel.findChild<QTimer*>("Relogio");
    EXPECT_TRUE(relogio.isActive());
    painel.hide();
    EXPECT_FALSE(relogio.isActive());
    given("cheques", {cheque(kAna, kNorte, "000199", daqui(0), money(1))});
    painel.show();
    EXPECT_TRUE(QTest::qWaitFor([&] { return figura("cmdhoje") == "3 cheques, R$ 101,99"; }));
}

TEST_P(Painel, BeginsAnewWithTheDay) {
    givenCheques();
    auto& painel = somado();
    hoje_ = hoje_.addDays(1);
    QMetaObject::invokeMethod(painel.findChild<QTimer*>("Relogio"), "timeout");
    EXPECT_EQ(figura("cmdhoje"), "1 cheque, R$ 1.000,00");
    EXPECT_EQ(figura("cmdatrasados"), "4 cheques, R$ 131,04");
    EXPECT_EQ(grafico().bars()[0].label, daqui(1).toString("dd/MM"));
}

TEST_P(Painel, LeavesOutClientsThenTheChartWhereThereIsNoRoom) {
    givenCheques();
    auto& painel = somado();
    EXPECT_TRUE(visivel("lstclientes"));
    painel.resize(800, 360);
    EXPECT_FALSE(visivel("lstclientes"));
    EXPECT_TRUE(visivel("grfvencimentos"));
    painel.resize(800, 200);
    EXPECT_FALSE(visivel("grfvencimentos"));
    EXPECT_TRUE(visivel("cmdhoje"));
    EXPECT_TRUE(visivel("lblteclas"));
    painel.resize(380, 260);
    QCoreApplication::processEvents();
    EXPECT_GT(control(painel, "cmdatrasados").y(), control(painel, "cmdhoje").y());
    EXPECT_TRUE(visivel("cmdsemfundos"));
    painel.resize(1000, 560);
    QCoreApplication::processEvents();
    EXPECT_TRUE(visivel("lstclientes"));
    EXPECT_EQ(control(painel, "cmdsemfundos").y(), control(painel, "cmdhoje").y());
}

} // namespace
