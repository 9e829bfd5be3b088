#pragma once

#include "ado/Follower.h"
#include "agenda/Vencimentos.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

namespace ado {
class Connection;
}

/// The sums of an open database's cheques, and what each block of rows has put into them: 16 bytes
/// a cheque, of which there may be a million.
class SomasDaCarteira {
public:
    /// @throws as ado::Follower. A file without bounced cheques has none.
    explicit SomasDaCarteira(ado::Connection& base);

    /// Reads on for about that long. @return whether there is more to be done at once.
    /// @throws as ado::Follower.
    bool continuar(std::chrono::microseconds tempo);
    /// Whether all that is in the file has been read, and is in the sums.
    [[nodiscard]] bool completas() const;
    [[nodiscard]] double andamento() const { return cheques_.progress(); }
    /// Whether they are others than when this was last asked.
    [[nodiscard]] bool mudaram() noexcept { return std::exchange(mudaram_, false); }

    [[nodiscard]] Vencimentos::Soma devidos(const Vencimentos::Dias& dias) const;
    [[nodiscard]] const Vencimentos::Soma& emMaos() const noexcept { return emMaos_; }
    [[nodiscard]] const Vencimentos::Soma& semFundos() const noexcept { return semFundos_; }
    [[nodiscard]] std::vector<Vencimentos::DeUmCliente> maiores(std::size_t quantos) const;

private:
    using Linhas = ado::Follower::Rows;
    struct Cheque {
        std::int64_t valor;
        std::int32_t vencimento; ///< Julian day, or kSemVencimento
        std::uint32_t cliente;   ///< place in clientes_, or kSemCliente
    };

    void tomarCheques(std::uint32_t bloco, Linhas& linhas);
    void tomarDevolvidos(std::uint32_t bloco, Linhas& linhas);
    [[nodiscard]] Cheque cheque(const Linhas& linha);
    [[nodiscard]] std::uint32_t lugarDe(std::int64_t cliente);
    void contar(const Cheque& cheque, int quantas);

    bool mudaram_ = false;
    Vencimentos::Soma emMaos_;
    /// As if no value were negative: as long as that can be summed so can everything else.
    Vencimentos::Soma semSinal_;
    std::map<std::int32_t, Vencimentos::Soma> porDia_;
    std::vector<Vencimentos::DeUmCliente> clientes_;
    std::unordered_map<std::int64_t, std::uint32_t> lugares_; ///< of the clients
    std::unordered_map<std::uint32_t, std::vector<Cheque>> blocos_;
    Vencimentos::Soma semFundos_;
    std::unordered_map<std::uint32_t, Vencimentos::Soma> blocosSemFundos_;

    ado::Follower cheques_;
    std::optional<ado::Follower> devolvidos_;
};
