#include "ado/migrate/RuleSql.h"

#include "ado/dialect/Spelling.h"
#include "ado/server/ServerValue.h"

#include <array>
#include <utility>

namespace ado {

namespace {

using Op = jet::Expression::Op;
using Texts = std::vector<std::string>;

/// Parts of an expression of the server: "(0 = 1)".
struct Infix {
    Op op;
    const char* sign;
};
constexpr std::array kInfixes{
    Infix{Op::equal,          " = "         },
    Infix{Op::notEqual,       " <> "        },
    Infix{Op::less,           " < "         },
    Infix{Op::lessOrEqual,    " <= "        },
    Infix{Op::greater,        " > "         },
    Infix{Op::greaterOrEqual, " >= "        },
    Infix{Op::conjunction,    " and "       },
    Infix{Op::disjunction,    " or "        },
    Infix{Op::exclusion,      " <> "        },
    Infix{Op::add,            " + "         },
    Infix{Op::subtract,       " - "         },
    Infix{Op::multiply,       " * "         },
    Infix{Op::divide,         "::numeric / "},
    Infix{Op::join,           " &&& "       },
};

struct Named {
    std::string_view name;
    std::size_t arguments;
    const char* before;
    const char* after;
};
// clang-format off
constexpr Named kFunctions[] = {
    {"date",   0, "jet_date(",          ")"},
    {"day",    1, "jet_day(",           ")"},
    {"genguid", 0, "gen_random_uuid(",  ")"},
    {"instr",  2, "jet_instr(",         ")"},
    {"isnull", 1, "(",                  " is null)"},
    {"lcase",  1, "jet_lcase(",         ")"},
    {"left",   2, "jet_left(",          ")"},
    {"len",    1, "jet_len(",           ")"},
    {"ltrim",  1, "jet_ltrim(",         ")"},
    {"mid",    2, "jet_mid(",           ")"},
    {"mid",    3, "jet_mid(",           ")"},
    {"month",  1, "jet_month(",         ")"},
    {"now",    0, "jet_now(",           ")"},
    {"nz",     2, "coalesce(",          ")"},
    {"right",  2, "jet_right(",         ")"},
    {"rtrim",  1, "jet_rtrim(",         ")"},
    {"trim",   1, "jet_trim(",          ")"},
    {"ucase",  1, "jet_ucase(",         ")"},
    {"year",   1, "jet_year(",          ")"},
};
// clang-format on

/// There is no word for it on the server.
struct NoWord {};

std::string literal(const jet::Value& value) {
    if (jet::isNull(value))
        return "null";
    const std::string text = *parameterOf(value).text;
    if (std::holds_alternative<bool>(value))
        return text == "t" ? "true" : "false";
    if (std::holds_alternative<jet::Date>(value))
        return "timestamp " + serverText(text);
    if (std::holds_alternative<std::string>(value))
        return serverText(text);
    return text.starts_with('-') ? "(" + text + ")" : text;
}

/// What stands for any text and for any character is others on the server, and no more than that.
/// `value` is the constant that it is, or null.
std::string likePattern(const jet::Value* value) {
    const auto* const pattern = value == nullptr ? nullptr : std::get_if<std::string>(value);
    if (pattern == nullptr || pattern->find_first_of("#[]%_\\") != std::string::npos)
        throw NoWord{};
    std::string made;
    for (const char c : *pattern)
        made += c == '*' ? '%' : c == '?' ? '_' : c;
    return serverText(made);
}

/// The steps of an expression, each of which finds on the stack what it takes.
class RuleWriter {
public:
    RuleWriter(const jet::Expression& rule, std::span<const jet::Column> columns)
        : rule_(rule), columns_(columns) {}

    std::string write() { return one(0, rule_.steps().size()); }

private:
    /// The steps from `at` to `end`, which leave one value.
    std::string one(std::size_t at, std::size_t end) {
        Texts stack;
        while (at < end) {
            const jet::Expression::Step& step = rule_.steps()[at];
            if (step.op == Op::jumpUnless) {
                at = choice(stack, at);
                continue;
            }
            write(stack, step);
            ++at;
        }
        return pop(stack);
    }

    /// One of two: a condition, what it is if that is so, a jump over what it is otherwise.
    std::size_t choice(Texts& stack, std::size_t at) {
        const std::size_t otherwise = rule_.steps()[at].operand;
        const std::size_t end = rule_.steps()[otherwise - 1].operand;
        const std::string condition = pop(stack);
        stack.push_back("(case when " + condition + " then " + one(at + 1, otherwise - 1) +
                        " else " + one(otherwise, end) + " end)");
        last_ = nullptr;
        return end;
    }

    static std::string pop(Texts& stack) {
        std::string top = std::move(stack.back());
        stack.pop_back();
        return top;
    }
    static Texts pop(Texts& stack, std::size_t count) {
        const auto from = stack.end() - static_cast<std::ptrdiff_t>(count);
        Texts top(from, stack.end());
        stack.erase(from, stack.end());
        return top;
    }
    static std::string listed(const Texts& texts) {
        std::string list;
        for (const std::string& text : texts)
            list.append(list.empty() ? "" : ", ").append(text);
        return list;
    }

    void write(Texts& stack, const jet::Expression::Step& step) {
        const jet::Value* const pattern = std::exchange(last_, nullptr);
        for (const Infix& infix : kInfixes)
            if (infix.op == step.op) {
                const Texts both = pop(stack, 2);
                stack.push_back("(" + both[0] + infix.sign + both[1] + ")");
                return;
            }
        switch (step.op) {
        case Op::constant:
            last_ = &rule_.constants()[step.operand];
            stack.push_back(literal(*last_));
            return;
        case Op::column:
            stack.push_back(quotedName(columns_[step.operand].name));
            return;
        case Op::like: {
            const Texts both = pop(stack, 2);
            stack.push_back("(" + both[0] + " ~% " + likePattern(pattern) + ")");
            return;
        }
        case Op::in: {
            const Texts values = pop(stack, step.operand);
            const std::string asked = pop(stack);
            stack.push_back("(" + asked + " in (" + listed(values) + "))");
            return;
        }
        case Op::between: {
            const Texts three = pop(stack, 3);
            stack.push_back("(" + three[0] + " between " + three[1] + " and " + three[2] + ")");
            return;
        }
        case Op::isNull:
            stack.push_back("(" + pop(stack) + " is null)");
            return;
        case Op::negation:
            stack.push_back("(not " + pop(stack) + ")");
            return;
        case Op::minus:
            stack.push_back("(-" + pop(stack) + ")");
            return;
        default:
            writeCall(stack, step);
        }
    }

    static void writeCall(Texts& stack, const jet::Expression::Step& step) {
        const Texts arguments = pop(stack, step.count);
        const std::string_view name = jet::knownFunctions()[step.operand].name;
        for (const Named& function : kFunctions)
            if (function.name == name && function.arguments == arguments.size()) {
                stack.push_back(function.before + listed(arguments) + function.after);
                return;
            }
        throw NoWord{};
    }

    const jet::Expression& rule_;
    std::span<const jet::Column> columns_;
    const jet::Value* last_ = nullptr; ///< what was written last, if it was a constant
};

} // namespace

std::optional<std::string> ruleSql(const jet::Expression& rule,
                                   std::span<const jet::Column> columns) {
    try {
        return RuleWriter(rule, columns).write();
    } catch (const NoWord&) {
        return std::nullopt;
    }
}

} // namespace ado
