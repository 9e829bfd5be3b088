// The program beside others: what they keep it from saving is told, undone, and can be tried again.
#include "controls/window/Failure.h"
#include "jet/Error.h"
#include "shell/MDICheques.h"
#include "shell/Programa.h"
#include "support/ShopTest.h"

#include <QTimer>
#include <QToolButton>

#include <fcntl.h>
#include <unistd.h>

namespace {

/// A program with locks of its own in the file: it has taken a user's byte and no mark of ours.
class ForeignProgram {
public:
    explicit ForeignProgram(std::filesystem::path database)
        : handle_(::open(database.replace_extension(".ldb").c_str(), O_RDWR | O_CLOEXEC)) {
        struct flock lock {};
        lock.l_type = F_WRLCK;
        lock.l_start = kUser;
        lock.l_len = 1;
        EXPECT_EQ(::fcntl(handle_, F_OFD_SETLK, &lock), 0);
    }
    ForeignProgram(const ForeignProgram&) = delete;
    ForeignProgram& operator=(const ForeignProgram&) = delete;
    ~ForeignProgram() { ::close(handle_); }

private:
    static constexpr off_t kUser = 0x10000000 + 9;
    int handle_;
};

class BesideOthers : public Everywhere<ShopTest> {
protected:
    static std::exception_ptr failure(jet::Errc code) {
        return std::make_exception_ptr(jet::Error(code, "Outra estação está gravando."));
    }
    /// How many message boxes come up, each saying that something isn't written yet.
    template <class Work>
    static int messagesOf(Work&& work) {
        int told = 0;
        setMessageFunction([&](const Message& message) {
            ++told;
            EXPECT_TRUE(message.text.contains("ainda não foram gravadas"));
            return MessageAnswer::ok;
        });
        work();
        setMessageFunction({});
        return told;
    }
    /// Which isn't written yet.
    void deleteABank() {
        given("bancos", {{{"nome", words("Caixa")}}});
        data().Automacao.flush();
        data().rsBancos.MoveFirst();
        data().rsBancos.Delete();
    }
};

INSTANTIATE_TEST_SUITE_P(, BesideOthers, everywhere(), keptName);

TEST_P(BesideOthers, WhatCanBeTriedAgainIsUndoneAndTold) {
    for (const jet::Errc code :
         {jet::Errc::locked, jet::Errc::conflict, jet::Errc::readOnly, jet::Errc::full,
          jet::Errc::rule, jet::Errc::related, jet::Errc::nullValue, jet::Errc::duplicate}) {
        data().Automacao.BeginTrans();
        data().rsBancos.AddNew();
        data().rsBancos["nome"] = "Caixa";
        expectMessage("Mensagem", "Outra estação está gravando.");
        atenderFalha(failure(code));
        EXPECT_FALSE(data().Automacao.inTransaction());
        EXPECT_EQ(data().rsBancos.EditMode(), ado::EditMode::None);
    }
    EXPECT_TRUE(rows("select * from bancos").empty());
}

TEST_P(BesideOthers, AForeignProgramInTheFileIsToldAndWaitedFor) {
    if (onServer())
        GTEST_SKIP() << kByTheFile;
    given("bancos", {{{"nome", words("Caixa")}}});
    auto& window = MDICheques::instance();
    window.show();
    auto& panel = control<QToolButton>(window, "pnlConsulta");
    EXPECT_FALSE(panel.isVisible());
    {
        const ForeignProgram foreign(shop().file());
        EXPECT_TRUE(QTest::qWaitFor([&] { return panel.isVisible(); }, 10'000));
        EXPECT_TRUE(panel.toolTip().contains("aberto em outro programa"));
        expectMessage("Mensagem", panel.toolTip());
        panel.click();
        data().rsBancos.AddNew();
        data().rsBancos["nome"] = "Banco do Vale";
        EXPECT_THROW(data().rsBancos.Update(), jet::Error);
        data().desfazer();
        EXPECT_EQ(rows("select nome from bancos"), std::vector<std::string>{"Caixa"});
    }
    EXPECT_TRUE(QTest::qWaitFor([&] { return !panel.isVisible(); }, 10'000));
    data().rsBancos.AddNew();
    data().rsBancos["nome"] = "Banco do Vale";
    data().rsBancos.Update();
    EXPECT_EQ(rows("select nome from bancos").size(), 2U);
}

TEST_P(BesideOthers, TheProgramDoesntEndWithADeletionThatCantBeWrittenYet) {
    if (onServer())
        GTEST_SKIP() << kByTheFile;
    deleteABank();
    {
        const ForeignProgram foreign(shop().file());
        const int told = messagesOf([] { MDICheques::instance().encerrar(); });
        EXPECT_EQ(told, 1);
        EXPECT_TRUE(data().aberto());
    }
    MDICheques::instance().encerrar();
    EXPECT_FALSE(data().aberto());
    EXPECT_EQ(jet::Database(shop().file()).table("bancos").rowCount(), 0);
}

TEST_P(BesideOthers, WhoInsistsEndsTheProgramWithoutIt) {
    if (onServer())
        GTEST_SKIP() << kByTheFile;
    deleteABank();
    const ForeignProgram foreign(shop().file());
    EXPECT_EQ(messagesOf([] { MDICheques::instance().encerrar(); }), 1);
    EXPECT_TRUE(data().aberto());
    EXPECT_THROW(MDICheques::instance().encerrar(), jet::Error);
    EXPECT_FALSE(data().aberto());
}

TEST_P(BesideOthers, WhileTheEngineWaitsNoHandlerRuns) {
    int runs = 0;
    {
        const HandlersPaused outer;
        const HandlersPaused inner;
        EXPECT_FALSE(guarded([&] { ++runs; }));
    }
    EXPECT_TRUE(guarded([&] { ++runs; }));
    EXPECT_EQ(runs, 1);
}

} // namespace
