#pragma once

#include <string_view>

struct sqlite3;

/// What expressions can call, beyond SQLite's operators. Text counts in characters; null in, null
/// out; a length or place that can't be is an error, not an empty text.
///
///     mid(s, from, n), mid(s, from), left(s, n), right(s, n), len(s)
///     ucase(s), lcase(s), trim(s), ltrim(s), rtrim(s)
///     iif(condition, a, b), nz(a, b), isnull(a), int(x), fix(x), abs(x), instr(s, part)
///     date(), now(), year(d), month(d), day(d)
///     count, sum, avg, min, max
///     text like pattern: `%` any text, `_` any character; case doesn't count, accents do
///
/// Amounts are doubles inside SQLite, so that "valor > 100.5" means what it says: up to 900
/// thousand million every amount of four decimals has a double of its own that divides back to it.
/// Adding doubles would lose that, so sum and avg are ours: what is a multiple of 1/10000 is added
/// as a whole number of them, exactly, and the result is the double nearest to the exact sum,
/// which FieldValue::currency() turns back into exactly that sum.
namespace ado {

/// How SQLite calls a function of the dialect, which is given in lower case and without `$`: names
/// of ours are no names of SQLite's own functions. Null if there is none.
[[nodiscard]] const char* engineFunction(std::string_view name);
/// Whether engineFunction() ever gives this name: what statements may call, besides concatenation.
[[nodiscard]] bool isAllowedFunction(std::string_view engineName);

/// Makes ours known to a database handle. @throws Error{io} if SQLite has no memory for them.
void addFunctions(sqlite3* handle);

} // namespace ado
