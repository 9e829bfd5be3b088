// A cheque picked in the list, on its way to the windows that asked for it: whoever's it is, and
// whatever another station has done with it meanwhile.
#include "cheques/FrmLancarCheques.h"
#include "collections/FrmLocCHTerceiros.h"
#include "collections/FrmRenegociar.h"
#include "controls/box/DropDownList.h"
#include "shell/Mirtal.h"
#include "support/ChequeShop.h"

#include <gmock/gmock.h>

#include <functional>

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

/// Over a shop with a cheque of Ana and one of Carla, in a file of either version.
class PickedCheque : public Everywhere<ChequeShop> {
protected:
    void SetUp() override {
        ChequeShop::SetUp();
        given("cheques", {cheque(kAna, "000101"), cheque(kCarla, "000102")});
        data().Automacao.flush();
        FrmLancarCheques::aoLocalizar([] { FrmLocCHTerceiros::instance().showModal(); });
    }
    void TearDown() override {
        FrmLancarCheques::aoLocalizar({});
        ChequeShop::TearDown();
    }
    static Row cheque(int client, const char* numero) {
        // clang-format off
        return {
            {"cliente",   number(client)},
            {"banco",     number(kNorte)},
            {"numero",    words(numero)},
            {"data",      day(2026, 3, 1)},
            {"bompara",   day(2026, 4, 1)},
            {"valor",     money(10)},
            {"descontar", yes(true)}
        };
        // clang-format on
    }

    /// What another station does, stored when this returns.
    void elsewhere(const std::function<void(ado::Connection&)>& work) const {
        ado::Connection station;
        station.Open(data().Automacao.ConnectionString());
        work(station);
        station.Close();
    }
    void deletedElsewhere(const char* lancamento) const {
        elsewhere([&](ado::Connection& station) {
            ado::Recordset rs;
            rs.Open(QString("select * from cheques where lancamento=") + lancamento, station);
            rs.Delete();
        });
    }

    /// A cheque is typed and saved as a clerk does, through every field; the entry is left with the
    /// client's cheques at hand only.
    static void enterACheque(QWidget& entry, const char* client) {
        enter(entry, "txtNome");
        for (const char* typed : {client, "agro", "0042", "000777", "01032026", "31032026", "25,00",
                                  "Gerente", "obs"}) {
            type(typed);
            press(Qt::Key_Return);
        }
        EXPECT_EQ(focus(), "CmdIncluir");
        press(Qt::Key_Return);
        EXPECT_EQ(focus(), "txtNome");
    }

    /// The cheque just found, through rate and new date to the save.
    static void renegotiate() {
        type("2");
        press(Qt::Key_Return);
        type("05052026");
        press(Qt::Key_Return);
        press(Qt::Key_Return);
    }

    /// Picks a cheque in the list on show, by its entry number; `meanwhile` happens between the two
    /// clicks.
    static void pick(FrmLocCHTerceiros& list, const char* lancamento,
                     const std::function<void()>& meanwhile = {}) {
        click(list, "chkdescontar");
        const auto& rows = control<ListView>(list, "lstterceiros");
        for (int row = 0; row < rows.count(); ++row) {
            if (rows.text(row, 0) != lancamento)
                continue;
            clickRow(list, "lstterceiros", row);
            if (meanwhile)
                meanwhile();
            return clickRow(list, "lstterceiros", row);
        }
        ADD_FAILURE() << "not listed: " << lancamento;
    }
    /// Finds and picks from a window.
    void find(QWidget& form, const char* lancamento) {
        whileModal<FrmLocCHTerceiros>([=](FrmLocCHTerceiros& list) { pick(list, lancamento); });
        press(Qt::Key_L, Qt::AltModifier);
        activate(form);
    }
    /// The same of a cheque that can't be had: the list stays, and is left with nothing chosen.
    void findInVain(QWidget& form, const char* lancamento, const QString& told,
                    const std::function<void()>& meanwhile = {}) {
        whileModal<FrmLocCHTerceiros>([=, this](FrmLocCHTerceiros& list) {
            expectMessage("Mensagem", told);
            pick(list, lancamento, meanwhile);
            EXPECT_TRUE(list.isVisible());
            EXPECT_FALSE(Mirtal::registroEscolhido);
            press(Qt::Key_Escape);
        });
        press(Qt::Key_L, Qt::AltModifier);
        activate(form);
    }
    static QString gone(const char* lancamento) {
        return QString(
                   "O cheque do lançamento %1 não está mais cadastrado: foi excluído ou baixado "
                   "depois de listado.")
            .arg(lancamento);
    }
    static QString tooHigh(const char* lancamento) {
        return QString("O lançamento %1 não pode ser mostrado na entrada de cheques, que só mostra "
                       "lançamentos até 32767.")
            .arg(lancamento);
    }

    /// What stands in the boxes that both windows have, and where the cheques are.
    static std::vector<std::string> standing(const QWidget& form) {
        std::vector<std::string> all;
        for (const char* box : {"txtlancamento", "txtnumero", "txtdata", "txtvalor"})
            all.push_back(text(form, box).toStdString());
        all.push_back(data().rsCheques.Filter());
        all.push_back(data().rsCheques.EOF() ? "EOF" : data().rsCheques["lancamento"].text());
        return all;
    }
    static std::vector<std::string> stored() {
        return rows("select lancamento, cliente, numero, bompara, valor, autorizou from cheques "
                    "order by lancamento");
    }
    static constexpr char kTyped[] = "3|2|000777|31/03/2026|25,00|Gerente";
};
INSTANTIATE_TEST_SUITE_P(, PickedCheque, everywhere(), keptName);

// The client's limit isn't passed, so that only his cheques stay at hand after the entry.
TEST_P(PickedCheque, AfterAnEntryAnotherClientsChequeIsFoundAndChanged) {
    auto& entry = open<FrmLancarCheques>();
    enterACheque(entry, "ana");
    EXPECT_EQ(data().rsCheques.Filter(), "cliente=2");
    find(entry, "2");
    EXPECT_EQ(data().rsCheques.Filter(), "") << "it would hide the cheque";
    EXPECT_EQ(text(entry, "txtlancamento"), "2");
    EXPECT_EQ(text(entry, "txtNome"), "Carla Reis");
    enter(entry, "txtautorizou");
    type("Rita");
    press(Qt::Key_Return);
    press(Qt::Key_Return);
    press(Qt::Key_Return);
    EXPECT_THAT(stored(), ElementsAre("1|2|000101|01/04/2026|10,00|",
                                      "2|3|000102|01/04/2026|10,00|Rita", kTyped));
}

TEST_P(PickedCheque, TheFilterStaysWhereItDoesntHideTheCheque) {
    auto& entry = open<FrmLancarCheques>();
    enterACheque(entry, "ana");
    find(entry, "1");
    EXPECT_EQ(text(entry, "txtlancamento"), "1");
    EXPECT_EQ(data().rsCheques.Filter(), "cliente=2");
}

TEST_P(PickedCheque, AfterAnEntryAnotherClientsChequeIsRenegotiated) {
    auto& entry = open<FrmLancarCheques>();
    enterACheque(entry, "ana");
    press(Qt::Key_Escape);
    auto& form = open<FrmRenegociar>();
    find(form, "2");
    EXPECT_EQ(text(form, "txtnome"), "Carla Reis");
    renegotiate();
    EXPECT_THAT(stored(), ElementsAre("1|2|000101|01/04/2026|10,00|",
                                      "2|3|000102|05/05/2026|10,00|", kTyped));
}

TEST_P(PickedCheque, OneThatIsGoneMeanwhileIsToldAndAllStaysAsItWas) {
    auto& entry = open<FrmLancarCheques>();
    enterACheque(entry, "ana");
    click(entry, "btnNavegacao", 3);
    EXPECT_EQ(text(entry, "txtlancamento"), "3");
    const auto before = standing(entry);
    findInVain(entry, "2", gone("2"), [this] { deletedElsewhere("2"); });
    EXPECT_EQ(standing(entry), before);
    EXPECT_EQ(data().rsCheques.Filter(), "cliente=2");
    EXPECT_THAT(stored(), ElementsAre("1|2|000101|01/04/2026|10,00|", kTyped));
    press(Qt::Key_Escape);

    auto& form = open<FrmRenegociar>();
    findInVain(form, "1", gone("1"), [this] { deletedElsewhere("1"); });
    EXPECT_EQ(text(form, "txtlancamento"), "");
    EXPECT_FALSE(control(form, "txttaxa_juros").isEnabled());
    find(form, "3");
    EXPECT_EQ(text(form, "txtlancamento"), "3");
}

TEST_P(PickedCheque, AnEntryNumberAbove32767IsToldAndAllStaysAsItWas) {
    Row beyond = cheque(kCarla, "000103");
    beyond.push_back({"lancamento", number(32768)});
    given("cheques", {beyond});
    auto& entry = open<FrmLancarCheques>();
    click(entry, "btnNavegacao", 0);
    const auto before = standing(entry);
    findInVain(entry, "32768", tooHigh("32768"));
    EXPECT_EQ(standing(entry), before);
    press(Qt::Key_Escape);
    auto& form = open<FrmRenegociar>();
    findInVain(form, "32768", tooHigh("32768"));
    EXPECT_EQ(text(form, "txtlancamento"), "");
}

// A supplier's cheque is listed, but suppliers aren't among the clients.
TEST_P(PickedCheque, OneOfNoClientIsShownWithoutANameAndNotSavedUnderAnother) {
    given("cliente_fornecedor", {
                                    {{"nome", words("Atacado")}, {"tipo", yes(false)}}
    });
    given("cheques", {cheque(4, "000103")});
    auto& entry = open<FrmLancarCheques>();
    click(entry, "btnNavegacao", 0);
    EXPECT_EQ(text(entry, "txtNome"), "Ana Costa");
    find(entry, "3");
    EXPECT_EQ(text(entry, "txtlancamento"), "3");
    EXPECT_EQ(text(entry, "txtNome"), "");
    expectMessage("Advertência", "É necessário preencher o nome do cliente.");
    press(Qt::Key_S, Qt::AltModifier);
    press(Qt::Key_Escape);
    auto& form = open<FrmRenegociar>();
    find(form, "3");
    EXPECT_EQ(text(form, "txtlancamento"), "3");
    EXPECT_EQ(text(form, "txtnome"), "");
}

// ---- the entry of cheques after a renegotiation

TEST_P(PickedCheque, TheEntryOpensNewAfterARenegotiation) {
    auto& form = open<FrmRenegociar>();
    find(form, "2");
    EXPECT_FALSE(FrmLancarCheques::instance().isLoaded()) << "nobody has opened it";
    renegotiate();
    press(Qt::Key_Escape);
    EXPECT_THAT(stored(), Contains("2|3|000102|05/05/2026|10,00|"));
    given("cliente_fornecedor", {client("Dora Lima")});

    auto& entry = open<FrmLancarCheques>();
    const QDate today = QDate::currentDate();
    EXPECT_EQ(text(entry, "txtlancamento"), "");
    EXPECT_EQ(text(entry, "txtnumero"), "");
    EXPECT_EQ(text(entry, "txtdata"), formatDate(today));
    EXPECT_EQ(text(entry, "txtbompara"), formatDate(today.addDays(30)));
    enterACheque(entry, "dora"); // the lists are made anew too
    EXPECT_THAT(stored(),
                ElementsAre("1|2|000101|01/04/2026|10,00|", "2|3|000102|05/05/2026|10,00|",
                            "3|4|000777|31/03/2026|25,00|Gerente"))
        << "a new cheque, and the renegotiated one keeps its date";
}

TEST_P(PickedCheque, TheEntryOpensNewAfterAPickThatWasntHad) {
    auto& form = open<FrmRenegociar>();
    findInVain(form, "2", gone("2"), [this] { deletedElsewhere("2"); });
    press(Qt::Key_Escape);
    EXPECT_FALSE(FrmLancarCheques::instance().isLoaded());
    EXPECT_EQ(text(open<FrmLancarCheques>(), "txtlancamento"), "");
    EXPECT_THAT(stored(), Not(Contains(testing::StartsWith("2|"))));
}

} // namespace
