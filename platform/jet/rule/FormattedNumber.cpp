#include "jet/rule/FormatParts.h"
#include "jet/rule/Operators.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>

namespace jet::functions {

namespace {

/// "-12.5", "1e+30" in digits.
Decimal decimalFrom(std::string_view text) {
    Decimal number;
    number.negative = text.starts_with('-');
    const std::size_t exponentAt = std::min(text.find('e'), text.size());
    if (exponentAt < text.size()) {
        const char* const begin = text.data() + exponentAt + (text[exponentAt + 1] == '+' ? 2 : 1);
        std::from_chars(begin, text.data() + text.size(), number.point);
    }
    bool whole = true;
    for (const char c : text.substr(0, exponentAt)) {
        whole = whole && c != '.';
        if (c < '0' || c > '9')
            continue;
        if (c != '0' || !number.digits.empty())
            number.digits += c;
        if (whole && !number.digits.empty())
            ++number.point;
        if (!whole && number.digits.empty())
            --number.point;
    }
    number.round(400);
    return number;
}

/// What a section asks for.
struct Plan {
    int wholePlaces = 0; ///< placeholders before the point
    int leastWhole = 0;  ///< digits that are always shown
    int places = 0;
    int leastPlaces = 0;
    int hundreds = 0;  ///< percent signs
    int thousands = 0; ///< commas that each leave out three digits
    bool grouped = false;
    bool exponent = false;
};

bool isExponent(Signs signs, std::size_t at) {
    return signs[at].isOneOf("eE") && at + 2 < signs.size() && signs[at + 1].isOneOf("+-") &&
           signs[at + 2].isOneOf("0#");
}

Plan planOf(Signs signs) {
    Plan plan;
    bool behindPoint = false;
    int commas = 0; // since the last placeholder
    for (std::size_t at = 0; at < signs.size(); ++at) {
        const Sign& sign = signs[at];
        if (isExponent(signs, at)) {
            plan.exponent = true;
            for (at += 2; at + 1 < signs.size() && signs[at + 1].isOneOf("0#");)
                ++at;
        } else if (sign.isOneOf("0#") && behindPoint) {
            ++plan.places;
            if (sign.is('0'))
                plan.leastPlaces = plan.places;
        } else if (sign.isOneOf("0#")) {
            ++plan.wholePlaces;
            plan.grouped = plan.grouped || commas > 0;
            commas = 0;
            plan.leastWhole += sign.is('0') || plan.leastWhole > 0 ? 1 : 0;
        } else if (sign.is(',') && !behindPoint) {
            commas += plan.wholePlaces > 0 ? 1 : 0;
        } else if (sign.is('.') && !behindPoint) {
            behindPoint = true;
            plan.thousands = commas;
        } else if (sign.is('%')) {
            ++plan.hundreds;
        }
    }
    if (!behindPoint)
        plan.thousands = commas;
    return plan;
}

/// The digits before the point, at least so many.
std::string wholeDigits(const Decimal& number, int least) {
    const auto count = static_cast<std::size_t>(std::max(0, number.point));
    std::string whole = number.digits.substr(0, std::min(count, number.digits.size()));
    whole.resize(count, '0');
    const auto needed = static_cast<std::size_t>(least);
    whole.insert(0, needed > whole.size() ? needed - whole.size() : 0, '0');
    return whole;
}

/// The digits behind it, at least so many.
std::string placesOf(const Decimal& number, int least) {
    const auto leading = static_cast<std::size_t>(std::max(0, -number.point));
    const auto begin = static_cast<std::size_t>(std::max(0, number.point));
    std::string places;
    if (begin < number.digits.size())
        places = std::string(leading, '0') + number.digits.substr(begin);
    places.resize(std::max(places.size(), static_cast<std::size_t>(least)), '0');
    return places;
}

/// Writes a number into the places of a section.
class NumberWriter {
public:
    NumberWriter(Signs signs, const Plan& plan, const Decimal& number, int exponent)
        : signs_(signs), plan_(plan), whole_(wholeDigits(number, plan.leastWhole)),
          places_(placesOf(number, plan.leastPlaces)), exponent_(exponent) {}

    std::string run() {
        for (std::size_t at = 0; at < signs_.size(); ++at) {
            const Sign& sign = signs_[at];
            if (isExponent(signs_, at))
                writeExponent(at);
            else if (sign.isOneOf("0#"))
                behindPoint_ ? writePlace() : writeWhole();
            else if (sign.is('.') && !behindPoint_)
                writePoint();
            else if (!sign.is(',') || behindPoint_)
                out_ += sign.text;
        }
        return std::move(out_);
    }

private:
    /// The first placeholder takes all the digits that the others leave.
    void writeWhole() {
        const auto left = static_cast<std::size_t>(plan_.wholePlaces - ++wholeAt_);
        while (whole_.size() - written_ > left) {
            out_ += whole_[written_++];
            const std::size_t rest = whole_.size() - written_;
            if (plan_.grouped && rest > 0 && rest % 3 == 0)
                out_ += '.';
        }
    }
    void writePoint() {
        behindPoint_ = true;
        if (plan_.wholePlaces == 0)
            out_ += whole_;
        out_ += ',';
    }
    void writePlace() {
        if (placeAt_ < places_.size())
            out_ += places_[placeAt_++];
    }
    void writeExponent(std::size_t& at) {
        out_ += signs_[at].text;
        if (exponent_ < 0 || signs_[at + 1].is('+'))
            out_ += exponent_ < 0 ? '-' : '+';
        std::size_t count = 0;
        for (++at; at + 1 < signs_.size() && signs_[at + 1].isOneOf("0#"); ++at)
            ++count;
        const std::string digits = std::to_string(std::abs(exponent_));
        out_.append(count > digits.size() ? count - digits.size() : 0, '0');
        out_ += digits;
    }

    Signs signs_;
    const Plan& plan_;
    std::string whole_;
    std::string places_;
    int exponent_;
    std::string out_;
    bool behindPoint_ = false;
    int wholeAt_ = 0;
    std::size_t written_ = 0;
    std::size_t placeAt_ = 0;
};

} // namespace

void Decimal::round(int places) {
    const std::int64_t kept = std::int64_t{point} + places;
    if (kept < 0) {
        digits.clear();
    } else if (static_cast<std::size_t>(kept) < digits.size()) {
        const bool up = digits[static_cast<std::size_t>(kept)] >= '5';
        digits.resize(static_cast<std::size_t>(kept));
        std::size_t at = digits.size();
        while (up && at > 0 && digits[at - 1] == '9')
            digits[--at] = '0';
        if (up && at > 0) {
            ++digits[at - 1];
        } else if (up) {
            digits.insert(0, 1, '1');
            ++point;
        }
    }
    while (!digits.empty() && digits.back() == '0')
        digits.pop_back();
    if (digits.empty())
        point = 0;
}

Decimal decimalOf(const Value& value) {
    if (const auto* amount = std::get_if<Currency>(&value)) {
        Decimal number = decimalFrom(std::to_string(amount->tenThousandths));
        if (!number.isZero())
            number.point -= 4;
        return number;
    }
    if (const auto* decimal = std::get_if<Numeric>(&value))
        return decimalFrom(decimal->text());
    if (const auto* whole = std::get_if<std::int64_t>(&value))
        return decimalFrom(std::to_string(*whole));
    std::array<char, 64> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), numberOf(value).value(),
                                   std::chars_format::scientific);
    return decimalFrom({text.data(), static_cast<std::size_t>(end.ptr - text.data())});
}

std::string plainNumber(const Decimal& number) {
    const std::string places = placesOf(number, 0);
    return (number.negative && !number.isZero() ? "-" : "") + wholeDigits(number, 1) +
           (places.empty() ? "" : "," + places);
}

std::string formattedNumber(Decimal number, const std::vector<Signs>& sections) {
    const auto has = [&](std::size_t i) { return i < sections.size() && !sections[i].empty(); };
    const std::size_t chosen = number.isZero() && has(2) ? 2 : number.negative && has(1) ? 1 : 0;
    const Signs signs = sections[chosen];
    const Plan plan = planOf(signs);
    int exponent = 0;
    if (!number.isZero())
        number.point += 2 * plan.hundreds - 3 * plan.thousands;
    if (plan.exponent && !number.isZero()) {
        const int wholePlaces = std::max(1, plan.wholePlaces);
        exponent = number.point - wholePlaces;
        number.point = wholePlaces;
        number.round(plan.places);
        exponent += number.point - wholePlaces;
        number.point = wholePlaces;
    } else {
        number.round(plan.places);
    }
    const bool minus = number.negative && chosen != 1 && !number.isZero();
    return (minus ? "-" : "") + NumberWriter(signs, plan, number, exponent).run();
}

} // namespace jet::functions
