#include "ado/migrate/RuleText.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cmath>
#include <utility>
#include <vector>

namespace ado {

namespace {

constexpr int kDeepest = 100; ///< conditions in each other

/// There is no word for it in a file.
struct Unsaid {};

struct RuleWord {
    enum class Kind : unsigned char { name, quoted, number, text, sign, end };
    Kind kind = Kind::end;
    std::string text{};
};

bool isWordPart(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' ||
           (static_cast<unsigned char>(c) & 0x80U) != 0;
}

/// What stands in marks, doubled ones as one; `at` is behind the first mark, and then the last.
std::string marked(std::string_view sql, std::size_t& at, char mark) {
    std::string text;
    for (; at < sql.size(); ++at) {
        if (sql[at] == mark && (at + 1 >= sql.size() || sql[at + 1] != mark))
            break;
        if (sql[at] == mark)
            ++at;
        text += sql[at];
    }
    if (at++ >= sql.size())
        throw Unsaid{};
    return text;
}

std::vector<RuleWord> tokensOf(std::string_view sql) {
    constexpr std::string_view kLong[] = {"::", "<>", "<=", ">="};
    std::vector<RuleWord> tokens;
    for (std::size_t at = 0; at < sql.size();) {
        const char c = sql[at];
        if (std::isspace(static_cast<unsigned char>(c)) != 0) {
            ++at;
        } else if (c == '\'' || c == '"') {
            tokens.push_back(
                {c == '"' ? RuleWord::Kind::quoted : RuleWord::Kind::text, marked(sql, ++at, c)});
        } else if (isWordPart(c)) {
            const bool digit = std::isdigit(static_cast<unsigned char>(c)) != 0;
            const std::size_t begin = at;
            while (at < sql.size() && (isWordPart(sql[at]) || (digit && sql[at] == '.')))
                ++at;
            if (at < sql.size() && sql[at] == '\'')
                throw Unsaid{}; // E'...'
            tokens.push_back({digit ? RuleWord::Kind::number : RuleWord::Kind::name,
                              std::string(sql.substr(begin, at - begin))});
        } else {
            const auto two = std::ranges::find(kLong, sql.substr(at, 2));
            const std::size_t size = two != std::end(kLong) ? 2 : 1;
            tokens.push_back({RuleWord::Kind::sign, std::string(sql.substr(at, size))});
            at += size;
        }
    }
    tokens.push_back({});
    return tokens;
}

constexpr std::array<std::pair<std::string_view, std::string_view>, 22> kFunctionWords{
    {
     {"octet_length", "\x01"}, // of no text whatever is none
        {"char_length", "Len"}, {"character_length", "Len"}, {"length", "Len"},
     {"jet_len", "Len"}, {"jet_left", "Left"}, {"jet_right", "Right"},
     {"jet_mid", "Mid"}, {"jet_instr", "InStr"}, {"jet_ucase", "UCase"},
     {"upper", "UCase"}, {"jet_lcase", "LCase"}, {"lower", "LCase"},
     {"jet_trim", "Trim"}, {"btrim", "Trim"}, {"jet_ltrim", "LTrim"},
     {"jet_rtrim", "RTrim"}, {"jet_date", "Date"}, {"jet_now", "Now"},
     {"jet_year", "Year"}, {"jet_month", "Month"}, {"jet_day", "Day"},
     }
};

std::string textWord(const std::string& text) {
    std::string made = "\"";
    for (const char c : text)
        made.append(c == '"' ? 2 : 1, c);
    return made + '"';
}

/// "2024-05-31 00:00:00" as #5/31/2024 00:00:00#.
std::string dateText(const std::string& text) {
    const auto digits = [&](std::size_t at, std::size_t count) {
        std::string part = text.size() >= at + count ? text.substr(at, count) : "";
        if (part.empty() || !std::ranges::all_of(part, [](char c) { return c >= '0' && c <= '9'; }))
            throw Unsaid{};
        return part;
    };
    std::string made = "#" + digits(5, 2) + "/" + digits(8, 2) + "/" + digits(0, 4);
    if (text.size() > 10)
        made += " " + digits(11, 2) + ":" + digits(14, 2) + ":" + digits(17, 2);
    if (text.size() != 10 && text.size() != 19)
        throw Unsaid{};
    return made + "#";
}

std::string numberText(const std::string& text) {
    const char* const end = text.data() + text.size();
    double number = 0;
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end || !std::isfinite(number))
        throw Unsaid{};
    return text;
}

class RuleParser {
public:
    RuleParser(std::string_view sql, bool columns) : tokens_(tokensOf(sql)), columns_(columns) {}

    std::string parse() {
        std::string made = alternatives();
        if (next().kind != RuleWord::Kind::end)
            throw Unsaid{};
        return made;
    }

private:
    [[nodiscard]] const RuleWord& next() const { return tokens_[at_]; }
    bool takeSign(std::string_view sign) {
        const bool is = next().kind == RuleWord::Kind::sign && next().text == sign;
        at_ += is ? 1 : 0;
        return is;
    }
    bool takeWord(std::string_view word) {
        const bool is = next().kind == RuleWord::Kind::name && next().text == word;
        at_ += is ? 1 : 0;
        return is;
    }
    void require(bool is) const {
        if (!is)
            throw Unsaid{};
    }

    static std::string joined(std::string left, std::string_view sign, std::string_view right) {
        return left.insert(0, 1, '(').append(sign).append(right).append(1, ')');
    }

    std::string alternatives() {
        std::string made = conditions();
        while (takeWord("OR"))
            made = joined(std::move(made), " Or ", conditions());
        return made;
    }
    std::string conditions() {
        std::string made = condition();
        while (takeWord("AND"))
            made = joined(std::move(made), " And ", condition());
        return made;
    }
    std::string condition() {
        require(++depth_ < kDeepest);
        std::string made = oneCondition();
        --depth_;
        return made;
    }
    std::string oneCondition() {
        if (takeWord("NOT"))
            return "(Not " + condition() + ")";
        std::string made = sum();
        if (takeWord("IS")) {
            const bool without = takeWord("NOT");
            require(takeWord("NULL"));
            return "(" + made + (without ? " Is Not Null)" : " Is Null)");
        }
        const std::string sign = takeComparison();
        if (sign.empty())
            return made;
        if (!takeWord("ANY"))
            return "(" + made + sign + sum() + ")";
        require(sign == "=" && takeSign("("));
        isList_ = true;
        made = "(" + made + " In (" + sum() + "))";
        require(!isList_ && takeSign(")"));
        return made;
    }
    /// By the shop's order of texts, or, where who made it hadn't that in front, by the server's
    /// own, which a file doesn't have.
    std::string takeComparison() {
        const bool other = takeWord("OPERATOR");
        if (other)
            require(takeSign("(") && takeWord("pg_catalog") && takeSign("."));
        for (const char* const sign : {"=", "<>", "<=", ">=", "<", ">"})
            if (takeSign(sign)) {
                require(!other || takeSign(")"));
                return sign;
            }
        require(!other);
        return "";
    }
    std::string sum() { return chain({"+", "-"}, &RuleParser::product); }
    std::string product() { return chain({"*", "/"}, &RuleParser::signedValue); }
    std::string chain(std::array<const char*, 2> signs, std::string (RuleParser::*part)()) {
        std::string made = (this->*part)();
        for (bool more = true; more;) {
            more = false;
            for (const char* const sign : signs)
                if (!more && takeSign(sign)) {
                    made = joined(std::move(made), sign, (this->*part)());
                    more = true;
                }
        }
        return made;
    }
    std::string signedValue() {
        std::string signs;
        while (takeSign("-"))
            signs += '-';
        return signs + cast();
    }

    std::string cast() {
        const RuleWord first = next();
        std::string made = value();
        while (takeSign("::"))
            if (const std::string type = typeName(); first.kind == RuleWord::Kind::text)
                made = constantOf(first.text, type);
            else // which takes a part of the value away
                require(!type.starts_with("date") && !type.starts_with("time "));
        return made;
    }
    /// What stands between quotes: '2001-05-31'::date, '-1'::integer.
    static std::string constantOf(const std::string& text, std::string_view type) {
        if (type.starts_with("timestamp") || type.starts_with("date"))
            return dateText(text);
        return type.starts_with("character") || type.starts_with("text") ? textWord(text)
                                                                         : numberText(text);
    }
    /// "timestamp without time zone", "character varying(10)", "text[]".
    std::string typeName() {
        constexpr std::string_view kKnown[] = {"numeric",   "integer",   "bigint",  "smallint",
                                               "text",      "character", "varying", "real",
                                               "double",    "boolean",   "date",    "precision",
                                               "timestamp", "without",   "time",    "zone"};
        std::string name;
        while (next().kind == RuleWord::Kind::name &&
               std::ranges::find(kKnown, next().text) != std::end(kKnown))
            name += tokens_[at_++].text + " ";
        require(!name.empty());
        if (takeSign("(")) {
            while (!takeSign(")")) {
                require(next().kind == RuleWord::Kind::number || next().text == ",");
                ++at_;
            }
            while (takeWord("without") || takeWord("time") || takeWord("zone"))
                continue;
        }
        if (takeSign("["))
            require(takeSign("]"));
        return name;
    }

    std::string value() {
        if (takeSign("(")) {
            std::string made = alternatives();
            require(takeSign(")"));
            return made;
        }
        const RuleWord token = next();
        require(token.kind != RuleWord::Kind::sign && token.kind != RuleWord::Kind::end);
        ++at_;
        if (token.kind == RuleWord::Kind::number)
            return token.text;
        if (token.kind == RuleWord::Kind::text)
            return textWord(token.text);
        if (token.kind == RuleWord::Kind::name) {
            if (token.text == "true" || token.text == "false")
                return token.text == "true" ? "True" : "False";
            if (token.text == "CURRENT_DATE")
                return "Date()";
            if (token.text == "LOCALTIMESTAMP" || token.text == "CURRENT_TIMESTAMP")
                return takePrecision("Now()");
            if (token.text == "ARRAY") {
                require(std::exchange(isList_, false) && takeSign("["));
                return list("]");
            }
            if (takeSign("("))
                return token.text == "now" && takeSign(")") ? "Now()" : call(token.text);
            constexpr std::string_view kOthers[] = {"NULL", "CASE", "ROW", "ALL"};
            require(std::ranges::find(kOthers, token.text) == std::end(kOthers));
        }
        require(columns_ && token.text.find_first_of("[]") == std::string::npos);
        return "[" + token.text + "]";
    }
    std::string takePrecision(std::string made) {
        if (takeSign("(")) {
            require(next().kind == RuleWord::Kind::number);
            ++at_;
            require(takeSign(")"));
        }
        return made;
    }
    std::string call(const std::string& name) {
        const auto word = std::ranges::find(kFunctionWords, std::string_view(name),
                                            [](const auto& pair) { return pair.first; });
        require(word != kFunctionWords.end());
        return std::string(word->second) + "(" + list(")") + ")";
    }
    std::string list(std::string_view end) {
        std::string made;
        while (!takeSign(end)) {
            require(made.empty() || takeSign(","));
            made.append(made.empty() ? "" : ", ").append(alternatives());
        }
        return made;
    }

    std::vector<RuleWord> tokens_;
    std::size_t at_ = 0;
    int depth_ = 0;
    bool isList_ = false; ///< what comes is to be a list
    bool columns_;
};

/// Whether it is said of a field alone: `before`, its name, `after`.
bool isOfField(std::string_view rule, std::string_view before, std::string_view after) {
    return rule.starts_with(before) && rule.ends_with(after) &&
           rule.substr(before.size(), rule.size() - before.size() - after.size())
                   .find_first_of("[]") == std::string_view::npos;
}

} // namespace

std::optional<RuleText> ruleText(std::string_view sql) {
    try {
        std::string made = RuleParser(sql, true).parse();
        if (isOfField(made, "([", "] Is Not Null)"))
            return RuleText{RuleText::Kind::notNull};
        for (const char* const before : {"(\x01([", "(Len(["})
            if (isOfField(made, before, "])>0)"))
                return RuleText{RuleText::Kind::notEmpty};
        if (isOfField(made, "([", "]<>\"\")"))
            return RuleText{RuleText::Kind::notEmpty};
        if (made.find('\x01') != std::string::npos)
            return std::nullopt;
        if (made.starts_with('(')) // and ends with its other half
            made = made.substr(1, made.size() - 2);
        return RuleText{RuleText::Kind::condition, std::move(made)};
    } catch (const Unsaid&) {
        return std::nullopt;
    }
}

std::optional<std::string> valueText(std::string_view sql) {
    try {
        std::string made = RuleParser(sql, false).parse();
        return made.find('\x01') == std::string::npos ? std::optional(std::move(made))
                                                      : std::nullopt;
    } catch (const Unsaid&) {
        return std::nullopt;
    }
}

} // namespace ado
