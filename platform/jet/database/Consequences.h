#pragma once

#include "jet/database/Relationships.h"

namespace jet {

/// What one change of one row brings with it in others: the cascades of the relationships, and
/// whether in the end every child has its parent. Lives within one statement, which undoes
/// everything when this throws.
///
/// Cascades go from a list, not by recursion, so a family of any depth costs no stack; whether all
/// bonds hold is looked at when the last of them is done, because on the way some don't.
class Consequences {
public:
    explicit Consequences(Database& database) noexcept : database_(database) {}

    /// A row of the child's table is new, or has new values in the bond's columns.
    void needsParent(const Relationship& bond, RowId child);
    /// A row of the parent's table had the key `old`, and now has `current`, or has gone.
    void leftKey(const Relationship& bond, Row old, std::optional<Row> current);

    /// Carries all of it out.
    /// @throws Error{related} if a child would be without its parent; as Table::update() and
    /// Table::erase() for the rows that change with the first.
    void settle();

    /// The rows changed or erased by cascades, in that order: each after what it follows from.
    [[nodiscard]] std::vector<Cascaded> takeCascaded() noexcept { return std::move(cascaded_); }

private:
    struct Left {
        const Relationship* bond;
        Row old;
        std::optional<Row> current;
    };
    struct Cascade {
        const Relationship* bond;
        RowId child;
        std::optional<Row> values; ///< nothing: the row goes
    };
    struct Need {
        const Relationship* bond;
        RowId child;
    };

    void follow(Left left);
    void carryOut(const Cascade& cascade);
    void check(const Need& need) const;
    void check(const Left& refused) const;
    [[nodiscard]] bool hasParent(const Relationship& bond, const Row& key) const;
    [[nodiscard]] bool hasChild(const Relationship& bond, const Row& key) const;

    Database& database_;
    std::vector<Left> left_;
    std::vector<Cascade> cascades_;
    std::vector<Need> needs_;
    std::vector<Left> refused_; ///< unless another cascade takes the children away
    std::vector<Cascaded> cascaded_;
};

} // namespace jet
