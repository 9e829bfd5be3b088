#include "controls/typing/Formato.h"

#include <QRegularExpression>

#include <array>
#include <cstdlib>

namespace {

constexpr std::int64_t kUnit = 10'000;
constexpr int kFirstYear = 100;
constexpr int kLastYear = 9999;

/// The absolute value; of the lowest amount too.
std::uint64_t magnitude(std::int64_t value) {
    return value < 0 ? std::uint64_t{0} - static_cast<std::uint64_t>(value)
                     : static_cast<std::uint64_t>(value);
}

QString grouped(std::uint64_t whole) {
    QString digits = QString::number(whole);
    for (qsizetype at = digits.size() - 3; at > 0; at -= 3)
        digits.insert(at, '.');
    return digits;
}

/// `fraction` counts units of the last of `decimals` decimals.
QString composed(bool negative, std::uint64_t whole, std::uint64_t fraction, int decimals) {
    return QString("%1%2,%3")
        .arg(negative ? QString("-") : QString(), grouped(whole))
        .arg(fraction, decimals, 10, QChar('0'));
}

/// An amount's text without its points between thousands: what stands before and after the comma.
struct Plain {
    QString whole;
    QString decimals;
};

/// Takes the points between thousands away. Refuses a group of other than three digits.
std::optional<QString> ungrouped(const QString& text, QChar separator) {
    const QStringList groups = text.split(separator);
    if (groups.size() == 1)
        return text;
    for (qsizetype i = 1; i < groups.size(); ++i) {
        if (groups[i].size() != 3)
            return std::nullopt;
    }
    if (groups[0].isEmpty() || groups[0].size() > 3)
        return std::nullopt;
    return groups.join("");
}

std::optional<Plain> split(const QString& text, qsizetype point, QChar separator) {
    const auto whole = ungrouped(text.first(point), separator);
    if (!whole)
        return std::nullopt;
    return Plain{*whole, text.sliced(point + 1)};
}

std::optional<Plain> separated(const QString& text) {
    const qsizetype comma = text.lastIndexOf(',');
    const qsizetype dot = text.lastIndexOf('.');
    if (comma > dot && text.count(',') == 1)
        return split(text, comma, '.'); // 1.234,56
    if (comma >= 0 && dot > comma && text.count('.') == 1)
        return split(text, dot, ','); // 1,234.56
    if (comma >= 0)
        return std::nullopt;
    if (const auto whole = ungrouped(text, '.'))
        return Plain{*whole, ""}; // 1.234.567
    return split(text, dot, '.'); // 1234.56
}

bool allDigits(const QString& text) {
    static const QRegularExpression kDigits("^[0-9]*$");
    return kDigits.match(text).hasMatch();
}

} // namespace

std::optional<Amount> sum(Amount a, Amount b) {
    using Limits = std::numeric_limits<std::int64_t>;
    const std::int64_t added = b.tenThousandths;
    if (added > 0 ? a.tenThousandths > Limits::max() - added
                  : a.tenThousandths < Limits::min() - added)
        return std::nullopt;
    return Amount{a.tenThousandths + added};
}

QString formatMoney(Amount amount) {
    const std::uint64_t cents = (magnitude(amount.tenThousandths) + 50) / 100;
    return composed(amount.tenThousandths < 0 && cents != 0, cents / 100, cents % 100,
                    kShownDecimals);
}

QString formatMoneyExactly(Amount amount) {
    if (amount.tenThousandths % 100 == 0)
        return formatMoney(amount);
    const std::uint64_t all = magnitude(amount.tenThousandths);
    return composed(amount.tenThousandths < 0, all / kUnit, all % kUnit, kMoneyDecimals);
}

std::optional<MoneyText> parseMoney(const QString& text) {
    static const QRegularExpression kOrnament(R"([\s\x{A0}]+|R\$)",
                                              QRegularExpression::CaseInsensitiveOption);
    QString rest = text;
    rest.remove(kOrnament).replace(QChar(0x2212), '-');
    const bool negative = rest.startsWith('-');
    if (negative)
        rest.remove(0, 1);

    const auto plain = separated(rest);
    if (!plain || !allDigits(plain->whole) || !allDigits(plain->decimals) ||
        plain->decimals.size() > kMoneyDecimals ||
        plain->whole.size() + plain->decimals.size() == 0)
        return std::nullopt;

    std::uint64_t value = 0;
    const std::uint64_t limit =
        std::uint64_t{std::numeric_limits<std::int64_t>::max()} + (negative ? 1U : 0U);
    for (const QChar digit : plain->whole + plain->decimals.leftJustified(kMoneyDecimals, '0')) {
        const auto next = static_cast<std::uint64_t>(digit.unicode() - u'0');
        if (value > (limit - next) / 10)
            return std::nullopt;
        value = value * 10 + next;
    }
    return MoneyText{{static_cast<std::int64_t>(negative ? std::uint64_t{0} - value : value)},
                     static_cast<int>(plain->decimals.size())};
}

QString formatDate(const QDate& date) {
    if (!date.isValid())
        return "";
    return QString("%1/%2/%3")
        .arg(date.day(), 2, 10, QChar('0'))
        .arg(date.month(), 2, 10, QChar('0'))
        .arg(date.year(), 4, 10, QChar('0'));
}

namespace {

/// The day and month in the year that the rule gives them; no date if no year has them.
QDate inYear(int day, int month, const YearRule& rule) {
    constexpr int kLeapYears = 8; // from one 29/02 to the next, where a century has none
    const bool nearest = rule.kind == YearRule::Kind::nearest;
    QDate best;
    for (int year = rule.day.year() - (nearest ? kLeapYears : 0);
         year <= rule.day.year() + kLeapYears; ++year) {
        const QDate date(year, month, day);
        if (!date.isValid())
            continue;
        if (nearest ? !best.isValid() ||
                          std::abs(rule.day.daysTo(date)) <= std::abs(rule.day.daysTo(best))
                    : !best.isValid() && date >= rule.day)
            best = date;
    }
    return best;
}

} // namespace

std::optional<QDate> parseDate(const QString& text, const YearRule& rule) {
    static const std::array kForms = {
        QRegularExpression(R"(^(?<d>\d{1,2})[/. -](?<m>\d{1,2})(?:[/. -](?<y>\d{2,4})?)?$)"),
        QRegularExpression(R"(^(?<d>\d{2})(?<m>\d{2})(?<y>\d{2}|\d{4})?$)"),
        QRegularExpression(R"(^(?<y>\d{4})-(?<m>\d{2})-(?<d>\d{2})$)"),
    };
    for (const QRegularExpression& form : kForms) {
        const auto match = form.match(text.trimmed());
        if (!match.hasMatch())
            continue;
        const QString yearText = match.captured("y");
        const int month = match.captured("m").toInt();
        const int day = match.captured("d").toInt();
        int year = yearText.toInt();
        if (yearText.size() == 2)
            year += year < 50 ? 2000 : 1900;
        const QDate date = yearText.isEmpty() ? inYear(day, month, rule) : QDate(year, month, day);
        if (!date.isValid() || date.year() < kFirstYear || date.year() > kLastYear)
            return std::nullopt;
        return date;
    }
    return std::nullopt;
}
