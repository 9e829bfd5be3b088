// Amounts that the back-office keeps as other numbers than money: exact in every window where they
// fit, refused where they don't.
#include "cheques/FrmConsultaCH.h"
#include "cheques/FrmLancarCheques.h"
#include "collections/FrmLancasSFundos.h"
#include "collections/FrmLocCHTerceiros.h"
#include "collections/FrmRenegociar.h"
#include "controls/box/ListView.h"
#include "controls/window/Failure.h"
#include "registers/frmCliFor.h"
#include "reports/FonteDeCheques.h"
#include "reports/LayoutDoRelatorio.h"
#include "shell/Mirtal.h"
#include "shell/Programa.h"
#include "support/ChequeShop.h"

#include <gmock/gmock.h>

namespace {

using jet::ColumnType;
using testing::ElementsAre;
using testing::IsEmpty;

struct KeptMoney {
    const char* name;
    jet::Version version;
    ColumnType type;
    const char* typed;
    const char* shown;
    const char* twice;
    const char* refused; ///< what doesn't fit
    const char* reason;
};

constexpr char kSingle[] = "um número de até sete algarismos";
constexpr char kReal[] = "um número de até quinze algarismos";
constexpr char kDecimal[] = "um número de até 9 algarismos, 2 deles depois da vírgula";
constexpr char kWhole[] = "um número inteiro";

constexpr KeptMoney kKeptMoney[] = {
    {"single3",  jet::Version::jet3, ColumnType::single,      "436,88", "436,88", "873,76",
     "1.234.567,89",                                                                                  kSingle },
    {"single4",  jet::Version::jet4, ColumnType::single,      "436,88", "436,88", "873,76",
     "1.234.567,89",                                                                                  kSingle },
    {"double3",  jet::Version::jet3, ColumnType::real,        "436,88", "436,88", "873,76",
     "92.233.720.368.547,01",                                                                         kReal   },
    {"double4",  jet::Version::jet4, ColumnType::real,        "436,88", "436,88", "873,76",
     "92.233.720.368.547,01",                                                                         kReal   },
    {"long3",    jet::Version::jet3, ColumnType::longInteger, "436",    "436,00", "872,00", "436,88",
     kWhole                                                                                                   },
    {"long4",    jet::Version::jet4, ColumnType::longInteger, "436",    "436,00", "872,00", "436,88",
     kWhole                                                                                                   },
    {"decimal4", jet::Version::jet4, ColumnType::numeric,     "436,88", "436,88", "873,76",
     "12.345.678,90",                                                                                 kDecimal},
};

class OddMoney : public ChequeShop, public testing::WithParamInterface<KeptMoney> {
protected:
    OddMoney() : ChequeShop(GetParam().version) {}
    void SetUp() override {
        // Without ChequeShop's rows: this shop has one client and one bank.
        ShopTest::SetUp(); // NOLINT(bugprone-parent-virtual-call)
        remake([](jet::TableSpec& table) {
            for (jet::ColumnSpec& column : table.columns)
                if (column.type == ColumnType::currency)
                    column.type = GetParam().type, column.precision = 9, column.scale = 2;
        });
        setFailureHandler(&atenderFalha);
        given("cliente_fornecedor", {client("Ana Costa", 800)});
        given("bancos", {
                            {{"cod_banco", number(237)}, {"nome", words("Agrobanco")}}
        });
    }

    /// Up to the value, where the focus stays.
    static void typeCheque(QWidget& form, const char* numero, const char* value) {
        enter(form, "txtNome");
        for (const char* field : {"Ana", "agro", "0042", numero, "01032026", "31032026"}) {
            type(field);
            press(Qt::Key_Return);
        }
        type(value);
    }
    void expectOverLimit(const char* total) {
        expectMessage("Limite de crédito",
                      QString("Cliente ultrapassou seu Limite de crédito!\r\rLimite  Crédito "
                              ":800,00\rTotal em Cheques:") +
                          total,
                      MessageIcon::critical);
    }
    void expectRefusal() {
        QString written = GetParam().refused;
        expectMessage("Advertência", QString("O campo \"Valor\" pede %1, e recebeu \"%2\".")
                                         .arg(GetParam().reason, written.remove('.')));
    }
    static std::vector<std::string> cheques() {
        return rows("select numero, valor from cheques order by lancamento");
    }
};

INSTANTIATE_TEST_SUITE_P(, OddMoney, testing::ValuesIn(kKeptMoney),
                         [](const auto& kept) { return std::string(kept.param.name); });

TEST_P(OddMoney, AChequeIsExactInEveryWindow) {
    auto& entry = open<FrmLancarCheques>();
    typeCheque(entry, "000001", GetParam().typed);
    press(Qt::Key_Return);
    click(entry, "CmdIncluir");
    typeCheque(entry, "000002", GetParam().typed);
    expectOverLimit(GetParam().twice);
    press(Qt::Key_Return);
    click(entry, "CmdIncluir");
    click(entry, "btnNavegacao", 3);
    EXPECT_EQ(text(entry, "txtnumero"), "000002");
    EXPECT_EQ(text(entry, "txtvalor"), GetParam().shown);
    entry.hide();

    Mirtal::modo = "localizarCH";
    auto& list = open<FrmLocCHTerceiros>();
    click(list, "chkdescontar");
    EXPECT_EQ(control<ListView>(list, "lstterceiros").text(1, 5), GetParam().shown);
    list.hide();

    const Relatorios::Escolha choice{
        .modo = "relch", .inicio = {2026, 1,  1 },
             .fim = {2026, 12, 31}
    };
    FonteDeCheques source(choice, data().Automacao);
    std::vector<ReportValue> values(static_cast<std::size_t>(source.columns().size()));
    Amount total;
    while (source.next(values) == NextRow::row)
        total = sum(total, std::get<Amount>(values[static_cast<std::size_t>(
                               source.columns().indexOf(LayoutDoRelatorio::kValor))]))
                    .value();
    EXPECT_EQ(formatMoneyExactly(total), GetParam().twice);

    ado::Recordset together;
    together.Open("select sum(valor) as soma from cheques", data().Automacao);
    EXPECT_EQ(formatMoneyExactly({together["soma"].currency().tenThousandths}), GetParam().twice);
}

TEST_P(OddMoney, ABouncedChequeIsCopiedAndConsulted) {
    auto& entry = open<FrmLancarCheques>();
    typeCheque(entry, "000001", GetParam().typed);
    press(Qt::Key_Return);
    click(entry, "CmdIncluir");
    entry.hide();
    auto& bounced = open<FrmLancasSFundos>();
    click(bounced, "CmdBuscar");
    type("000001");
    press(Qt::Key_Return);
    EXPECT_EQ(text(bounced, "txtvalor"), GetParam().shown);
    type(bounced, "txtEmpresa", "Loja Dois");
    click(bounced, "CmdIncluir");
    click(bounced, "btnNavegacao", 0);
    EXPECT_EQ(text(bounced, "txtvalor"), GetParam().shown);
    bounced.hide();
    auto& consultation = open<FrmConsultaCH>();
    type("Ana");
    press(Qt::Key_Return);
    EXPECT_EQ(text(consultation, "txttotal"), GetParam().shown);
    EXPECT_EQ(control<ListView>(consultation, "Lstcheques").text(0, 3), GetParam().shown);
}

TEST_P(OddMoney, WhatDoesNotFitIsRefusedAndCorrected) {
    auto& form = open<FrmLancarCheques>();
    typeCheque(form, "000001", GetParam().refused);
    press(Qt::Key_Return);
    expectRefusal();
    click(form, "CmdIncluir");
    EXPECT_EQ(focus(), "txtvalor");
    EXPECT_EQ(text(form, "txtnumero"), "000001");
    EXPECT_THAT(cheques(), IsEmpty());
    type(GetParam().typed);
    press(Qt::Key_Return);
    click(form, "CmdIncluir");
    EXPECT_THAT(rows("select numero from cheques"), ElementsAre("000001"));
}

TEST_P(OddMoney, ACreditLimitIsKeptOrRefused) {
    auto& form = open<frmCliFor>();
    click(form, "cmdNovo");
    type("Davi Melo");
    type(form, "txtLimiteDeCrédito", GetParam().refused);
    QString written = GetParam().refused;
    expectMessage("Advertência", QString("O campo \"Limite de Crédito\" pede %1, e recebeu \"%2\".")
                                     .arg(GetParam().reason, written.remove('.')));
    click(form, "cmdSalvar");
    EXPECT_EQ(focus(), "txtLimiteDeCrédito");
    type(GetParam().typed);
    click(form, "cmdSalvar");
    click(form, "btnNavegacao", 3);
    EXPECT_EQ(text(form, "txtNome"), "Davi Melo");
    EXPECT_EQ(text(form, "txtLimiteDeCrédito"), GetParam().shown);
}

} // namespace
