#pragma once

#include "jet/Error.h"
#include "jet/rule/Expression.h"
#include "jet/rule/Operators.h"

#include <gtest/gtest.h>

#include <span>
#include <string>
#include <vector>

/// Tables of expressions and of what they are, over a table with the columns "a" and "b".
///
///     constexpr Answer kCases[] = {{"Left('ab',1)", "'a'"}, {"1+Null", "Null"}};
///     expectAnswers(kCases);

inline const std::vector<jet::Column>& answerColumns() {
    static const std::vector<jet::Column> all = [] {
        std::vector<jet::Column> made(2);
        made[0].name = "a";
        made[1].name = "b";
        return made;
    }();
    return all;
}

inline jet::Value answerOf(const std::string& text, const jet::Row& row = {}) {
    static const jet::Collation& order = jet::Collation::general(jet::Version::jet4);
    return jet::Expression(text, {"tabela", answerColumns(), {}}, order)
        .evaluate(
            [&](std::size_t column) { return column < row.size() ? row[column] : jet::Value{}; });
}

/// A value as one would write it in the expression; a date by its days.
inline std::string inWords(const jet::Value& value) {
    if (jet::isNull(value))
        return "Null";
    if (const auto* yes = std::get_if<bool>(&value))
        return *yes ? "True" : "False";
    if (const auto* text = std::get_if<std::string>(&value))
        return "'" + *text + "'";
    if (const auto* date = std::get_if<jet::Date>(&value))
        return "#" + jet::textOf(*date).value() + "#";
    return jet::textOf(value).value();
}

struct Answer {
    const char* text;
    const char* value;
};

/// What each is.
inline void expectAnswers(std::span<const Answer> cases, const jet::Row& row = {}) {
    for (const auto& [text, value] : cases) {
        try {
            EXPECT_EQ(inWords(answerOf(text, row)), value) << text;
        } catch (const jet::Error& error) {
            ADD_FAILURE() << text << ": " << error.what();
        }
    }
}

/// That each is understood, but can't be reckoned.
inline void expectErrors(std::initializer_list<const char*> texts) {
    for (const char* text : texts) {
        try {
            ADD_FAILURE() << text << " is " << inWords(answerOf(text));
        } catch (const jet::Error& error) {
            EXPECT_EQ(error.code(), jet::Errc::outOfRange) << text;
            EXPECT_STRNE(error.what(), "");
        }
    }
}
