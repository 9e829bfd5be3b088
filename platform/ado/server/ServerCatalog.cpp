#include "ado/server/ServerCatalog.h"

#include "ado/server/ServerValue.h"
#include "jet/Error.h"
#include "jet/Names.h"

#include <cstdlib>
#include <sstream>
#include <utility>

namespace ado {

namespace {

// One row for each column, in order: what it is, whether the server numbers it, its place in the
// key, whether the shop has its order of texts, and by which foreign keys others change with it.
constexpr const char* kColumns =
    "select c.relname, a.attname, a.atttypid, a.atttypmod, a.attidentity <> '', "
    "coalesce(array_position(i.indkey::int2[], a.attnum), -1), c.oid, "
    "to_regprocedure('valtrino.jet_chave(text)') is not null, a.attnum, b.bonds "
    "from pg_catalog.pg_class c "
    "join pg_catalog.pg_namespace n on n.oid = c.relnamespace and n.nspname = 'valtrino' "
    "join pg_catalog.pg_attribute a on a.attrelid = c.oid and a.attnum > 0 "
    "and not a.attisdropped "
    "left join pg_catalog.pg_index i on i.indrelid = c.oid and i.indisprimary "
    "left join (select confrelid, string_agg(concat_ws(' ', conrelid::bigint, confupdtype = 'c', "
    "confdeltype = 'c', confdeltype = 'n', cardinality(conkey), array_to_string(confkey, ' '), "
    "array_to_string(conkey, ' ')), ' ' order by oid) as bonds from pg_catalog.pg_constraint "
    "where contype = 'f' and conparentid = 0 and (confupdtype = 'c' or confdeltype in ('c', 'n')) "
    "group by confrelid) b on b.confrelid = c.oid "
    "where c.relkind in ('r', 'p') order by c.oid, a.attnum";

/// Places of columns by the server's numbers of table and column.
using Places = std::map<std::pair<unsigned, unsigned>, std::size_t>;

std::vector<ServerTable::Bond> bondsOf(unsigned parent, const std::string& text,
                                       const Places& places) {
    std::vector<ServerTable::Bond> bonds;
    std::istringstream in(text);
    const auto isSaid = [&in] {
        std::string said;
        in >> said;
        return said == "t";
    };
    for (unsigned child = 0; in >> child;) {
        ServerTable::Bond bond{child, {}, {}, isSaid(), isSaid(), isSaid()};
        std::size_t count = 0;
        in >> count;
        const auto read = [&](unsigned table, std::vector<std::size_t>& columns) {
            unsigned number = 0;
            for (std::size_t i = 0; i < count; ++i) {
                in >> number;
                if (const auto place = places.find({table, number}); place != places.end())
                    columns.push_back(place->second);
            }
        };
        read(parent, bond.columns);
        read(child, bond.childColumns);
        if (bond.childColumns.size() == count) // else it is of a table that isn't the shop's
            bonds.push_back(std::move(bond));
    }
    return bonds;
}

bool isSame(const ServerTable& a, const ServerTable& b) {
    return a.number == b.number && a.key == b.key && a.columns.size() == b.columns.size() &&
           std::equal(a.columns.begin(), a.columns.end(), b.columns.begin(),
                      [](const jet::Column& x, const jet::Column& y) {
                          return x.name == y.name && x.type == y.type && x.length == y.length;
                      });
}

} // namespace

void ServerCatalog::load(ServerWire& wire) {
    const ServerRows rows = wire.run(kColumns);
    if (rows.rows() > 0 && rows.field(0, 7) != "t")
        throw jet::Error(
            jet::Errc::unsupported,
            "A loja da base de dados\n" + wire.place() +
                "\n\nfoi feita por uma versão anterior do programa, que ordenava os "
                "textos de outro modo. O técnico a leva a um arquivo e dele a uma base "
                "vazia, com valtrino-mdb migrate.");
    std::map<std::string, std::unique_ptr<ServerTable>> found;
    Places places;
    std::map<std::string, std::string> bonds;
    for (int row = 0; row < rows.rows(); ++row) {
        const auto number = [&](int column) {
            return std::atoll(rows.field(row, column).value_or("").c_str());
        };
        const std::string name = *rows.field(row, 0);
        auto& table = found[jet::foldedName(name)];
        if (!table) {
            table = std::make_unique<ServerTable>();
            table->name = name;
            table->number = static_cast<unsigned>(number(6));
            bonds[jet::foldedName(name)] = rows.field(row, 9).value_or("");
        }
        places[{table->number, static_cast<unsigned>(number(8))}] = table->columns.size();
        const auto type = static_cast<unsigned>(number(2));
        const int modifier = static_cast<int>(number(3));
        jet::Column column = columnOf(*rows.field(row, 1), type, modifier);
        column.autonumber = rows.field(row, 4) == "t";
        table->columns.push_back(std::move(column));
        table->types.push_back({type, modifier});
        // Counted from 0, as that list of the server is.
        if (const auto place = static_cast<std::ptrdiff_t>(number(5)); place >= 0) {
            if (table->key.size() <= static_cast<std::size_t>(place))
                table->key.resize(static_cast<std::size_t>(place) + 1);
            table->key[static_cast<std::size_t>(place)] = table->columns.size() - 1;
        }
    }
    for (auto& [name, table] : found)
        table->bonds = bondsOf(table->number, bonds[name], places);
    for (auto& [name, table] : tables_) {
        auto& now = found[name];
        if (now && isSame(*now, *table)) {
            table->bonds = std::move(now->bonds);
            now = std::move(table);
        } else {
            former_.push_back(std::move(table));
        }
        if (!now)
            found.erase(name);
    }
    tables_ = std::move(found);
}

const ServerTable* ServerCatalog::find(std::string_view name) const {
    const auto found = tables_.find(jet::foldedName(name));
    return found != tables_.end() ? found->second.get() : nullptr;
}

const ServerTable* ServerCatalog::find(unsigned number) const {
    for (const auto& [name, table] : tables_)
        if (table->number == number)
            return table.get();
    return nullptr;
}

std::string ServerCatalog::nameOf(unsigned number) const {
    const ServerTable* const table = find(number);
    return table != nullptr ? table->name : "";
}

Spelling ServerCatalog::spelling() const {
    return {[this](std::string_view name) {
                const ServerTable* const table = find(name);
                if (table == nullptr) // the server has tables of its own
                    throw jet::Error(jet::Errc::notFound,
                                     "Não existe a tabela \"" + std::string(name) + "\".");
                return table->name;
            },
            [this](std::string_view name, std::span<const std::string> tables) {
                for (const std::string& one : tables) {
                    const ServerTable* const table = find(one);
                    if (table == nullptr)
                        continue;
                    if (const auto column = table->shape().findColumn(name))
                        return table->columns[*column].name;
                }
                return std::string(name);
            },
            [](std::string_view name) { return std::string(name); }};
}

} // namespace ado
