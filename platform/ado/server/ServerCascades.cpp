#include "ado/server/ServerCascades.h"

#include "ado/dialect/Spelling.h"
#include "ado/server/ServerTongue.h"

#include <algorithm>
#include <map>
#include <string>
#include <utility>

namespace ado {

namespace {

using Bond = ServerTable::Bond;
using Key = std::vector<std::optional<std::string>>;

/// Keys that are asked for at once: a statement takes 65,535 values.
constexpr std::size_t kKeysAtOnce = 1000;

Key keyAt(const ServerRow& row, const std::vector<std::size_t>& places) {
    Key key;
    key.reserve(places.size());
    for (const std::size_t place : places)
        key.push_back(row.values[place]);
    return key;
}

void setKey(ServerRow& row, const std::vector<std::size_t>& places, const Key& key) {
    for (std::size_t i = 0; i < places.size(); ++i)
        row.values[places[i]] = key[i];
}

/// The rows that have one of these keys, with the server's place of each before its values.
ServerStatement rowsWith(const ServerTable& table, const std::vector<std::size_t>& places,
                         const std::vector<Key>& keys) {
    ServerStatement statement{"select x.ctid"};
    for (const jet::Column& column : table.columns)
        (statement.sql += ", x.") += quotedName(column.name);
    (statement.sql += " from ") += quotedName(table.name) + " x where (";
    for (std::size_t i = 0; i < places.size(); ++i)
        (statement.sql += i == 0 ? "x." : ", x.") += quotedName(table.columns[places[i]].name);
    statement.sql += ") in (";
    for (std::size_t i = 0; i < keys.size(); ++i) {
        statement.sql += i == 0 ? "(" : ", (";
        for (std::size_t j = 0; j < places.size(); ++j) {
            statement.sql += j == 0 ? "" : ", ";
            statement.sql +=
                placeFor(statement.parameters, {table.types[places[j]].number, keys[i][j]});
        }
        statement.sql += ")";
    }
    statement.sql += ")";
    return statement;
}

/// Goes from rows to those that refer to them.
class CascadeWalk {
public:
    CascadeWalk(ServerWire& wire, const ServerCatalog& catalog, FollowedRow& root)
        : wire_(wire), catalog_(catalog), root_(root), erases_(!root.after) {}

    std::vector<FollowedRow> all() {
        follow(*root_.table, {&root_});
        while (!next_.empty()) {
            auto now = std::exchange(next_, {});
            for (auto& [table, places] : now) {
                std::vector<const FollowedRow*> rows;
                std::vector<FollowedRow> copies; // more may be found meanwhile
                copies.reserve(places.size());
                for (const std::size_t place : places)
                    rows.push_back(&copies.emplace_back(found_[place].row));
                follow(*table, rows);
            }
        }
        std::ranges::sort(found_, {}, &Found::last);
        std::vector<FollowedRow> rows;
        rows.reserve(found_.size());
        for (Found& one : found_)
            rows.push_back(std::move(one.row));
        return rows;
    }

private:
    struct Found {
        FollowedRow row;
        std::size_t last; ///< when something last followed for it
    };

    /// Of the keys that others are looked for by, those that they have besides: before a change of
    /// theirs what they are to become, after it what they were.
    using Keys = std::map<Key, Key>;

    void follow(const ServerTable& table, const std::vector<const FollowedRow*>& rows) {
        for (const Bond& bond : table.bonds) {
            const ServerTable* const child = catalog_.find(bond.child);
            if (child == nullptr)
                continue;
            Keys gone;
            Keys changed;
            for (const FollowedRow* const row : rows) {
                const Key old = keyAt(row->before, bond.columns);
                const Key now = row->after ? keyAt(*row->after, bond.columns) : old;
                const Key& there = erases_ ? old : now;
                if (!std::ranges::all_of(there,
                                         [](const auto& value) { return value.has_value(); }))
                    continue;
                if (!row->after && (bond.cascadesDeletes || bond.nullsOnDelete))
                    gone.emplace(there, Key());
                else if (row->after && now != old && bond.cascadesUpdates)
                    changed.emplace(there, erases_ ? now : old);
            }
            take(bond, *child, gone, true);
            take(bond, *child, changed, false);
        }
    }

    /// Those that have one of the keys.
    void take(const Bond& bond, const ServerTable& child, const Keys& keys, bool gone) {
        std::vector<Key> some;
        for (auto next = keys.begin(); next != keys.end();) {
            some.push_back(next->first);
            if (++next == keys.end() || some.size() == kKeysAtOnce) {
                const ServerRows rows = wire_.run(rowsWith(child, bond.childColumns, some));
                for (int i = 0; i < rows.rows(); ++i)
                    take(bond, child, rows, i, keys, gone);
                some.clear();
            }
        }
    }

    void take(const Bond& bond, const ServerTable& child, const ServerRows& rows, int at,
              const Keys& keys, bool gone) {
        ServerRow row;
        row.values.reserve(child.columns.size());
        for (int column = 1; column < rows.columns(); ++column)
            row.values.push_back(rows.field(at, column));
        if (isRoot(child, row)) {
            if (!erases_)
                root_.after = std::move(row);
            return;
        }
        const auto [place, isNew] =
            places_.try_emplace(std::pair(&child, rows.field(at, 0).value_or("")), found_.size());
        if (isNew)
            found_.push_back({
                {&child, row, row},
                0
            });
        Found& found = found_[place->second];
        found.last = ++count_;
        bool goesOn = isNew;
        const auto other = keys.find(keyAt(row, bond.childColumns));
        if (!erases_) {
            if (other != keys.end())
                setKey(found.row.before, bond.childColumns, other->second);
        } else if (gone && bond.cascadesDeletes) {
            goesOn = found.row.after.has_value();
            found.row.after.reset();
        } else if (found.row.after) {
            const Key now =
                gone || other == keys.end() ? Key(bond.childColumns.size()) : other->second;
            goesOn = keyAt(*found.row.after, bond.childColumns) != now;
            setKey(*found.row.after, bond.childColumns, now);
        }
        if (goesOn)
            next_[&child].push_back(place->second);
    }

    [[nodiscard]] bool isRoot(const ServerTable& table, const ServerRow& row) const {
        const ServerRow& root = root_.after ? *root_.after : root_.before;
        return &table == root_.table && keyAt(row, table.key) == keyAt(root, table.key);
    }

    ServerWire& wire_;
    const ServerCatalog& catalog_;
    FollowedRow& root_;
    const bool erases_;
    std::vector<Found> found_;
    std::map<std::pair<const ServerTable*, std::string>, std::size_t> places_;
    std::map<const ServerTable*, std::vector<std::size_t>> next_;
    std::size_t count_ = 0;
};

} // namespace

std::vector<const ServerTable*> cascadeTargets(const ServerCatalog& catalog,
                                               const ServerTable& table) {
    std::vector<const ServerTable*> reached;
    const auto goFrom = [&](const ServerTable& from) {
        for (const Bond& bond : from.bonds) {
            const ServerTable* const child = catalog.find(bond.child);
            if (child != nullptr && std::ranges::find(reached, child) == reached.end())
                reached.push_back(child);
        }
    };
    goFrom(table);
    for (std::size_t i = 0; i < reached.size(); ++i) // which grows meanwhile
        goFrom(*reached[i]);
    return reached;
}

std::vector<FollowedRow> followingRows(ServerWire& wire, const ServerCatalog& catalog,
                                       FollowedRow& row) {
    return CascadeWalk(wire, catalog, row).all();
}

} // namespace ado
