#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ado {

/// How an engine says what the dialect says in words of its own: everything but names, which are
/// quoted, the signs of arithmetic and comparison, and the keywords that all have.
class Tongue {
public:
    Tongue(const Tongue&) = delete;
    Tongue& operator=(const Tongue&) = delete;
    virtual ~Tongue() = default;

    /// A text that stands between quotes.
    [[nodiscard]] virtual std::string text(const std::string& value) = 0;
    /// A date, given as its number of days.
    [[nodiscard]] virtual std::string date(const std::string& days) = 0;
    [[nodiscard]] virtual std::string truth(bool yes) const = 0;
    /// A function, in lower case and without `$`. Nothing if there is none.
    [[nodiscard]] virtual std::optional<std::string> function(std::string_view name) const = 0;
    /// The parenthesis behind the arguments of a function.
    [[nodiscard]] virtual std::string endOfCall() const = 0;
    /// `&`.
    [[nodiscard]] virtual std::string join() const = 0;
    /// `like`, and `not` before it.
    [[nodiscard]] virtual std::string like() const = 0;
    [[nodiscard]] virtual std::string notLike() const = 0;
    /// Whether `x in (a, b)` is to be said as `(x = a or x = b)`.
    [[nodiscard]] virtual bool listsAreChoices() const { return false; }
    /// A term that rows are sorted by, where that needs more than the term and its direction.
    [[nodiscard]] virtual std::optional<std::string> sorted(const std::string& /*term*/,
                                                            bool /*descending*/) const {
        return std::nullopt;
    }

protected:
    Tongue() = default;
};

/// SQLite's.
[[nodiscard]] Tongue& sqliteTongue();

} // namespace ado
