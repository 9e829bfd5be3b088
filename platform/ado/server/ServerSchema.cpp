#include "ado/server/ServerSchema.h"

#include "ado/dialect/Spelling.h"
#include "ado/server/ServerValue.h"
#include "jet/Error.h"

#include <algorithm>

namespace ado {

namespace {

// Texts are ordered, and the same, without regard to case and with regard to accents. `like` and
// what looks into texts needs an order in which no two texts are the same: that of their letters.
// A function that gives a text gives it in the shop's order.
constexpr const char* kFoundation[] = {
    "create schema valtrino",
    "create collation texto (provider = icu, locale = 'und-u-ks-level2', deterministic = false)",
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
           if tg_op <> 'INSERT' then
               perform pg_notify('valtrino', tg_table_name || ':' ||
                                 coalesce((to_jsonb(old) ->> tg_argv[0])::bigint / 1024, 0));
           end if;
           if tg_op <> 'DELETE' then
               perform pg_notify('valtrino', tg_table_name || ':' ||
                                 coalesce((to_jsonb(new) ->> tg_argv[0])::bigint / 1024, 0));
           end if;
           return null;
       end $body$)",
};
static_assert(kKeysInABlock == 1024, "as jet_news() counts");

bool isWholeNumber(jet::ColumnType type) {
    return type == jet::ColumnType::longInteger || type == jet::ColumnType::integer ||
           type == jet::ColumnType::byte;
}

std::string columnsOf(const jet::IndexSpec& index, bool withOrder) {
    std::string list;
    for (const jet::IndexSpec::KeyColumn& column : index.columns) {
        list += list.empty() ? "" : ", ";
        list += quotedName(column.name);
        if (withOrder)
            list += column.ascending ? " nulls first" : " desc nulls last";
    }
    return list;
}

void createTable(ServerWire& wire, const jet::TableSpec& table) {
    const std::string name = quotedName(table.name);
    std::string columns;
    for (const jet::ColumnSpec& column : table.columns) {
        std::string type = serverType(column);
        if (const std::size_t at = type.find("value"); at != std::string::npos)
            type.replace(at, 5, quotedName(column.name));
        columns += columns.empty() ? "" : ", ";
        columns += quotedName(column.name);
        columns += ' ';
        columns += type;
    }
    std::string newsKey;
    for (const jet::IndexSpec& index : table.indexes) {
        if (!index.primary)
            continue;
        columns += ", primary key (" + columnsOf(index, false) + ")";
        const std::size_t place = table.placeOf(index.columns.front().name);
        if (place < table.columns.size() && isWholeNumber(table.columns[place].type))
            newsKey = index.columns.front().name;
    }
    static_cast<void>(wire.run("create table " + name + " (" + columns + ")"));
    // The list that a window opens goes by the key after the column: so does the index.
    const auto primary = std::ranges::find_if(table.indexes, &jet::IndexSpec::primary);
    for (const jet::IndexSpec& index : table.indexes) {
        if (index.primary)
            continue;
        std::string list = columnsOf(index, true);
        if (!index.unique && primary != table.indexes.end())
            list += ", " + columnsOf(*primary, false);
        std::string sql = index.unique ? "create unique index on " : "create index on ";
        sql.append(name).append(" (").append(list).append(")");
        static_cast<void>(wire.run(sql));
    }
    std::string argument = "''";
    if (!newsKey.empty()) {
        argument = "'";
        for (const char c : newsKey)
            argument.append(c == '\'' ? 2 : 1, c);
        argument += "'";
    }
    static_cast<void>(wire.run("create trigger valtrino_news after insert or update or delete on " +
                               name + " for each row execute function jet_news(" + argument + ")"));
}

/// All that `work` does, or nothing.
template <class Work>
void inOne(ServerWire& wire, Work&& work) {
    if (wire.inTransaction())
        return work();
    wire.begin();
    try {
        work();
        wire.commit();
    } catch (...) {
        if (wire.inTransaction())
            wire.rollback();
        throw;
    }
}

} // namespace

void createServerSchema(ServerWire& wire, std::span<const jet::TableSpec> tables) {
    inOne(wire, [&] {
        for (const char* const part : kFoundation)
            static_cast<void>(wire.run(part));
        for (const jet::TableSpec& table : tables)
            createTable(wire, table);
    });
}

void createServerTable(ServerWire& wire, const jet::TableSpec& table) {
    inOne(wire, [&] { createTable(wire, table); });
}

} // namespace ado
