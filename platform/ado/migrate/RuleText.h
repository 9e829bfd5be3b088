#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ado {

/// A condition of the server as a rule of a file.
struct RuleText {
    /// A field that must be filled in, or takes no empty text, is so by a property of its own.
    enum class Kind : unsigned char { condition, notNull, notEmpty };
    Kind kind = Kind::condition;
    std::string text{}; ///< of a condition
};

/// `sql` as the server writes it out. Nothing if it says what a file's rule can't, or has words
/// that aren't known here.
[[nodiscard]] std::optional<RuleText> ruleText(std::string_view sql);
/// The same for a default, which has no columns.
[[nodiscard]] std::optional<std::string> valueText(std::string_view sql);

} // namespace ado
