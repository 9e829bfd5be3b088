#include "ado/provider/SourceSelect.h"

#include "jet/Error.h"
#include "jet/Names.h"
#include "jet/Tokens.h"

#include <algorithm>

namespace ado {

namespace {

bool isOneName(const std::string& source) {
    const std::vector<jet::Token> tokens = jet::tokenize(source);
    return tokens.size() == 1 && (tokens[0].kind == jet::Token::Kind::word ||
                                  tokens[0].kind == jet::Token::Kind::bracketed);
}

} // namespace

Select selectOf(const std::string& source, CommandType command,
                const std::function<bool(const std::string&)>& hasTable, const Spelling& spelling,
                Tongue& tongue) {
    std::string name = source;
    name.erase(0, std::min(name.find_first_not_of(" \t\r\n"), name.size()));
    if (name.size() > 2 && name.front() == '[' && name.back() == ']')
        name = name.substr(1, name.size() - 2);
    const bool isTable = command != CommandType::Text && hasTable(jet::foldedName(name));
    const bool mustBe = command == CommandType::Table ||
                        (command == CommandType::Unknown && !isTable && isOneName(source));
    if (mustBe && !isTable)
        throw jet::Error(jet::Errc::notFound, "Não existe a tabela \"" + name + "\".");
    return parseSelect(isTable ? "select * from [" + spelling.table(name) + "]" : source, spelling,
                       tongue);
}

bool saysNothing(const std::string& text) { return jet::foldedName(text).empty(); }

} // namespace ado
