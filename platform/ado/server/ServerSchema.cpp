#include "ado/server/ServerSchema.h"

#include "ado/dialect/Spelling.h"
#include "ado/server/ServerOrder.h"
#include "ado/server/ServerRoles.h"
#include "ado/server/ServerValue.h"
#include "jet/Error.h"
#include "jet/Names.h"

#include <algorithm>

namespace ado {

namespace {

constexpr const char* kShop = "select 1 from pg_catalog.pg_namespace where nspname = 'valtrino'";

// Texts are ordered, and the same, by their keys (ServerOrder.h): the signs of comparison mean
// those wherever our names come before the server's own. What the server groups or keeps apart by
// itself goes by an order of its own, without regard to case and with regard to accents. `like` and
// what looks into texts needs one in which no two texts are the same: that of their letters. A
// function that gives a text gives it in the shop's order.
constexpr const char* kFoundation[] = {
    // Where a station's last transaction that was ended well has left its number, for a station
    // whose line breaks while it waits for the answer. Not the number that the server itself gives
    // a transaction: a standby that takes over may give it to another one.
    R"(create table if not exists valtrino_estacoes.gravacao (
       estacao uuid primary key, numero bigint not null default 0,
       quando timestamptz not null default now()))",
    "create collation texto (provider = icu, locale = 'und-u-ks-level2', deterministic = false)",
    // How anything is sorted that may be a text: a yes is -1.
    R"(create function jet_ordem(text) returns bytea language sql immutable strict parallel safe
       as 'select valtrino.jet_chave($1)')",
    R"(create function jet_ordem(boolean) returns boolean language sql immutable strict
       parallel safe as 'select not $1')",
    R"(create function jet_ordem(anyelement) returns anyelement language sql immutable
       parallel safe as 'select $1')",
    // The lesser and the greater of two texts, the first of two that are the same.
    R"(create function jet_menor(text, text) returns text language plpgsql immutable strict
       as $body$ begin
           return case when valtrino.jet_chave($1) <= valtrino.jet_chave($2) then $1 else $2 end;
       end $body$)",
    R"(create function jet_maior(text, text) returns text language plpgsql immutable strict
       as $body$ begin
           return case when valtrino.jet_chave($1) >= valtrino.jet_chave($2) then $1 else $2 end;
       end $body$)",
    "create aggregate min(text) (sfunc = jet_menor, stype = text)",
    "create aggregate max(text) (sfunc = jet_maior, stype = text)",
    // A place or length that can't be is an error of the statement.
    R"(create function jet_count(bigint, integer) returns integer language plpgsql immutable
       strict as $body$
       begin
           if $1 < $2 then
               raise exception 'posição ou tamanho de texto inválido' using errcode = '42601';
           end if;
           return least($1, 1000000000);
       end $body$)",
    R"(create function jet_mid(text, bigint, bigint) returns text immutable strict
       return substr($1, jet_count($2, 1), jet_count($3, 0)) collate texto)",
    R"(create function jet_mid(text, bigint) returns text immutable strict
       return substr($1, jet_count($2, 1)) collate texto)",
    R"(create function jet_left(text, bigint) returns text immutable strict
       return substr($1, 1, jet_count($2, 0)) collate texto)",
    R"(create function jet_right(text, bigint) returns text immutable strict
       return pg_catalog.right($1, jet_count($2, 0)) collate texto)",
    "create function jet_len(text) returns integer immutable strict return length($1)",
    R"(create function jet_len(numeric) returns integer immutable strict
       return length(trim_scale($1)::text))",
    R"(create function jet_instr(text, text) returns integer immutable strict
       return strpos($1 collate "C", $2 collate "C"))",
    R"(create function jet_ucase(text) returns text immutable strict
       return upper($1 collate "und-x-icu") collate texto)",
    R"(create function jet_lcase(text) returns text immutable strict
       return lower($1 collate "und-x-icu") collate texto)",
    R"(create function jet_trim(text) returns text immutable strict
       return btrim($1 collate "C", ' ') collate texto)",
    R"(create function jet_ltrim(text) returns text immutable strict
       return pg_catalog.ltrim($1 collate "C", ' ') collate texto)",
    R"(create function jet_rtrim(text) returns text immutable strict
       return pg_catalog.rtrim($1 collate "C", ' ') collate texto)",
    R"(create function jet_nz(anycompatible, anycompatible) returns anycompatible immutable
       language sql as 'select coalesce($1, $2)')",
    R"(create function jet_isnull(anyelement) returns boolean immutable
       language sql as 'select $1 is null')",
    "create function jet_int(numeric) returns numeric immutable strict return floor($1)",
    "create function jet_fix(numeric) returns numeric immutable strict return trunc($1)",
    "create function jet_date() returns timestamp stable return current_date::timestamp",
    "create function jet_now() returns timestamp stable return localtimestamp(0)",
    R"(create function jet_year(timestamp) returns integer immutable strict
       return extract(year from $1)::int)",
    R"(create function jet_month(timestamp) returns integer immutable strict
       return extract(month from $1)::int)",
    R"(create function jet_day(timestamp) returns integer immutable strict
       return extract(day from $1)::int)",
    R"(create function iif(boolean, anycompatible, anycompatible) returns anycompatible immutable
       language sql as 'select case when $1 then $2 else $3 end')",
    R"(create function jet_like(text, text) returns boolean immutable strict
       return ($1 collate "und-x-icu") ilike ($2 collate "und-x-icu") escape '')",
    R"(create function jet_unlike(text, text) returns boolean immutable strict
       return not (($1 collate "und-x-icu") ilike ($2 collate "und-x-icu") escape ''))",
    "create operator ~% (function = jet_like, leftarg = text, rightarg = text)",
    "create operator !~% (function = jet_unlike, leftarg = text, rightarg = text)",
    R"(create function jet_join(text, text) returns text immutable
       return (case when $1 is not null or $2 is not null
                    then coalesce($1, '') || coalesce($2, '') end) collate texto)",
    R"(create function jet_join(text, numeric) returns text immutable
       return jet_join($1, trim_scale($2)::text))",
    R"(create function jet_join(numeric, text) returns text immutable
       return jet_join(trim_scale($1)::text, $2))",
    R"(create function jet_join(numeric, numeric) returns text immutable
       return jet_join(trim_scale($1)::text, trim_scale($2)::text))",
    "create operator &&& (function = jet_join, leftarg = text, rightarg = text)",
    "create operator &&& (function = jet_join, leftarg = text, rightarg = numeric)",
    "create operator &&& (function = jet_join, leftarg = numeric, rightarg = text)",
    "create operator &&& (function = jet_join, leftarg = numeric, rightarg = numeric)",
    // Who is told of a change learns the table and the block of keys. One transaction says each
    // once.
    R"(create function jet_news() returns trigger language plpgsql as $body$
       begin
           if tg_op operator(pg_catalog.<>) 'INSERT' then
               perform pg_notify('valtrino', tg_table_name || ':' ||
                                 coalesce((to_jsonb(old) ->> tg_argv[0])::bigint / 1024, 0));
           end if;
           if tg_op operator(pg_catalog.<>) 'DELETE' then
               perform pg_notify('valtrino', tg_table_name || ':' ||
                                 coalesce((to_jsonb(new) ->> tg_argv[0])::bigint / 1024, 0));
           end if;
           return null;
       end $body$)",
};
static_assert(kKeysInABlock == 1024, "as jet_news() counts");

/// A sign between two texts. What it is made of the server puts in its place where it plans, so
/// that an index of keys serves it.
struct TextSign {
    const char* sign;
    const char* function;
    const char* turned; ///< the same, the sides changed
    const char* negated;
    const char* likely; ///< how the server guesses how many rows it holds for
};
constexpr TextSign kTextSigns[] = {
    {"=",  "jet_igual",       "=",  "<>", "eq"      },
    {"<>", "jet_diferente",   "<>", "=",  "neq"     },
    {"<",  "jet_antes",       ">",  ">=", "scalarlt"},
    {">",  "jet_depois",      "<",  "<=", "scalargt"},
    {"<=", "jet_ate",         ">=", ">",  "scalarle"},
    {">=", "jet_a_partir_de", "<=", "<",  "scalarge"},
};

std::string functionOf(const TextSign& of) {
    return std::string("create function ") + of.function +
           "(text, text) returns boolean language sql immutable strict parallel safe as "
           "'select valtrino.jet_chave($1) operator(pg_catalog." +
           of.sign + ") valtrino.jet_chave($2)'";
}

std::string operatorOf(const TextSign& of) {
    return std::string("create operator ") + of.sign + " (function = " + of.function +
           R"(, leftarg = text, rightarg = text, commutator = operator(valtrino.)" + of.turned +
           R"(), negator = operator(valtrino.)" + of.negated + "), restrict = " + of.likely +
           R"(sel, join = )" + of.likely + "joinsel)";
}

/// All that there is, in the order in which it can be made.
std::vector<std::string> foundation(jet::Version order) {
    std::vector<std::string> parts = keyFunctions(jet::Collation::general(order));
    for (const TextSign& sign : kTextSigns)
        parts.push_back(functionOf(sign));
    for (const TextSign& sign : kTextSigns)
        parts.push_back(operatorOf(sign));
    parts.insert(parts.end(), std::begin(kFoundation), std::end(kFoundation));
    return parts;
}

bool isLong(jet::ColumnType type) {
    return type == jet::ColumnType::memo || type == jet::ColumnType::ole ||
           type == jet::ColumnType::binary;
}

bool isWholeNumber(jet::ColumnType type) {
    return type == jet::ColumnType::longInteger || type == jet::ColumnType::integer ||
           type == jet::ColumnType::byte;
}

std::string namesOf(const jet::IndexSpec& index) {
    std::string list;
    for (const jet::IndexSpec::KeyColumn& column : index.columns)
        list.append(list.empty() ? "" : ", ").append(quotedName(column.name));
    return list;
}

bool isText(const jet::TableSpec& table, const jet::IndexSpec::KeyColumn& column) {
    const std::size_t place = table.placeOf(column.name);
    return place < table.columns.size() && jet::isText(table.columns[place].type);
}

/// What an index is of. A text goes by its key.
std::string columnsOf(const jet::TableSpec& table, const jet::IndexSpec& index, bool exactly) {
    std::string list;
    for (const jet::IndexSpec::KeyColumn& column : index.columns) {
        const std::string name = quotedName(column.name);
        list += list.empty() ? "" : ", ";
        if (isText(table, column))
            list += exactly ? name + " collate \"und-x-icu\"" : keyOf(name);
        else
            list += name;
        list += column.ascending ? " nulls first" : " desc nulls last";
    }
    return list;
}

/// What a column is in a file, where its type on the server doesn't tell.
std::string noteOf(const jet::ColumnSpec& column) {
    if (column.type == jet::ColumnType::byte)
        return std::string(kNote) + "byte";
    if (column.type == jet::ColumnType::binary)
        return std::string(kNote) + "binary " + std::to_string(column.width);
    return {};
}

} // namespace

std::string noteOf(const jet::IndexSpec& index) {
    return std::string(kNote) + std::to_string(index.columns.size()) + ' ' +
           (index.primary  ? "p"
            : index.unique ? "u"
                           : "-") +
           (index.ignoreNulls ? "i" : "-") + (index.required || index.primary ? "r" : "-") + ' ' +
           index.name;
}

namespace {

/// The list that a window opens goes by the key after the column: so does the index.
std::string keyAfter(const jet::TableSpec& table) {
    std::string list;
    const auto primary = std::ranges::find_if(table.indexes, &jet::IndexSpec::primary);
    if (primary != table.indexes.end())
        for (const jet::IndexSpec::KeyColumn& key : primary->columns)
            list +=
                ", " + (isText(table, key) ? keyOf(quotedName(key.name)) : quotedName(key.name));
    return list;
}

std::string includedIn(const jet::TableSpec& table, const jet::IndexSpec& index) {
    std::string list;
    for (const std::string& name : includable(table, index)) {
        list += list.empty() ? ") include (" : ", ";
        list += quotedName(name);
    }
    return list;
}

/// An index is enough to read by where the server has noted that all rows of a page are there for
/// everybody; by itself it does after a fifth of them is new.
void tidyOften(ServerWire& wire, const std::string& table, const jet::IndexSpec& index) {
    if (!index.included.empty())
        static_cast<void>(wire.run("alter table " + table +
                                   " set (autovacuum_vacuum_scale_factor = 0.01, "
                                   "autovacuum_vacuum_insert_scale_factor = 0.01)"));
}

/// To the index that was made last of a table.
void noteIndex(ServerWire& wire, const std::string& table, const std::string& note) {
    const ServerRows made = wire.run(
        "select i.indexrelid::regclass::text from pg_catalog.pg_index i where i.indrelid = " +
        serverText(table) + "::regclass order by i.indexrelid desc limit 1");
    static_cast<void>(
        wire.run("comment on index " + made.field(0, 0).value_or("") + " is " + serverText(note)));
}

} // namespace

std::vector<std::string> includable(const jet::TableSpec& table, const jet::IndexSpec& index) {
    std::vector<std::string> names;
    for (const std::string& name : index.included) {
        const std::size_t place = table.placeOf(name);
        if (place < table.columns.size() && !isLong(table.columns[place].type))
            names.push_back(table.columns[place].name);
    }
    return names;
}

void createColumns(ServerWire& wire, const jet::TableSpec& table) {
    const std::string name = quotedName(table.name);
    std::string columns;
    for (const jet::ColumnSpec& column : table.columns) {
        std::string type = serverType(column);
        if (const std::size_t at = type.find("value"); at != std::string::npos)
            type.replace(at, 5, quotedName(column.name));
        columns.append(columns.empty() ? "" : ", ").append(quotedName(column.name));
        columns.append(" ").append(type);
    }
    static_cast<void>(wire.run("create table " + name + " (" + columns + ")"));
    for (const jet::ColumnSpec& column : table.columns)
        if (const std::string note = noteOf(column); !note.empty())
            static_cast<void>(wire.run("comment on column " + name + '.' + quotedName(column.name) +
                                       " is " + serverText(note)));
}

void createIndex(ServerWire& wire, const jet::TableSpec& table, const jet::IndexSpec& index,
                 bool exactly) {
    const std::string name = quotedName(table.name);
    const std::string columns = columnsOf(table, index, exactly);
    if (index.primary && !exactly) {
        static_cast<void>(
            wire.run("alter table " + name + " add primary key (" + namesOf(index) + ")"));
        noteIndex(wire, name, noteOf(index));
        if (std::ranges::none_of(index.columns,
                                 [&](const auto& one) { return isText(table, one); }))
            return;
        // What is the same to the server isn't always to the shop.
        static_cast<void>(wire.run("create unique index on " + name + " (" + columns + ")"));
        return noteIndex(wire, name, kOwnIndex);
    }
    const bool unique = index.unique || index.primary;
    std::string sql = unique ? "create unique index on " : "create index on ";
    sql.append(name).append(" (").append(columns);
    if (!unique && !exactly)
        sql.append(keyAfter(table)).append(includedIn(table, index));
    static_cast<void>(wire.run(sql.append(")")));
    noteIndex(wire, name, noteOf(index));
    tidyOften(wire, name, index);
}

jet::TableSpec withIncluded(const jet::TableSpec& table, std::span<const jet::TableSpec> further) {
    jet::TableSpec full = table;
    const auto first = [&](const jet::IndexSpec& index) {
        return table.placeOf(index.columns.front().name);
    };
    for (const jet::TableSpec& more : further)
        for (const jet::IndexSpec& wanted : more.indexes)
            for (jet::IndexSpec& index : full.indexes)
                if (jet::foldedName(more.name) == jet::foldedName(table.name) &&
                    index.columns.size() == 1 && first(index) == first(wanted))
                    index.included = wanted.included;
    return full;
}

void createOwnIndex(ServerWire& wire, const jet::TableSpec& table, jet::IndexSpec index) {
    const std::string name = quotedName(table.name);
    for (jet::IndexSpec::KeyColumn& column : index.columns)
        column.name = table.columns[table.placeOf(column.name)].name; // in its capitals
    static_cast<void>(wire.run("create index on " + name + " (" + columnsOf(table, index, false) +
                               keyAfter(table) + includedIn(table, index) + ")"));
    noteIndex(wire, name, kOwnIndex);
    tidyOften(wire, name, index);
}

void createOwnIndexes(ServerWire& wire, const jet::TableSpec& table,
                      std::span<const jet::TableSpec> further) {
    const auto place = [&](const jet::IndexSpec::KeyColumn& column) {
        return table.placeOf(column.name);
    };
    for (const jet::TableSpec& more : further) {
        if (jet::foldedName(more.name) != jet::foldedName(table.name))
            continue;
        for (const jet::IndexSpec& index : more.indexes) {
            const auto beginsSo = [&](const jet::IndexSpec& other) {
                return place(other.columns.front()) == place(index.columns.front());
            };
            if (std::ranges::find(index.columns, table.columns.size(), place) ==
                    index.columns.end() &&
                std::ranges::none_of(table.indexes, beginsSo))
                createOwnIndex(wire, table, index);
        }
    }
}

void createNews(ServerWire& wire, const jet::TableSpec& table) {
    std::string key;
    for (const jet::IndexSpec& index : table.indexes) {
        const std::size_t place = table.placeOf(index.columns.front().name);
        if (index.primary && place < table.columns.size() &&
            isWholeNumber(table.columns[place].type))
            key = table.columns[place].name;
    }
    static_cast<void>(wire.run("create trigger valtrino_news after insert or update or delete on " +
                               quotedName(table.name) + " for each row execute function jet_news(" +
                               serverText(key) + ")"));
}

namespace {

void createTable(ServerWire& wire, const jet::TableSpec& table) {
    createColumns(wire, table);
    // The key first: the other indexes end with it.
    for (const bool primary : {true, false})
        for (const jet::IndexSpec& index : table.indexes)
            if (index.primary == primary)
                createIndex(wire, table, index);
    createNews(wire, table);
}

/// All that `work` does, or nothing.
template <class Work>
void inOne(ServerWire& wire, Work&& work) {
    const bool own = !wire.inTransaction();
    own ? wire.begin() : wire.mark();
    try {
        work();
        own ? wire.commit() : wire.forgetMark();
    } catch (...) {
        if (!own)
            wire.backToMark();
        else if (wire.inTransaction())
            wire.rollback();
        throw;
    }
}

} // namespace

bool hasShop(ServerWire& wire) { return wire.run(kShop).rows() > 0; }

void requireNoShop(ServerWire& wire) {
    if (hasShop(wire))
        throw jet::Error(jet::Errc::exists, "A base de dados\n" + wire.place() +
                                                "\n\njá tem uma loja. Nada foi mudado nela.");
}

void requireShop(ServerWire& wire) {
    if (!hasShop(wire))
        throw jet::Error(jet::Errc::notFound,
                         "A base de dados\n" + wire.place() + "\n\nnão tem uma loja.");
}

std::vector<std::string> foundationFunctions() {
    constexpr std::string_view kBegin = "create function ";
    std::vector<std::string> names;
    for (const std::string& part : foundation(jet::Version::jet4)) {
        if (!part.starts_with(kBegin))
            continue;
        const std::string name(part.substr(kBegin.size(), part.find('(') - kBegin.size()));
        if (std::ranges::find(names, name) == names.end())
            names.push_back(name);
    }
    return names;
}

void createFoundation(ServerWire& wire, jet::Version order) {
    for (const std::string& part : foundation(order))
        static_cast<void>(wire.run(part));
}

void createServerSchema(ServerWire& wire, std::span<const jet::TableSpec> tables,
                        const ShopRoles& roles, std::span<const jet::TableSpec> further) {
    inOne(wire, [&] {
        createRolesAndSchema(wire, roles);
        createFoundation(wire, jet::Version::jet4);
        for (const jet::TableSpec& table : tables) {
            createTable(wire, withIncluded(table, further));
            createOwnIndexes(wire, table, further);
        }
        leaveOwner(wire);
    });
}

void createServerTable(ServerWire& wire, const jet::TableSpec& table) {
    inOne(wire, [&] {
        becomeOwner(wire);
        createTable(wire, table);
        leaveOwner(wire);
    });
}

} // namespace ado
