// What a pattern of a rule fits, and that none takes long to tell.
#include "jet/rule/Like.h"

#include "jet/Error.h"

#include <gtest/gtest.h>

#include <random>

using namespace jet;

namespace {

const Collation& textOrder() { return Collation::general(Version::jet4); }

TEST(Like, KnowsEverySign) {
    // clang-format off
    const struct {
        const char* text;
        const char* pattern;
        bool fits;
    } cases[] = {
        {"",          "",          true},
        {"",          "*",         true},
        {"",          "?",         false},
        {"abc",       "ABC",       true},
        {"abc",       "a*",        true},
        {"abc",       "*c",        true},
        {"abc",       "*b*",       true},
        {"abc",       "*d*",       false},
        {"abc",       "a?c",       true},
        {"abc",       "a??c",      false},
        {"a1c",       "a#c",       true},
        {"abc",       "a#c",       false},
        {"a/c",       "a#c",       false},
        {"abc",       "a[xbz]c",   true},
        {"abc",       "[a-c]bc",   true},
        {"dbc",       "[a-c]bc",   false},
        {"dbc",       "[!a-c]bc",  true},
        {"ABC",       "[a-c]??",   true},
        {"a*c",       "a[*]c",     true},
        {"abc",       "a[*]c",     false},
        {"a?c",       "a[?]c",     true},
        {"a#c",       "a[#]c",     true},
        {"a[c",       "a[[]c",     true},
        {"a]c",       "a]c",       true},
        {"a-c",       "a[-x]c",    true},
        {"a-c",       "a[x-]c",    true},
        {"a!c",       "a[!]c",     true},
        {"abc",       "a[]bc",     true},
        {"ação",      "aç?o",      true},
        {"AÇÃO",      "ação",      true},
        {"acao",      "ação",      false},
        {"01310-100", "#####-###", true},
        {"01310100",  "#####-###", false},
        {"aaab",      "*ab",       true},
        {"abab",      "*ab",       true},
        {"abc",       "***",       true},
    };
    // clang-format on
    for (const auto& [text, pattern, fits] : cases)
        EXPECT_EQ(isLike(text, pattern, textOrder()), fits) << text << " / " << pattern;
    EXPECT_FALSE(isPattern("a[b"));
    EXPECT_TRUE(isPattern("a[b]*"));
    EXPECT_THROW((void)isLike("a", "a[b", textOrder()), Error);
}

/// The definition, without regard to cost: patterns of *, ? and letters.
bool fitsByDefinition(std::string_view text, std::string_view pattern) {
    if (pattern.empty())
        return text.empty();
    if (pattern.front() == '*')
        return fitsByDefinition(text, pattern.substr(1)) ||
               (!text.empty() && fitsByDefinition(text.substr(1), pattern));
    return !text.empty() && (pattern.front() == '?' || pattern.front() == text.front()) &&
           fitsByDefinition(text.substr(1), pattern.substr(1));
}

TEST(Like, AgreesWithItsDefinition) {
    std::mt19937 random(7);
    const auto made = [&](std::string_view from, std::size_t most) {
        std::string text;
        for (std::size_t left = random() % (most + 1); left > 0; --left)
            text += from[random() % from.size()];
        return text;
    };
    for (int i = 0; i < 20'000; ++i) {
        const std::string text = made("ab", 8);
        const std::string pattern = made("ab?*", 6);
        EXPECT_EQ(isLike(text, pattern, textOrder()), fitsByDefinition(text, pattern))
            << text << " / " << pattern;
    }
}

TEST(Like, PatternsThatInviteBacktrackingEnd) {
    std::string pattern;
    for (int i = 0; i < 100; ++i)
        pattern += "*a";
    EXPECT_FALSE(isLike(std::string(255, 'a'), pattern + "b", textOrder()));
    EXPECT_TRUE(isLike(std::string(255, 'a'), pattern, textOrder()));
    // Beyond any column that a rule is made for: given up, not waited for.
    for (const char sign : {'a', '?'})
        EXPECT_THROW((void)isLike(std::string(100'000, 'a'), "*" + std::string(3000, sign) + "b",
                                  textOrder()),
                     Error);
}

} // namespace
