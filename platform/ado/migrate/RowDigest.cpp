#include "ado/migrate/RowDigest.h"

#include "ado/server/ServerValue.h"

#include <bit>
#include <chrono>
#include <cmath>

namespace ado {

namespace {

using std::chrono::days;
using std::chrono::floor;
using std::chrono::microseconds;
using std::chrono::sys_days;
using std::chrono::year;

constexpr sys_days kFirstDay{year{2000} / 1 / 1};

class Hash {
public:
    void add(std::string_view bytes) {
        for (const char c : bytes)
            state_ = (state_ ^ static_cast<unsigned char>(c)) * kPrime;
    }
    void add(std::uint64_t number) {
        state_ = (state_ ^ number) * kPrime;
        state_ ^= state_ >> 29U;
        state_ *= 0xBF58476D1CE4E5B9U;
        state_ ^= state_ >> 32U;
    }
    [[nodiscard]] std::uint64_t value() const noexcept { return state_; }

private:
    static constexpr std::uint64_t kPrime = 0x100000001B3U;
    std::uint64_t state_ = 0xCBF29CE484222325U;
};

struct Adder {
    Hash& hash;

    void operator()(std::monostate) const {}
    void operator()(bool value) const { hash.add(std::uint64_t{value}); }
    void operator()(std::int64_t value) const { hash.add(static_cast<std::uint64_t>(value)); }
    void operator()(jet::Currency value) const {
        hash.add(static_cast<std::uint64_t>(value.tenThousandths));
    }
    void operator()(double value) const {
        hash.add(std::isnan(value) ? 1 : std::bit_cast<std::uint64_t>(value));
    }
    void operator()(jet::Date value) const {
        hash.add(static_cast<std::uint64_t>(microsecondsOf(value)));
    }
    void operator()(const std::string& value) const {
        hash.add(value.size());
        hash.add(value);
    }
    void operator()(const jet::Bytes& value) const {
        hash.add(value.size());
        for (const std::byte byte : value)
            hash.add(std::string_view(reinterpret_cast<const char*>(&byte), 1));
    }
    void operator()(const jet::Guid& value) const { hash.add(value.text()); }
    void operator()(const jet::Numeric& value) const { hash.add(value.text()); }
};

} // namespace

std::uint64_t digestOf(const jet::Row& row) {
    Hash hash;
    for (const jet::Value& value : row) {
        hash.add(value.index());
        std::visit(Adder{hash}, value);
    }
    return hash.value();
}

TableDigest::TableDigest(const jet::TableSpec& table) {
    using enum jet::ColumnType;
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
        const jet::ColumnType type = table.columns[i].type;
        if (type == byte || type == integer || type == longInteger || type == currency)
            sums_.push_back({i, type == currency});
    }
}

void TableDigest::add(const jet::Row& row) {
    rows_.push_back(digestOf(row));
    for (Sum& sum : sums_) {
        std::int64_t number = 0;
        if (const auto* const whole = std::get_if<std::int64_t>(&row[sum.column]))
            number = *whole;
        else if (const auto* const amount = std::get_if<jet::Currency>(&row[sum.column]))
            number = amount->tenThousandths;
        std::int64_t total = 0;
        if (sum.total && !__builtin_add_overflow(*sum.total, number, &total))
            sum.total = total;
        else
            sum.total.reset();
    }
}

std::uint64_t TableDigest::whole() const {
    Hash hash;
    for (const std::uint64_t row : rows_)
        hash.add(row);
    return hash.value();
}

std::string TableDigest::text(const Sum& sum) {
    const std::int64_t total = sum.total.value_or(0);
    return sum.currency ? *parameterOf(jet::Currency{total}).text : std::to_string(total);
}

std::int64_t microsecondsOf(jet::Date date) {
    const jet::CivilTime time = date.civil();
    const sys_days day = year{time.year} / time.month / time.day;
    const microseconds within = std::chrono::hours{time.hour} + std::chrono::minutes{time.minute} +
                                std::chrono::seconds{time.second};
    return (microseconds{day - kFirstDay} + within).count();
}

jet::Date dateOfMicroseconds(std::int64_t moment) {
    const microseconds since{moment};
    const days whole = floor<days>(since);
    const std::chrono::year_month_day day{kFirstDay + whole};
    const std::chrono::hh_mm_ss time{floor<std::chrono::seconds>(since - whole)};
    return jet::Date::of({.year = static_cast<int>(day.year()),
                          .month = static_cast<int>(static_cast<unsigned>(day.month())),
                          .day = static_cast<int>(static_cast<unsigned>(day.day())),
                          .hour = static_cast<int>(time.hours().count()),
                          .minute = static_cast<int>(time.minutes().count()),
                          .second = static_cast<int>(time.seconds().count())});
}

} // namespace ado
