#include "schema/ShopSchema.h"

#include "jet/FileSteps.h"

namespace shop {

namespace {

using jet::ColumnSpec;
using jet::ColumnType;
using jet::IndexSpec;
using jet::TableSpec;

ColumnSpec key(const char* name) {
    return {.name = name, .type = ColumnType::longInteger, .autonumber = true};
}

ColumnSpec column(const char* name, ColumnType type) { return {.name = name, .type = type}; }

ColumnSpec textColumn(const char* name, std::uint16_t width) {
    return {.name = name, .type = ColumnType::text, .width = width};
}

IndexSpec primaryKey(const char* column) {
    return {.name = "PrimaryKey",
            .columns = {{column}},
            .primary = true,
            .unique = true,
            .required = true};
}

/// The agenda lists a week out of years, whose cheques lie each on a page of its own.
IndexSpec ofTheDay() {
    return {
        .name = "bompara",
        .columns = {{"bompara"} },
        .included = { "cliente", "banco", "agencia", "numero", "data", "valor", "descontar"}
    };
}

/// What the windows search and the reports select by; the file would be read whole otherwise.
IndexSpec index(const char* column) { return {.name = column, .columns = {{column}}}; }

std::vector<TableSpec> makeTables() {
    using enum ColumnType;
    return {
        {.name = "cliente_fornecedor",
         .columns = {key("codigo"),
                     textColumn("nome", 60),
                     column("tipo", boolean),
                     textColumn("endereco", 60),
                     textColumn("bairro", 40),
                     textColumn("cidade", 40),
                     textColumn("cep", 9),
                     textColumn("estado", 2),
                     textColumn("cgc_cpf", 18),
                     textColumn("inscricao_rg", 20),
                     textColumn("fone", 20),
                     textColumn("fax", 20),
                     column("ultima_compra_venda", date),
                     column("dt_nascimento", date),
                     column("renuneração_mensal", currency),
                     column("limite_credito", currency),
                     textColumn("vender", 5),
                     textColumn("bancos_trabalha01", 40),
                     textColumn("bancos_trabalha02", 40),
                     textColumn("pessoa_autorizada01", 50),
                     textColumn("pessoa_autorizada02", 50),
                     textColumn("pai", 50),
                     textColumn("mae", 50),
                     textColumn("ocupacao", 40),
                     textColumn("empresa", 50),
                     textColumn("fone_empresa", 20),
                     textColumn("emailcli", 60),
                     column("observacao", memo)},
         .indexes = {primaryKey("codigo"), index("nome")}       },
        {.name = "bancos",
         .columns = {key("codigo"), column("cod_banco", longInteger), textColumn("nome", 50)},
         .indexes = {primaryKey("codigo")}                      },
        {.name = "cheques",
         .columns = {key("lancamento"), column("cliente", longInteger),
                     column("banco", longInteger), textColumn("agencia", 10),
                     textColumn("numero", 20), column("data", date), column("bompara", date),
                     column("valor", currency), textColumn("observacao", 255),
                     textColumn("autorizou", 50), column("descontar", boolean)},
         .indexes = {primaryKey("lancamento"), index("cliente"), index("bompara"),
                     index("numero")}                           },
        {.name = "semfundos",
         .columns = {key("lancamento"), column("cliente", longInteger),
                     column("banco", longInteger), textColumn("agencia", 10),
                     textColumn("numero", 20), column("data", date), column("valor", currency),
                     textColumn("empresa", 50), textColumn("observacao", 255)},
         .indexes = {primaryKey("lancamento"), index("cliente")}},
    };
}

} // namespace

std::span<const TableSpec> tables() {
    static const std::vector<TableSpec> made = makeTables();
    return made;
}

std::span<const TableSpec> serverIndexes() {
    static const std::vector<TableSpec> made = {
        {.name = "cheques",   .columns = {}, .indexes = {index("banco"), index("data"), ofTheDay()}},
        {.name = "semfundos",
         .columns = {},
         .indexes = {index("banco"), index("data"), index("numero")}                               },
    };
    return made;
}

const TableSpec& history() {
    static const TableSpec spec{
        .name = kHistory,
        .columns = {{.name = "id", .type = ColumnType::longInteger, .autonumber = true},
                    {.name = "grupo", .type = ColumnType::longInteger},
                    {.name = "quando", .type = ColumnType::date},
                    {.name = "estacao", .type = ColumnType::text, .width = 64},
                    {.name = "operacao", .type = ColumnType::text, .width = 20},
                    {.name = "tabela", .type = ColumnType::text, .width = 64},
                    {.name = "lancamento", .type = ColumnType::longInteger},
                    {.name = "cliente", .type = ColumnType::longInteger},
                    {.name = "banco", .type = ColumnType::longInteger},
                    {.name = "numero", .type = ColumnType::text, .width = 255},
                    {.name = "valor", .type = ColumnType::currency},
                    {.name = "data", .type = ColumnType::date},
                    {.name = "bompara", .type = ColumnType::date},
                    {.name = "antes", .type = ColumnType::memo},
                    {.name = "depois", .type = ColumnType::memo},
                    {.name = "desfeito_por", .type = ColumnType::longInteger}},
        .indexes = {{.name = "PrimaryKey", .columns = {{"id"}}, .primary = true},
                    {.name = "grupo", .columns = {{"grupo"}}},
                    {.name = "quando", .columns = {{"quando"}}}}
    };
    return spec;
}

void createTables(jet::Database& database) {
    for (const TableSpec& table : tables())
        database.createTable(table);
}

void createFile(const std::filesystem::path& path, jet::Version version,
                const std::function<void(jet::Database&)>& fill) {
    jet::Disk& disk = jet::Disk::system();
    jet::requireAbsent(path, disk);
    jet::UnnamedFile part(path, disk);
    jet::Database::create(part.path(), version);
    {
        jet::Database database(part.path());
        createTables(database);
        if (fill)
            fill(database);
        database.flush();
    }
    jet::requireAbsent(path, disk);
    part.takeName();
}

} // namespace shop
