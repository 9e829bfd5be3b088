#include "jet/rule/Expression.h"

#include "jet/Names.h"
#include "jet/Tokens.h"
#include "jet/rule/Functions.h"
#include "jet/rule/Like.h"
#include "jet/rule/Operators.h"

#include <algorithm>
#include <charconv>

namespace jet {

namespace {

using Op = Expression::Op;

/// Parentheses and calls inside one another; each costs a few frames of the parser.
constexpr std::size_t kDeepest = 200;

[[noreturn]] void refuse() {
    throw Error(Errc::syntax, "A expressão não pode ser avaliada por este programa.");
}

struct NamedOp {
    std::string_view name;
    Op op;
};
constexpr NamedOp kComparisons[] = {
    {"=",  Op::equal         },
    {"<>", Op::notEqual      },
    {"<",  Op::less          },
    {"<=", Op::lessOrEqual   },
    {">",  Op::greater       },
    {">=", Op::greaterOrEqual}
};
/// The loosest first.
constexpr NamedOp kLogical[] = {
    {"xor", Op::exclusion  },
    {"or",  Op::disjunction},
    {"and", Op::conjunction}
};
/// The loosest level first.
constexpr NamedOp kJoining[] = {
    {"&", Op::join}
};
constexpr NamedOp kAdding[] = {
    {"+", Op::add     },
    {"-", Op::subtract}
};
constexpr NamedOp kMultiplying[] = {
    {"*", Op::multiply},
    {"/", Op::divide  }
};
constexpr std::span<const NamedOp> kArithmetic[] = {kJoining, kAdding, kMultiplying};

struct Word {
    std::string_view name;
    bool yes;
};
constexpr Word kYesNo[] = {
    {"true",  true },
    {"yes",   true },
    {"on",    true },
    {"false", false},
    {"no",    false},
    {"off",   false}
};

template <class T>
const T* named(std::span<const T> table, std::string_view name) {
    const auto found = std::find_if(table.begin(), table.end(),
                                    [&](const T& entry) { return entry.name == name; });
    return found == table.end() ? nullptr : &*found;
}

Value numberOfToken(const std::string& digits) {
    const char* const end = digits.data() + digits.size();
    std::int64_t whole = 0;
    if (const auto [stop, error] = std::from_chars(digits.data(), end, whole);
        error == std::errc{} && stop == end)
        return whole;
    double number = 0;
    if (const auto [stop, error] = std::from_chars(digits.data(), end, number);
        error != std::errc{} || stop != end)
        refuse();
    return number;
}

} // namespace

/// Turns the tokens into steps, from the loosest operator to the tightest.
class Expression::Parser {
public:
    Parser(std::string_view text, const Names& names, Expression& made)
        : tokens_(tokenize(text)), names_(names), made_(made) {}

    void run() {
        logical(0);
        asCondition(0);
        if (at_ < tokens_.size())
            refuse();
    }

private:
    // ---- tokens -------------------------------------------------------------------------------

    [[nodiscard]] const Token* peek(std::size_t ahead = 0) const {
        return at_ + ahead < tokens_.size() ? &tokens_[at_ + ahead] : nullptr;
    }
    [[nodiscard]] bool isSign(std::string_view sign, std::size_t ahead = 0) const {
        return peek(ahead) != nullptr && peek(ahead)->isSign(sign);
    }
    [[nodiscard]] bool isWord(std::string_view word, std::size_t ahead = 0) const {
        const Token* token = peek(ahead);
        return token != nullptr && token->kind == Token::Kind::word &&
               lowerAscii(token->text) == word;
    }
    bool takeSign(std::string_view sign) { return take(isSign(sign)); }
    bool takeWord(std::string_view word) { return take(isWord(word)); }
    bool take(bool there) {
        at_ += there ? 1 : 0;
        return there;
    }
    void need(bool taken) {
        if (!taken)
            refuse();
    }
    /// The operator of `table` that comes next, taken; null if none does.
    const NamedOp* takeSignOf(std::span<const NamedOp> table) {
        const Token* token = peek();
        if (token == nullptr || token->kind != Token::Kind::sign)
            return nullptr;
        const NamedOp* const found = named(table, token->text);
        at_ += found != nullptr ? 1 : 0;
        return found;
    }

    // ---- steps --------------------------------------------------------------------------------

    void emit(Op op, std::size_t operand = 0, std::size_t count = 0) {
        made_.steps_.push_back(
            {op, static_cast<std::uint8_t>(count), static_cast<std::uint32_t>(operand)});
    }
    /// A jump to where land() is told.
    std::size_t emitJump(Op op) {
        emit(op);
        return made_.steps_.size() - 1;
    }
    void land(std::size_t jump) {
        made_.steps_[jump].operand = static_cast<std::uint32_t>(made_.steps_.size());
    }
    void constant(Value value) {
        emit(Op::constant, made_.constants_.size());
        made_.constants_.push_back(std::move(value));
    }
    /// The constant that the steps from `begin` on are; null if they are anything else.
    [[nodiscard]] Value* constantFrom(std::size_t begin) {
        if (made_.steps_.size() != begin + 1 || made_.steps_.back().op != Op::constant)
            return nullptr;
        return &made_.constants_[made_.steps_.back().operand];
    }
    /// A constant in the place of a condition, in a column's rule, means that column's value.
    void asCondition(std::size_t begin) {
        const Value* const value = names_.own ? constantFrom(begin) : nullptr;
        if (value == nullptr)
            return;
        const bool null = isNull(*value);
        emit(Op::column, *names_.own);
        emit(null ? Op::isNull : Op::equal);
        if (null) // the constant itself has no part in the question
            made_.steps_.erase(made_.steps_.begin() + static_cast<std::ptrdiff_t>(begin));
    }

    // ---- grammar ------------------------------------------------------------------------------

    void logical(std::size_t level) {
        if (level == std::size(kLogical))
            return denied();
        std::size_t begin = made_.steps_.size();
        logical(level + 1);
        for (bool first = true; takeWord(kLogical[level].name); first = false) {
            if (first)
                asCondition(begin);
            begin = made_.steps_.size();
            logical(level + 1);
            asCondition(begin);
            emit(kLogical[level].op);
        }
    }

    void denied() {
        bool negative = false;
        std::size_t count = 0;
        for (; takeWord("not"); ++count)
            negative = !negative;
        const std::size_t begin = made_.steps_.size();
        comparison();
        if (count > 0)
            asCondition(begin);
        if (negative)
            emit(Op::negation);
    }

    [[nodiscard]] bool beginsWithOperator() const {
        const Token* token = peek();
        return token != nullptr &&
               ((token->kind == Token::Kind::sign &&
                 named(std::span<const NamedOp>(kComparisons), token->text) != nullptr) ||
                isWord("like") || isWord("in") || isWord("between") || isWord("is"));
    }

    void comparison() {
        if (names_.own && beginsWithOperator())
            emit(Op::column, *names_.own);
        else
            arithmetic(0);
        while (true) {
            if (const NamedOp* const sign = takeSignOf(kComparisons)) {
                arithmetic(0);
                emit(sign->op);
            } else if (takeWord("is")) {
                const bool negative = takeWord("not");
                need(takeWord("null"));
                emit(Op::isNull);
                if (negative)
                    emit(Op::negation);
            } else if (!wordComparison()) {
                return;
            }
        }
    }

    /// [Not] Like, In or Between; false if none of them comes.
    bool wordComparison() {
        const std::size_t ahead = isWord("not") ? 1 : 0;
        if (!isWord("like", ahead) && !isWord("in", ahead) && !isWord("between", ahead))
            return false;
        at_ += ahead;
        if (takeWord("like")) {
            const std::size_t begin = made_.steps_.size();
            arithmetic(0);
            if (const Value* const pattern = constantFrom(begin))
                if (const auto* text = std::get_if<std::string>(pattern))
                    need(isPattern(*text));
            emit(Op::like);
        } else if (takeWord("in")) {
            need(takeSign("("));
            std::size_t count = 0;
            do {
                arithmetic(0);
                ++count;
            } while (takeSign(","));
            need(takeSign(")"));
            emit(Op::in, count);
        } else {
            need(takeWord("between"));
            arithmetic(0);
            need(takeWord("and"));
            arithmetic(0);
            emit(Op::between);
        }
        if (ahead > 0)
            emit(Op::negation);
        return true;
    }

    void arithmetic(std::size_t level) {
        if (level == std::size(kArithmetic))
            return signedOperand();
        arithmetic(level + 1);
        while (const NamedOp* const sign = takeSignOf(kArithmetic[level])) {
            arithmetic(level + 1);
            emit(sign->op);
        }
    }

    void signedOperand() {
        bool negative = false;
        while (isSign("-") || isSign("+")) {
            negative = negative != isSign("-");
            ++at_;
        }
        const std::size_t begin = made_.steps_.size();
        operand();
        if (!negative)
            return;
        Value* const number = constantFrom(begin);
        if (number != nullptr && !std::holds_alternative<std::string>(*number))
            *number = negated(*number);
        else
            emit(Op::minus);
    }

    void operand() {
        const Token* const token = peek();
        need(token != nullptr);
        ++at_;
        switch (token->kind) {
        case Token::Kind::text:
            return constant(token->text);
        case Token::Kind::number:
            return constant(numberOfToken(token->text));
        case Token::Kind::date:
            return constant(Date{*numberOf(numberOfToken(token->text))});
        case Token::Kind::bracketed:
            return column(token->text);
        case Token::Kind::word:
            return word(token->text);
        case Token::Kind::sign:
            need(token->isSign("("));
            return nested([&] {
                logical(0);
                need(takeSign(")"));
            });
        }
    }

    template <class Inner>
    void nested(Inner&& inner) {
        need(++depth_ <= kDeepest);
        inner();
        --depth_;
    }

    void word(const std::string& text) {
        const std::string lower = lowerAscii(text);
        if (isSign("("))
            return call(lower);
        if (lower == "null")
            return constant({});
        if (const Word* const yesNo = named(std::span<const Word>(kYesNo), lower))
            return constant(yesNo->yes);
        column(text);
    }

    void call(std::string name) {
        if (name == "iif")
            return choice();
        const bool asText = name.back() == '$';
        if (asText)
            name.pop_back();
        const Function* const function = named(knownFunctions(), name);
        need(function != nullptr && (!asText || function->givesText) && takeSign("("));
        std::size_t count = 0;
        nested([&] {
            for (bool more = !isSign(")"); more; more = takeSeparator(), ++count)
                logical(0);
            need(takeSign(")"));
        });
        need(count >= function->least && count <= function->most);
        emit(Op::call, static_cast<std::size_t>(function - knownFunctions().data()), count);
    }

    /// The sign between the values of a call; the second where the rule was typed in Portuguese.
    bool takeSeparator() { return takeSign(",") || takeSign(";"); }

    /// IIf(condition, value, value).
    void choice() {
        need(takeSign("("));
        nested([&] {
            logical(0);
            need(takeSeparator());
            const std::size_t otherwise = emitJump(Op::jumpUnless);
            logical(0);
            need(takeSeparator());
            const std::size_t end = emitJump(Op::jump);
            land(otherwise);
            logical(0);
            land(end);
            need(takeSign(")"));
        });
    }

    /// A column, by its name or by the table's and its own.
    void column(std::string name) {
        if (takeSign(".")) {
            const Token* const token = peek();
            need(token != nullptr && foldedName(name) == foldedName(names_.table) &&
                 (token->kind == Token::Kind::word || token->kind == Token::Kind::bracketed));
            name = token->text;
            ++at_;
        }
        const std::string wanted = foldedName(name);
        const auto found =
            std::find_if(names_.columns.begin(), names_.columns.end(),
                         [&](const Column& c) { return foldedName(c.name) == wanted; });
        need(found != names_.columns.end());
        emit(Op::column, static_cast<std::size_t>(found - names_.columns.begin()));
    }

    std::vector<Token> tokens_;
    const Names& names_;
    Expression& made_;
    std::size_t at_ = 0;
    std::size_t depth_ = 0;
};

Expression::Expression(std::string_view text, const Names& names, const Collation& order)
    : order_(&order) {
    Parser(text, names, *this).run();
}

bool Expression::reads(std::size_t column) const {
    return std::any_of(steps_.begin(), steps_.end(), [&](const Step& step) {
        return step.op == Op::column && step.operand == column;
    });
}

} // namespace jet
