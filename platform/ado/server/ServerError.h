#pragma once

#include <string>

struct pg_conn;
struct pg_result;

namespace ado {

/// What the server refuses, as a jet::Error in Portuguese. `result` is null if there is none,
/// because the line broke.
[[noreturn]] void throwServerError(const pg_result* result, const std::string& place);

/// Whether it is the password, or who comes with it, that the server hasn't accepted.
[[nodiscard]] bool refusesPassword(const pg_conn* line);
/// That the server can't be reached, or doesn't let us in: why that line, null without memory,
/// hasn't come about. @throws Error{io, password, notFound}.
[[noreturn]] void throwNoConnection(const pg_conn* line, const std::string& place);

} // namespace ado
