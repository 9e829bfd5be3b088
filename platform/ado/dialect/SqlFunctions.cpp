#include "ado/dialect/SqlFunctions.h"

#include "ado/dialect/ExactSum.h"
#include "jet/Error.h"
#include "jet/TextParts.h"
#include "jet/Types.h"
#include "jet/Utf8.h"

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <string>

namespace ado {

namespace {

using Context = sqlite3_context*;
using Arguments = sqlite3_value**;

/// Runs the body of a callback: no exception may reach SQLite, which is C.
template <class Body>
void guarded(Context context, Body&& body) noexcept {
    try {
        body();
    } catch (const std::bad_alloc&) { // unreached: memory for a text is there
        sqlite3_result_error_nomem(context);
    } catch (const std::exception& error) {
        sqlite3_result_error(context, error.what(), -1);
    } catch (...) {
        sqlite3_result_error_nomem(context);
    }
}

bool isNull(sqlite3_value* value) { return sqlite3_value_type(value) == SQLITE_NULL; }

std::string_view textOf(sqlite3_value* value) {
    const auto* bytes = reinterpret_cast<const char*>(sqlite3_value_text(value));
    const auto size = static_cast<std::size_t>(sqlite3_value_bytes(value));
    return bytes != nullptr ? std::string_view(bytes, size) : std::string_view();
}

void giveText(Context context, std::string_view text) {
    sqlite3_result_text64(context, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
}

// ---- texts ------------------------------------------------------------------------------------

/// A place or length; too small a one is an error of the statement.
std::optional<std::int64_t> countArgument(Context context, sqlite3_value* value,
                                          std::int64_t least) {
    const std::int64_t count = sqlite3_value_int64(value);
    if (count >= least)
        return count;
    sqlite3_result_error(context, "posição ou tamanho de texto inválido", -1);
    return std::nullopt;
}

bool anyNull(int count, Arguments arguments) {
    return std::any_of(arguments, arguments + count, isNull);
}

void mid(Context context, int count, Arguments arguments) {
    if (anyNull(count, arguments))
        return sqlite3_result_null(context);
    const auto from = countArgument(context, arguments[1], 1);
    if (!from)
        return;
    std::string_view text = jet::middleOf(textOf(arguments[0]), *from);
    if (count > 2) {
        const auto length = countArgument(context, arguments[2], 0);
        if (!length)
            return;
        text = jet::leftOf(text, *length);
    }
    giveText(context, text);
}

template <std::string_view (*Part)(std::string_view, std::int64_t)>
void side(Context context, int count, Arguments arguments) {
    if (anyNull(count, arguments))
        return sqlite3_result_null(context);
    if (const auto length = countArgument(context, arguments[1], 0))
        giveText(context, Part(textOf(arguments[0]), *length));
}

void len(Context context, int /*count*/, Arguments arguments) {
    if (!isNull(arguments[0]))
        sqlite3_result_int64(context, jet::lengthOf(textOf(arguments[0])));
}

void instr(Context context, int count, Arguments arguments) {
    if (anyNull(count, arguments))
        return sqlite3_result_null(context);
    const std::string_view text = textOf(arguments[0]);
    const std::size_t at = text.find(textOf(arguments[1]));
    sqlite3_result_int64(context,
                         at == std::string_view::npos ? 0 : jet::lengthOf(text.substr(0, at)) + 1);
}

template <std::string (*Change)(std::string_view)>
void changed(Context context, int /*count*/, Arguments arguments) {
    if (!isNull(arguments[0]))
        guarded(context, [&] { giveText(context, Change(textOf(arguments[0]))); });
}

template <jet::Side Side>
void trim(Context context, int /*count*/, Arguments arguments) {
    if (!isNull(arguments[0]))
        giveText(context, jet::trimmed(textOf(arguments[0]), Side));
}

/// One side of `&`: a number as its digits, with no ".0" behind a whole one.
void appendOperand(std::string& joined, sqlite3_value* value) {
    if (isNull(value))
        return;
    if (sqlite3_value_type(value) != SQLITE_FLOAT) {
        joined += textOf(value);
        return;
    }
    std::array<char, 400> buffer{};
    const auto end =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), sqlite3_value_double(value));
    joined.append(buffer.data(), end.ptr);
}

/// `a & b`, which the dialect hands to SQLite as `->>`: the one operator of its that is a function
/// by name and stands before all comparisons.
void concatenate(Context context, int /*count*/, Arguments arguments) {
    if (isNull(arguments[0]) && isNull(arguments[1]))
        return;
    guarded(context, [&] {
        std::string joined;
        appendOperand(joined, arguments[0]);
        appendOperand(joined, arguments[1]);
        giveText(context, joined);
    });
}

/// `text like pattern`: `%` stands for any text, `_` for any character; case doesn't count,
/// accents do. A `%` takes as little as it can and is given more when what follows doesn't fit:
/// going back to the last one is enough, so the work never exceeds the product of the lengths.
bool isLike(std::string_view pattern, std::string_view text) {
    constexpr std::size_t kNone = std::string_view::npos;
    std::size_t at = 0;
    std::size_t in = 0;
    std::size_t afterPercent = kNone;
    std::size_t resume = 0;
    while (in < text.size()) {
        const char sign = at < pattern.size() ? pattern[at] : '\0';
        const bool fits = at < pattern.size() &&
                          (sign == '_' || jet::lowerCase(jet::utf8At(pattern, at).codePoint) ==
                                              jet::lowerCase(jet::utf8At(text, in).codePoint));
        if (sign == '%') {
            afterPercent = ++at;
            resume = in;
        } else if (fits) {
            at += jet::bytesAt(pattern, at);
            in += jet::bytesAt(text, in);
        } else if (afterPercent != kNone) {
            at = afterPercent;
            resume += jet::bytesAt(text, resume);
            in = resume;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('%', at) == kNone;
}

void like(Context context, int count, Arguments arguments) {
    if (!anyNull(count, arguments))
        sqlite3_result_int(context, isLike(textOf(arguments[0]), textOf(arguments[1])) ? 1 : 0);
}

// ---- numbers, nulls, dates --------------------------------------------------------------------

template <double (*Round)(double)>
void whole(Context context, int /*count*/, Arguments arguments) {
    if (sqlite3_value_numeric_type(arguments[0]) == SQLITE_INTEGER)
        return sqlite3_result_int64(context, sqlite3_value_int64(arguments[0]));
    if (!isNull(arguments[0]))
        sqlite3_result_double(context, Round(sqlite3_value_double(arguments[0])));
}

double down(double number) { return std::floor(number); }
double towardsZero(double number) { return std::trunc(number); }

void nz(Context context, int /*count*/, Arguments arguments) {
    sqlite3_result_value(context, arguments[isNull(arguments[0]) ? 1 : 0]);
}

void isNullFunction(Context context, int /*count*/, Arguments arguments) {
    sqlite3_result_int(context, isNull(arguments[0]) ? -1 : 0);
}

void today(Context context, int /*count*/, Arguments /*arguments*/) {
    sqlite3_result_double(context, jet::Date::today().days);
}

void now(Context context, int /*count*/, Arguments /*arguments*/) {
    sqlite3_result_double(context, jet::Date::now().days);
}

template <int jet::CivilTime::*Part>
void datePart(Context context, int /*count*/, Arguments arguments) {
    if (!isNull(arguments[0]))
        sqlite3_result_int(context, jet::Date{sqlite3_value_double(arguments[0])}.civil().*Part);
}

// ---- sums -------------------------------------------------------------------------------------

void addToSum(Context context, int /*count*/, Arguments arguments) {
    auto* sum = static_cast<ExactSum*>(sqlite3_aggregate_context(context, sizeof(ExactSum)));
    if (sum == nullptr) // unreached: memory for a sum is there
        return sqlite3_result_error_nomem(context);
    switch (sqlite3_value_numeric_type(arguments[0])) {
    case SQLITE_NULL:
        return;
    case SQLITE_INTEGER:
        return sum->add(std::int64_t{sqlite3_value_int64(arguments[0])});
    default:
        return sum->add(sqlite3_value_double(arguments[0]));
    }
}

void giveSum(Context context) {
    const auto* sum = static_cast<ExactSum*>(sqlite3_aggregate_context(context, 0));
    if (sum == nullptr || sum->count == 0)
        return;
    if (sum->fractions)
        sqlite3_result_double(context, sum->total());
    else
        sqlite3_result_int64(context, sum->wholes);
}

void giveAverage(Context context) {
    const auto* sum = static_cast<ExactSum*>(sqlite3_aggregate_context(context, 0));
    if (sum != nullptr && sum->count > 0)
        sqlite3_result_double(context, sum->total() / static_cast<double>(sum->count));
}

// ---- the list ---------------------------------------------------------------------------------

using Scalar = void (*)(Context, int, Arguments);
using Final = void (*)(Context);

struct SqlFunction {
    std::string_view name;
    const char* engineName;
    int arguments = 0;
    Scalar call = nullptr; ///< of an aggregate: each row; null: SQLite's own
    Final result = nullptr;
    bool constant = true; ///< the same for the same arguments
};

// Rows of several lengths, which it would push apart.
// clang-format off
constexpr SqlFunction kFunctions[] = {
    {"mid",    "jet_mid",    3, mid},
    {"mid",    "jet_mid",    2, mid},
    {"left",   "jet_left",   2, side<jet::leftOf>},
    {"right",  "jet_right",  2, side<jet::rightOf>},
    {"len",    "jet_len",    1, len},
    {"instr",  "jet_instr",  2, instr},
    {"ucase",  "jet_ucase",  1, changed<jet::upperCase>},
    {"lcase",  "jet_lcase",  1, changed<jet::lowerCase>},
    {"trim",   "jet_trim",   1, trim<jet::Side::both>},
    {"ltrim",  "jet_ltrim",  1, trim<jet::Side::left>},
    {"rtrim",  "jet_rtrim",  1, trim<jet::Side::right>},
    {"nz",     "jet_nz",     2, nz},
    {"isnull", "jet_isnull", 1, isNullFunction},
    {"int",    "jet_int",    1, whole<down>},
    {"fix",    "jet_fix",    1, whole<towardsZero>},
    {"date",   "jet_date",   0, today, nullptr, false},
    {"now",    "jet_now",    0, now, nullptr, false},
    {"year",   "jet_year",   1, datePart<&jet::CivilTime::year>},
    {"month",  "jet_month",  1, datePart<&jet::CivilTime::month>},
    {"day",    "jet_day",    1, datePart<&jet::CivilTime::day>},
    {"sum",    "jet_sum",    1, addToSum, giveSum},
    {"avg",    "jet_avg",    1, addToSum, giveAverage},
    {"count",  "count"},
    {"min",    "min"},
    {"max",    "max"},
    {"abs",    "abs"},
    {"iif",    "iif"},
};
// clang-format on

/// What operators call.
constexpr SqlFunction kOperators[] = {
    {"", "->>",  2, concatenate},
    {"", "like", 2, like       }
};

void add(sqlite3* handle, const SqlFunction& function) {
    if (function.call == nullptr)
        return;
    const bool aggregate = function.result != nullptr;
    const int flags = SQLITE_UTF8 | (function.constant ? SQLITE_DETERMINISTIC : 0);
    if (sqlite3_create_function_v2(handle, function.engineName, function.arguments, flags, nullptr,
                                   aggregate ? nullptr : function.call,
                                   aggregate ? function.call : nullptr, function.result,
                                   nullptr) != SQLITE_OK)
        throw jet::Error(jet::Errc::io, "Não há memória para abrir o banco de dados.");
}

} // namespace

const char* engineFunction(std::string_view name) {
    for (const SqlFunction& function : kFunctions) {
        if (function.name == name)
            return function.engineName;
    }
    return nullptr;
}

bool isAllowedFunction(std::string_view engineName) {
    const auto called = [&](const SqlFunction& function) {
        return engineName == function.engineName;
    };
    return std::ranges::any_of(kFunctions, called) || std::ranges::any_of(kOperators, called);
}

void addFunctions(sqlite3* handle) {
    for (const SqlFunction& function : kFunctions)
        add(handle, function);
    for (const SqlFunction& function : kOperators)
        add(handle, function);
}

} // namespace ado
