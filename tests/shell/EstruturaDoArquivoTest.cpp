// Files that lack a field, a table or a numbered key: the window concerned says so by name, works
// on without it or refuses to open, and the other windows go on.
#include "cheques/FrmConsultaCH.h"
#include "cheques/FrmLancarCheques.h"
#include "collections/FrmLancasSFundos.h"
#include "collections/FrmRenegociar.h"
#include "controls/window/Failure.h"
#include "registers/frmBancos.h"
#include "registers/frmCliFor.h"
#include "reports/FrmFiltroRelat.h"
#include "schema/ShopSchema.h"
#include "schema/ShopUpgrade.h"
#include "shell/MDICheques.h"
#include "shell/Mirtal.h"
#include "shell/Programa.h"
#include "support/ChequeShop.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <set>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class OddFile : public Everywhere<ChequeShop> {
protected:
    void SetUp() override {
        ChequeShop::SetUp();
        setFailureHandler(&atenderFalha);
    }

    static auto column(jet::TableSpec& table, const char* name) {
        return std::ranges::find(table.columns, name, &jet::ColumnSpec::name);
    }
    /// Without this field of this table, or without the table where `field` is null.
    void remakeWithout(const std::string& table, const char* field) {
        remake([&](jet::TableSpec& made) {
            if (made.name != table)
                return;
            if (!field)
                return made.columns.clear();
            made.columns.erase(column(made, field));
            std::erase_if(made.indexes, [&](const jet::IndexSpec& index) {
                return index.columns.front().name == field;
            });
        });
        refill();
    }
    void remakeUnnumbered(const std::string& table) {
        remake([&](jet::TableSpec& made) {
            if (made.name == table)
                made.columns.front().autonumber = false;
        });
        refill();
    }
    /// Clients and banks, where the tables are as they should be.
    void refill() {
        if (data().rsCliente.State() == ado::State::Open && data().rsCliente["codigo"].isNumbered())
            given("cliente_fornecedor", {client("Ana Costa", 100)});
        if (data().rsBancos.State() == ado::State::Open && data().rsBancos["codigo"].isNumbered())
            given("bancos", {
                                {{"cod_banco", number(237)}, {"nome", words("Agrobanco")}}
            });
    }

    static QString missing(const char* field, const char* table) {
        return QString("Falta o campo \"%1\" na tabela \"%2\" da base de dados. Peça a quem cuida "
                       "dela que o acrescente.")
            .arg(field, table);
    }
    void expectDoneWithout(const QString& missing) {
        expectMessage("Advertência",
                      missing +
                          "\nO que falta não é mostrado nem gravado; o resto da janela funciona.");
    }
    /// What the start says; of a server what the opening has met.
    void expectTold(const QString& missing, const QString& met = {}) {
        if (onServer())
            expectMessage("Mensagem",
                          met + "\n\nAs janelas que precisam disso não abrem ou o deixam de fora; "
                                "as outras funcionam. Peça a quem cuida da base de dados que o "
                                "acrescente.");
        else
            expectMessage(
                "Mensagem",
                "Na base de dados falta o que esta versão pede: " + missing +
                    ".\n\nAs janelas que precisam disso não abrem ou o deixam de fora; as "
                    "outras funcionam. Para acrescentá-lo, feche o programa em todas as "
                    "estações e dê o comando\nvaltrino-mdb upgrade \"" +
                    QString::fromStdString(shop().file().string()) + '"');
        MDICheques::instance().avisar();
    }
    template <class Window>
    void expectRefusal(const QString& why) {
        expectMessage("Mensagem", why);
        Window::instance().show();
        EXPECT_FALSE(Window::instance().isVisible());
    }
    static QString useless(const QString& why) {
        return "Esta janela não pode ser usada. " + why +
               " As outras janelas continuam funcionando.";
    }
    void expectUnnumbered(const QString& key) {
        expectMessage("Mensagem",
                      "O registro novo não foi gravado: a base de dados não numera o campo \"" +
                          key +
                          "\", e sem número ninguém o encontraria. Peça a quem cuida dela que faça "
                          "desse campo uma numeração automática.");
    }
    /// Types a received or bounced cheque, field by field with Enter.
    static void typeInto(QWidget& form, const char* first,
                         std::initializer_list<const char*> fields) {
        enter(form, first);
        for (const char* field : fields) {
            type(field);
            press(Qt::Key_Return);
        }
    }
};

INSTANTIATE_TEST_SUITE_P(, OddFile, everywhere(), keptName);

TEST_P(OddFile, AClientIsKeptWithoutTheFieldThatIsMissing) {
    remakeWithout("cliente_fornecedor", "emailcli");
    expectDoneWithout(missing("emailcli", "cliente_fornecedor"));
    auto& form = open<frmCliFor>();
    EXPECT_FALSE(control(form, "txtEMailCli").isEnabled());
    EXPECT_TRUE(control(form, "txtBairro").isEnabled());
    EXPECT_EQ(text(form, "txtNome"), "Ana Costa");
    click(form, "cmdNovo");
    type("Davi Melo");
    for (int fields = 0; focus() != "txtLimiteDeCrédito" && fields < 30; ++fields)
        press(Qt::Key_Return);
    type("900");
    press(Qt::Key_Return);
    click(form, "cmdSalvar");
    EXPECT_THAT(rows("select nome, limite_credito from cliente_fornecedor order by codigo"),
                ElementsAre("Ana Costa|100,00", "Davi Melo|900,00"));
}

// A field that the window shows and dbconectar doesn't know as one that may be missing keeps the
// window from opening; one of the table that no window shows isn't told of.
TEST_P(OddFile, ClientsAreOpenedWithoutAnyFieldThatTheWindowCanDoWithout) {
    const std::set<std::string> needed = {"codigo", "nome", "tipo", "vender", "limite_credito"};
    const auto table =
        std::ranges::find(shop::tables(), "cliente_fornecedor", &jet::TableSpec::name);
    for (const jet::ColumnSpec& column : table->columns) {
        if (needed.contains(column.name))
            continue;
        remakeWithout(table->name, column.name.c_str());
        expectDoneWithout(missing(column.name.c_str(), "cliente_fornecedor"));
        auto& form = open<frmCliFor>();
        EXPECT_EQ(text(form, "txtNome"), "Ana Costa") << column.name;
        form.unload();
    }
}

TEST_P(OddFile, AChequeIsEnteredWithoutTheFieldThatIsMissing) {
    remakeWithout("cheques", "autorizou");
    expectDoneWithout(missing("autorizou", "cheques"));
    auto& form = open<FrmLancarCheques>();
    EXPECT_FALSE(control(form, "txtautorizou").isEnabled());
    typeInto(form, "txtNome",
             {"Ana", "agro", "0042", "000777", "01032026", "31032026", "50", "nada consta"});
    click(form, "CmdIncluir");
    EXPECT_THAT(rows("select agencia, numero, valor, observacao from cheques"),
                ElementsAre("0042|000777|50,00|nada consta"));
    click(form, "btnNavegacao", 0);
    EXPECT_EQ(text(form, "txtnumero"), "000777");
}

TEST_P(OddFile, ABouncedChequeIsCopiedFromATableWithoutAgencies) {
    remakeWithout("cheques", "agencia");
    given("cheques", {
                         {{"cliente", number(1)},
                          {"banco", number(1)},
                          {"numero", words("000777")},
                          {"valor", money(50)}}
    });
    auto& form = open<FrmLancasSFundos>();
    click(form, "CmdBuscar");
    type("000777");
    press(Qt::Key_Return);
    EXPECT_EQ(text(form, "txtcliente"), "Ana Costa");
    EXPECT_EQ(text(form, "txtagencia"), "");
    type(form, "txtEmpresa", "Loja Dois");
    click(form, "CmdIncluir");
    EXPECT_THAT(rows("select numero, valor, empresa from semfundos"),
                ElementsAre("000777|50,00|Loja Dois"));
}

TEST_P(OddFile, AWindowOfNoUseWithoutAFieldRefusesAlone) {
    remakeWithout("cheques", "numero");
    const QString why = useless(missing("numero", "cheques"));
    expectRefusal<FrmLancarCheques>(why);
    expectRefusal<FrmRenegociar>(why);
    Mirtal::modo = "relch";
    expectRefusal<FrmFiltroRelat>(why);
    EXPECT_EQ(text(open<frmBancos>(), "txtNome"), "Agrobanco");
    EXPECT_TRUE(open<FrmLancasSFundos>().isVisible());
}

TEST_P(OddFile, AMissingTableIsToldAndTheOthersAreUsed) {
    remakeWithout("semfundos", nullptr);
    const QString why = "Não existe a tabela \"semfundos\".";
    expectTold("a tabela \"semfundos\"", why);
    expectRefusal<FrmLancasSFundos>(why);
    expectRefusal<FrmConsultaCH>(why);
    auto& form = open<FrmLancarCheques>();
    typeInto(form, "txtNome", {"Ana", "agro", "0042", "000777", "01032026", "31032026", "50"});
    click(form, "CmdIncluir");
    EXPECT_THAT(rows("select numero from cheques"), ElementsAre("000777"));
}

TEST_P(OddFile, ClientsThatCantBeToldFromSuppliersAreNotShown) {
    remakeWithout("cliente_fornecedor", "tipo");
    const QString why = "Não existe o campo \"tipo\".";
    expectTold("o campo \"tipo\" da tabela \"cliente_fornecedor\"", why);
    expectRefusal<frmCliFor>(why);
    EXPECT_EQ(text(open<frmBancos>(), "txtNome"), "Agrobanco");
}

TEST_P(OddFile, TheStartTellsAllThatAnEarlierVersionLacksUntilItIsThere) {
    if (onServer())
        GTEST_SKIP() << kByTheFile;
    remake([](jet::TableSpec& made) {
        if (made.name == "cheques")
            for (const char* field : {"bompara", "descontar"}) {
                made.columns.erase(column(made, field));
                std::erase_if(made.indexes, [&](const jet::IndexSpec& index) {
                    return index.columns.front().name == field;
                });
            }
        if (made.name == "cliente_fornecedor")
            made.columns.erase(column(made, "emailcli"));
        if (made.name == "bancos")
            made.indexes.clear(); // of which nobody is told
    });
    expectTold("o campo \"emailcli\" da tabela \"cliente_fornecedor\"; "
               "os campos \"bompara\", \"descontar\" da tabela \"cheques\"");
    dbconectar::descartar();
    {
        jet::Database database(shop().file());
        shop::upgrade(database, shop::missingIn(database));
    }
    data().abrir();
    EXPECT_THAT(data().faltas(), IsEmpty());
    refill();
    MDICheques::instance().avisar();
    auto& form = open<FrmLancarCheques>();
    typeInto(form, "txtNome", {"Ana", "agro", "0042", "000777", "01032026", "31032026", "50"});
    click(form, "CmdIncluir");
    EXPECT_THAT(rows("select numero, bompara, descontar from cheques"), testing::SizeIs(1));
}

TEST_P(OddFile, ACopiedChequeIsNeverCutToTheOtherTablesWidths) {
    remake([](jet::TableSpec& made) {
        if (made.name == "semfundos")
            for (const auto& [name, width] :
                 {std::pair("agencia", 3), std::pair("numero", 6), std::pair("observacao", 5)})
                column(made, name)->width = static_cast<std::uint16_t>(width);
    });
    refill();
    given("cheques", {
                         {{"cliente", number(1)},
                          {"banco", number(1)},
                          {"agencia", words("0042")},
                          {"numero", words("12345678")},
                          {"observacao", words("voltou duas vezes")},
                          {"valor", money(50)}}
    });
    auto& form = open<FrmLancasSFundos>();
    click(form, "CmdBuscar");
    type("12345678");
    press(Qt::Key_Return);
    EXPECT_EQ(text(form, "txtagencia"), "0042");
    EXPECT_EQ(text(form, "txtnumero"), "12345678");
    EXPECT_EQ(text(form, "txtobservacao"), "voltou duas vezes");
    type(form, "txtEmpresa", "Loja Dois");
    const struct {
        const char* box;
        const char* field;
        const char* widths;
        const char* shorter;
    } refusals[] = {
        {"txtnumero",     "Nº Cheque",    "6 caracteres; o texto informado tem 8",  "345678"},
        {"txtobservacao", "Observações", "5 caracteres; o texto informado tem 17", "2x"    },
        {"txtagencia",    "Agência",      "3 caracteres; o texto informado tem 4",  "042"   },
    };
    for (const auto& [box, field, widths, shorter] : refusals) {
        expectMessage("Advertência",
                      QString("O campo \"%1\" aceita no máximo %2.").arg(field, widths));
        click(form, "CmdIncluir");
        EXPECT_EQ(focus(), box);
        EXPECT_THAT(rows("select * from semfundos"), IsEmpty());
        press(Qt::Key_A, Qt::ControlModifier);
        type(shorter);
    }
    click(form, "CmdIncluir");
    EXPECT_THAT(rows("select agencia, numero, observacao, valor from semfundos"),
                ElementsAre("042|345678|2x|50,00"));
    expectRoom(form, {
                         {"txtagencia",    3},
                         {"txtnumero",     6},
                         {"txtobservacao", 5}
    });
}

TEST_P(OddFile, AChequeThatTheFileWouldNotNumberStaysOnTheScreen) {
    remakeUnnumbered("cheques");
    auto& form = open<FrmLancarCheques>();
    typeInto(form, "txtNome", {"Ana", "agro", "0042", "000777", "01032026", "31032026", "50"});
    expectUnnumbered("lancamento");
    click(form, "CmdIncluir");
    EXPECT_EQ(text(form, "txtnumero"), "000777");
    EXPECT_EQ(text(form, "txtvalor"), "50,00");
    EXPECT_THAT(rows("select * from cheques"), IsEmpty());
    EXPECT_FALSE(data().Automacao.inTransaction());

    given("cheques", {
                         {{"lancamento", number(7)},
                          {"cliente", number(1)},
                          {"banco", number(1)},
                          {"numero", words("000700")},
                          {"valor", money(10)}}
    });
    click(form, "btnNavegacao", 0);
    type(form, "txtobservacao", "do outro sistema");
    click(form, "CmdIncluir");
    EXPECT_THAT(rows("select lancamento, observacao from cheques"),
                ElementsAre("7|do outro sistema"));
}

TEST_P(OddFile, NoTableWithoutNumbersTakesNewRecords) {
    remakeUnnumbered("bancos");
    auto& banks = open<frmBancos>();
    typeInto(banks, "txtCodigo", {"104", "Banco Norte"});
    expectUnnumbered("codigo");
    click(banks, "cmdSalvar");
    EXPECT_EQ(text(banks, "txtNome"), "Banco Norte");
    EXPECT_THAT(rows("select * from bancos"), IsEmpty());

    remakeUnnumbered("cliente_fornecedor");
    auto& clients = open<frmCliFor>();
    click(clients, "cmdNovo");
    type("Davi Melo");
    type(clients, "txtLimiteDeCrédito", "900");
    expectUnnumbered("codigo");
    click(clients, "cmdSalvar");
    EXPECT_EQ(text(clients, "txtNome"), "Davi Melo");
    EXPECT_THAT(rows("select * from cliente_fornecedor"), IsEmpty());

    remakeUnnumbered("semfundos");
    auto& bounced = open<FrmLancasSFundos>();
    typeInto(bounced, "txtcliente", {"Ana", "agro", "0042", "900", "01032026", "75", "Loja Dois"});
    expectUnnumbered("lancamento");
    click(bounced, "CmdIncluir");
    EXPECT_EQ(text(bounced, "txtnumero"), "900");
    EXPECT_THAT(rows("select * from semfundos"), IsEmpty());
}

} // namespace
