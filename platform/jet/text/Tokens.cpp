#include "jet/Tokens.h"

#include "jet/Error.h"
#include "jet/Types.h"
#include "jet/Utf8.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <optional>

namespace jet {

namespace {

constexpr std::size_t kLongestStatement = 64000;
constexpr std::size_t kShownCharacters = 40;

[[noreturn]] void refuse(const std::string& reason) {
    throw Error(Errc::syntax, "O comando não foi aceito: " + reason + ".");
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }
/// Beginning of a word; every character beyond ASCII counts as a letter.
bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' ||
           static_cast<unsigned char>(c) >= 0x80;
}

/// The beginning of a long text, cut between characters, for a message.
std::string shown(std::string_view text) {
    std::size_t end = std::min(text.size(), kShownCharacters);
    while (end < text.size() && end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U)
        --end;
    return std::string(text.substr(0, end)) + (end < text.size() ? "…" : "");
}

class Lexer {
public:
    explicit Lexer(std::string_view statement) : statement_(statement) {}

    std::vector<Token> run() {
        while (at_ < statement_.size()) {
            if (isBlank(statement_[at_]))
                ++at_;
            else
                tokens_.push_back(next());
        }
        return std::move(tokens_);
    }

private:
    [[nodiscard]] char peek(std::size_t ahead = 0) const {
        return at_ + ahead < statement_.size() ? statement_[at_ + ahead] : '\0';
    }

    Token next() {
        const char c = peek();
        switch (c) {
        case '\'':
        case '"':
            return {Token::Kind::text, quoted(c)};
        case '[':
            return {Token::Kind::bracketed, between(']', "um nome entre colchetes")};
        case '#': {
            std::array<char, 32> digits{};
            const double days = parseDateLiteral(between('#', "uma data"));
            const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), days);
            return {Token::Kind::date, std::string(digits.data(), end.ptr)};
        }
        default:
            if (isLetter(c))
                return word();
            if (isDigit(c) || (c == '.' && isDigit(peek(1))))
                return number();
            return sign();
        }
    }

    std::string quoted(char quote) {
        const std::size_t begin = at_++;
        std::string inside;
        for (; at_ < statement_.size(); ++at_) {
            if (peek() == quote) {
                if (peek(1) != quote) {
                    ++at_;
                    return inside;
                }
                ++at_;
            }
            inside += peek();
        }
        refuse("falta fechar as aspas ou o apóstrofo em " + shown(statement_.substr(begin)));
    }

    std::string between(char closing, const char* what) {
        const std::size_t begin = at_ + 1;
        const std::size_t end = statement_.find(closing, begin);
        if (end == std::string_view::npos)
            refuse("falta fechar " + std::string(what) + " em " + shown(statement_.substr(at_)));
        at_ = end + 1;
        if (end == begin)
            refuse("falta o que deveria estar em " + std::string(what));
        return std::string(statement_.substr(begin, end - begin));
    }

    Token word() {
        const std::size_t begin = at_;
        while (isLetter(peek()) || isDigit(peek()) || peek() == '$')
            ++at_;
        return {Token::Kind::word, std::string(statement_.substr(begin, at_ - begin))};
    }

    /// Digits, a point, digits, an exponent. A word may follow at once ("cliente=5and").
    Token number() {
        const std::size_t begin = at_;
        const auto digits = [&] {
            while (isDigit(peek()))
                ++at_;
        };
        digits();
        if (peek() == '.') {
            ++at_;
            digits();
        }
        if (peek() == 'e' || peek() == 'E') {
            const std::size_t signs = peek(1) == '+' || peek(1) == '-' ? 1 : 0;
            if (isDigit(peek(1 + signs))) {
                at_ += 1 + signs;
                digits();
            }
        }
        return {Token::Kind::number, std::string(statement_.substr(begin, at_ - begin))};
    }

    Token sign() {
        for (const std::string_view two : {"<>", "<=", ">="}) {
            if (statement_.substr(at_, 2) == two) {
                at_ += 2;
                return {Token::Kind::sign, std::string(two)};
            }
        }
        const std::string_view one = statement_.substr(at_, 1);
        if (std::string_view("=<>+-*/&(),.;").find(one) == std::string_view::npos)
            refuse("o sinal " + std::string(one[0] < ' ' ? "?" : one) + " não tem lugar nele");
        if (statement_.substr(at_, 2) == "--" || statement_.substr(at_, 2) == "/*")
            refuse("comentários não têm lugar nele");
        ++at_;
        return {Token::Kind::sign, std::string(one)};
    }

    std::string_view statement_;
    std::size_t at_ = 0;
    std::vector<Token> tokens_;
};

/// The numbers of one half of a date literal; nothing if it is anything else than one to three
/// numbers of one to four digits with `separator` between them.
std::optional<std::vector<int>> numbers(std::string_view text, char separator) {
    std::vector<int> result;
    for (std::size_t at = 0; at <= text.size();) {
        const std::size_t end = std::min(text.find(separator, at), text.size());
        int value = 0;
        const auto [stop, error] = std::from_chars(text.data() + at, text.data() + end, value);
        if (error != std::errc{} || stop != text.data() + end || end - at > 4 || value < 0)
            return std::nullopt;
        result.push_back(value);
        at = end + 1;
    }
    return result;
}

/// A year of one or two digits means the one between 1930 and 2029.
int fullYear(int year) {
    if (year >= 100)
        return year;
    return year < 30 ? 2000 + year : 1900 + year;
}

std::optional<CivilTime> dayOf(std::string_view text) {
    const bool yearFirst = text.find('-') != std::string_view::npos;
    const auto parts = numbers(text, yearFirst ? '-' : '/');
    if (!parts || parts->size() != 3)
        return std::nullopt;
    CivilTime time;
    time.year = fullYear((*parts)[yearFirst ? 0 : 2]);
    time.month = (*parts)[yearFirst ? 1 : 0];
    time.day = (*parts)[yearFirst ? 2 : 1];
    const std::chrono::year_month_day calendar(
        std::chrono::year{time.year}, std::chrono::month{static_cast<unsigned>(time.month)},
        std::chrono::day{static_cast<unsigned>(time.day)});
    return calendar.ok() ? std::optional(time) : std::nullopt;
}

bool addTime(CivilTime& time, std::string_view text) {
    const std::string half = lowerAscii(text.substr(std::min(text.find(' '), text.size())));
    const bool halves = half == " am" || half == " pm"; // 12:30 AM is half past midnight
    const auto parts = numbers(text.substr(0, text.size() - (halves ? half.size() : 0)), ':');
    if (!parts || parts->size() < 2 || parts->size() > 3)
        return false;
    time.hour = (*parts)[0];
    if (halves && (time.hour < 1 || time.hour > 12))
        return false;
    if (halves)
        time.hour = time.hour % 12 + (half == " pm" ? 12 : 0);
    time.minute = (*parts)[1];
    time.second = parts->size() > 2 ? (*parts)[2] : 0;
    return time.hour < 24 && time.minute < 60 && time.second < 60;
}

} // namespace

std::string lowerAscii(std::string_view word) {
    std::string lower(word);
    for (char& c : lower) {
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    }
    return lower;
}

double parseDateLiteral(std::string_view inside) {
    std::string_view text = inside;
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    const std::size_t blank = text.find(' ');
    const bool timeOnly = text.find(':') < blank;
    auto time = timeOnly ? std::optional(CivilTime{}) : dayOf(text.substr(0, blank));
    bool valid = time.has_value();
    if (valid && timeOnly)
        valid = addTime(*time, text);
    else if (valid && blank != std::string_view::npos)
        valid = addTime(*time, text.substr(blank + 1));
    if (!valid)
        refuse("#" + shown(inside) + "# não é uma data (mês/dia/ano)");
    return Date::of(*time).days;
}

std::vector<Token> tokenize(std::string_view statement) {
    if (statement.size() > kLongestStatement)
        refuse("ele tem mais de " + std::to_string(kLongestStatement) + " caracteres");
    for (std::size_t at = 0; at < statement.size();) {
        const auto character = utf8At(statement, at);
        if (character.length == 0 || character.codePoint == 0)
            refuse("há nele caracteres que não são texto");
        at += character.length;
    }
    return Lexer(statement).run();
}

} // namespace jet
