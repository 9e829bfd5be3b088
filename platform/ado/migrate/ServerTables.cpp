#include "ado/migrate/ServerTables.h"

#include "ado/dialect/Spelling.h"
#include "ado/server/ServerSchema.h"
#include "ado/server/ServerValue.h"
#include "jet/Error.h"
#include "jet/Names.h"

#include <algorithm>
#include <charconv>
#include <map>

namespace ado {

namespace {

constexpr const char* kColumns =
    "select c.relname, a.attname, a.atttypid, a.atttypmod, a.attidentity <> '', "
    "col_description(c.oid, a.attnum) "
    "from pg_catalog.pg_class c "
    "join pg_catalog.pg_namespace n on n.oid = c.relnamespace and n.nspname = 'valtrino' "
    "join pg_catalog.pg_attribute a on a.attrelid = c.oid and a.attnum > 0 "
    "and not a.attisdropped where c.relkind in ('r', 'p') "
    "order by c.relname collate \"C\", a.attnum";

// One row for each column of a key. A text stands there with its key (ServerOrder.h).
constexpr const char* kIndexes =
    "select c.relname, x.relname, a.attname, i.indoption[k.place - 1] & 1 = 0, i.indisprimary, "
    "i.indisunique, obj_description(x.oid) "
    "from pg_catalog.pg_index i "
    "join pg_catalog.pg_class c on c.oid = i.indrelid "
    "join pg_catalog.pg_class x on x.oid = i.indexrelid "
    "join pg_catalog.pg_namespace n on n.oid = c.relnamespace and n.nspname = 'valtrino' "
    "cross join generate_series(1, i.indnkeyatts) k (place) "
    "join pg_catalog.pg_attribute a on a.attrelid = c.oid and a.attnum > 0 and (a.attnum = "
    "i.indkey[k.place - 1] or i.indkey[k.place - 1] = 0 and pg_get_indexdef(x.oid, k.place::int, "
    "false) operator(pg_catalog.=) any (array[format('jet_chave((%I)::text)', a.attname), "
    "format('jet_chave(%I)', a.attname)])) "
    "where i.indpred is null and (i.indexprs is null or "
    "starts_with(obj_description(x.oid), 'valtrino: ')) and "
    "obj_description(x.oid) is distinct from 'valtrino: -' order by x.oid, k.place";

constexpr std::uint16_t kWidestText = 255;
constexpr std::uint8_t kMostDigits = 28;

template <class Number>
Number numberOf(std::string_view text) {
    Number number{};
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

/// What a comment of ours says.
std::string noteIn(const std::optional<std::string>& comment) {
    return comment && comment->starts_with(kNote) ? comment->substr(kNote.size()) : "";
}

jet::ColumnSpec columnSpec(const std::string& name, unsigned type, int modifier,
                           const std::string& note) {
    const jet::Column column = columnOf(name, type, modifier);
    jet::ColumnSpec spec{.name = name, .type = column.type};
    if (column.type == jet::ColumnType::text)
        spec.width = static_cast<std::uint16_t>(column.length / 2);
    if (spec.width > kWidestText) {
        spec.type = jet::ColumnType::memo;
        spec.width = 0;
    }
    if (column.type == jet::ColumnType::numeric) {
        spec.precision = column.precision;
        spec.scale = column.scale;
        if (column.precision == 0 || column.precision > kMostDigits)
            spec.type = jet::ColumnType::memo;
    }
    if (note == "byte")
        spec.type = jet::ColumnType::byte;
    if (note.starts_with("binary ")) {
        spec.type = jet::ColumnType::binary;
        spec.width = numberOf<std::uint16_t>(std::string_view(note).substr(7));
    }
    return spec;
}

/// A name that an index of a file may have, and none of the others has.
std::string indexName(std::string name, const std::vector<jet::IndexSpec>& others) {
    for (char& c : name)
        if (static_cast<unsigned char>(c) < 0x20 ||
            std::string_view(".![]`").find(c) != std::string_view::npos)
            c = '_';
    if (name.empty() || name.front() == ' ')
        name.insert(0, "i");
    const auto isTaken = [&](const std::string& tried) {
        return std::ranges::any_of(others, [&](const jet::IndexSpec& other) {
            return jet::foldedName(other.name) == jet::foldedName(tried);
        });
    };
    std::string tried = name;
    for (int i = 2; isTaken(tried); ++i)
        tried = name + std::to_string(i);
    return tried;
}

/// "2 ui- nome": how many columns, flags, the name; of one that isn't ours nothing.
struct IndexNote {
    std::size_t columns = 0;
    std::string flags;
    std::string name;
};
IndexNote indexNote(const std::string& note) {
    const std::size_t first = note.find(' ');
    if (first == std::string::npos || note.size() < first + 5)
        return {};
    return {numberOf<std::size_t>(note), note.substr(first + 1, 3), note.substr(first + 5)};
}

class ServerTableReader {
public:
    explicit ServerTableReader(ServerWire& wire) : wire_(wire) {}

    std::vector<ServerTableSpec> read() {
        readColumns();
        readIndexes();
        for (ServerTableSpec& table : tables_) {
            table.rows = rowsOf(table.spec);
            for (const jet::ColumnSpec& column : table.spec.columns)
                if (column.autonumber)
                    table.lastNumber = lastNumber(table.spec, column);
        }
        return std::move(tables_);
    }

private:
    void readColumns() {
        const ServerRows rows = wire_.run(kColumns);
        for (int row = 0; row < rows.rows(); ++row) {
            const std::string table = *rows.field(row, 0);
            if (tables_.empty() || tables_.back().spec.name != table)
                tables_.push_back({
                    {.name = table,  .columns = {}, .indexes = {}},
                    {             }
                });
            jet::TableSpec& spec = tables_.back().spec;
            spec.columns.push_back(
                columnSpec(*rows.field(row, 1), numberOf<unsigned>(*rows.field(row, 2)),
                           numberOf<int>(*rows.field(row, 3)), noteIn(rows.field(row, 5))));
            const bool numbered =
                std::ranges::count(spec.columns, true, &jet::ColumnSpec::autonumber) > 0;
            spec.columns.back().autonumber =
                !numbered && rows.field(row, 4) == "t" &&
                spec.columns.back().type == jet::ColumnType::longInteger;
        }
    }

    void readIndexes() {
        const ServerRows rows = wire_.run(kIndexes);
        std::string last;
        IndexNote note;
        for (int row = 0; row < rows.rows(); ++row) {
            const auto table = std::ranges::find(
                tables_, *rows.field(row, 0), [](const ServerTableSpec& t) { return t.spec.name; });
            if (table == tables_.end())
                continue;
            std::vector<jet::IndexSpec>& indexes = table->spec.indexes;
            if (const std::string name = *rows.field(row, 1); name != last || indexes.empty()) {
                last = name;
                note = indexNote(noteIn(rows.field(row, 6)));
                const bool primary =
                    note.columns > 0 ? note.flags.starts_with('p') : rows.field(row, 4) == "t";
                const bool unique =
                    note.columns > 0 ? !note.flags.starts_with('-') : rows.field(row, 5) == "t";
                indexes.push_back(
                    {.name = indexName(note.columns > 0 ? note.name : name, indexes),
                     .columns = {},
                     .primary = primary,
                     .unique = unique,
                     .ignoreNulls = note.flags.find('i') != std::string::npos,
                     .required = primary || note.flags.find('r') != std::string::npos});
            }
            if (note.columns == 0 || indexes.back().columns.size() < note.columns)
                indexes.back().columns.push_back({*rows.field(row, 2), rows.field(row, 3) == "t"});
        }
    }

    /// As they were brought from a file, as long as none has been changed since; then in the order
    /// of their keys. What a file has no type for goes there as a text.
    std::string rowsOf(const jet::TableSpec& table) {
        const std::string name = quotedName(table.name);
        const ServerRows same = wire_.run("select pg_catalog.min(xmin::text) is not distinct from "
                                          "pg_catalog.max(xmin::text) from " +
                                          name);
        std::string list;
        for (const jet::ColumnSpec& column : table.columns) {
            list.append(list.empty() ? "" : ", ").append(quotedName(column.name));
            if (column.type == jet::ColumnType::memo)
                list += "::text";
        }
        std::string statement = "select " + list + " from " + name;
        const auto primary = std::ranges::find_if(table.indexes, &jet::IndexSpec::primary);
        if (same.field(0, 0) != "t" && primary != table.indexes.end()) {
            std::string key;
            for (const jet::IndexSpec::KeyColumn& column : primary->columns)
                key.append(key.empty() ? "" : ", ").append(quotedName(column.name));
            statement += " order by " + key;
        }
        return statement;
    }

    std::int32_t lastNumber(const jet::TableSpec& table, const jet::ColumnSpec& column) {
        const ServerRows sequence =
            wire_.run("select pg_get_serial_sequence(" + serverText(quotedName(table.name)) + ", " +
                      serverText(column.name) + ")");
        const auto name = sequence.field(0, 0);
        if (!name)
            return 0;
        return numberOf<std::int32_t>(
            *wire_.run("select last_value - case when is_called then 0 else 1 end from " + *name)
                 .field(0, 0));
    }

    ServerWire& wire_;
    std::vector<ServerTableSpec> tables_;
};

} // namespace

std::vector<ServerTableSpec> serverTables(ServerWire& wire) {
    return ServerTableReader(wire).read();
}

} // namespace ado
