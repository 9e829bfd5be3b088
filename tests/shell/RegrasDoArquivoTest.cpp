// The rules that the back-office keeps in the file, as the windows meet them: what one of them
// refuses is told with the rule's own words, nothing that was typed is lost, and the work goes on.
#include "cheques/FrmLancarCheques.h"
#include "collections/FrmLancasSFundos.h"
#include "collections/FrmLocCHTerceiros.h"
#include "collections/FrmRenegociar.h"
#include "controls/box/DropDownList.h"
#include "controls/box/ListView.h"
#include "controls/box/MoneyEdit.h"
#include "controls/window/Failure.h"
#include "registers/frmBancos.h"
#include "registers/frmCliFor.h"
#include "reports/FrmApagar.h"
#include "shell/Mirtal.h"
#include "shell/Programa.h"
#include "support/ChequeShop.h"
#include "support/FileRules.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// Over a shop with three cheques, failures attended to as the program does it.
class RulesOfTheFile : public Everywhere<ChequeShop> {
protected:
    void SetUp() override {
        ChequeShop::SetUp();
        setFailureHandler(&atenderFalha);
        given("cheques", {cheque("101", 10), cheque("102", 20), cheque("103", 30)});
    }

    static Row cheque(const char* numero, std::int64_t reais) {
        // clang-format off
        return {
            {"cliente",   number(1)},
            {"banco",     number(1)},
            {"agencia",   words("0001")},
            {"numero",    words(numero)},
            {"data",      day(2026, 3, 1)},
            {"bompara",   day(2026, 4, 1)},
            {"valor",     money(reais)},
            {"descontar", yes(true)}
        };
        // clang-format on
    }

    static jet::Database& file() { return data().Automacao.database(); }
    static void keep(const char* table, const std::vector<FileRule>& rules) {
        setRules(file(), table, rules);
    }
    /// Bounced cheques belong to the received one of the same entry number.
    static void relateBounced() {
        addRelationship(file(),
                        {"devolvidos", "semfundos", {"lancamento"}, "cheques", {"lancamento"}});
    }
    static std::string refusedDeletion(const char* lancamento) {
        return std::string("O registro (") + lancamento +
               ") da tabela \"cheques\" não pode ser excluído: a tabela \"semfundos\" tem "
               "registros ligados a ele pelo campo \"lancamento\" (relacionamento "
               "\"devolvidos\"). Altere-os ou exclua-os primeiro.";
    }
    void expectRefusal(const std::string& text) {
        expectMessage("Mensagem", QString::fromStdString(text));
    }
    static std::vector<std::string> cheques(const char* fields = "lancamento") {
        return rows("select " + QString(fields) + " from cheques order by lancamento");
    }
    /// The state in which the next save finds the program.
    static void expectReady() {
        EXPECT_FALSE(data().Automacao.inTransaction());
        for (ado::Recordset* rs : {&data().rsCheques, &data().rsCliente, &data().rsBancos})
            EXPECT_EQ(rs->EditMode(), ado::EditMode::None);
    }
};

INSTANTIATE_TEST_SUITE_P(, RulesOfTheFile, inFiles(), keptName);

// ---- clients

TEST_P(RulesOfTheFile, AClientIsRefusedInTheRulesOwnWords) {
    keep("cliente_fornecedor", {
                                   {.rule = "[limite_credito]<=1000 Or [vender]='NÃO'",
                                    .message = "Limite acima do que a matriz permite."}
    });
    auto& form = open<frmCliFor>();
    click(form, "cmdNovo");
    type(form, "txtNome", "Davi Melo");
    control<MoneyEdit>(form, "txtLimiteDeCrédito").setValor(Amount{20'000'000});
    expectRefusal("Limite acima do que a matriz permite.");
    click(form, "cmdSalvar");
    expectReady();
    EXPECT_EQ(text(form, "txtNome"), "Davi Melo");
    EXPECT_EQ(text(form, "txtLimiteDeCrédito"), "2.000,00");
    EXPECT_THAT(rows("select nome from cliente_fornecedor"), SizeIs(3));

    control<MoneyEdit>(form, "txtLimiteDeCrédito").setValor(Amount{9'000'000});
    click(form, "cmdSalvar");
    EXPECT_THAT(rows("select nome, limite_credito from cliente_fornecedor where codigo=4"),
                ElementsAre("Davi Melo|900,00"));
    EXPECT_EQ(text(form, "txtNome"), "");
}

TEST_P(RulesOfTheFile, AFieldThatOnlyTheOtherSystemFillsIsAskedFor) {
    remake([](jet::TableSpec& table) {
        if (table.name == "cliente_fornecedor")
            table.columns.push_back({"vendedor", jet::ColumnType::text, 20});
    });
    keep("cliente_fornecedor", {
                                   {.column = "vendedor", .required = true}
    });
    auto& form = open<frmCliFor>();
    click(form, "cmdNovo");
    type(form, "txtNome", "Davi Melo");
    control<MoneyEdit>(form, "txtLimiteDeCrédito").setValor(Amount{9'000'000});
    expectRefusal("O registro não foi gravado: a tabela \"cliente_fornecedor\" exige o campo "
                  "\"vendedor\", que ficou vazio. Preencha-o ou, se a janela não o mostra, peça a "
                  "quem cuida da base de dados que deixe de exigi-lo ou lhe dê um valor inicial.");
    click(form, "cmdSalvar");
    expectReady();
    EXPECT_EQ(text(form, "txtNome"), "Davi Melo");
    EXPECT_THAT(rows("select * from cliente_fornecedor"), IsEmpty());

    // The back-office gives it a value of its own for new clients.
    keep("cliente_fornecedor",
         {
             {.column = "vendedor", .required = true, .defaultValue = "\"loja\""}
    });
    click(form, "cmdSalvar");
    EXPECT_THAT(rows("select nome, vendedor from cliente_fornecedor"),
                ElementsAre("Davi Melo|loja"));
}

TEST_P(RulesOfTheFile, ATextThatBreaksTheRuleOfItsFieldIsToldWhereItIsTyped) {
    keep("cliente_fornecedor", {
                                   {.column = "emailcli",
                                    .rule = "=\"\" Or Like \"*@*\"",
                                    .message = "O e-mail precisa de um @."}
    });
    auto& form = open<frmCliFor>();
    click(form, "btnNavegacao", 2); // Ana Costa
    control<DropDownList>(form, "cboVender").selectByText("SIM");
    control<QLineEdit>(form, "txtEMailCli").setText("ana");
    expectMessage("Advertência", "O e-mail precisa de um @.");
    click(form, "cmdSalvar");
    EXPECT_EQ(focus(), "txtEMailCli");
    EXPECT_EQ(text(form, "txtEMailCli"), "ana");
    type("@exemplo.invalid");
    click(form, "cmdSalvar");
    EXPECT_THAT(rows("select emailcli from cliente_fornecedor where codigo=2"),
                ElementsAre("ana@exemplo.invalid"));
}

TEST_P(RulesOfTheFile, AnEmptyBoxIsNullWhereTheFileTakesNoEmptyText) {
    const char* const inClients[] = {"endereco", "emailcli", "observacao"};
    std::vector<FileRule> rules;
    for (const char* field : inClients)
        rules.push_back({.column = field, .allowZeroLength = false});
    keep("cliente_fornecedor", rules);
    auto& form = open<frmCliFor>();
    click(form, "cmdNovo");
    type("Davi Melo");
    press(Qt::Key_Return);
    type("Rua Um");
    control<MoneyEdit>(form, "txtLimiteDeCrédito").setValor(Amount{9'000'000});
    click(form, "cmdSalvar");
    EXPECT_THAT(rows("select endereco from cliente_fornecedor where codigo=4 and bairro='' and "
                     "emailcli is null and observacao is null"),
                ElementsAre("Rua Um"));

    click(form, "btnNavegacao", 3);
    EXPECT_EQ(text(form, "txtEndereço"), "Rua Um");
    enter(form, "txtEndereço");
    press(Qt::Key_Delete);
    click(form, "cmdSalvar");
    EXPECT_THAT(rows("select nome from cliente_fornecedor where codigo=4 and endereco is null"),
                ElementsAre("Davi Melo"));
}

TEST_P(RulesOfTheFile, ARequiredTextIsAskedForWhereItsBoxIs) {
    keep("cliente_fornecedor",
         {
             {.column = "endereco", .required = true, .allowZeroLength = false}
    });
    auto& form = open<frmCliFor>();
    click(form, "cmdNovo");
    type("Davi Melo");
    control<MoneyEdit>(form, "txtLimiteDeCrédito").setValor(Amount{9'000'000});
    expectMessage("Advertência", "O campo \"Endereço\" deve ser preenchido.");
    click(form, "cmdSalvar");
    EXPECT_EQ(focus(), "txtEndereço");
    type("Rua Um");
    click(form, "cmdSalvar");
    EXPECT_THAT(rows("select endereco from cliente_fornecedor where codigo=4"),
                ElementsAre("Rua Um"));
}

TEST_P(RulesOfTheFile, AnEmptyBoxOfAChequeIsNullToo) {
    const FileRule agency{.column = "agencia", .allowZeroLength = false};
    const FileRule remarks{.column = "observacao", .allowZeroLength = false};
    keep("cheques", {agency, remarks});
    keep("semfundos", {agency, remarks});
    auto& received = open<FrmLancarCheques>();
    type(received, "txtNome", "Ana");
    for (const char* next : {"agro", "", "777", "01032026", "31032026", "50", "", "", ""}) {
        press(Qt::Key_Return);
        type(next);
    }
    click(received, "CmdIncluir");
    EXPECT_THAT(rows("select numero from cheques where agencia is null and observacao is null and "
                     "autorizou=''"),
                ElementsAre("777"));
    received.hide();

    auto& bounced = open<FrmLancasSFundos>();
    type(bounced, "txtcliente", "Ana");
    for (const char* next : {"agro", "", "900", "01032026", "75", "Loja Dois", ""}) {
        press(Qt::Key_Return);
        type(next);
    }
    click(bounced, "CmdIncluir");
    EXPECT_THAT(rows("select numero from semfundos where agencia is null and observacao is null"),
                ElementsAre("900"));
    click(bounced, "btnNavegacao", 0);
    EXPECT_EQ(text(bounced, "txtnumero"), "900");
    EXPECT_EQ(text(bounced, "txtagencia"), "");
}

// ---- banks

TEST_P(RulesOfTheFile, ABankThatChequesReferToKeepsItsCode) {
    Row paid = cheque("104", 40);
    paid.push_back({"banco", number(104)});
    given("cheques", {paid});
    addRelationship(file(), {"bancoscheques", "cheques", {"banco"}, "bancos", {"cod_banco"}});
    auto& form = open<frmBancos>();
    type(form, "txtCodigo", "105");
    type(form, "txtNome", "Banco do Norte");
    expectRefusal("O valor de \"cod_banco\" (104) da tabela \"bancos\" não pode ser alterado: a "
                  "tabela \"cheques\" tem registros ligados a ele pelo campo \"banco\" "
                  "(relacionamento \"bancoscheques\"). Altere-os ou exclua-os primeiro.");
    click(form, "cmdSalvar");
    expectReady();
    EXPECT_EQ(text(form, "lblCodigo"), "1");
    EXPECT_EQ(text(form, "txtCodigo"), "105");
    EXPECT_EQ(text(form, "txtNome"), "Banco do Norte");

    type(form, "txtCodigo", "104");
    type(form, "txtNome", "Banco do Norte");
    click(form, "cmdSalvar");
    EXPECT_THAT(rows("select cod_banco, nome from bancos order by codigo"),
                ElementsAre("104|Banco do Norte", "237|Agrobanco"));
}

TEST_P(RulesOfTheFile, ABankWhoseNameTheFileWantsOnceIsRefusedAndCorrected) {
    remake([](jet::TableSpec& table) {
        if (table.name == "bancos")
            table.indexes.push_back({.name = "nomes", .columns = {{"nome"}}, .unique = true});
    });
    given("bancos", {
                        {{"cod_banco", number(104)}, {"nome", words("Banco Norte")}}
    });
    auto& form = open<frmBancos>();
    click(form, "cmdNovo");
    type(form, "txtCodigo", "999");
    type(form, "txtNome", "banco norte");
    expectRefusal("Já existe um registro com o mesmo valor em \"nome\".");
    click(form, "cmdSalvar");
    expectReady();
    EXPECT_EQ(text(form, "txtCodigo"), "999");
    EXPECT_EQ(text(form, "txtNome"), "banco norte");
    type(form, "txtNome", "Banco do Vale");
    click(form, "cmdSalvar");
    EXPECT_THAT(rows("select cod_banco, nome from bancos order by codigo"),
                ElementsAre("104|Banco Norte", "999|Banco do Vale"));
}

TEST_P(RulesOfTheFile, ATableWhoseRuleNobodyUnderstandsIsOnlyLookedAt) {
    keep("bancos", {
                       {.column = "nome", .rule = "DLookUp(\"x\",\"y\")=[nome]"}
    });
    auto& form = open<frmBancos>();
    click(form, "cmdNovo");
    type(form, "txtCodigo", "999");
    type(form, "txtNome", "Banco do Vale");
    expectRefusal("A tabela \"bancos\" pode ser consultada mas não alterada: a regra de validação "
                  "do campo \"nome\" da tabela \"bancos\", DLookUp(\"x\",\"y\")=[nome], usa o que "
                  "este programa não sabe avaliar.");
    click(form, "cmdSalvar");
    expectReady();
    EXPECT_EQ(text(form, "txtNome"), "Banco do Vale");
    EXPECT_THAT(rows("select nome from bancos"), SizeIs(2));
    keep("bancos", {});
    click(form, "cmdSalvar");
    EXPECT_THAT(rows("select nome from bancos"), SizeIs(3));
}

// ---- received cheques

TEST_P(RulesOfTheFile, AChequeIsRefusedAndCorrected) {
    keep("cheques", {
                        {.rule = "[bompara]>=[data]", .message = "Vence antes da emissão."}
    });
    auto& form = open<FrmLancarCheques>();
    type(form, "txtNome", "Ana");
    type(form, "txtbanco", "agro");
    type(form, "txtnumero", "777");
    type(form, "txtdata", "01052026");
    type(form, "txtbompara", "30042026");
    type(form, "txtvalor", "50");
    expectRefusal("Vence antes da emissão.");
    click(form, "CmdIncluir");
    expectReady();
    EXPECT_THAT(cheques(), SizeIs(3));
    EXPECT_EQ(text(form, "txtnumero"), "777");
    EXPECT_EQ(text(form, "txtbompara"), "30/04/2026");
    type(form, "txtbompara", "01062026");
    click(form, "CmdIncluir");
    EXPECT_THAT(cheques("numero, bompara, valor"), testing::Contains("777|01/06/2026|50,00"));
    EXPECT_EQ(text(form, "txtnumero"), "");
}

TEST_P(RulesOfTheFile, AStoredChequeIsRefusedAndStaysOnShow) {
    keep("cheques", {
                        {.column = "valor", .rule = "Between 1 And 1000"}
    });
    auto& form = open<FrmLancarCheques>();
    click(form, "btnNavegacao", 2);
    type(form, "txtvalor", "5000");
    expectRefusal("O valor do campo \"valor\" da tabela \"cheques\" não obedece à regra do banco "
                  "de dados: Between 1 And 1000. Corrija-o e grave outra vez.");
    click(form, "CmdIncluir");
    expectReady();
    EXPECT_EQ(text(form, "txtlancamento"), "2");
    EXPECT_EQ(text(form, "txtvalor"), "5.000,00");
    EXPECT_THAT(cheques("valor"), ElementsAre("10,00", "20,00", "30,00"));
    type(form, "txtvalor", "500");
    click(form, "CmdIncluir");
    EXPECT_THAT(cheques("valor"), ElementsAre("10,00", "500,00", "30,00"));
}

TEST_P(RulesOfTheFile, AChequeThatOthersReferToIsNotDeleted) {
    given("semfundos", {{{"lancamento", number(2)}}});
    relateBounced();
    auto& form = open<FrmLancarCheques>();
    click(form, "btnNavegacao", 2);
    expectDeleteQuestion(MessageAnswer::yes);
    expectRefusal(refusedDeletion("2"));
    click(form, "CmdExcluir");
    expectReady();
    EXPECT_EQ(text(form, "txtlancamento"), "2");
    EXPECT_THAT(cheques(), ElementsAre("1", "2", "3"));
    click(form, "btnNavegacao", 3);
    expectDeleteQuestion(MessageAnswer::yes);
    click(form, "CmdExcluir");
    EXPECT_THAT(cheques(), ElementsAre("1", "2"));
}

// ---- settling, renegotiating, purging

TEST_P(RulesOfTheFile, ASettlementStopsAtTheChequeThatMayNotGo) {
    given("semfundos", {{{"lancamento", number(2)}}});
    relateBounced();
    Mirtal::modo = "Baixar";
    auto& form = open<FrmLocCHTerceiros>();
    click(form, "chkdescontar");
    for (const int row : {0, 1, 2})
        clickCheckBox(form, "lstterceiros", row);
    expectRefusal(refusedDeletion("2") +
                  "\n\n1 cheque já foi baixado. Os outros continuam cadastrados.");
    click(form, "cmdsalvar");
    expectReady();
    EXPECT_THAT(cheques(), ElementsAre("2", "3")) << "each is settled on its own";
    EXPECT_EQ(control<ListView>(form, "lstterceiros").count(), 3) << "the list is as it was";
    clickCheckBox(form, "lstterceiros", 1);
    click(form, "cmdsalvar"); // the first is passed over
    EXPECT_THAT(cheques(), ElementsAre("2"));
}

TEST_P(RulesOfTheFile, ARenegotiationIsRefusedAndCorrected) {
    keep("cheques",
         {
             {.column = "bompara", .rule = "<#1/1/2027#", .message = "Só até dezembro."}
    });
    auto& form = open<FrmRenegociar>();
    whileModal<FrmLocCHTerceiros>([](FrmLocCHTerceiros& list) {
        click(list, "chkdescontar");
        clickRow(list, "lstterceiros", 0);
        clickRow(list, "lstterceiros", 0);
    });
    click(form, "CmdLocalizar");
    activate(form);
    type(form, "txttaxa_juros", "2");
    type(form, "txtnovo_vencto", "15012027");
    press(Qt::Key_Return);
    expectRefusal("Só até dezembro.");
    click(form, "CmdIncluir");
    expectReady();
    EXPECT_EQ(text(form, "txtlancamento"), "1");
    EXPECT_EQ(text(form, "txtnovo_vencto"), "15/01/2027");
    type(form, "txtnovo_vencto", "15122026");
    press(Qt::Key_Return);
    click(form, "CmdIncluir");
    EXPECT_THAT(cheques("bompara"), ElementsAre("15/12/2026", "01/04/2026", "01/04/2026"));
    EXPECT_EQ(text(form, "txtlancamento"), "");
}

TEST_P(RulesOfTheFile, ABouncedChequeWithoutItsReceivedOneIsRefused) {
    addRelationship(file(), {"clientes", "semfundos", {"empresa"}, "cliente_fornecedor", {"nome"}});
    auto& form = open<FrmLancasSFundos>();
    type(form, "txtcliente", "Ana");
    for (const char* next : {"agro", "0042", "900", "01032026", "75", "Loja Dois"}) {
        press(Qt::Key_Return);
        type(next);
    }
    expectRefusal("O registro da tabela \"semfundos\" não pode ser gravado: o valor de \"empresa\" "
                  "(\"Loja Dois\") não existe em \"nome\" da tabela \"cliente_fornecedor\" "
                  "(relacionamento \"clientes\"). Cadastre-o lá primeiro, ou corrija-o.");
    click(form, "CmdIncluir");
    expectReady();
    EXPECT_EQ(text(form, "txtEmpresa"), "Loja Dois");
    EXPECT_EQ(text(form, "txtnumero"), "900");
    EXPECT_THAT(rows("select * from semfundos"), IsEmpty());
    type(form, "txtEmpresa", "bento dias");
    click(form, "CmdIncluir");
    EXPECT_THAT(rows("select numero, empresa from semfundos"), ElementsAre("900|bento dias"));
}

TEST_P(RulesOfTheFile, APurgeStopsAtTheChequeThatMayNotGo) {
    given("semfundos", {{{"lancamento", number(3)}}});
    relateBounced();
    auto& form = open<FrmApagar>();
    type(form, "txtdtinicial", "01042026");
    type(form, "txtdtfinal", "30042026");
    // After the first; the second is left, as always.
    expectRefusal(refusedDeletion("3") +
                  "\n\n1 cheque já foi excluído. Os outros continuam cadastrados.");
    click(form, "cmdExcluir");
    expectReady();
    EXPECT_THAT(cheques(), ElementsAre("2", "3"));
    EXPECT_EQ(text(form, "txtdtinicial"), "01/04/2026");
    EXPECT_EQ(text(form, "txtdtfinal"), "30/04/2026");

    ado::Recordset bounced;
    bounced.Open("semfundos", data().Automacao);
    bounced.Delete();
    for (const char* left : {"3", ""}) {
        expectMessage("Mensagem", "Operação concluída !", MessageIcon::information);
        type(form, "txtdtinicial", "01042026");
        type(form, "txtdtfinal", "30042026");
        click(form, "cmdExcluir");
        EXPECT_THAT(cheques(), SizeIs(*left == '\0' ? 0 : 1));
    }
}

} // namespace
