// Rules as somebody else's program may have left them in the file: the properties of a table, and
// the expressions, patterns, dates and numbers in them. Each is understood and gives an answer, or
// is refused with a reason, in a bounded time.
//
// An input is a byte that says what follows (the lowest two bits: properties, expression, pattern,
// literals; bit 2: Jet 3), a byte that chooses values, and the text or the bytes. A pattern stands
// before a zero, the text for it behind.
#include "fuzz/Fuzz.h"
#include "jet/Error.h"
#include "jet/Tokens.h"
#include "jet/rule/Like.h"
#include "jet/rule/Operators.h"
#include "jet/rule/ValueRules.h"

#include <algorithm>
#include <cmath>
#include <vector>

using namespace jet;

namespace {

constexpr PageNo kPage{9};

std::vector<Column> makeColumns() {
    constexpr struct {
        const char* name;
        ColumnType type;
    } kColumns[] = {
        {"a",           ColumnType::longInteger},
        {"texto",       ColumnType::text       },
        {"dia do mês", ColumnType::date       },
        {"valor",       ColumnType::currency   },
        {"sim",         ColumnType::boolean    },
        {"obs",         ColumnType::memo       },
        {"real",        ColumnType::real       },
        {"decimal",     ColumnType::numeric    }
    };
    std::vector<Column> columns;
    for (const auto& [name, type] : kColumns) {
        Column column;
        column.name = name;
        column.type = type;
        column.scale = 4;
        columns.push_back(std::move(column));
    }
    return columns;
}

const std::vector<Column>& columns() {
    static const std::vector<Column> all = makeColumns();
    return all;
}

/// A value of any kind, at the edge of its kind rather than in the middle.
Value valueOf(unsigned choice) {
    static const std::vector<Value> all{
        Value(),
        std::int64_t{0        },
        std::string("12,50"),
        Date::of({2024,      2, 29}
        ),
        true,
        Currency{INT64_MAX      },
        1e308,
        std::string(),
        INT64_MIN,
        Currency{INT64_MIN},
        Date{1e300},
        Numeric{true,     {~0U, ~0U, ~0U, ~0U}, 28},
        std::nan(""),
        Bytes(3),
        Guid{      },
        std::string(300, '*')
    };
    return all[choice % all.size()];
}

/// Runs `action`, which may end with an Error of these kinds.
template <class Action>
void refusing(std::initializer_list<Errc> allowed, Action&& action) {
    try {
        action();
    } catch (const Error& error) {
        fuzz::require(*error.what() != '\0');
        fuzz::require(std::ranges::find(allowed, error.code()) != allowed.end());
    }
}

void readProperties(std::string_view bytes, unsigned choice, Version version) {
    const TextCodec codec(version);
    std::vector<PropertyGroup> groups;
    refusing({Errc::corrupt},
             [&] { groups = parseProperties(std::as_bytes(std::span(bytes)), codec, kPage); });
    ValueRules rules("tabela", columns(), Collation::general(version));
    refusing({Errc::corrupt}, [&] { rules.read(groups, codec); });
    refusing({Errc::rule, Errc::nullValue}, [&] {
        Row row(columns().size());
        rules.fillIn(row, std::vector<bool>(row.size()));
    });
    for (std::size_t i = 0; i < columns().size(); ++i)
        refusing({Errc::rule, Errc::nullValue}, [&] { rules.check(i, valueOf(choice++)); });
}

void evaluate(std::string_view text, unsigned choice, Version version) {
    std::optional<Expression> expression;
    const std::optional<std::size_t> own =
        choice % 3 == 0 ? std::nullopt : std::optional<std::size_t>(choice % columns().size());
    refusing({Errc::syntax}, [&] {
        expression.emplace(text, Expression::Names{"tabela", columns(), own},
                           Collation::general(version));
    });
    for (unsigned round = 0; expression && round < 4; ++round)
        refusing({Errc::outOfRange}, [&] {
            const Value value = expression->evaluate([&](std::size_t column) {
                fuzz::require(column < columns().size() && expression->reads(column));
                return valueOf(choice + 5 * round + static_cast<unsigned>(column));
            });
            (void)truthOf(value);
            (void)numberOf(value);
            (void)textOf(value);
        });
}

/// The plain reading of a pattern without brackets: for each place in the pattern, which places in
/// the text it may have got to.
bool plainlyLike(std::string_view text, std::string_view pattern, const Collation& order) {
    std::vector<bool> at(text.size() + 1);
    at[0] = true;
    for (const char c : pattern) {
        std::vector<bool> next(text.size() + 1);
        for (std::size_t i = 0; i <= text.size(); ++i) {
            if (c == '*')
                next[i] = at[i] || (i > 0 && next[i - 1]);
            else if (i > 0 && at[i - 1])
                next[i] = c == '?'   ? true
                          : c == '#' ? text[i - 1] >= '0' && text[i - 1] <= '9'
                                     : order.compare(text.substr(i - 1, 1), {&c, 1}) == 0;
        }
        at = std::move(next);
    }
    return at.back();
}

bool isPlain(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return c > 0 && c != '['; });
}

void match(std::string_view both, Version version) {
    const std::size_t zero = std::min(both.find('\0'), both.size());
    const std::string_view pattern = both.substr(0, zero);
    const std::string_view text = both.substr(std::min(zero + 1, both.size()));
    const Collation& order = Collation::general(version);
    bool ended = false;
    bool like = false;
    refusing({Errc::outOfRange}, [&] {
        like = isLike(text, pattern, order);
        ended = true;
    });
    fuzz::require(!ended || isPattern(pattern));
    if (ended && isPlain(pattern) && isPlain(text) && both.size() < 600)
        fuzz::require(like == plainlyLike(text, pattern, order));
}

void readLiterals(std::string_view text) {
    refusing({Errc::syntax}, [&] { fuzz::require(std::isfinite(parseDateLiteral(text))); });
    refusing({Errc::syntax}, [&] {
        for (const Token& token : tokenize(text))
            fuzz::require(token.kind == Token::Kind::text || token.kind == Token::Kind::bracketed ||
                          !token.text.empty());
    });
    const Value written{std::string(text)};
    refusing({Errc::outOfRange}, [&] { (void)numberOf(written); });
    refusing({Errc::outOfRange}, [&] { (void)truthOf(written); });
    for (unsigned i = 0; i < 16; ++i)
        refusing({Errc::outOfRange}, [&] {
            (void)compareValues(written, valueOf(i), Collation::general(Version::jet4));
            (void)joined(written, valueOf(i));
        });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const std::uint8_t kind = input.byte();
    const std::uint8_t choice = input.byte();
    const Version version = (kind & 4) != 0 ? Version::jet3 : Version::jet4;
    const std::string_view text = input.rest();
    switch (kind % 4) {
    case 0:
        readProperties(text, choice, version);
        break;
    case 1:
        evaluate(text, choice, version);
        break;
    case 2:
        match(text, version);
        break;
    default:
        readLiterals(text);
    }
    return 0;
}
