#include "shell/RegistroEmTexto.h"

#include "jet/Error.h"
#include "jet/Names.h"
#include "jet/Numbers.h"
#include "jet/TableDefinition.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <utility>

namespace RegistroEmTexto {

namespace {

using jet::Errc;
using jet::Error;

constexpr std::pair<char, char> kEscapes[] = {
    {'"',  '"' },
    {'\\', '\\'},
    {'\n', 'n' },
    {'\r', 'r' }
};
constexpr std::string_view kNulo = "nulo";
constexpr std::string_view kSim = "verdadeiro"; // in any code page
constexpr std::string_view kNao = "falso";
constexpr std::int64_t kInteiro = 10000;

[[noreturn]] void ilegivel(std::string_view texto) {
    throw Error(Errc::corrupt, "O registro guardado no histórico não pode ser lido: \"" +
                                   std::string(texto.substr(0, 60)) + "\".");
}

// ---- writing

/// All that is needed to read the same number again.
std::string comDecimais(double numero) {
    std::array<char, 40> letras{};
    const auto fim = std::to_chars(letras.data(), letras.data() + letras.size(), numero).ptr;
    return {letras.data(), fim};
}

std::string quantia(jet::Currency valor) {
    const bool negativo = valor.tenThousandths < 0;
    const auto partes = std::lldiv(valor.tenThousandths, kInteiro);
    std::array<char, 48> letras{}; // for any numbers
    std::snprintf(letras.data(), letras.size(), "%s%lld,%04lld", negativo ? "-" : "",
                  std::llabs(partes.quot), std::llabs(partes.rem));
    return letras.data();
}

std::string momento(jet::Date data) {
    const jet::CivilTime em = data.civil();
    if (!data.inRange() || jet::Date::of(em) != data)
        return "#" + comDecimais(data.days);
    std::array<char, 48> letras{}; // for any numbers
    std::snprintf(letras.data(), letras.size(), "%04d-%02d-%02d", em.year, em.month, em.day);
    std::string texto = letras.data();
    if (em.hour == 0 && em.minute == 0 && em.second == 0)
        return texto;
    std::snprintf(letras.data(), letras.size(), " %02d:%02d:%02d", em.hour, em.minute, em.second);
    return texto + letras.data();
}

std::string hexadecimal(std::span<const std::byte> bytes) {
    constexpr char kDigitos[] = "0123456789abcdef";
    std::string texto = "0x";
    for (const std::byte byte : bytes) {
        const auto valor = std::to_integer<unsigned>(byte);
        texto += kDigitos[valor >> 4U];
        texto += kDigitos[valor & 0xFU];
    }
    return texto;
}

std::string entreAspas(std::string_view texto) {
    std::string escrito = "\"";
    for (const char letra : texto) {
        const auto escape = std::ranges::find(kEscapes, letra, &std::pair<char, char>::first);
        if (escape != std::end(kEscapes))
            (escrito += '\\') += escape->second;
        else
            escrito += letra;
    }
    return escrito += '"';
}

struct Escrita {
    std::string operator()(std::monostate /*nulo*/) const { return std::string(kNulo); }
    std::string operator()(bool valor) const { return std::string(valor ? kSim : kNao); }
    std::string operator()(std::int64_t valor) const { return std::to_string(valor); }
    std::string operator()(jet::Currency valor) const { return quantia(valor); }
    std::string operator()(double valor) const { return comDecimais(valor); }
    std::string operator()(jet::Date valor) const { return momento(valor); }
    std::string operator()(const std::string& valor) const { return entreAspas(valor); }
    std::string operator()(const jet::Bytes& valor) const { return hexadecimal(valor); }
    std::string operator()(const jet::Guid& valor) const { return hexadecimal(valor.bytes); }
    std::string operator()(const jet::Numeric& valor) const { return valor.text(); }
};

// ---- reading

/// The text that is still to be read.
class Leitura {
public:
    explicit Leitura(std::string_view texto) : resto_(texto) {}

    [[nodiscard]] bool fim() const { return resto_.empty(); }
    /// What stands before `ate`, which is passed over.
    std::string_view ate(std::string_view marca) {
        const auto onde = resto_.find(marca);
        if (onde == std::string_view::npos)
            ilegivel(resto_);
        const std::string_view antes = resto_.substr(0, onde);
        resto_.remove_prefix(onde + marca.size());
        return antes;
    }
    /// A value: to its closing quote, or to the next column.
    std::string valor() {
        if (resto_.starts_with('"'))
            return texto();
        const auto fim = std::min(resto_.find(" ["), resto_.size());
        std::string lido(resto_.substr(0, fim));
        resto_.remove_prefix(std::min(fim + 1, resto_.size()));
        return lido;
    }
    [[nodiscard]] bool entreAspas() const { return resto_.starts_with('"'); }

private:
    std::string texto() {
        std::string lido;
        std::size_t i = 1;
        for (; i < resto_.size() && resto_[i] != '"'; ++i) {
            char letra = resto_[i];
            if (letra == '\\') {
                if (++i == resto_.size())
                    ilegivel(resto_);
                const auto escape =
                    std::ranges::find(kEscapes, resto_[i], &std::pair<char, char>::second);
                if (escape == std::end(kEscapes))
                    ilegivel(resto_);
                letra = escape->first;
            }
            lido += letra;
        }
        if (i == resto_.size() || (i + 1 < resto_.size() && resto_[i + 1] != ' '))
            ilegivel(resto_);
        resto_.remove_prefix(std::min(i + 2, resto_.size()));
        return lido;
    }

    std::string_view resto_;
};

template <class Numero>
Numero numero(std::string_view texto) {
    Numero lido{};
    const auto [fim, erro] = std::from_chars(texto.data(), texto.data() + texto.size(), lido);
    if (erro != std::errc() || fim != texto.data() + texto.size())
        ilegivel(texto);
    return lido;
}

jet::Currency quantiaDe(const std::string& texto) {
    const auto virgula = texto.find(',');
    if (virgula == std::string::npos || texto.size() != virgula + 5)
        ilegivel(texto);
    std::string digitos = texto;
    digitos.erase(virgula, 1);
    return {numero<std::int64_t>(digitos)};
}

jet::Numeric decimalDe(std::string_view texto) {
    const bool negativo = texto.starts_with('-');
    std::string digitos(texto.substr(negativo ? 1 : 0));
    const auto ponto = std::min(digitos.find('.'), digitos.size());
    const auto decimais = digitos.size() - std::min(ponto + 1, digitos.size());
    digitos.erase(ponto, 1);
    const bool soDigitos = !digitos.empty() && std::ranges::all_of(digitos, [](char letra) {
        return letra >= '0' && letra <= '9';
    });
    const auto lido = soDigitos
                          ? jet::numericFrom(negativo, digitos, static_cast<std::uint8_t>(decimais))
                          : std::nullopt;
    if (!lido)
        ilegivel(texto);
    return *lido;
}

jet::Date momentoDe(const std::string& texto) {
    if (texto.starts_with('#'))
        return {numero<double>(std::string_view(texto).substr(1))};
    jet::CivilTime em;
    int lidos = 0;
    em.hour = em.minute = em.second = 0;
    if (std::sscanf(texto.c_str(), "%4d-%2d-%2d%n", &em.year, &em.month, &em.day, &lidos) != 3)
        ilegivel(texto);
    if (static_cast<std::size_t>(lidos) < texto.size() &&
        std::sscanf(texto.c_str() + lidos, " %2d:%2d:%2d", &em.hour, &em.minute, &em.second) != 3)
        ilegivel(texto);
    const jet::Date lida = jet::Date::of(em);
    if (lida.civil() != em)
        ilegivel(texto);
    return lida;
}

jet::Bytes bytesDe(std::string_view texto) {
    if (!texto.starts_with("0x") || texto.size() % 2 != 0)
        ilegivel(texto);
    jet::Bytes lidos;
    for (std::size_t i = 2; i < texto.size(); i += 2) {
        unsigned byte = 0;
        const char* const ate = texto.data() + i + 2;
        if (std::from_chars(texto.data() + i, ate, byte, 16).ptr != ate)
            ilegivel(texto);
        lidos.push_back(static_cast<std::byte>(byte));
    }
    return lidos;
}

jet::Guid identificadorDe(const std::string& texto) {
    const jet::Bytes bytes = bytesDe(texto);
    jet::Guid lido;
    if (bytes.size() != lido.bytes.size())
        ilegivel(texto);
    std::ranges::copy(bytes, lido.bytes.begin());
    return lido;
}

jet::Value valorDe(jet::ColumnType tipo, const std::string& texto, bool entreAspas) {
    if (!entreAspas && texto == kNulo)
        return {};
    if (entreAspas != jet::isText(tipo))
        ilegivel(texto);
    switch (tipo) {
    case jet::ColumnType::boolean:
        if (texto != kSim && texto != kNao)
            ilegivel(texto);
        return texto == kSim;
    case jet::ColumnType::byte:
    case jet::ColumnType::integer:
    case jet::ColumnType::longInteger:
        return numero<std::int64_t>(texto);
    case jet::ColumnType::currency:
        return quantiaDe(texto);
    case jet::ColumnType::single:
    case jet::ColumnType::real:
        return numero<double>(texto);
    case jet::ColumnType::date:
        return momentoDe(texto);
    case jet::ColumnType::text:
    case jet::ColumnType::memo:
        return texto;
    case jet::ColumnType::guid:
        return identificadorDe(texto);
    case jet::ColumnType::numeric:
        return decimalDe(texto);
    case jet::ColumnType::binary:
    case jet::ColumnType::ole:
        break;
    }
    return bytesDe(texto);
}

} // namespace

std::string escrever(std::span<const jet::Column> campos, const jet::Row& registro) {
    std::string texto;
    texto.reserve(32 * campos.size());
    for (std::size_t i = 0; i < campos.size(); ++i) {
        texto += (i == 0 ? "[" : " [");
        texto += campos[i].name;
        texto += "]=";
        texto += std::visit(Escrita(), registro[i]);
    }
    return texto;
}

std::vector<jet::Assignment> ler(std::span<const jet::Column> campos, std::string_view texto) {
    std::vector<jet::Assignment> lidos;
    Leitura leitura(texto);
    while (!leitura.fim()) {
        if (!leitura.ate("[").empty())
            ilegivel(texto);
        const std::string nome(leitura.ate("]="));
        const auto campo = std::ranges::find_if(campos, [&](const jet::Column& c) {
            return c.name == nome || jet::foldedName(c.name) == jet::foldedName(nome);
        });
        const bool entreAspas = leitura.entreAspas();
        const std::string valor = leitura.valor();
        if (campo == campos.end())
            throw Error(Errc::notFound, "O campo \"" + nome + "\" não está mais na base de dados.");
        lidos.push_back({static_cast<std::size_t>(campo - campos.begin()),
                         valorDe(campo->type, valor, entreAspas)});
    }
    return lidos;
}

} // namespace RegistroEmTexto
