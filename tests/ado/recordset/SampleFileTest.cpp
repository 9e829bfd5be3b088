#include "ado/Shop.h"
#include "support/Samples.h"

namespace {

using ado::Recordset;

/// The shop's own file, as another program made it.
TEST(SampleFile, TheStartUpRecordsetsOpenAndRead) {
    const auto samples = samplesFolder();
    if (!samples)
        GTEST_SKIP() << "no sample databases here";
    TemporaryFolder folder;
    std::filesystem::copy_file(*samples / "automacao-jet4.mdb", folder.path() / "AUTOMACAO.MDB");
    ado::Connection connection;
    connection.setConnectionString("Provider=x;Data Source=" + folder.path().string() +
                                   "\\automacao.mdb");
    Recordset banks;
    Recordset clients;
    Recordset cheques;
    Recordset bounced;
    banks.Open("bancos", connection);
    clients.Open("select * from cliente_fornecedor where tipo=true", connection);
    cheques.Open("Cheques", connection);
    bounced.Open("semfundos", connection);
    for (Recordset* rows : {&banks, &clients, &cheques, &bounced}) {
        std::int64_t count = 0;
        for (; !rows->EOF(); rows->MoveNext(), ++count) {
            for (std::size_t i = 0; i < rows->FieldCount(); ++i)
                (void)rows->field(i).text();
        }
        EXPECT_EQ(count, rows->RecordCount());
    }
    Recordset joined;
    joined.Open("Select * from (cheques inner join cliente_fornecedor on "
                "cheques.cliente=cliente_fornecedor.codigo) inner join bancos on "
                "cheques.banco=bancos.codigo  order by cliente_fornecedor.nome,cheques.bompara ",
                connection);
    EXPECT_EQ(joined.RecordCount(), cheques.RecordCount());
    clients.MoveFirst();
    EXPECT_EQ(clients["RENUNERAÇÃO_MENSAL"].name(), "renuneração_mensal");
}

} // namespace
