#include "tools/Arguments.h"

#include "ado/ServerShop.h"
#include "jet/Disk.h"
#include "jet/Error.h"

#include <algorithm>
#include <charconv>
#include <chrono>

namespace {

std::string inQuotes(std::string_view text) { return "\"" + std::string(text) + "\""; }

std::size_t wordsIn(std::string_view text) {
    return text.empty() ? 0 : static_cast<std::size_t>(std::ranges::count(text, ' ')) + 1;
}

/// The whole of `text` as a number without sign.
std::optional<std::int64_t> wholeNumber(std::string_view text) {
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || text.starts_with('-'))
        return std::nullopt;
    return value;
}

/// One that nobody may look at isn't one: what is tried then tells why.
bool isFolder(const std::filesystem::path& path) {
    std::error_code ignored;
    return std::filesystem::is_directory(path, ignored);
}

} // namespace

Arguments::Arguments(const ToolCommand& command, std::span<const std::string_view> words) {
    bool onlyOperands = false;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string_view word = words[i];
        if (onlyOperands || !word.starts_with('-')) {
            operands_.emplace_back(word);
            continue;
        }
        if (word == "--") {
            onlyOperands = true;
            continue;
        }
        const std::size_t equals = word.find('=');
        const std::string_view name = word.substr(0, equals);
        const auto option = std::ranges::find(command.options, name, &Option::name);
        if (option == command.options.end())
            throw UsageError("O comando " + inQuotes(command.name) + " não tem a opção " +
                             inQuotes(name) + ".");
        std::string value;
        if (equals != std::string_view::npos) {
            if (option->value == nullptr)
                throw UsageError("A opção " + inQuotes(name) + " não leva valor.");
            value = word.substr(equals + 1);
        } else if (option->value != nullptr) {
            if (++i == words.size())
                throw UsageError("Falta o valor da opção " + inQuotes(name) + ".");
            value = words[i];
        }
        if (!values_.emplace(name, std::move(value)).second)
            throw UsageError("A opção " + inQuotes(name) + " aparece duas vezes.");
    }
    const std::size_t expected = wordsIn(command.operands);
    if (operands_.size() < expected)
        throw UsageError("Falta dizer: " + std::string(command.operands) + ".");
    if (operands_.size() > expected)
        throw UsageError("Não se esperava " + inQuotes(operands_[expected]) + ".");
    if (expected > 0 && operands_.front().empty())
        throw UsageError("O nome do arquivo está vazio.");
}

std::filesystem::path Arguments::path() const { return jet::Disk::pathOf(operands_.front()); }

std::filesystem::path Arguments::file(std::size_t place) const {
    std::filesystem::path path = jet::Disk::pathOf(operands_[place]);
    if (isFolder(path))
        throw jet::Error(jet::Errc::io, inQuotes(operands_[place]) +
                                            " é uma pasta: diga o nome do arquivo, com ela.");
    return path;
}

std::filesystem::path Arguments::newFile(std::size_t place) const {
    std::filesystem::path path = file(place);
    const std::filesystem::path in = path.parent_path();
    if (!in.empty() && !isFolder(in))
        throw jet::Error(jet::Errc::notFound, "A pasta " + inQuotes(in.string()) + " não existe.");
    return path;
}

std::filesystem::path Arguments::folder(std::size_t place) const {
    std::filesystem::path path = jet::Disk::pathOf(operands_[place]);
    if (!isFolder(path))
        throw jet::Error(jet::Errc::notFound,
                         "A pasta " + inQuotes(operands_[place]) + " não existe.");
    return path;
}

std::optional<std::string> Arguments::server(std::size_t place) const {
    const std::string& address = operands_[place];
    if (!ado::isServerAddress(address))
        return std::nullopt;
    if (ado::holdsPassword(address))
        throw UsageError("O endereço não pode trazer a senha: quem lista os programas abertos a "
                         "veria. Guarde-a em ~/.pgpass.");
    return address;
}

std::string Arguments::text(std::string_view option, const std::string& otherwise) const {
    const auto given = values_.find(option);
    if (given != values_.end() && given->second.empty())
        throw UsageError("O valor da opção " + inQuotes(option) + " está vazio.");
    return given == values_.end() ? otherwise : given->second;
}

std::int64_t Arguments::number(std::string_view option, std::int64_t otherwise,
                               std::int64_t most) const {
    const auto given = values_.find(option);
    if (given == values_.end())
        return otherwise;
    const std::optional<std::int64_t> value = wholeNumber(given->second);
    if (!value || *value > most)
        throw UsageError("A opção " + inQuotes(option) + " pede um número inteiro de 0 a " +
                         std::to_string(most) + ", não " + inQuotes(given->second) + ".");
    return *value;
}

std::optional<jet::CivilTime> Arguments::day(std::string_view option) const {
    const auto given = values_.find(option);
    if (given == values_.end())
        return std::nullopt;
    const std::string_view text = given->second;
    if (text.size() == 10 && text[4] == '-' && text[7] == '-') {
        const auto year = wholeNumber(text.substr(0, 4));
        const auto month = wholeNumber(text.substr(5, 2));
        const auto day = wholeNumber(text.substr(8, 2));
        if (year && month && day &&
            std::chrono::year_month_day(std::chrono::year(static_cast<int>(*year)),
                                        std::chrono::month(static_cast<unsigned>(*month)),
                                        std::chrono::day(static_cast<unsigned>(*day)))
                .ok())
            return jet::CivilTime{.year = static_cast<int>(*year),
                                  .month = static_cast<int>(*month),
                                  .day = static_cast<int>(*day)};
    }
    throw UsageError("A opção " + inQuotes(option) + " pede uma data como 2004-12-31, não " +
                     inQuotes(given->second) + ".");
}
