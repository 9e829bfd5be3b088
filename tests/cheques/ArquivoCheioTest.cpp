// A file that has reached the largest size of its format: what is typed is refused as a whole, and
// is saved by the same key once there is room.
#include "cheques/ChequeEntry.h"
#include "controls/window/Failure.h"
#include "jet/Check.h"
#include "jet/FullFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::HasSubstr;

class FullShop : public ChequeEntry {
protected:
    void SetUp() override {
        ChequeEntry::SetUp();
        data().fechar();
        std::filesystem::copy_file(shop().file(), small());
        leaveRoom(shop().file(), 2);
        data().abrir();
        setFailureHandler([this](const std::exception_ptr& failure) {
            try {
                std::rethrow_exception(failure);
            } catch (const jet::Error& error) {
                EXPECT_EQ(error.code(), jet::Errc::full);
                failed_.emplace_back(error.what());
            }
        });
    }
    void TearDown() override {
        data().fechar();
        EXPECT_TRUE(jet::check(shop().file()).sound());
        std::filesystem::rename(small(), shop().file()); // without the pages that nobody has
        ChequeEntry::TearDown();
    }
    [[nodiscard]] std::filesystem::path small() const { return shop().folder() / "antes.mdb"; }

    /// Saves one cheque after the other until one is refused; its number.
    std::string saveAllThatFit(QWidget& form) {
        for (int number = 1; number < 400; ++number) {
            std::string text = std::to_string(number);
            fill(form, "Carla", text.c_str(), "0,01");
            click(form, "CmdIncluir");
            if (!failed_.empty())
                return text;
        }
        ADD_FAILURE() << "the file never was full";
        return {};
    }

    std::vector<std::string> failed_;
};
INSTANTIATE_TEST_SUITE_P(, FullShop, inFiles(), keptName);

TEST_P(FullShop, RefusesTheChequeThatDoesntFitAndKeepsWhatWasTyped) {
    auto& form = open<FrmLancarCheques>();
    const std::string number = saveAllThatFit(form);
    ASSERT_EQ(failed_.size(), 1U);
    EXPECT_THAT(failed_[0], HasSubstr("tamanho máximo do seu formato"));
    EXPECT_THAT(failed_[0], HasSubstr("Apague registros antigos"));
    EXPECT_FALSE(data().Automacao.inTransaction());
    EXPECT_EQ(text(form, "txtnumero"), number.c_str());
    EXPECT_EQ(text(form, "txtNome"), "Carla Reis");
    EXPECT_EQ(text(form, "txtvalor"), "0,01");
    EXPECT_EQ(text(form, "txtlancamento"), "") << "still a new one";
    const std::vector<std::string> before = stored();
    EXPECT_EQ(before.size() + 1, std::stoul(number));

    click(form, "CmdIncluir");
    EXPECT_EQ(failed_.size(), 2U);
    EXPECT_EQ(stored(), before);

    // As the message says. For their history there is no room.
    EXPECT_FALSE(data().Automacao.store().hasTable("valtrino_historico"));
    ado::Recordset old;
    old.Open("select * from cheques where lancamento<20", data().Automacao);
    for (; !old.EOF(); old.MoveNext())
        old.Delete();
    EXPECT_THAT(data().historico.impedimento().toStdString(), HasSubstr("tamanho máximo"));
    click(form, "CmdIncluir");
    EXPECT_EQ(failed_.size(), 2U);
    EXPECT_EQ(text(form, "txtnumero"), "") << "ready for the next";
    EXPECT_THAT(stored().back(), HasSubstr("|" + number + "|"));
}

} // namespace
