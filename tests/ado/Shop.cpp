#include "ado/Shop.h"

#include "jet/Check.h"
#ifdef VALTRINO_SERVER
#include "ado/server/ServerTongue.h"
#include "ado/server/ServerValue.h"
#endif
#include "support/Cluster.h"

#include <chrono>
#include <fstream>
#include <iterator>
#include <thread>

namespace {

using jet::ColumnType;
using jet::Currency;
using jet::IndexSpec;
using jet::TableSpec;
using jet::Value;

jet::ColumnSpec text(const char* name, std::uint16_t width) {
    return {name, ColumnType::text, width};
}
jet::ColumnSpec number(const char* name) { return {name, ColumnType::longInteger}; }
jet::ColumnSpec counter(const char* name) { return {name, ColumnType::longInteger, 0, true}; }
jet::ColumnSpec of(ColumnType type, const char* name) { return {name, type}; }

IndexSpec key(const char* column) { return {"PrimaryKey", {{column}}, true}; }
IndexSpec index(const char* column) { return {column, {{column}}}; }

} // namespace

// clang-format off
const std::vector<TableSpec>& shopTables() {
    static const std::vector<TableSpec> tables{
        {"cliente_fornecedor",
         {counter("codigo"), text("nome", 60), of(ColumnType::boolean, "tipo"),
          text("endereco", 60), text("cgc_cpf", 18), of(ColumnType::date, "dt_nascimento"),
          of(ColumnType::currency, "renuneração_mensal"),
          of(ColumnType::currency, "limite_credito"), text("vender", 5), text("emailcli", 60),
          of(ColumnType::memo, "observacao")},
         {key("codigo"), index("nome")}},
        {"bancos", {counter("codigo"), number("cod_banco"), text("nome", 50)}, {key("codigo")}},
        {"cheques",
         {counter("lancamento"), number("cliente"), number("banco"), text("agencia", 10),
          text("numero", 20), of(ColumnType::date, "data"), of(ColumnType::date, "bompara"),
          of(ColumnType::currency, "valor"), text("observacao", 255), text("autorizou", 50),
          of(ColumnType::boolean, "descontar")},
         {key("lancamento"), index("cliente"), index("bompara"), index("numero")}},
        {"semfundos",
         {counter("lancamento"), number("cliente"), number("banco"), text("agencia", 10),
          text("numero", 20), of(ColumnType::date, "data"), of(ColumnType::currency, "valor"),
          text("empresa", 50), text("observacao", 255)},
         {key("lancamento")}}};
    return tables;
}
// clang-format on

Shop::Shop() {
    if (onServer()) {
        address_ = Cluster::instance(shopTables()).newShop();
    } else {
        const auto path = folder / "automacao.mdb";
        jet::Database::create(path, GetParam());
        jet::Database database(path);
        for (const TableSpec& spec : shopTables())
            database.createTable(spec);
    }
    connection.Open(connectionString());
}

void Shop::TearDown() {
    connection.Close();
    past_.reset();
    if (onServer())
        return Cluster::instance(shopTables()).giveBack(address_);
    const auto report = jet::check(folder / "automacao.mdb");
    for (const jet::Finding& finding : report.findings)
        ADD_FAILURE() << finding.sentence;
}

std::string Shop::connectionString() const {
    return "Provider=Microsoft.Jet.OLEDB.3.51;Persist Security Info=False;Data Source=" +
           (address_.empty() ? folder.path().string() + "\\automacao.mdb" : address_);
}

void Shop::changeBytes(const std::function<void(std::string& bytes)>& change) {
    connection.Close();
    const auto path = folder / "automacao.mdb";
    std::ifstream in(path, std::ios::binary);
    std::string bytes(std::istreambuf_iterator<char>(in), {});
    change(bytes);
    std::ofstream(path, std::ios::binary) << bytes;
    connection.Open(connectionString());
}

#ifdef VALTRINO_SERVER
void Shop::addOnServer(const char* name, Fields fields) {
    std::string columns;
    std::string values;
    std::vector<ado::Parameter> parameters;
    for (const auto& [field, value] : fields) {
        columns += std::string(columns.empty() ? "" : ", ") + ado::quotedName(field);
        values += values.empty() ? "" : ", ";
        values += ado::placeFor(parameters, ado::parameterOf(value));
    }
    const auto before = connection.store().generation();
    if (!past_)
        past_ = std::make_shared<ado::ServerWire>(address_);
    static_cast<void>(past_->run("insert into " + ado::quotedName(name) + " (" + columns +
                                     ") values (" + values + ")",
                                 parameters));
    while (!connection.inTransaction() && connection.store().generation() == before)
        std::this_thread::sleep_for(std::chrono::microseconds(200)); // until it has been told
}
#else
void Shop::addOnServer(const char* /*name*/, Fields /*fields*/) {}
#endif

jet::RowId Shop::add(const char* name, Fields fields) {
    if (onServer()) {
        addOnServer(name, fields);
        return {};
    }
    jet::Table& into = table(name);
    jet::Row row(into.columns().size());
    for (const auto& [field, value] : fields)
        row.at(into.findColumn(field).value()) = value;
    return into.insert(row);
}

// clang-format off
void Shop::addSomeOfEach() {
    const auto reais = [](std::int64_t amount) { return Currency{amount * 10000}; };
    using namespace std::string_literals;
    add("cliente_fornecedor", {{"nome", "Ana"s}, {"tipo", true}, {"limite_credito", reais(1000)}});
    add("cliente_fornecedor", {{"nome", "JOÃO"s}, {"tipo", true}, {"cgc_cpf", "12345678901"s}});
    add("cliente_fornecedor", {{"nome", "joão pequeno"s}, {"tipo", true}});
    add("cliente_fornecedor", {{"nome", "Zé"s}, {"tipo", false}});
    add("bancos", {{"cod_banco", std::int64_t{104}}, {"nome", "Banco do Norte"s}});
    add("bancos", {{"cod_banco", std::int64_t{1}}, {"nome", "Banco do Sul"s}});
    add("bancos", {{"cod_banco", std::int64_t{33}}, {"nome", "Agrário"s}});
    struct Cheque {
        std::int64_t client, bank;
        const char* number;
        jet::Date due;
        std::int64_t value;
        bool deposit;
    };
    const Cheque cheques[] = {{1, 1, "000123", day(2024, 1, 10), 1005000, true},
                              {2, 2, "000200", day(2024, 1, 31), 2000001, false},
                              {1, 3, "000123", day(2024, 2, 1), 100000, true},
                              {3, 1, "A-77", day(2024, 2, 29), 15000000, false},
                              {2, 1, "000201", day(2024, 3, 1), 5000, true},
                              {1, 2, "000300", day(2024, 1, 1), 333333, true}};
    for (const Cheque& cheque : cheques)
        add("cheques", {{"cliente", cheque.client},
                        {"banco", cheque.bank},
                        {"numero", std::string(cheque.number)},
                        {"data", day(2024, 1, 1)},
                        {"bompara", cheque.due},
                        {"valor", Currency{cheque.value}},
                        {"descontar", cheque.deposit}});
    for (const std::int64_t client : {2, 1})
        add("semfundos", {{"cliente", client},
                          {"banco", std::int64_t{1}},
                          {"numero", "9"s},
                          {"data", day(2023, 12, static_cast<int>(client))},
                          {"valor", reais(50)},
                          {"empresa", "Loja"s}});
}
// clang-format on

std::int64_t Shop::rowsIn(const char* name) {
    ado::Recordset rows;
    rows.Open(name, connection);
    return rows.RecordCount();
}

std::vector<std::string> Shop::column(ado::Recordset& rows, const char* field) {
    std::vector<std::string> values;
    if (rows.BOF() && rows.EOF())
        return values;
    for (rows.MoveFirst(); !rows.EOF(); rows.MoveNext())
        values.push_back(rows[field].text());
    return values;
}

std::vector<std::string> Shop::column(const std::string& statement, const char* field) {
    ado::Recordset rows;
    rows.Open(statement, connection);
    return column(rows, field);
}

const ado::Spelling& asWritten() {
    static const auto same = [](std::string_view name) { return std::string(name); };
    static const ado::Spelling spelling{
        same, [](std::string_view name, std::span<const std::string>) { return same(name); }, same};
    return spelling;
}

jet::Date day(int year, int month, int dayOfMonth) {
    return jet::Date::of({year, month, dayOfMonth, 0, 0, 0});
}

namespace jet {

void PrintTo(Errc code, std::ostream* out) { *out << "Errc " << static_cast<int>(code); }
void PrintTo(const Currency& amount, std::ostream* out) {
    *out << amount.tenThousandths << "/10000";
}

} // namespace jet
