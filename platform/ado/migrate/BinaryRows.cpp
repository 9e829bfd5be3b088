#include "ado/migrate/BinaryRows.h"

#include "ado/migrate/RowDigest.h"
#include "jet/Error.h"
#include "jet/Numbers.h"

#include <array>
#include <bit>
#include <charconv>
#include <optional>

namespace ado {

namespace {

constexpr std::string_view kSignature("PGCOPY\n\377\r\n\0", 11);

[[noreturn]] void fail() {
    throw jet::Error(jet::Errc::corrupt, "O servidor mandou registros que não se deixam ler.");
}

/// A number as it travels, its most significant byte first.
template <class Number>
Number numberIn(std::string_view bytes) {
    if (bytes.size() < sizeof(Number))
        fail();
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < sizeof(Number); ++i)
        number = number << 8U | static_cast<unsigned char>(bytes[i]);
    return static_cast<Number>(number);
}

struct TravelledDecimal {
    bool negative;
    std::string digits; ///< the last `scale` of them decimals
};

/// Four digits a place, the first place worth 10000 to its weight.
TravelledDecimal decimalIn(std::string_view bytes, int scale) {
    constexpr std::size_t kHead = 8;
    constexpr int kDigits = 4;
    if (bytes.size() < kHead)
        fail();
    const int places = numberIn<std::int16_t>(bytes);
    const int weight = numberIn<std::int16_t>(bytes.substr(2));
    const auto sign = numberIn<std::uint16_t>(bytes.substr(4));
    if (places < 0 || bytes.size() < kHead + 2 * static_cast<std::size_t>(places) || sign > 0x4000)
        fail();
    TravelledDecimal decimal{sign == 0x4000, {}};
    const int last = -((scale + kDigits - 1) / kDigits); // the place of the last decimals
    for (int place = std::max(weight, 0); place >= last; --place) {
        const int i = weight - place;
        const int four =
            i >= 0 && i < places
                ? numberIn<std::int16_t>(bytes.substr(kHead + 2 * static_cast<std::size_t>(i)))
                : 0;
        std::string text = std::to_string(four);
        text.insert(0, kDigits - std::min<std::size_t>(text.size(), kDigits), '0');
        decimal.digits += text;
    }
    const int surplus = -last * kDigits - scale;
    decimal.digits.resize(decimal.digits.size() - static_cast<std::size_t>(surplus));
    return decimal;
}

jet::Currency currencyIn(std::string_view bytes) {
    const TravelledDecimal decimal = decimalIn(bytes, 4);
    const std::string text = (decimal.negative ? "-" : "") + decimal.digits;
    std::int64_t amount = 0;
    if (std::from_chars(text.data(), text.data() + text.size(), amount).ec != std::errc())
        fail();
    return {amount};
}

jet::Value numericIn(std::string_view bytes, const jet::ColumnSpec& column) {
    const TravelledDecimal decimal = decimalIn(bytes, column.scale);
    const auto number = jet::numericFrom(decimal.negative, decimal.digits, column.scale);
    if (!number)
        fail();
    return *number;
}

/// The first three groups are numbers, which a file keeps least byte first.
jet::Guid guidIn(std::string_view bytes) {
    constexpr std::array<std::size_t, 16> kPlaces{3, 2, 1,  0,  5,  4,  7,  6,
                                                  8, 9, 10, 11, 12, 13, 14, 15};
    if (bytes.size() != kPlaces.size())
        fail();
    jet::Guid guid;
    for (std::size_t i = 0; i < kPlaces.size(); ++i)
        guid.bytes[kPlaces[i]] = static_cast<std::byte>(bytes[i]);
    return guid;
}

/// Of the years that a file knows; the server knows more, and "infinity".
jet::Date dateIn(std::string_view bytes) {
    static const std::int64_t first =
        microsecondsOf(jet::Date::of({.year = 100, .month = 1, .day = 1}));
    static const std::int64_t end = microsecondsOf(jet::Date::of(
        {.year = 9999, .month = 12, .day = 31, .hour = 23, .minute = 59, .second = 59}));
    const auto moment = numberIn<std::int64_t>(bytes);
    if (moment < first || moment > end)
        fail();
    return dateOfMicroseconds(moment);
}

jet::Value valueIn(std::string_view bytes, const jet::ColumnSpec& column) {
    switch (column.type) {
    case jet::ColumnType::boolean:
        return numberIn<std::uint8_t>(bytes) != 0;
    case jet::ColumnType::byte:
    case jet::ColumnType::integer:
        return std::int64_t{numberIn<std::int16_t>(bytes)};
    case jet::ColumnType::longInteger:
        return std::int64_t{numberIn<std::int32_t>(bytes)};
    case jet::ColumnType::currency:
        return currencyIn(bytes);
    case jet::ColumnType::single:
        return jet::asWritten(std::bit_cast<float>(numberIn<std::uint32_t>(bytes)));
    case jet::ColumnType::real:
        return std::bit_cast<double>(numberIn<std::uint64_t>(bytes));
    case jet::ColumnType::date:
        return dateIn(bytes);
    case jet::ColumnType::text:
    case jet::ColumnType::memo:
        return std::string(bytes);
    case jet::ColumnType::guid:
        return guidIn(bytes);
    case jet::ColumnType::numeric:
        return numericIn(bytes, column);
    default: {
        const auto* const first = reinterpret_cast<const std::byte*>(bytes.data());
        return jet::Bytes(first, first + bytes.size());
    }
    }
}

} // namespace

void BinaryRows::add(std::string_view piece) {
    rest_.erase(0, at_);
    at_ = 0;
    rest_ += piece;
    if (!begun_)
        begun_ = takeHead();
    while (begun_ && takeRow())
        take_(row_);
}

bool BinaryRows::takeHead() {
    constexpr std::size_t kHead = 19; // the signature, flags, the length of what may follow
    if (rest_.size() < kHead)
        return false;
    if (!rest_.starts_with(kSignature))
        fail();
    const auto more = numberIn<std::uint32_t>(std::string_view(rest_).substr(kHead - 4));
    if (rest_.size() - kHead < more)
        return false;
    at_ = kHead + more;
    return true;
}

jet::Value BinaryRows::taken(std::string_view bytes, const jet::ColumnSpec& column) const {
    try {
        return valueIn(bytes, column);
    } catch (const jet::Error& error) {
        throw jet::Error(error.code(),
                         "Na tabela \"" + table_.name + "\", registro " +
                             std::to_string(number_ + 1) + ", o campo \"" + column.name +
                             "\" tem no servidor um valor que um arquivo não guarda. Corrija-o no "
                             "servidor e repita.");
    }
}

/// False if it isn't there in whole yet, or if there is none.
bool BinaryRows::takeRow() {
    std::string_view left = std::string_view(rest_).substr(at_);
    const auto pass = [&](std::size_t count) { left.remove_prefix(count); };
    if (left.size() < 2)
        return false;
    const auto count = numberIn<std::int16_t>(left);
    if (count == -1)
        return false;
    if (static_cast<std::size_t>(count) != table_.columns.size())
        fail();
    pass(2);
    row_.clear();
    for (const jet::ColumnSpec& column : table_.columns) {
        if (left.size() < 4)
            return false;
        const auto length = numberIn<std::int32_t>(left);
        pass(4);
        if (length < 0) {
            row_.emplace_back();
            continue;
        }
        if (left.size() < static_cast<std::size_t>(length))
            return false;
        row_.push_back(taken(left.substr(0, static_cast<std::size_t>(length)), column));
        pass(static_cast<std::size_t>(length));
    }
    at_ = rest_.size() - left.size();
    ++number_;
    return true;
}

} // namespace ado
