#include "ado/migrate/KeptExtras.h"

#include "ado/server/ServerValue.h"
#include "jet/Error.h"

#include <algorithm>
#include <span>

namespace ado {

namespace {

using jet::Value;

constexpr const char* kMade[] = {
    "drop table if exists valtrino_arquivo.objeto, valtrino_arquivo.passo, "
    "valtrino_arquivo.relacionamento, valtrino_arquivo.regra",
    "create table valtrino_arquivo.objeto (objeto integer primary key, tipo integer, nome text, "
    "marcas bigint, arquivo bytea, caminho bytea, nome_la bytea, propriedades bytea)",
    "create table valtrino_arquivo.passo (objeto integer, passo integer, atributo integer, "
    "ordem bytea, nome1 bytea, nome2 bytea, expressao bytea, marca integer, mais integer, "
    "primary key (objeto, passo))",
    "create table valtrino_arquivo.relacionamento (relacionamento integer, lugar integer, "
    "nome text, marcas bigint, filha text, mae text, campo text, campo_da_mae text, "
    "primary key (relacionamento, lugar))",
    "create table valtrino_arquivo.regra (tabela text, campo text, regra text, nome text, "
    "definicao text)",
};
// A constraint says the same once all rows are known to keep it.
constexpr const char* kMadeConstraints =
    "select c.relname, '', '', k.conname, "
    "regexp_replace(pg_get_constraintdef(k.oid), ' NOT VALID$', '') "
    "from pg_catalog.pg_constraint k join pg_catalog.pg_class c on c.oid = k.conrelid "
    "join pg_catalog.pg_namespace n on n.oid = c.relnamespace and n.nspname = 'valtrino' "
    "where k.contype in ('c', 'f')";

ServerStatement insertion(const char* table, const jet::Row& values) {
    ServerStatement made{std::string("insert into valtrino_arquivo.") + table + " values (", {}};
    for (const Value& value : values) {
        made.parameters.push_back(parameterOf(value));
        made.sql.append(made.parameters.size() == 1 ? "$" : ", $")
            .append(std::to_string(made.parameters.size()));
    }
    made.sql += ")";
    return made;
}

/// Queries have zero characters in their texts, which a text of the server hasn't: so these are
/// bytes there.
Value asBytes(const Value& value) {
    const auto* const text = std::get_if<std::string>(&value);
    if (text == nullptr)
        return value;
    const auto bytes = std::as_bytes(std::span(*text));
    return jet::Bytes(bytes.begin(), bytes.end());
}
Value asText(const Value& value) {
    const auto* const bytes = std::get_if<jet::Bytes>(&value);
    if (bytes == nullptr)
        return value;
    std::string text(bytes->size(), '\0');
    std::ranges::transform(*bytes, text.begin(), [](std::byte b) { return static_cast<char>(b); });
    return text;
}
constexpr std::size_t kFirstText = 2; ///< of a step's texts
constexpr std::size_t kBehindTexts = 5;

Value whole(std::size_t number) { return static_cast<std::int64_t>(number); }

std::vector<ServerStatement> statementsOf(const jet::ExtraObject& object, std::size_t number) {
    std::vector<ServerStatement> made;
    made.push_back(insertion(
        "objeto", {whole(number), object.type, object.name, object.flags, asBytes(object.link[0]),
                   asBytes(object.link[1]), asBytes(object.link[2]),
                   object.properties.empty() ? Value() : Value(object.properties)}));
    for (std::size_t i = 0; i < object.steps.size(); ++i) {
        jet::Row row{whole(number), whole(i)};
        row.insert(row.end(), object.steps[i].begin(), object.steps[i].end());
        for (std::size_t text = kFirstText; text < kBehindTexts; ++text)
            row[2 + text] = asBytes(row[2 + text]);
        made.push_back(insertion("passo", row));
    }
    return made;
}

std::vector<ServerStatement> statementsOf(const jet::RelationshipSpec& bond, std::size_t number) {
    std::vector<ServerStatement> made;
    for (std::size_t i = 0; i < bond.columns.size(); ++i)
        made.push_back(insertion("relacionamento",
                                 {whole(number), whole(i), bond.name, bond.flags, bond.child,
                                  bond.parent, bond.columns[i].first, bond.columns[i].second}));
    return made;
}

/// One after the other, as far as the server can hold it.
template <class Thing>
void keepAll(ServerWire& wire, const std::vector<Thing>& all, std::vector<Thing>& kept,
             std::vector<std::string>& refused) {
    for (const Thing& one : all) {
        try {
            if (const auto statements = statementsOf(one, kept.size()); !statements.empty())
                static_cast<void>(wire.run(statements));
            kept.push_back(one);
        } catch (const jet::Error& error) {
            if (error.code() == jet::Errc::io || error.code() == jet::Errc::offline)
                throw;
            refused.push_back("O que o arquivo guarda de \"" + one.name +
                              "\" não cabe no servidor e não volta dele: " + error.what());
        }
    }
}

/// The rows of one of those tables, as values.
std::vector<jet::Row> rowsOf(ServerWire& wire, const std::string& table, const char* order) {
    if (!wire.run("select to_regclass('valtrino_arquivo." + table + "')").field(0, 0))
        return {};
    const ServerRows found =
        wire.run("select * from valtrino_arquivo." + table + " order by " + order);
    std::vector<jet::Row> rows(static_cast<std::size_t>(found.rows()));
    for (int row = 0; row < found.rows(); ++row)
        for (int column = 0; column < found.columns(); ++column)
            rows[static_cast<std::size_t>(row)].push_back(valueOf(
                found.field(row, column), found.columnType(column), found.columnModifier(column)));
    return rows;
}

std::string textOf(const Value& value) {
    const auto* const text = std::get_if<std::string>(&value);
    return text != nullptr ? *text : std::string();
}
std::int64_t numberOf(const Value& value) {
    const auto* const number = std::get_if<std::int64_t>(&value);
    return number != nullptr ? *number : 0;
}

} // namespace

std::vector<std::string> keepExtras(ServerWire& wire, const jet::Extras& extras) {
    for (const char* const step : kMade)
        static_cast<void>(wire.run(step));
    std::vector<std::string> refused;
    jet::Extras kept;
    keepAll(wire, extras.objects, kept.objects, refused);
    keepAll(wire, extras.relationships, kept.relationships, refused);
    const jet::Extras there = keptExtras(wire);
    if (there.objects != kept.objects || there.relationships != kept.relationships)
        throw jet::Error(jet::Errc::corrupt,
                         "A migração não foi aproveitada: as propriedades, consultas e "
                         "relacionamentos no servidor não são os do arquivo.");
    return refused;
}

void keepRules(ServerWire& wire, const std::vector<KeptRule>& rules) {
    static_cast<void>(
        wire.run(std::string("insert into valtrino_arquivo.regra ") + kMadeConstraints));
    for (const KeptRule& rule : rules) {
        const std::vector<Parameter> parameters{parameterOf(rule.table), parameterOf(rule.column),
                                                parameterOf(std::string(rule.what)),
                                                parameterOf(rule.name)};
        static_cast<void>(
            wire.run(rule.what == kDefault
                         ? "insert into valtrino_arquivo.regra select $1, $2, $3, $4, "
                           "pg_get_expr(d.adbin, d.adrelid) from pg_catalog.pg_attrdef d "
                           "join pg_catalog.pg_attribute a on a.attrelid = d.adrelid and "
                           "a.attnum = d.adnum and a.attname = $2 "
                           "where d.adrelid = format('valtrino.%I', $1)::regclass"
                         : "update valtrino_arquivo.regra set campo = $2, regra = $3 where tabela "
                           "operator(pg_catalog.=) $1 and nome operator(pg_catalog.=) $4",
                     parameters));
    }
}

jet::Extras keptExtras(ServerWire& wire) {
    jet::Extras extras;
    for (jet::Row& row : rowsOf(wire, "objeto", "1")) {
        jet::ExtraObject object{
            numberOf(row[1]),
            textOf(row[2]),
            numberOf(row[3]),
            {asText(row[4]), asText(row[5]), asText(row[6])}
        };
        if (const auto* const bytes = std::get_if<jet::Bytes>(&row[7]))
            object.properties = *bytes;
        extras.objects.push_back(std::move(object));
    }
    for (jet::Row& row : rowsOf(wire, "passo", "1, 2"))
        if (const auto object = static_cast<std::size_t>(numberOf(row[0]));
            object < extras.objects.size()) {
            row.erase(row.begin(), row.begin() + 2);
            for (std::size_t text = kFirstText; text < kBehindTexts; ++text)
                row[text] = asText(row[text]);
            extras.objects[object].steps.push_back(std::move(row));
        }
    std::optional<std::int64_t> last;
    for (jet::Row& row : rowsOf(wire, "relacionamento", "1, 2")) {
        if (last != numberOf(row[0]))
            extras.relationships.push_back(
                {textOf(row[2]), textOf(row[4]), textOf(row[5]), {}, numberOf(row[3])});
        last = numberOf(row[0]);
        extras.relationships.back().columns.emplace_back(textOf(row[6]), textOf(row[7]));
    }
    return extras;
}

std::vector<KeptRule> keptRules(ServerWire& wire) {
    std::vector<KeptRule> rules;
    for (const jet::Row& row : rowsOf(wire, "regra", "1, 4"))
        rules.push_back(
            {textOf(row[0]), textOf(row[1]), textOf(row[2]), textOf(row[3]), textOf(row[4])});
    return rules;
}

} // namespace ado
