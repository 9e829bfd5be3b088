#pragma once

#include "ado/Field.h"
#include "ado/Text.h"
#include "jet/Error.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace ado {

class BlockRows;
class Connection;

/// Goes over all rows of a table in short pieces, and from then on over those that may have
/// changed, by whomever: for who keeps something made of them, such as sums. See
/// jet::TableFollower.
class Follower {
public:
    /// The rows of one block, of which a table has one for every few dozen rows.
    class Rows {
    public:
        /// To the first row, or the next one. False after the last.
        bool next();
        // Of the row, by the place of the column in those asked for; as FieldValue.
        [[nodiscard]] bool isNull(std::size_t column) const;
        [[nodiscard]] std::int64_t integer(std::size_t column) const;
        [[nodiscard]] Currency currency(std::size_t column) const;
        [[nodiscard]] Date date(std::size_t column) const;

    private:
        friend class Follower;
        explicit Rows(BlockRows& rows) : rows_(rows) {}
        BlockRows& rows_;
    };
    /// Takes the rows of a block, instead of those that it was given of the same block before. If
    /// it throws it must have taken nothing: then the block counts as one without rows, and
    /// damage() is what it threw.
    using Take = std::function<void(std::uint32_t block, Rows&)>;

    /// @throws Error{notFound} without such a table or column, Error{unsupported} for a memo or OLE
    ///         column, Error{misuse} if the connection is closed.
    Follower(Connection& connection, const Text& table, const std::vector<Text>& columns,
             Take take);
    ~Follower();
    Follower(const Follower&) = delete;
    Follower& operator=(const Follower&) = delete;

    /// Goes on for about that long. @return whether there is more to be done at once.
    /// @throws Error{locked, io}: it may be called again and goes on where it was. Error{misuse}
    ///         once the connection has been closed, and what jet::Table throws whose table the file
    ///         has no more: never again.
    bool follow(std::chrono::microseconds time);

    /// See jet::TableFollower. Nothing is complete once the connection has been closed.
    [[nodiscard]] bool isComplete() const;
    [[nodiscard]] double progress() const;
    [[nodiscard]] std::optional<jet::Error> damage() const;

private:
    struct Parts;
    std::unique_ptr<Parts> parts_;
};

} // namespace ado
