#include "support/ShopTest.h"

#include "jet/Check.h"
#include "schema/ShopSchema.h"
#include "shell/Mirtal.h"

#include <thread>

void ShopTest::SetUp() {
    FormTest::SetUp();
    Mirtal::modo.clear();
    Mirtal::registroEscolhido = false;
    Mirtal::lancamentoEscolhido = 0;
    Mirtal::DatabaseFolder = QString::fromStdString(shop_.line());
    data().abrir();
}

void ShopTest::TearDown() {
    FormTest::TearDown();
    dbconectar::descartar();
    if (onServer())
        return;
    for (const jet::Finding& finding : jet::check(shop_.file()).findings)
        ADD_FAILURE() << "the file left behind: " << finding.sentence;
}

void ShopTest::given(const char* table, std::initializer_list<Row> rows) {
    ado::Recordset target;
    target.Open(table, data().Automacao);
    for (const Row& row : rows) {
        target.AddNew();
        for (const Field& field : row)
            target[field.name] = field.value;
        target.Update();
    }
    for (ado::Recordset* shared :
         {&data().rsCliente, &data().rsBancos, &data().rsCheques, &data().rsSemFundos})
        if (shared->State() == ado::State::Open)
            shared->Requery();
}

void ShopTest::remake(const std::function<void(jet::TableSpec&)>& change) {
    dbconectar::descartar();
    std::vector<jet::TableSpec> tables;
    for (jet::TableSpec table : shop::tables()) {
        change(table);
        if (!table.columns.empty())
            tables.push_back(std::move(table));
    }
    shop_.remake(tables);
    Mirtal::DatabaseFolder = QString::fromStdString(shop_.line());
    data().abrir();
}

void ShopTest::byAnother(const std::function<void(ado::Connection& other)>& work) {
    data().Automacao.flush();
    const std::uint64_t before = data().Automacao.store().generation();
    {
        ado::Connection other;
        other.Open(data().Automacao.ConnectionString());
        work(other);
        other.Close();
    }
    while (onServer() && data().Automacao.store().generation() == before)
        std::this_thread::yield(); // until it has been told; in a file whoever reads finds it
}

std::vector<std::string> ShopTest::rows(const QString& statement) {
    ado::Recordset source;
    source.Open(statement, data().Automacao);
    std::vector<std::string> lines;
    for (; !source.EOF(); source.MoveNext()) {
        std::string line;
        for (std::size_t place = 0; place < source.FieldCount(); ++place)
            line += (place == 0 ? "" : "|") + source.field(place).text();
        lines.push_back(line);
    }
    return lines;
}
