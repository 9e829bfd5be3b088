#pragma once

#include "jet/database/Consequences.h"
#include "jet/rule/ValueRules.h"

#include <memory>

namespace jet {

/// The rules that the file keeps for one table: those over the values of its rows, and the
/// relationships that it has a part in.
///
/// Read once, when the table is first to be changed. A rule that can't be read or understood makes
/// the table one that may only be looked at; a default that can't be understood only stops new rows
/// that leave its column out.
class TableRules {
public:
    /// Nothing if the file keeps none. `table` outlives what is returned.
    [[nodiscard]] static std::unique_ptr<const TableRules> load(Database& database,
                                                                const Table& table);

    TableRules(const TableRules&) = delete;

    /// Why the table must not be changed, or nothing.
    [[nodiscard]] const std::optional<std::string>& problem() const noexcept { return problem_; }
    [[nodiscard]] const ValueRules& values() const noexcept { return values_; }
    /// Those that the table has a part in, as parent, as child or as both.
    [[nodiscard]] const std::vector<Relationship>& relationships() const noexcept { return bonds_; }

    /// The values of a row that children refer to: one key for each relationship, empty where the
    /// table isn't the parent.
    using Keys = std::vector<Row>;
    [[nodiscard]] Keys keysOf(RowId row) const;

    /// Holds a stored row against the rules, and leaves to `all` what concerns other rows.
    /// `changed` are the columns with new values, `before` the keys that the row had, empty if it
    /// is new.
    /// @throws as ValueRules::check().
    void accept(RowId row, const std::vector<bool>& changed, const Keys& before,
                Consequences& all) const;
    /// The same for a row that has gone.
    void gone(const Keys& before, Consequences& all) const;

private:
    TableRules(Database& database, const Table& table);
    void read(Database& database);
    [[nodiscard]] bool isHere(const RelationshipEnd& end) const noexcept;

    const Table& table_;
    ValueRules values_;
    std::vector<Relationship> bonds_;
    std::optional<std::string> problem_;
};

} // namespace jet
