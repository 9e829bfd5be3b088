#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <variant>
#include <vector>

/// The quantities of a database file, a type for each, so that one can't be taken for another.
namespace jet {

/// Which of the two layouts a file has: Jet 3 has pages of 2,048 bytes and text in a code page,
/// Jet 4 pages of 4,096 bytes and Unicode text.
enum class Version : std::uint8_t { jet3, jet4 };

/// A page of the file, counted from 0. Not a number: can't be added to or taken for a row count.
enum class PageNo : std::uint32_t {};

[[nodiscard]] constexpr std::uint32_t number(PageNo page) noexcept {
    return static_cast<std::uint32_t>(page);
}

/// Where a row lives; ordered as a scan meets rows. Stays the same when the row grows and its bytes
/// move to another page. Valid until the row is erased.
struct RowId {
    PageNo page{};
    std::uint16_t slot{};
    friend auto operator<=>(const RowId&, const RowId&) = default;
};

/// A RowId as the one number the file writes for it: page in the upper bits, slot in the low byte.
[[nodiscard]] constexpr std::int64_t packed(RowId id) noexcept {
    return (std::int64_t{number(id.page)} << 8) | id.slot;
}
[[nodiscard]] constexpr RowId unpacked(std::int64_t id) noexcept {
    return {static_cast<PageNo>(static_cast<std::uint32_t>(id >> 8)),
            static_cast<std::uint16_t>(id & 0xFF)};
}

/// An amount in 1/10000 of a real: exact, from -922337203685477,5808 to 922337203685477,5807.
struct Currency {
    std::int64_t tenThousandths{};
    friend auto operator<=>(const Currency&, const Currency&) = default;
};

/// A day of the calendar and a time of that day.
struct CivilTime {
    int year{1899};
    int month{12};
    int day{30};
    int hour{};
    int minute{};
    int second{};
    friend auto operator<=>(const CivilTime&, const CivilTime&) = default;
};

/// A moment as the file stores it: the whole part counts days from 1899-12-30 and may be negative;
/// the fraction is the time of that day and counts forward from midnight whatever the sign.
struct Date {
    double days{};

    /// By the machine's clock and time zone.
    [[nodiscard]] static Date now();
    [[nodiscard]] static Date today();
    /// Years 100 to 9999, no time zone.
    [[nodiscard]] static Date of(const CivilTime& time) noexcept;
    /// Rounded to the nearest second.
    [[nodiscard]] CivilTime civil() const noexcept;
    [[nodiscard]] bool inRange() const noexcept;
    /// Orders moments; differs from `days` itself only before the first day.
    [[nodiscard]] double moment() const noexcept;

    friend bool operator==(const Date&, const Date&) = default;
};

/// A 128-bit identifier, its bytes in the order of the file.
struct Guid {
    std::array<std::byte, 16> bytes{};
    friend bool operator==(const Guid&, const Guid&) = default;
    /// One that nobody has given before.
    [[nodiscard]] static Guid random();
    /// `{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}`, upper case.
    [[nodiscard]] std::string text() const;
};

/// A decimal number of up to 28 digits: sign, 17 stored bytes, and the column's scale.
struct Numeric {
    bool negative{};
    std::array<std::uint32_t, 4> words{}; ///< magnitude, most significant word first
    std::uint8_t scale{};
    friend bool operator==(const Numeric&, const Numeric&) = default;
    /// Digits with a point before the last `scale` ones, e.g. "-12.50".
    [[nodiscard]] std::string text() const;
};

using Bytes = std::vector<std::byte>;

/// What a field holds. Absent (std::monostate) is the null of the file; bool a yes/no; int64_t a
/// byte, integer or long; double a single or double; std::string text or memo in UTF-8; Bytes
/// binary, OLE and every type this engine doesn't know.
using Value = std::variant<std::monostate, bool, std::int64_t, Currency, double, Date, std::string,
                           Bytes, Guid, Numeric>;

[[nodiscard]] inline bool isNull(const Value& value) noexcept {
    return std::holds_alternative<std::monostate>(value);
}

/// One value per column, in the order of Table::columns().
using Row = std::vector<Value>;

/// The type code of a column, as stored. Codes not named here occur and are kept as bytes.
enum class ColumnType : std::uint8_t {
    boolean = 0x01,
    byte = 0x02,
    integer = 0x03,
    longInteger = 0x04,
    currency = 0x05,
    single = 0x06,
    real = 0x07,
    date = 0x08,
    binary = 0x09,
    text = 0x0A,
    ole = 0x0B,
    memo = 0x0C,
    guid = 0x0F,
    numeric = 0x10,
};

/// Memo and OLE values live outside the row when they are long.
[[nodiscard]] constexpr bool isLongValue(ColumnType type) noexcept {
    return type == ColumnType::memo || type == ColumnType::ole;
}
[[nodiscard]] constexpr bool isText(ColumnType type) noexcept {
    return type == ColumnType::text || type == ColumnType::memo;
}

/// How the text of a column is ordered and, in Jet 3, which characters its bytes mean.
struct SortOrder {
    std::uint16_t lcid{0x0409};
    std::uint8_t version{};       ///< Jet 4 only
    std::uint16_t codePage{1252}; ///< Jet 3 only
    std::uint8_t variant{};       ///< Jet 4 only: 0, or another way to order that language
    friend bool operator==(const SortOrder&, const SortOrder&) = default;
};

} // namespace jet

template <>
struct std::hash<jet::PageNo> {
    std::size_t operator()(jet::PageNo page) const noexcept {
        // Consecutive pages are used together: spread them, or they share buckets in runs.
        return std::size_t{jet::number(page)} * 0x9E3779B97F4A7C15U;
    }
};
