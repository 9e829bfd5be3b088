#include "jet/rule/ValueRules.h"

#include "jet/Names.h"
#include "jet/rule/Operators.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace jet {

namespace {

constexpr double kCurrencyScale = 10000;

/// A number with the decimals of its column.
Numeric decimalOf(double number, std::uint8_t scale) {
    const double units = std::round(std::fabs(number) * std::pow(10.0, scale));
    constexpr double kWords = 18446744073709551616.0; // 2 to the 64th
    if (!(units < kWords))
        throw Error(Errc::outOfRange, "o número é grande demais");
    const auto magnitude = static_cast<std::uint64_t>(units);
    return {
        number < 0,
        {0, 0, static_cast<std::uint32_t>(magnitude >> 32),
              static_cast<std::uint32_t>(magnitude & 0xFFFFFFFFU)},
        scale
    };
}

std::int64_t nearest(double number) {
    if (!(std::fabs(number) < static_cast<double>(std::numeric_limits<std::int64_t>::max())))
        throw Error(Errc::outOfRange, "o número é grande demais");
    return static_cast<std::int64_t>(std::nearbyint(number));
}

/// A value as the column takes it.
Value suited(const Value& value, const Column& column) {
    if (isNull(value))
        return value;
    switch (column.type) {
    case ColumnType::boolean:
        return *truthOf(value);
    case ColumnType::byte:
    case ColumnType::integer:
    case ColumnType::longInteger:
        return nearest(*numberOf(value));
    case ColumnType::currency:
        if (std::holds_alternative<Currency>(value) || std::holds_alternative<std::int64_t>(value))
            return value;
        return Currency{nearest(*numberOf(value) * kCurrencyScale)};
    case ColumnType::single:
    case ColumnType::real:
        return *numberOf(value);
    case ColumnType::date:
        if (std::holds_alternative<Date>(value))
            return value;
        return std::holds_alternative<std::string>(value) ? added(value, Date{0})
                                                          : Value(Date{*numberOf(value)});
    case ColumnType::text:
    case ColumnType::memo:
        return *textOf(value);
    case ColumnType::numeric:
        return decimalOf(*numberOf(value), column.scale);
    default:
        return value;
    }
}

/// What stands after an equals sign that a default may begin with.
std::string withoutEquals(std::string text) {
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    if (first != std::string::npos && text[first] == '=')
        text.erase(0, first + 1);
    return text;
}

bool isBlank(const std::string& text) {
    return text.find_first_not_of(" \t\r\n") == std::string::npos;
}

/// What can be read of a text: it ends at a zero, and blanks say nothing.
std::string shown(std::string text) {
    text.resize(std::min(text.find('\0'), text.size()));
    return isBlank(text) ? std::string() : text;
}

} // namespace

void ValueRules::read(const std::vector<PropertyGroup>& groups, const TextCodec& codec) {
    for (const PropertyGroup& group : groups) {
        Rule rule;
        if (!group.column.empty()) {
            const std::string wanted = foldedName(group.column);
            const auto found = std::find_if(columns_.begin(), columns_.end(), [&](const Column& c) {
                return foldedName(c.name) == wanted;
            });
            if (found == columns_.end())
                continue;
            rule.column = static_cast<std::size_t>(found - columns_.begin());
        }
        const auto text = [&](const char* name) {
            const Property* const property = group.find(name);
            const std::string value = property ? property->text(codec) : std::string();
            return isBlank(value) ? std::string() : value;
        };
        rule.text = text("ValidationRule");
        rule.message = shown(text("ValidationText"));
        if (rule.column) {
            const Column& column = columns_[*rule.column];
            const Property* const required = group.find("Required");
            rule.required = required && required->yes() && column.type != ColumnType::boolean;
            const Property* const emptyText = group.find("AllowZeroLength");
            rule.refusesEmptyText = emptyText && !emptyText->yes() && isText(column.type);
            if (!column.autonumber && !column.autoGuid)
                rule.defaultText = text("DefaultValue");
        }
        note(std::move(rule));
    }
}

void ValueRules::note(Rule rule) {
    if (!rule.required && !rule.refusesEmptyText && rule.defaultText.empty() && rule.text.empty())
        return;
    const auto understood = [&](const std::string& text, const Expression::Names& names) {
        try {
            return std::optional<Expression>(std::in_place, text, names, *order_);
        } catch (const Error&) {
            return std::optional<Expression>();
        }
    };
    if (!rule.text.empty()) {
        rule.condition = understood(rule.text, {table_, columns_, rule.column});
        if (!rule.condition && !unknown_)
            unknown_ = "a regra de validação " + place(rule) + ", " + rule.text;
    }
    if (!rule.defaultText.empty())
        rule.defaultValue = understood(withoutEquals(rule.defaultText), {table_, {}, {}});
    rules_.push_back(std::move(rule));
}

std::string ValueRules::place(const Rule& rule) const {
    return (rule.column ? "do campo \"" + columns_[*rule.column].name + "\" " : std::string()) +
           "da tabela \"" + table_ + "\"";
}

void ValueRules::fillIn(Row& values, const std::vector<bool>& given) const {
    for (const Rule& rule : rules_)
        if (rule.column && !rule.defaultText.empty() && !given[*rule.column])
            values[*rule.column] = defaultOf(rule);
}

Value ValueRules::defaultOf(const Rule& rule) const {
    std::string reason = "usa o que este programa não sabe avaliar";
    if (rule.defaultValue) {
        try {
            const auto noColumns = [](std::size_t) { return Value{}; };
            return suited(rule.defaultValue->evaluate(noColumns), columns_[*rule.column]);
        } catch (const Error& error) {
            reason = std::string("não serve: ") + error.what();
        }
    }
    throw Error(Errc::rule, "O valor inicial " + place(rule) + ", " + rule.defaultText + ", " +
                                reason + ". Preencha o campo.");
}

Error leftEmpty(const std::string& table, const std::string& column) {
    return {
        Errc::nullValue,
        "O registro não foi gravado: a tabela \"" + table + "\" exige o campo \"" + column +
            "\", que ficou vazio. Preencha-o ou, se a janela não o mostra, peça a quem cuida da "
            "base de dados que deixe de exigi-lo ou lhe dê um valor inicial."};
}

void ValueRules::check(const RowView& row, const std::vector<bool>& changed) const {
    for (const Rule& rule : rules_)
        if (!rule.column || changed[*rule.column] ||
            (rule.condition &&
             std::any_of(columns_.begin(), columns_.end(), [&](const Column& column) {
                 const auto at = static_cast<std::size_t>(&column - columns_.data());
                 return changed[at] && rule.condition->reads(at);
             }))) {
            if (rule.column && rule.required && row.isNull(*rule.column))
                throw leftEmpty(table_, columns_[*rule.column].name);
            check(rule, [&](std::size_t column) { return row.value(column); });
        }
}

void ValueRules::check(std::size_t column, const Value& value) const {
    for (const Rule& rule : rules_)
        if (rule.column == column)
            check(rule, [&](std::size_t asked) { return asked == column ? value : Value{}; });
}

bool ValueRules::takesEmptyText(std::size_t column) const {
    return std::none_of(rules_.begin(), rules_.end(), [&](const Rule& rule) {
        return rule.column == column && rule.refusesEmptyText;
    });
}

std::vector<std::string> ValueRules::broken(const RowView& row) const {
    std::vector<std::string> phrases;
    for (const Rule& rule : rules_) {
        const auto breach = breachOf(rule, [&](std::size_t column) { return row.value(column); });
        if (!breach)
            continue;
        const std::string column =
            rule.column ? "o campo \"" + columns_[*rule.column].name + "\" " : "o registro ";
        switch (breach->kind) {
        case Breach::Kind::missing:
            phrases.push_back(column + "deve ser preenchido e está vazio");
            break;
        case Breach::Kind::emptyText:
            phrases.push_back(column + "tem um texto vazio, que não aceita");
            break;
        case Breach::Kind::condition:
            phrases.push_back(column + "não obedece à regra " + rule.text);
            break;
        case Breach::Kind::cannotTell:
            phrases.push_back(column + "não se deixa avaliar pela regra " + rule.text);
            break;
        }
    }
    return phrases;
}

void ValueRules::check(const Rule& rule, const Expression::Field& field) const {
    if (const auto breach = breachOf(rule, field))
        refuse(rule, *breach);
}

std::optional<ValueRules::Breach> ValueRules::breachOf(const Rule& rule,
                                                       const Expression::Field& field) const {
    if (rule.column && (rule.required || rule.refusesEmptyText)) {
        const Value value = field(*rule.column);
        if (rule.required && isNull(value))
            return Breach{Breach::Kind::missing};
        const auto* const text = std::get_if<std::string>(&value);
        if (rule.refusesEmptyText && text && text->empty())
            return Breach{Breach::Kind::emptyText};
    }
    if (!rule.condition)
        return std::nullopt;
    try {
        // What is neither true nor false, for want of a value, is let through.
        if (truthOf(rule.condition->evaluate(field)).value_or(true))
            return std::nullopt;
        return Breach{Breach::Kind::condition};
    } catch (const Error& error) {
        if (error.code() != Errc::outOfRange)
            throw;
        return Breach{Breach::Kind::cannotTell, error.what()};
    }
}

void ValueRules::refuse(const Rule& rule, const Breach& breach) const {
    const std::string name = rule.column ? "\"" + columns_[*rule.column].name + "\"" : "";
    switch (breach.kind) {
    case Breach::Kind::missing:
        throw Error(Errc::nullValue, "O campo " + name + " deve ser preenchido.");
    case Breach::Kind::emptyText:
        throw Error(Errc::rule, "O campo " + name + " da tabela \"" + table_ +
                                    "\" não aceita um texto vazio: preencha-o.");
    case Breach::Kind::cannotTell:
        throw Error(Errc::rule, "O registro não foi gravado: a regra " + place(rule) + ", " +
                                    rule.text + ", não pode ser avaliada com os seus valores (" +
                                    breach.reason + ").");
    case Breach::Kind::condition:
        break;
    }
    if (!rule.message.empty())
        throw Error(Errc::rule, rule.message);
    throw Error(Errc::rule, (rule.column ? "O valor " : "O registro ") + place(rule) +
                                " não obedece à regra do banco de dados: " + rule.text +
                                ". Corrija-o e grave outra vez.");
}

} // namespace jet
