#include "cheques/ChequeEntry.h"
#include "controls/box/DropDownList.h"
#include "shell/Mirtal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

// Bank 237, branch 0042, number 000123.
constexpr char kLine[] = "<23700421<0180001235>000000123455:";

class ReadCheque : public ChequeEntry {
protected:
    ReadCheque() {
        Mirtal::aoMostrarNoticia([this](const QString& text) { news_ = text; });
    }
    ~ReadCheque() override { Mirtal::aoMostrarNoticia({}); }

    /// Has a line read and waits until `done`.
    template <class Done>
    void read(const QString& line, Done done) {
        type(line);
        for (const QDeadlineTimer patience(60'000); !done() && !patience.hasExpired();)
            QApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
        EXPECT_TRUE(done());
    }
    void read(QWidget& form) {
        read(kLine, [&] { return text(form, "txtnumero") == "000123"; });
    }

    /// A cheque of Ana's, in hand or bounced, as the line tells it.
    static Row stored(const char* number, int bank, const char* branch) {
        return {
            {"cliente", ::number(kAna)},
            {"banco",   ::number(bank)},
            {"numero",  words(number) },
            {"agencia", words(branch) },
            {"valor",   money(60)     }
        };
    }

    QString news_;
};

} // namespace

INSTANTIATE_TEST_SUITE_P(, ReadCheque, everywhere(), keptName);

TEST_P(ReadCheque, FillsBankBranchAndNumberFromWhereverTheFocusIs) {
    for (const char* box : {"txtNome", "txtbanco", "txtnumero", "txtdata", "txtvalor",
                            "txtobservacao", "txtdescontar", "CmdNovo"}) {
        auto& form = open<FrmLancarCheques>();
        enter(form, box);
        const std::string before = shown(form);
        read(form);
        EXPECT_EQ(text(form, "txtbanco"), "Agrobanco") << box;
        EXPECT_EQ(text(form, "txtagencia"), "0042");
        control<DropDownList>(form, "txtbanco").setListIndex(-1);
        for (const char* filled : {"txtagencia", "txtnumero"})
            control(form, filled).setProperty("text", ""); // all else is as it was
        EXPECT_EQ(shown(form), before);
        form.unload();
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

TEST_P(ReadCheque, LeadsToTheClientAndThenToTheDate) {
    auto& form = open<FrmLancarCheques>();
    enter(form, "txtvalor");
    read(form);
    EXPECT_EQ(focus(), "txtNome");
    control<DropDownList>(form, "txtNome").setListIndex(0);
    control(form, "txtnumero").setProperty("text", "");
    read(form);
    EXPECT_EQ(focus(), "txtdata");
}

TEST_P(ReadCheque, IsStoredLikeATypedOne) {
    auto& form = open<FrmLancarCheques>();
    type(form, "txtNome", "ana");
    read(form);
    type(form, "txtvalor", "50");
    click(form, "CmdIncluir");
    EXPECT_THAT(rows("select cliente, banco, agencia, numero from cheques"),
                testing::ElementsAre("2|2|0042|000123"));
}

TEST_P(ReadCheque, OfAWrongDigitFillsNothing) {
    auto& form = open<FrmLancarCheques>();
    enter(form, "txtvalor");
    const std::string before = shown(form);
    expectMessage("Advertência", "O leitor não leu bem a linha deste cheque: os dígitos de "
                                 "controle não conferem. Passe o cheque outra vez ou digite "
                                 "banco, agência e número.");
    read(QString(kLine).replace("0001235", "0001335"), [&] { return focus() == "txtnumero"; });
    EXPECT_EQ(shown(form), before);
}

TEST_P(ReadCheque, OfAnUnknownBankFillsNothing) {
    auto& form = open<FrmLancarCheques>();
    const std::string before = shown(form);
    expectMessage("Advertência", "O cheque é do banco 001, que não está cadastrado. Cadastre-o na "
                                 "janela de bancos e passe o cheque outra vez.");
    read("<00134774<0188505735>511011535959:", [&] { return focus() == "txtbanco"; });
    EXPECT_EQ(shown(form), before);
}

TEST_P(ReadCheque, FindsABankThatHasBeenRegisteredSinceTheWindowOpened) {
    auto& form = open<FrmLancarCheques>();
    given("bancos", {
                        {{"cod_banco", number(1)}, {"nome", words("Banco Novo")}}
    });
    read("<00134774<0188505735>511011535959:",
         [&] { return text(form, "txtbanco") == "Banco Novo"; });
    EXPECT_EQ(text(form, "txtnumero"), "850573");
}

TEST_P(ReadCheque, OfTwoBanksOfOneNumberKeepsTheChosenOne) {
    given("bancos", {
                        {{"cod_banco", number(237)}, {"nome", words("Zebu, o mesmo")}}
    });
    auto& form = open<FrmLancarCheques>();
    read(form);
    EXPECT_EQ(text(form, "txtbanco"), "Agrobanco");
    click(form, "CmdNovo");
    control<DropDownList>(form, "txtbanco").setListIndex(2);
    read(form);
    EXPECT_EQ(text(form, "txtbanco"), "Zebu, o mesmo");
}

// ---- the shop has it already

TEST_P(ReadCheque, ThatIsInHandIsTold) {
    given("cheques", {stored("77", kNorte, "0042"), stored("123", kAgro, "42")});
    auto& form = open<FrmLancarCheques>();
    read(form);
    EXPECT_EQ(news_, "Cheque repetido: em mãos, lançamento 2");
    click(form, "CmdNovo");
    EXPECT_EQ(news_, "");
}

TEST_P(ReadCheque, ThatHasBouncedIsTold) {
    given("semfundos", {stored("00000123", kAgro, "0042")});
    auto& form = open<FrmLancarCheques>();
    read(form);
    EXPECT_EQ(news_, "Cheque repetido: sem fundos, lançamento 1");
    form.unload();
    EXPECT_EQ(news_, "");
}

TEST_P(ReadCheque, OfAnotherBankBranchOrNumberIsAnother) {
    given("cheques", {stored("123", kNorte, "0042"), stored("123", kAgro, "0043"),
                      stored("1230", kAgro, "0042"), stored("123", kAgro, "")});
    auto& form = open<FrmLancarCheques>();
    read(form);
    EXPECT_EQ(news_, "");
}

TEST_P(ReadCheque, TypedByHandIsToldTooAndNothingElseHappens) {
    given("cheques", {stored("123", kAgro, "")});
    auto& form = open<FrmLancarCheques>();
    type(form, "txtbanco", "agro");
    type(form, "txtnumero", "0123");
    EXPECT_EQ(news_, "");
    press(Qt::Key_Return);
    EXPECT_EQ(news_, "Cheque repetido: em mãos, lançamento 1");
    EXPECT_EQ(focus(), "txtdata");
    type(form, "txtnumero", "124");
    press(Qt::Key_Return);
    EXPECT_EQ(news_, "");
}

TEST_P(ReadCheque, OnShowIsNotItsOwnDouble) {
    given("cheques", {stored("123", kAgro, "0042")});
    auto& form = open<FrmLancarCheques>();
    click(form, "btnNavegacao", 0);
    enter(form, "txtnumero");
    press(Qt::Key_Return);
    EXPECT_EQ(news_, "");
}

TEST_P(ReadCheque, OfAnOddNumberBreaksNothing) {
    auto& form = open<FrmLancarCheques>();
    type(form, "txtbanco", "agro");
    for (const char* number : {"1'2", "' or ''='", "000000000000", "%"}) {
        type(form, "txtnumero", number);
        press(Qt::Key_Return);
        EXPECT_EQ(news_, "") << number;
    }
}

TEST_P(ReadCheque, IsToldWithoutTheTableOfTheBounced) {
    remake([](jet::TableSpec& table) {
        if (table.name == "semfundos")
            table.columns.clear();
    });
    ChequeShop::given("bancos", {
                                    {{"cod_banco", number(237)}, {"nome", words("Agrobanco")}}
    });
    auto& form = open<FrmLancarCheques>();
    type(form, "txtbanco", "agro");
    type(form, "txtnumero", "5");
    press(Qt::Key_Return);
    EXPECT_EQ(news_, "");
}
