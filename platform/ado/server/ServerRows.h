#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

struct pg_conn;
struct pg_result;

namespace ado {

/// The rows that a statement has given, as texts.
class ServerRows {
public:
    explicit ServerRows(pg_result* result) : result_(result) {}
    /// Whether what the server says next is there, or the line has gone.
    [[nodiscard]] static bool haveCome(pg_conn* line);

    [[nodiscard]] int rows() const;
    [[nodiscard]] int columns() const;
    /// Nothing for a null.
    [[nodiscard]] std::optional<std::string> field(int row, int column) const;
    [[nodiscard]] std::string columnName(int column) const;
    [[nodiscard]] unsigned columnType(int column) const;
    [[nodiscard]] int columnModifier(int column) const;
    /// The server's number of the table that a column comes from unchanged; 0 if it is computed.
    [[nodiscard]] unsigned columnTable(int column) const;
    /// Rows that the statement has changed.
    [[nodiscard]] std::int64_t affected() const;

    [[nodiscard]] const pg_result* get() const noexcept { return result_.get(); }

private:
    struct Clearer {
        void operator()(pg_result* result) const;
    };
    std::unique_ptr<pg_result, Clearer> result_;
};

} // namespace ado
