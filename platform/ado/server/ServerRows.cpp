#include "ado/server/ServerRows.h"

#include "ado/system/Socket.h"

#include <charconv>
#include <chrono>
#include <libpq-fe.h>

namespace ado {

namespace {

/// Most answers have come by then.
constexpr std::chrono::milliseconds kSoon{20};

} // namespace

bool ServerRows::haveCome(pg_conn* line) {
    for (bool said = true; said && PQisBusy(line) != 0;) {
        said = hasInput(PQsocket(line), kSoon);
        if (PQconsumeInput(line) == 0)
            return true; // the line has gone, as the result will say
    }
    return PQisBusy(line) == 0;
}

void ServerRows::Clearer::operator()(pg_result* result) const { PQclear(result); }
int ServerRows::rows() const { return PQntuples(result_.get()); }
int ServerRows::columns() const { return PQnfields(result_.get()); }
std::optional<std::string> ServerRows::field(int row, int column) const {
    if (PQgetisnull(result_.get(), row, column) != 0)
        return std::nullopt;
    return std::string(PQgetvalue(result_.get(), row, column),
                       static_cast<std::size_t>(PQgetlength(result_.get(), row, column)));
}
std::string ServerRows::columnName(int column) const { return PQfname(result_.get(), column); }
unsigned ServerRows::columnType(int column) const { return PQftype(result_.get(), column); }
int ServerRows::columnModifier(int column) const { return PQfmod(result_.get(), column); }
unsigned ServerRows::columnTable(int column) const { return PQftable(result_.get(), column); }
std::int64_t ServerRows::affected() const {
    const std::string_view count = PQcmdTuples(result_.get());
    std::int64_t number = 0;
    std::from_chars(count.data(), count.data() + count.size(), number);
    return number;
}

} // namespace ado
