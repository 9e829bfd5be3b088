// Of two stations that show one record: what the form has shown is what its save is compared with,
// whatever else of the program has read the row since. The second clerk is told, sees both
// versions, and loses nothing that was typed.
#include "cheques/FrmLancarCheques.h"
#include "collections/FrmLancasSFundos.h"
#include "collections/FrmLocCHTerceiros.h"
#include "collections/FrmRenegociar.h"
#include "controls/box/ListView.h"
#include "controls/window/Failure.h"
#include "registers/frmBancos.h"
#include "registers/frmCliFor.h"
#include "shell/Mirtal.h"
#include "shell/Programa.h"
#include "shell/frmlocalizar.h"
#include "support/ChequeShop.h"

#include <gmock/gmock.h>

#include <fstream>
#include <functional>
#include <thread>

namespace {

using testing::ElementsAre;

class ShownRecord : public Everywhere<ChequeShop> {
protected:
    void SetUp() override {
        ChequeShop::SetUp();
        setFailureHandler(&atenderFalha);
        given("cliente_fornecedor", {
                                        {{"nome", words("Davi Lins")},
                                         {"tipo", yes(true)},
                                         {"vender", words("SIM")},
                                         {"limite_credito", money(900)}}
        });
        given("cheques", {cheque("101"), cheque("102"), cheque("103")});
        given("semfundos", {bounced("901"), bounced("902")});
        data().Automacao.flush();
        other_.Open(data().Automacao.ConnectionString());
    }
    void TearDown() override {
        other_.Close();
        ChequeShop::TearDown();
    }

    static Row cheque(const char* numero) {
        // clang-format off
        return {
            {"cliente", number(kAna)},
            {"banco",   number(kNorte)},
            {"numero",  words(numero)},
            {"data",    day(2026, 3, 1)},
            {"bompara", day(2026, 4, 1)},
            {"valor",   money(10)}
        };
        // clang-format on
    }
    static Row bounced(const char* numero) {
        // clang-format off
        return {
            {"cliente", number(kAna)},
            {"banco",   number(kNorte)},
            {"numero",  words(numero)},
            {"data",    day(2026, 3, 1)},
            {"valor",   money(10)},
            {"empresa", words("Loja Um")}
        };
        // clang-format on
    }

    // ---- the other station

    /// Which the program has been told of on return.
    void elsewhere(const std::function<void(ado::Recordset& rs)>& work, const char* table) {
        const std::uint64_t before = data().Automacao.store().generation();
        ado::Recordset rs;
        rs.Open(table, other_);
        work(rs);
        other_.flush();
        while (onServer() && data().Automacao.store().generation() == before)
            std::this_thread::yield(); // in a file whoever reads finds it
    }
    void elsewhere(const char* table, const char* row, const char* field, const jet::Value& value) {
        elsewhere(
            [&](ado::Recordset& rs) {
                rs.Find(row);
                rs[field] = value;
                rs.Update();
            },
            table);
    }
    void addedElsewhere(const char* table, const Row& row) {
        elsewhere(
            [&](ado::Recordset& rs) {
                rs.AddNew();
                for (const Field& field : row)
                    rs[field.name] = field.value;
                rs.Update();
            },
            table);
    }
    void deletedElsewhere(const char* table, const char* row) {
        elsewhere(
            [&](ado::Recordset& rs) {
                rs.Find(row);
                rs.Delete();
            },
            table);
    }
    /// As the lock file knows it: both run on this machine. A server doesn't tell.
    [[nodiscard]] QString station() const {
        if (onServer())
            return "outra janela ou por outro programa";
        std::ifstream lock(shop().file().replace_extension(".ldb"), std::ios::binary);
        std::string name(32, '\0');
        lock.read(name.data(), static_cast<std::streamsize>(name.size()));
        return name.c_str();
    }
    void expectConflict(const QString& differences, MessageAnswer answer = MessageAnswer::back) {
        expectMessage("Mensagem",
                      "Este registro foi alterado por " + station() +
                          " depois de mostrado nesta tela. Nada foi gravado.\n\n" + differences +
                          "\nSe o que está na tela deve valer, repita a operação.",
                      MessageIcon::exclamation, MessageButtons::backOrStored, answer);
    }
    void expectGone() {
        expectMessage("Mensagem", "Este registro foi excluído por " + station() +
                                      " depois de mostrado nesta tela. Nada foi gravado. O que foi "
                                      "digitado continua na tela.");
    }
    static QString differs(const char* field, const char* stored, const char* typed) {
        return QString("%1\n    gravado: %2\n    na tela: %3\n").arg(field, stored, typed);
    }

    /// The first received cheque is on show when another station puts a remark to it.
    FrmLancarCheques& firstChequeThenChanged() {
        auto& form = open<FrmLancarCheques>();
        click(form, "btnNavegacao", 0);
        elsewhere("cheques", "lancamento=1", "observacao", words("devolver"));
        return form;
    }
    /// Through the fields of a received cheque with Enter, from the value on; Alt+S at the end.
    static void authorize(QWidget& form, const char* by) {
        enter(form, "txtvalor");
        press(Qt::Key_Return); // the sum for the credit limit reads all his cheques
        EXPECT_EQ(focus(), "txtautorizou");
        type(by);
        press(Qt::Key_Return);
        press(Qt::Key_Return);
        EXPECT_EQ(focus(), "CmdIncluir");
        press(Qt::Key_S, Qt::AltModifier);
    }

    ado::Connection other_;
};
INSTANTIATE_TEST_SUITE_P(, ShownRecord, everywhere(), keptName);

// ---- received cheques

TEST_P(ShownRecord, AReceivedChequeIsNotSavedOverWhatAnotherStationHasStored) {
    auto& form = firstChequeThenChanged();
    const QString both = differs("Quem Autorizou", "(vazio)", "Rita") +
                         differs("Observações", "devolver", "(vazio)");
    expectConflict(both);
    authorize(form, "Rita");
    EXPECT_THAT(rows("select autorizou, observacao from cheques where lancamento=1"),
                ElementsAre("|devolver"));
    EXPECT_EQ(text(form, "txtlancamento"), "1");
    EXPECT_EQ(text(form, "txtautorizou"), "Rita") << "what was typed stays";
    EXPECT_EQ(text(form, "txtobservacao"), "");
    EXPECT_FALSE(data().Automacao.inTransaction());
    // He has been shown both and means his own.
    press(Qt::Key_S, Qt::AltModifier);
    EXPECT_THAT(rows("select autorizou, observacao from cheques where lancamento=1"),
                ElementsAre("Rita|"));
}

TEST_P(ShownRecord, WhatIsStoredCanBeTakenInPlaceOfWhatWasTyped) {
    auto& form = firstChequeThenChanged();
    expectConflict(differs("Quem Autorizou", "(vazio)", "Rita") +
                       differs("Observações", "devolver", "(vazio)"),
                   MessageAnswer::stored);
    authorize(form, "Rita");
    EXPECT_EQ(text(form, "txtautorizou"), "");
    EXPECT_EQ(text(form, "txtobservacao"), "devolver");
    EXPECT_EQ(text(form, "txtnumero"), "101");
    authorize(form, "Paulo");
    EXPECT_THAT(rows("select autorizou, observacao from cheques where lancamento=1"),
                ElementsAre("Paulo|devolver"));
}

TEST_P(ShownRecord, EachFurtherChangeElsewhereIsToldAnew) {
    auto& form = open<FrmLancarCheques>();
    click(form, "btnNavegacao", 0);
    for (const char* remark : {"um", "dois"}) {
        elsewhere("cheques", "lancamento=1", "observacao", words(remark));
        expectConflict(differs("Observações", remark, "(vazio)"));
        press(Qt::Key_S, Qt::AltModifier);
    }
    press(Qt::Key_S, Qt::AltModifier);
    EXPECT_THAT(rows("select observacao from cheques where lancamento=1"), ElementsAre(""));
}

TEST_P(ShownRecord, ARunOnAStoredChequeGoesOnUntilAnotherChangesIt) {
    auto& form = open<FrmLancarCheques>();
    click(form, "btnNavegacao", 0);
    click(form, "cmbcheques");
    for (const char* next : {"201", "202"}) {
        press(Qt::Key_S, Qt::AltModifier);
        EXPECT_EQ(focus(), "txtnumero");
        type(next);
    }
    elsewhere("cheques", "lancamento=1", "agencia", words("77"));
    expectConflict(differs("Agência", "77", "(vazio)") + differs("Nº Cheque", "201", "202") +
                   differs("Dt.Vencto", "01/05/2026", "31/05/2026"));
    press(Qt::Key_S, Qt::AltModifier);
    EXPECT_EQ(text(form, "txtnumero"), "202");
}

// Deliberate: once the limit has been looked at the save finds the chosen client's cheques only.
TEST_P(ShownRecord, AChequeThatIsLeftOutByTheFilterIsNotSaidToBeDeleted) {
    given("cheques", {
                         {{"cliente", number(kBento)}, {"numero", words("104")}}
    });
    auto& form = open<FrmLancarCheques>();
    click(form, "btnNavegacao", 0);
    type(form, "txtNome", "Bento");
    expectMessage("Mensagem",
                  "Não há registro atual: o da tela não é do cliente conferido ou "
                  "consultado por último, e só os deste estão à mão. Nada foi gravado.");
    authorize(form, "Rita");
    EXPECT_EQ(text(form, "txtautorizou"), "Rita");
    EXPECT_THAT(rows("select cliente, autorizou from cheques where lancamento=1"),
                ElementsAre("2|"));
}

TEST_P(ShownRecord, AChequeOfAClientWhoIsNewShowsHim) {
    auto& form = open<FrmLancarCheques>();
    click(form, "btnNavegacao", 0);
    addedElsewhere("cliente_fornecedor", client("Elsa Faro", 50));
    addedElsewhere("bancos", {
                                 {"cod_banco", number(33)        },
                                 {"nome",      words("Banco Sul")}
    });
    addedElsewhere("cheques", {
                                  {"cliente", number(5)   },
                                  {"banco",   number(3)   },
                                  {"numero",  words("501")},
                                  {"valor",   money(5)    }
    });
    click(form, "btnNavegacao", 3);
    EXPECT_EQ(text(form, "txtnumero"), "501");
    EXPECT_EQ(text(form, "txtNome"), "Elsa Faro");
    EXPECT_EQ(text(form, "txtbanco"), "Banco Sul");
    authorize(form, "Rita");
    EXPECT_THAT(rows("select cliente, banco, autorizou from cheques where lancamento=4"),
                ElementsAre("5|3|Rita"));
}

TEST_P(ShownRecord, AReceivedChequeThatAnotherHasChangedIsNotDeletedUnseen) {
    auto& form = firstChequeThenChanged();
    expectDeleteQuestion(MessageAnswer::yes);
    expectConflict(differs("Observações", "devolver", "(vazio)"));
    click(form, "CmdExcluir");
    EXPECT_EQ(rows("select lancamento from cheques").size(), 3U);
    EXPECT_EQ(text(form, "txtlancamento"), "1");
    expectDeleteQuestion(MessageAnswer::yes);
    click(form, "CmdExcluir");
    EXPECT_EQ(rows("select lancamento from cheques").size(), 2U);
}

TEST_P(ShownRecord, AReceivedChequeThatAnotherHasDeletedKeepsWhatWasTyped) {
    auto& form = open<FrmLancarCheques>();
    click(form, "btnNavegacao", 0);
    deletedElsewhere("cheques", "lancamento=1");
    expectGone();
    authorize(form, "Rita");
    EXPECT_EQ(text(form, "txtautorizou"), "Rita");
    EXPECT_EQ(text(form, "txtlancamento"), "1");
    expectDeleteQuestion(MessageAnswer::yes);
    expectGone();
    click(form, "CmdExcluir");
    EXPECT_EQ(text(form, "txtautorizou"), "Rita");
    click(form, "btnNavegacao", 0); // and the work goes on
    EXPECT_EQ(text(form, "txtlancamento"), "2");
}

// ---- clients

TEST_P(ShownRecord, AClientIsNotSavedOverWhatAnotherStationHasStored) {
    auto& form = open<frmCliFor>();
    click(form, "btnNavegacao", 3);
    EXPECT_EQ(text(form, "txtNome"), "Davi Lins");
    elsewhere("cliente_fornecedor", "codigo=4", "observacao", words("só à vista"));
    whileModal<frmlocalizar>([](frmlocalizar& search) {
        type(search, "txtpesquisar", "D"); // lists his name anew
        press(Qt::Key_Escape);
    });
    click(form, "cmdLocalizar");
    activate(form);
    type(form, "txtEndereço", "Rua 7");
    expectConflict(differs("Endereço", "(vazio)", "Rua 7") +
                   differs("Observações", "só à vista", "(vazio)"));
    click(form, "cmdSalvar");
    EXPECT_EQ(text(form, "txtEndereço"), "Rua 7");
    EXPECT_THAT(rows("select endereco, observacao from cliente_fornecedor where codigo=4"),
                ElementsAre("|só à vista"));
}

TEST_P(ShownRecord, AClientThatAnotherHasDeletedKeepsWhatWasTyped) {
    auto& form = open<frmCliFor>();
    click(form, "btnNavegacao", 3);
    deletedElsewhere("cliente_fornecedor", "codigo=4");
    type(form, "txtEndereço", "Rua 7");
    expectGone();
    click(form, "cmdSalvar");
    EXPECT_EQ(text(form, "txtEndereço"), "Rua 7");
    EXPECT_EQ(text(form, "txtCódigo"), "4");
}

TEST_P(ShownRecord, AClientAddedElsewhereIsListedAndShown) {
    auto& form = open<frmCliFor>();
    addedElsewhere("cliente_fornecedor", client("Elsa Faro", 50));
    whileModal<frmlocalizar>([](frmlocalizar& search) {
        type(search, "txtpesquisar", "Els");
        press(Qt::Key_Return);
        press(Qt::Key_Return); // chooses the row
        press(Qt::Key_Return); // and the client
    });
    click(form, "cmdLocalizar");
    activate(form);
    EXPECT_EQ(text(form, "txtNome"), "Elsa Faro");
    EXPECT_EQ(text(form, "txtCódigo"), "5");
    click(form, "btnNavegacao", 0);
    click(form, "btnNavegacao", 3);
    EXPECT_EQ(text(form, "txtNome"), "Elsa Faro") << "the last one by the key";
}

TEST_P(ShownRecord, AClientDeletedElsewhereSinceHeWasListedIsTold) {
    auto& form = open<frmCliFor>();
    whileModal<frmlocalizar>([this](frmlocalizar& search) {
        type(search, "txtpesquisar", "Dav");
        deletedElsewhere("cliente_fornecedor", "codigo=4");
        clickRow(search, "LstEncontrado", 0);
        expectMessage("Mensagem",
                      "Este cliente não está mais cadastrado: foi excluído depois de listado.");
        clickRow(search, "LstEncontrado", 0);
        EXPECT_TRUE(search.isVisible());
        press(Qt::Key_Escape);
    });
    const QString before = text(form, "txtNome");
    click(form, "cmdLocalizar");
    EXPECT_EQ(text(form, "txtNome"), before);
}

// ---- banks

TEST_P(ShownRecord, ABankIsNotSavedOverWhatAnotherStationHasStored) {
    auto& form = open<frmBancos>();
    clickRow(form, "lstListagem", 1);
    EXPECT_EQ(text(form, "txtNome"), "Agrobanco");
    elsewhere("bancos", "codigo=2", "nome", words("Agrobanco S.A."));
    clickColumn(form, "lstListagem", 1); // lists all of them anew
    type(form, "txtNome", "Agro");
    expectConflict(differs("Nome", "Agrobanco S.A.", "Agro"));
    click(form, "cmdSalvar");
    EXPECT_EQ(text(form, "txtNome"), "Agro");
    EXPECT_THAT(rows("select nome from bancos where codigo=2"), ElementsAre("Agrobanco S.A."));
    deletedElsewhere("bancos", "codigo=2");
    expectGone();
    click(form, "cmdSalvar");
    EXPECT_EQ(text(form, "txtNome"), "Agro");
}

// ---- bounced cheques

TEST_P(ShownRecord, ABouncedChequeIsNotSavedOverWhatAnotherStationHasStored) {
    auto& form = open<FrmLancasSFundos>();
    click(form, "btnNavegacao", 0);
    elsewhere("semfundos", "lancamento=1", "observacao", words("pagou metade"));
    type(form, "txtEmpresa", "Loja Dois");
    press(Qt::Key_Return);
    const QString both = differs("Empresa", "Loja Um", "Loja Dois") +
                         differs("Observações", "pagou metade", "(vazio)");
    expectConflict(both);
    click(form, "CmdIncluir");
    EXPECT_EQ(text(form, "txtEmpresa"), "Loja Dois");
    elsewhere("semfundos", "lancamento=1", "agencia", words("9"));
    expectDeleteQuestion(MessageAnswer::yes);
    expectConflict(differs("Agência", "9", "(vazio)") + both);
    click(form, "cmdExcluir");
    deletedElsewhere("semfundos", "lancamento=1");
    expectGone();
    click(form, "CmdIncluir");
    EXPECT_EQ(text(form, "txtEmpresa"), "Loja Dois");
}

// ---- renegotiation

TEST_P(ShownRecord, ADueDateThatAnotherHasMovedIsNotMovedUnseen) {
    auto& form = open<FrmRenegociar>();
    whileModal<FrmLocCHTerceiros>([](FrmLocCHTerceiros& list) {
        click(list, "chkdescontar");
        click(list, "chkdescontar"); // those not for deposit
        clickRow(list, "lstterceiros", 0);
        clickRow(list, "lstterceiros", 0);
    });
    click(form, "CmdLocalizar");
    activate(form);
    EXPECT_EQ(text(form, "txtlancamento"), "1");
    elsewhere("cheques", "lancamento=1", "bompara", day(2026, 5, 1));
    type(form, "txttaxa_juros", "2");
    press(Qt::Key_Return);
    type("15042026");
    press(Qt::Key_Return);
    expectConflict(differs("Dt.Vencto", "01/05/2026", "01/04/2026"));
    press(Qt::Key_Return);
    EXPECT_EQ(text(form, "txtnovo_vencto"), "15/04/2026");
    EXPECT_EQ(text(form, "txtbom_para"), "01/05/2026") << "what isn't typed is shown as it is";
    EXPECT_THAT(rows("select bompara from cheques where lancamento=1"), ElementsAre("01/05/2026"));
    click(form, "CmdIncluir");
    EXPECT_THAT(rows("select bompara from cheques where lancamento=1"), ElementsAre("15/04/2026"));
}

// ---- settlement

TEST_P(ShownRecord, AChequeThatAnotherHasChangedSinceItWasListedIsNotSettled) {
    Mirtal::modo = "Baixar";
    auto& form = open<FrmLocCHTerceiros>();
    click(form, "chkdescontar");
    click(form, "chkdescontar");
    for (const int row : {0, 1, 2})
        clickCheckBox(form, "lstterceiros", row);
    elsewhere("cheques", "lancamento=2", "valor", money(99));
    deletedElsewhere("cheques", "lancamento=3");
    expectMessage("Mensagem",
                  "Foram alterados por " + station() +
                      " depois de listados e por isso não foram baixados os cheques de lançamento "
                      "2.\n\nA lista mostra agora como eles estão: confira e marque-os de novo.");
    click(form, "cmdsalvar");
    EXPECT_THAT(rows("select lancamento from cheques"), ElementsAre("2"));
    const auto& list = control<ListView>(form, "lstterceiros");
    ASSERT_EQ(list.count(), 1);
    EXPECT_EQ(list.text(0, 5), "99,00");
    EXPECT_FALSE(list.isChecked(0));
    clickCheckBox(form, "lstterceiros", 0);
    click(form, "cmdsalvar");
    EXPECT_TRUE(rows("select lancamento from cheques").empty());
}

} // namespace
