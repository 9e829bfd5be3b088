// A table that isn't as it should be, which only the look before its first change finds out: told
// as of this table, marked in the status bar at once, and noted for the other stations.
#include "cheques/FrmLancarCheques.h"
#include "controls/window/Failure.h"
#include "jet/Backup.h"
#include "registers/frmBancos.h"
#include "shell/MDICheques.h"
#include "shell/Programa.h"
#include "support/ChequeShop.h"
#include "support/Versions.h"

#include <QToolButton>

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

using namespace std::string_literals;

class DamagedTable : public ChequeShop, public testing::WithParamInterface<jet::Version> {
protected:
    DamagedTable() : ChequeShop(GetParam()) {}
    void SetUp() override {
        ChequeShop::SetUp();
        setFailureHandler(&atenderFalha);
        given("cheques", {
                             {{"cliente", number(kClient)},
                              {"banco", number(1)},
                              {"numero", words("000777")},
                              {"valor", money(50)}}
        });
    }
    void TearDown() override {
        // The test's own damage is taken back before the file is checked.
        WindowList::instance().clear();
        data().fechar();
        changeClient(kOther, kClient);
        ChequeShop::TearDown();
    }

    static constexpr std::int32_t kClient = 1'234'567;
    static constexpr std::int32_t kOther = 1'234'566;

    /// Another program's slip: the client's code changed in the rows and not in the index.
    void changeClient(std::int32_t from, std::int32_t to) const {
        const auto bytesOf = [](std::int32_t value) {
            std::string bytes(sizeof value, 0);
            std::memcpy(bytes.data(), &value, sizeof value);
            return bytes;
        };
        std::string bytes;
        {
            std::ifstream file(shop().file(), std::ios::binary);
            bytes.assign(std::istreambuf_iterator<char>(file), {});
        }
        const std::size_t at = bytes.find(bytesOf(from));
        ASSERT_NE(at, std::string::npos);
        std::fstream file(shop().file(), std::ios::binary | std::ios::in | std::ios::out);
        file.seekp(static_cast<std::streamoff>(at));
        file << bytesOf(to);
    }
};

INSTANTIATE_TEST_SUITE_P(, DamagedTable, bothVersions(), versionName);

TEST_P(DamagedTable, IsMarkedAtOnceAndTheOthersAreUsed) {
    data().fechar();
    changeClient(kClient, kOther);
    data().abrir();
    auto& window = MDICheques::instance();
    window.show();
    const auto& mark = control<QToolButton>(window, "pnlDano");
    auto& form = open<FrmLancarCheques>();
    for (const char* field : {"Ana", "agro", "0042", "000888", "01032026", "31032026", "50"}) {
        type(field);
        press(Qt::Key_Return);
    }
    EXPECT_FALSE(mark.isVisible());
    QString told;
    setMessageFunction([&](const Message& message) {
        told = message.text;
        EXPECT_TRUE(mark.isVisible());
        return MessageAnswer::ok;
    });
    click(form, "CmdIncluir");
    EXPECT_TRUE(told.startsWith("A tabela \"cheques\" pode ser consultada mas não alterada"))
        << told.toStdString();
    EXPECT_EQ(mark.toolTip(), told);
    EXPECT_EQ(jet::Backup(shop().file()).damage(), told.toStdString());
    EXPECT_EQ(text(form, "txtnumero"), "000888");

    auto& banks = open<frmBancos>();
    click(banks, "cmdNovo");
    type("341");
    press(Qt::Key_Return);
    type("Banco do Vale");
    told.clear();
    click(banks, "cmdSalvar");
    EXPECT_EQ(told, "");
    EXPECT_EQ(rows("select nome from bancos").size(), 3U);
}

} // namespace
