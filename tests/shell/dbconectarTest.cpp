#include "shell/dbconectar.h"

#include "jet/Error.h"
#include "shell/Configuracao.h"
#include "shell/DatabaseFolder.h"
#include "support/ShopTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class DataAccess : public Everywhere<ShopTest> {
protected:
    /// A connection made anew for a folder.
    static dbconectar& restart(const QString& folder) {
        dbconectar::descartar();
        Mirtal::DatabaseFolder = folder;
        return data();
    }
    static std::string openingFailure() {
        try {
            data().abrir();
        } catch (const jet::Error& failure) {
            return failure.what();
        }
        return "";
    }
};

INSTANTIATE_TEST_SUITE_P(, DataAccess, everywhere(), keptName);

TEST_P(DataAccess, IsOneObject) { EXPECT_EQ(&dbconectar::instance(), &dbconectar::instance()); }

TEST_P(DataAccess, TheConnectionStringIsProviderFolderAndFile) {
    EXPECT_EQ(restart("C:\\Dados").Automacao.ConnectionString(),
              "Provider=Microsoft.Jet.OLEDB.3.51;Persist Security Info=False;"
              "Data Source=C:\\Dados\\automacao.mdb");
}

TEST_P(DataAccess, AnEmptyFolderIsTheRootOfTheDrive) {
    EXPECT_EQ(restart("").Automacao.ConnectionString(),
              "Provider=Microsoft.Jet.OLEDB.3.51;Persist Security Info=False;"
              "Data Source=\\automacao.mdb");
}

TEST_P(DataAccess, ATrailingBackslashIsDoubledAndTheFileFoundAllTheSame) {
    if (onServer())
        GTEST_SKIP() << kByTheFile;
    const QString folder = QString::fromStdString(shop().folder().string()) + "\\";
    EXPECT_EQ(restart(folder).Automacao.ConnectionString(),
              ("Provider=Microsoft.Jet.OLEDB.3.51;Persist Security Info=False;Data Source=" +
               folder + "\\automacao.mdb")
                  .toStdString());
    EXPECT_EQ(openingFailure(), "");
}

TEST_P(DataAccess, AFolderNameThatWouldBreakTheConnectionStringIsFoundAllTheSame) {
    if (onServer())
        GTEST_SKIP() << kByTheFile;
    for (const char* name :
         {"loja;2", "loja; Data Source=x", "a=b", "D'Avila", "\"loja\"", "\";'", " loja"}) {
        const auto folder = shop().folder() / name;
        std::filesystem::create_directory(folder);
        std::filesystem::copy_file(shop().file(), folder / "automacao.mdb");
        restart(QString::fromStdString(folder.string()));
        EXPECT_EQ(openingFailure(), "") << name;
        EXPECT_EQ(data().Automacao.database().path(), folder / "automacao.mdb");
    }
}

TEST_P(DataAccess, ABlankBeforeTheFolderIsPartOfItsName) {
    if (onServer())
        GTEST_SKIP() << kByTheFile;
    EXPECT_EQ(restart(" C:\\Dados").Automacao.ConnectionString(),
              "Provider=Microsoft.Jet.OLEDB.3.51;Persist Security Info=False;"
              "Data Source=\" C:\\Dados\\automacao.mdb\"");
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(shop().folder());
    std::filesystem::create_directory(" loja");
    std::filesystem::copy_file(shop().file(), " loja/automacao.mdb");
    restart(" loja");
    EXPECT_EQ(openingFailure(), "");
    restart("loja");
    EXPECT_NE(openingFailure(), "");
    std::filesystem::current_path(before);
}

TEST_P(DataAccess, TheFourRecordsetsStayOpenUntilTheEnd) {
    for (const ado::Recordset* rs :
         {&data().rsCliente, &data().rsBancos, &data().rsCheques, &data().rsSemFundos})
        EXPECT_EQ(rs->State(), ado::State::Open);
    data().fechar();
    for (const ado::Recordset* rs :
         {&data().rsCliente, &data().rsBancos, &data().rsCheques, &data().rsSemFundos})
        EXPECT_EQ(rs->State(), ado::State::Closed);
    EXPECT_EQ(data().Automacao.State(), ado::State::Closed);
}

TEST_P(DataAccess, EachRecordsetHoldsItsTable) {
    given("cliente_fornecedor", {
                                    {{"nome", words("Ana")}, {"tipo", yes(true)}}
    });
    given("bancos", {
                        {{"cod_banco", number(104)}, {"nome", words("Banco do Norte")}}
    });
    given("cheques", {{{"numero", words("000123")}}});
    given("semfundos", {{{"numero", words("000456")}}});
    EXPECT_EQ(data().rsCliente["nome"].text(), "Ana");
    EXPECT_EQ(data().rsBancos["nome"].text(), "Banco do Norte");
    EXPECT_EQ(data().rsCheques["numero"].text(), "000123");
    EXPECT_EQ(data().rsSemFundos["numero"].text(), "000456");
}

TEST_P(DataAccess, SuppliersAreNotSeen) {
    given("cliente_fornecedor", {
                                    {{"nome", words("Fornecedora")}, {"tipo", yes(false)}},
                                    {{"nome", words("Cliente")},     {"tipo", yes(true)} }
    });
    EXPECT_EQ(data().rsCliente.RecordCount(), 1);
    EXPECT_EQ(data().rsCliente["nome"].text(), "Cliente");
}

TEST_P(DataAccess, AnApostropheInAQuotedNameBreaksTheQuery) {
    given("cliente_fornecedor", {
                                    {{"nome", words("D'Avila")}, {"tipo", yes(true)}}
    });
    EXPECT_THROW((void)rows("select * from cliente_fornecedor where nome='D'Avila'"), jet::Error);
}

TEST_P(DataAccess, DateRangesIncludeBothEndsAndAreWrittenMonthFirst) {
    given("cheques", {
                         {{"numero", words("antes")},    {"bompara", day(2024, 2, 2)}},
                         {{"numero", words("primeiro")}, {"bompara", day(2024, 2, 3)}},
                         {{"numero", words("ultimo")},   {"bompara", day(2024, 3, 2)}},
                         {{"numero", words("depois")},   {"bompara", day(2024, 3, 3)}}
    });
    EXPECT_THAT(
        rows("select numero from cheques where bompara between #02/03/2024# and #03/02/2024#"),
        ElementsAre("primeiro", "ultimo"));
}

TEST_P(DataAccess, AMissingFileIsToldWithThePathTriedAndTheConfiguration) {
    const auto empty = makeTestFolder();
    restart(QString::fromStdString(empty.string()));
    EXPECT_THAT(
        openingFailure(),
        AllOf(HasSubstr((empty / "automacao.mdb").string()),
              HasSubstr(Configuracao::caminho(Configuracao::pastaDoPrograma()).toStdString())));
    std::filesystem::remove_all(empty);
}

TEST_P(DataAccess, AFileThatIsNoDatabaseIsTold) {
    const auto folder = makeTestFolder();
    std::ofstream(folder / "automacao.mdb") << "isto não é uma base de dados";
    restart(QString::fromStdString(folder.string()));
    EXPECT_THAT(openingFailure(), HasSubstr((folder / "automacao.mdb").string()));
    std::filesystem::remove_all(folder);
}

} // namespace
