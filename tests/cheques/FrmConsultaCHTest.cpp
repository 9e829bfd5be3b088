// The consultation: what it finds of a client, and what it opens.
#include "cheques/FrmConsultaCH.h"

#include "collections/FrmLancasSFundos.h"
#include "controls/box/DropDownList.h"
#include "controls/box/ListView.h"
#include "shell/Mirtal.h"
#include "support/CpuTimer.h"
#include "support/FormChecks.h"
#include "support/ShopTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// Over a shop of three clients and two banks; Ana has cheques of both kinds, Bento only received
/// ones, Carla only bounced ones and no document.
class Consultation : public Everywhere<ShopTest> {
protected:
    void SetUp() override {
        ShopTest::SetUp();
        given("cliente_fornecedor",
              {client("Bento Dias", words("11122233344")),
               client("Ana Costa", words("52998224725")), client("Carla Reis", {})});
        given("bancos", {
                            {{"cod_banco", number(104)}, {"nome", words("Banco Norte")}},
                            {{"cod_banco", number(237)}, {"nome", words("Agrobanco")}  }
        });
        given("cheques",
              {received(kAna, 10'005'000), received(kBento, 700'000), received(kAna, 2'000'000)});
        given("semfundos", {bounced(kAna, 1, "900", 12'345'600, "Loja Um"),
                            bounced(kCarla, 2, "901", 500'000, "Loja Dois"),
                            bounced(kAna, 2, "902", 5'000, "")});
    }

    // The codes that the rows above get.
    static constexpr int kBento = 1;
    static constexpr int kAna = 2;
    static constexpr int kCarla = 3;

    static Row client(const char* name, const jet::Value& document) {
        return {
            {"nome",    words(name)},
            {"tipo",    yes(true)  },
            {"cgc_cpf", document   }
        };
    }
    static Row received(int clientCode, std::int64_t tenThousandths) {
        return {
            {"cliente", number(clientCode)                       },
            {"banco",   number(1)                                },
            {"numero",  words("1")                               },
            {"valor",   jet::Value(jet::Currency{tenThousandths})}
        };
    }
    static Row bounced(int clientCode, int bankCode, const char* numero,
                       std::int64_t tenThousandths, const char* company) {
        // clang-format off
        return {
            {"cliente", number(clientCode)},
            {"banco",   number(bankCode)},
            {"numero",  words(numero)},
            {"valor",   jet::Value(jet::Currency{tenThousandths})},
            {"data",    day(2026, 3, 1)},
            {"empresa", words(company)}
        };
        // clang-format on
    }

    static ListView& list(const QWidget& form) { return control<ListView>(form, "Lstcheques"); }
    static std::vector<std::string> listed(const QWidget& form) {
        std::vector<std::string> lines;
        for (int row = 0; row < list(form).count(); ++row) {
            const ListItem& item = list(form).item(row);
            lines.push_back(
                (item.key + "|" + item.text + "|" + item.subItems.join('|')).toStdString());
        }
        return lines;
    }
    /// Name, document, count and total, as they stand.
    static std::string shown(const QWidget& form) {
        return (text(form, "txtNome") + "|" + text(form, "txtCpf") + "|" +
                text(form, "txtcheques") + "|" + text(form, "txttotal"))
            .toStdString();
    }
    /// Types the beginning of a name and leaves it.
    static void search(QWidget& form, const char* name) {
        type(form, "txtNome", name);
        press(Qt::Key_Return);
    }
    void expectNothing() {
        expectMessage("Pesquisar Cheques", "Nada consta a este cliente!", MessageIcon::information);
    }
    /// Announces that the bounced cheque of this key is opened, and closes it.
    void expectOpened(const char* key, int* opened) {
        whileModal<FrmLancasSFundos>([=](FrmLancasSFundos& form) {
            ++*opened;
            EXPECT_EQ(Mirtal::modo, "Consulta");
            EXPECT_EQ(text(form, "txtlancamento"), key);
            EXPECT_FALSE(control(form, "txtcliente").isEnabled());
            EXPECT_EQ(focus(), "CmdSair");
            press(Qt::Key_Return);
        });
    }
};

INSTANTIATE_TEST_SUITE_P(, Consultation, everywhere(), keptName);

// ---- as it opens

TEST_P(Consultation, SaysWhatItIs) {
    auto& form = open<FrmConsultaCH>();
    EXPECT_EQ(form.windowTitle(), "Consultar CPF");
    const struct {
        const char* control;
        const char* says;
    } texts[] = {
        {"Label1",  "Nome:"                           },
        {"Label2",  "CPF:"                            },
        {"Label3",  "Número de Cheques:"             },
        {"Label4",  "Total em R$:"                    },
        {"Label5",  "Relação de Cheques Sem Fundos:"},
        {"CmdNovo", "No&va Pesq."                     },
        {"CmdSair", "Sai&r"                           },
    };
    for (const auto& [name, says] : texts)
        EXPECT_EQ(text(form, name), says);
    EXPECT_EQ(control(form, "CmdNovo").toolTip(), "Novo Registro");
    const char* captions[] = {"", "Cheque", "Nome do Banco", "Valor ", "Empresa"};
    for (int column = 0; column < 5; ++column)
        EXPECT_EQ(list(form).columnCaption(column), captions[column]);
}

TEST_P(Consultation, OpensEmptyWithTheClientsByName) {
    auto& form = open<FrmConsultaCH>();
    const auto& clients = control<DropDownList>(form, "txtNome");
    ASSERT_EQ(clients.count(), 3);
    EXPECT_EQ(clients.itemText(0), "Ana Costa");
    EXPECT_EQ(clients.itemData(0), kAna);
    EXPECT_EQ(clients.itemText(2), "Carla Reis");
    EXPECT_EQ(shown(form), "|||");
    EXPECT_THAT(listed(form), IsEmpty());
    EXPECT_EQ(focus(), "txtNome");
}

// ---- the search

TEST_P(Consultation, ShowsWhatThereIsOfAClient) {
    auto& form = open<FrmConsultaCH>();
    search(form, "a");
    EXPECT_EQ(shown(form), "Ana Costa|52998224725|2|1.200,50");
    EXPECT_THAT(listed(form), ElementsAre("00000001|1|900|Banco Norte|1.234,56|Loja Um",
                                          "00000003|3|902|Agrobanco|0,50|"));
    EXPECT_FALSE(list(form).item(0).icon.isNull());
    EXPECT_EQ(focus(), "Lstcheques");
    EXPECT_EQ(data().rsCheques.Filter(), "");
    EXPECT_EQ(data().rsSemFundos.Filter(), "cliente=2") << "stays";
}

TEST_P(Consultation, AmountsStandAtTheRight) {
    auto& form = open<FrmConsultaCH>();
    search(form, "Ana");
    QCoreApplication::processEvents();
    EXPECT_TRUE(list(form).model()->index(0, 3).data(Qt::TextAlignmentRole).value<Qt::Alignment>() &
                Qt::AlignRight);
}

TEST_P(Consultation, OfAClientWithoutReceivedChequesTheTotalIsZero) {
    auto& form = open<FrmConsultaCH>();
    search(form, "Carla");
    EXPECT_EQ(shown(form), "Carla Reis||0|0,00") << "without a document the box is empty";
    EXPECT_THAT(listed(form), ElementsAre("00000002|2|901|Agrobanco|50,00|Loja Dois"));
}

TEST_P(Consultation, AClientWithoutADocumentDoesNotShowTheOneBefore) {
    auto& form = open<FrmConsultaCH>();
    search(form, "Ana");
    search(form, "Carla");
    EXPECT_EQ(text(form, "txtCpf"), "");
}

TEST_P(Consultation, EachSearchListsItsOwnClientOnce) {
    auto& form = open<FrmConsultaCH>();
    search(form, "Ana");
    search(form, "Ana");
    EXPECT_THAT(listed(form), testing::SizeIs(2));
    search(form, "Carla");
    EXPECT_THAT(listed(form), ElementsAre("00000002|2|901|Agrobanco|50,00|Loja Dois"));
}

TEST_P(Consultation, WithoutABouncedChequeNothingIsKnownOfAClient) {
    auto& form = open<FrmConsultaCH>();
    expectNothing();
    search(form, "Bento");
    EXPECT_EQ(shown(form), "||0|0,00") << "though he has received cheques";
    EXPECT_EQ(control<DropDownList>(form, "txtNome").listIndex(), -1);
    EXPECT_THAT(listed(form), IsEmpty());
    EXPECT_EQ(focus(), "txtNome");
    EXPECT_EQ(data().rsCheques.Filter(), "");
    search(form, "Ana");
    EXPECT_EQ(shown(form), "Ana Costa|52998224725|2|1.200,50");
}

TEST_P(Consultation, LeavingTheNameWithoutAClientChangesNothing) {
    auto& form = open<FrmConsultaCH>();
    search(form, "Ana");
    const auto before = listed(form);
    search(form, "Ninguem");
    EXPECT_EQ(shown(form), "Ninguem|52998224725|2|1.200,50");
    EXPECT_EQ(listed(form), before);
    EXPECT_EQ(focus(), "Lstcheques");
}

TEST_P(Consultation, ABankThatIsGoneHasAnEmptyName) {
    given("semfundos", {bounced(kCarla, 9, "903", 10'000, "Loja Um")});
    auto& form = open<FrmConsultaCH>();
    search(form, "Carla");
    EXPECT_THAT(listed(form), ElementsAre("00000002|2|901|Agrobanco|50,00|Loja Dois",
                                          "00000004|4|903||1,00|Loja Um"));
}

TEST_P(Consultation, AllReceivedChequesCountWhateverAnotherWindowFiltered) {
    data().rsCheques.setFilter("cliente=1");
    data().rsSemFundos.setFilter("cliente=3");
    auto& form = open<FrmConsultaCH>();
    search(form, "Ana");
    EXPECT_EQ(shown(form), "Ana Costa|52998224725|2|1.200,50");
    EXPECT_EQ(list(form).count(), 2);
}

TEST_P(Consultation, ALongEntryNumberIsNotCut) {
    Row row = bounced(kBento, 1, "904", 10'000, "");
    row.push_back({"lancamento", number(123'456'789)});
    given("semfundos", {row});
    auto& form = open<FrmConsultaCH>();
    search(form, "Bento");
    EXPECT_EQ(list(form).item(0).key, "123456789");
}

TEST_P(Consultation, ATotalBeyondTheLargestAmountEndsTheSearch) {
    given("cheques", {received(kAna, std::numeric_limits<std::int64_t>::max())});
    auto& form = open<FrmConsultaCH>();
    expectFailure("O total dos cheques do cliente passa do maior valor possível.");
    search(form, "Ana");
}

// ---- opening a bounced cheque

TEST_P(Consultation, TheSecondClickOpensTheChequeAndEachFurtherOneAgain) {
    auto& form = open<FrmConsultaCH>();
    search(form, "Ana");
    clickRow(form, "Lstcheques", 1);
    EXPECT_EQ(Mirtal::modo, "") << "the first click only selects";
    EXPECT_FALSE(FrmLancasSFundos::instance().isLoaded());
    int opened = 0;
    for (int times = 1; times <= 2; ++times) {
        expectOpened("3", &opened);
        clickRow(form, "Lstcheques", 1);
        EXPECT_EQ(opened, times);
        EXPECT_EQ(Mirtal::modo, "") << "what it was before the cheque was opened";
    }
    EXPECT_TRUE(form.isVisible());
    EXPECT_EQ(shown(form), "Ana Costa|52998224725|2|1.200,50");
}

TEST_P(Consultation, AClickOnAnotherRowBeginsAnew) {
    auto& form = open<FrmConsultaCH>();
    search(form, "Ana");
    for (const int row : {0, 1, 0})
        clickRow(form, "Lstcheques", row);
    EXPECT_FALSE(FrmLancasSFundos::instance().isLoaded());
    int opened = 0;
    expectOpened("1", &opened);
    clickRow(form, "Lstcheques", 0);
    EXPECT_EQ(opened, 1);
}

TEST_P(Consultation, ANewSearchRemembersTheClick) {
    auto& form = open<FrmConsultaCH>();
    search(form, "Ana");
    clickRow(form, "Lstcheques", 0);
    click(form, "CmdNovo");
    search(form, "Ana");
    int opened = 0;
    expectOpened("1", &opened);
    clickRow(form, "Lstcheques", 0);
    EXPECT_EQ(opened, 1);
}

TEST_P(Consultation, OpensByKeyboardAlone) {
    auto& form = open<FrmConsultaCH>();
    type("ana"); // the name has the focus
    press(Qt::Key_Return);
    EXPECT_EQ(focus(), "Lstcheques");
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    int opened = 0;
    expectOpened("3", &opened);
    press(Qt::Key_Return);
    EXPECT_EQ(opened, 1);
    EXPECT_TRUE(form.isVisible());
}

TEST_P(Consultation, OpensAChequeWhoseBankIsGone) {
    given("semfundos", {bounced(kBento, 9, "904", 10'000, "")});
    auto& form = open<FrmConsultaCH>();
    search(form, "Bento");
    clickRow(form, "Lstcheques", 0);
    int opened = 0;
    expectOpened("4", &opened);
    clickRow(form, "Lstcheques", 0);
    EXPECT_EQ(opened, 1);
}

TEST_P(Consultation, AChequeDeletedMeanwhileIsNotOpened) {
    auto& form = open<FrmConsultaCH>();
    search(form, "Carla");
    clickRow(form, "Lstcheques", 0);
    Mirtal::apagarPorChave("SemFundos", "lancamento", "2", false);
    Mirtal::modo = "relch";
    expectMessage("Mensagem", "O cheque do lançamento 2 não está mais cadastrado: foi excluído "
                              "depois de listado.");
    clickRow(form, "Lstcheques", 0);
    EXPECT_FALSE(FrmLancasSFundos::instance().isLoaded());
    EXPECT_EQ(Mirtal::modo, "relch");
}

TEST_P(Consultation, OnlyReads) {
    const char* tables[] = {"select * from cheques", "select * from semfundos",
                            "select * from cliente_fornecedor", "select * from bancos"};
    std::vector<std::vector<std::string>> before;
    for (const char* table : tables)
        before.push_back(rows(table));
    auto& form = open<FrmConsultaCH>();
    search(form, "Ana");
    clickRow(form, "Lstcheques", 0);
    int opened = 0;
    expectOpened("1", &opened);
    clickRow(form, "Lstcheques", 0);
    click(form, "CmdSair");
    std::vector<std::vector<std::string>> after;
    for (const char* table : tables)
        after.push_back(rows(table));
    EXPECT_EQ(after, before);
}

// ---- commands, closing, looks

TEST_P(Consultation, NewSearchClearsEverything) {
    auto& form = open<FrmConsultaCH>();
    search(form, "Ana");
    press(Qt::Key_V, Qt::AltModifier);
    EXPECT_EQ(shown(form), "||0|0,00");
    EXPECT_THAT(listed(form), IsEmpty());
    EXPECT_EQ(focus(), "txtNome");
}

TEST_P(Consultation, CloseAndEscUnload) {
    click(open<FrmConsultaCH>(), "CmdSair");
    EXPECT_FALSE(FrmConsultaCH::instance().isLoaded());
    auto& form = open<FrmConsultaCH>();
    Mirtal::modo = "Consulta";
    Mirtal::mensagem("algo");
    press(Qt::Key_Escape);
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(Mirtal::modo, "Consulta");
    EXPECT_EQ(prompt(), "");
}

TEST_P(Consultation, IsAccessibleAndCutsNoText) {
    auto& form = open<FrmConsultaCH>();
    search(form, "Ana");
    EXPECT_EQ(faultsOf(form), QStringList());
}

// ---- many cheques

class ConsultationOfMany : public Consultation {
protected:
    static void givenReceived(int client, int count) {
        ado::Recordset& rs = data().rsCheques;
        ado::Transaction many(data().Automacao);
        for (int i = 0; i < count; ++i) {
            rs.AddNew();
            rs["cliente"] = client;
            rs["valor"] = jet::Currency{10'000};
            rs.Update();
        }
        many.commit();
        rs.Requery();
    }
};

INSTANTIATE_TEST_SUITE_P(, ConsultationOfMany, testing::Values(Kept(jet::Version::jet4)), keptName);

TEST_P(ConsultationOfMany, CountsAndSumsWithSixteenBitsAtTheCostOfTheClientsOwn) {
    givenReceived(kCarla, 32'767);
    auto& form = open<FrmConsultaCH>();
    CpuTimer timer;
    search(form, "Carla");
    const double all = timer.milliseconds();
    EXPECT_EQ(shown(form), "Carla Reis||32767|32.767,00");
    enter(form, "txtNome");
    timer.restart();
    search(form, "Ana");
    EXPECT_LT(timer.milliseconds(), all / 4) << "what the table holds of others costs nothing";
    EXPECT_EQ(text(form, "txtcheques"), "2");

    givenReceived(kCarla, 1);
    expectFailure("O cliente tem 32768 cheques");
    search(form, "Carla");
}

} // namespace
