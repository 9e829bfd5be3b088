#pragma once

#include <QDate>
#include <QString>

#include <compare>
#include <cstdint>
#include <limits>
#include <optional>

/// Amounts and dates as the operator reads and writes them, whatever the machine's locale.

/// An amount in 1/10000 of a real: exact, from -922337203685477,5808 to 922337203685477,5807.
struct Amount {
    std::int64_t tenThousandths = 0;
    friend auto operator<=>(const Amount&, const Amount&) = default;
};

/// Both together; nothing if that is out of range.
[[nodiscard]] std::optional<Amount> sum(Amount a, Amount b);

constexpr int kMoneyDecimals = 4; ///< that an Amount can have
constexpr int kShownDecimals = 2; ///< that are shown as a rule

/// "1.234,56", "-0,50": point between thousands, comma, two decimals; halves are rounded away from
/// zero. This is what each of the patterns "#,##0.00", "##,##0.00" and "##,#0.00" stands for.
[[nodiscard]] QString formatMoney(Amount amount);
/// The same without losing anything: four decimals where the third or fourth is not zero.
[[nodiscard]] QString formatMoneyExactly(Amount amount);

/// An amount that was read, and how many decimals it was written with.
struct MoneyText {
    Amount amount;
    int decimals = 0;
};

/// Reads what people type and paste: "1234,56", "1.234,56", "R$ 1.234,56", "-5", "1234.56",
/// "1,234.56". A single point followed by exactly three digits parts thousands ("1.234" is one
/// thousand two hundred and thirty-four), followed by other than three it is the decimal point.
/// An empty text or a lone sign is no amount.
/// @return nothing if it is no amount, has more than four decimals or is out of range.
[[nodiscard]] std::optional<MoneyText> parseMoney(const QString& text);

/// "dd/mm/yyyy"; "" for an invalid date.
[[nodiscard]] QString formatDate(const QDate& date);

/// Which year a date without one means.
struct YearRule {
    enum class Kind : unsigned char {
        nearest,   ///< that of the such day nearest to `day`; of two as near the later one
        notBefore, ///< that of the first such day from `day` on
    };
    Kind kind = Kind::nearest;
    QDate day = QDate::currentDate();
};

/// Reads day, month, year: "01/02/2026", "1/2/26", "1-2-2026", "01022026", "010226"; without a year
/// ("1/2", "0102") that of the rule. Reads "2026-02-01" as well. Of a year of two digits, 00 to 49
/// are of this century, 50 to 99 of the last.
/// @return nothing if there is no such date in the years 100 to 9999.
[[nodiscard]] std::optional<QDate> parseDate(const QString& text, const YearRule& rule = {});
