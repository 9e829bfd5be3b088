#include "ado/ConnectionString.h"

#include "jet/Error.h"
#include "jet/Names.h"
#include "jet/Tokens.h"

#include <algorithm>
#include <optional>
#include <string>
#include <system_error>

namespace ado {

namespace {

namespace fs = std::filesystem;
using jet::Errc;
using jet::Error;

std::string_view trimmed(std::string_view text) {
    const auto blank = [](char c) { return c == ' ' || c == '\t'; };
    while (!text.empty() && blank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && blank(text.back()))
        text.remove_suffix(1);
    return text;
}

/// The value of one part, up to the semicolon that ends it; one inside quotes doesn't. Moves
/// `rest` behind it.
std::string_view takeValue(std::string_view& rest) {
    const std::size_t first = rest.find_first_not_of(" \t");
    std::size_t from = 0;
    if (first != std::string_view::npos && (rest[first] == '"' || rest[first] == '\'')) {
        const std::size_t closing = rest.find(rest[first], first + 1);
        from = closing == std::string_view::npos ? 0 : closing;
    }
    const std::size_t end = std::min(rest.find(';', from), rest.size());
    const std::string_view value = trimmed(rest.substr(0, end));
    rest.remove_prefix(std::min(end + 1, rest.size()));
    return value;
}

std::string_view unquoted(std::string_view value) {
    const bool quoted = value.size() >= 2 && (value.front() == '"' || value.front() == '\'') &&
                        value.back() == value.front();
    return quoted ? value.substr(1, value.size() - 2) : value;
}

fs::path asPath(std::string_view utf8) { return fs::path(std::u8string(utf8.begin(), utf8.end())); }

std::string asUtf8(const fs::path& path) {
    const std::u8string utf8 = path.u8string();
    return {utf8.begin(), utf8.end()};
}

/// `name` in `folder`, exactly or but for case.
std::optional<fs::path> entry(const fs::path& folder, const fs::path& name) {
    std::error_code error;
    fs::path exact = folder / name;
    if (fs::exists(exact, error))
        return exact;
    const std::string wanted = jet::foldedName(asUtf8(name));
    std::optional<fs::path> found;
    const fs::path listed = folder.empty() ? fs::path(".") : folder;
    for (fs::directory_iterator it(listed, error), end; !error && it != end; it.increment(error)) {
        const fs::path candidate = it->path().filename();
        if (jet::foldedName(asUtf8(candidate)) == wanted &&
            (!found || candidate < found->filename()))
            found = folder / candidate;
    }
    return found;
}

} // namespace

fs::path dataSource(std::string_view connectionString) {
    std::string_view rest = connectionString;
    std::optional<std::string_view> source;
    while (!rest.empty()) {
        const std::size_t stop = rest.find_first_of("=;");
        if (stop == std::string_view::npos)
            break;
        const std::string key = jet::lowerAscii(trimmed(rest.substr(0, stop)));
        const bool hasValue = rest[stop] == '=';
        rest.remove_prefix(stop + 1);
        if (!hasValue)
            continue;
        const std::string_view value = takeValue(rest);
        if (key == "data source")
            source = unquoted(value);
    }
    if (!source || source->empty())
        throw Error(Errc::misuse,
                    "A conexão não diz onde está o banco de dados (falta \"Data Source=\").");

    std::string path;
    for (char c : *source) {
        if (c == '\\')
            c = '/';
        // Two at the very beginning name a machine, where the system knows such names.
        const bool machine = fs::path::preferred_separator != '/' && path.size() == 1;
        if (c == '/' && !path.empty() && path.back() == '/' && !machine)
            continue;
        path += c;
    }
    return asPath(path);
}

fs::path existingFile(const fs::path& path) {
    fs::path found = path.root_path();
    for (const fs::path& name : path.relative_path()) {
        auto next = entry(found, name);
        if (!next)
            throw Error(
                Errc::notFound,
                "O banco de dados não foi encontrado em \"" + asUtf8(path) +
                    "\". A pasta onde ele fica está escrita no arquivo init.ini, na pasta do "
                    "programa; sem esse arquivo, o banco deve ficar na própria pasta do programa.");
        found = std::move(*next);
    }
    return found;
}

} // namespace ado
