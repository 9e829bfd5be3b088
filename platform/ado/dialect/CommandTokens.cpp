#include "ado/dialect/CommandTokens.h"

#include "ado/dialect/SqlFunctions.h"
#include "jet/Error.h"

#include <algorithm>
#include <array>

namespace ado {

namespace {

constexpr std::size_t kDeepestParentheses = 60;

/// What the dialect has besides names and functions; passed on as written.
constexpr std::array<std::string_view, 28> kKeywords{
    "select", "distinct", "all",   "from", "where", "group",   "by",    "having", "order", "asc",
    "desc",   "as",       "inner", "left", "right", "outer",   "join",  "on",     "and",   "or",
    "not",    "in",       "is",    "null", "like",  "between", "union", "exists"};

} // namespace

void refuseCommand(const std::string& reason) {
    throw jet::Error(jet::Errc::syntax, "O comando não foi aceito: " + reason + ".");
}

CommandTokens::CommandTokens(std::string_view text) : tokens_(jet::tokenize(text)) {
    if (!tokens_.empty() && tokens_.back().isSign(";"))
        tokens_.pop_back();
    if (tokens_.empty())
        refuseCommand("ele está vazio");
    measureDepths();
    for (std::size_t i = 0; i < tokens_.size(); ++i)
        keywords_.push_back(findKeyword(i));
}

void CommandTokens::measureDepths() {
    std::size_t depth = 0;
    for (const jet::Token& token : tokens_) {
        if (token.isSign(";"))
            refuseCommand("só um comando é aceito de cada vez");
        if (token.isSign(")") && depth-- == 0)
            refuseCommand("há um parêntese fechado que não foi aberto");
        depths_.push_back(depth);
        if (token.isSign("(") && ++depth > kDeepestParentheses)
            refuseCommand("há parênteses demais uns dentro dos outros");
    }
    if (depth != 0)
        refuseCommand("falta fechar um parêntese");
}

/// Some of them are functions too: "left(".
std::string_view CommandTokens::findKeyword(std::size_t i) const {
    if (tokens_[i].kind != jet::Token::Kind::word || isQualified(i))
        return {};
    const std::string lower = jet::lowerAscii(tokens_[i].text);
    const auto* const found = std::ranges::find(kKeywords, lower);
    const bool called = isSign(i + 1, "(") && engineFunction(lower) != nullptr;
    return found == kKeywords.end() || called ? std::string_view() : *found;
}

} // namespace ado
