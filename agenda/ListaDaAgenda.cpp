#include "agenda/ListaDaAgenda.h"

#include "agenda/Apresentacao.h"

#include <QCollator>

#include <algorithm>
#include <cstddef>
#include <utility>

namespace ListaDaAgenda {

using Vencimentos::Cheque;

namespace {

constexpr Ordenacao kOrdens[] = {
    {"Vencimento", kVencimento},
    {"Cliente",    kCliente   },
    {"Banco",      kBanco     },
    {"Agência",   kAgencia   },
    {"Número",    kNumero    },
    {"Emissão",   kEmissao   },
    {"Valor",      kValor     },
};

const QString& textoDe(const Cheque& cheque, ColunaDaAgenda coluna) {
    switch (coluna) {
    case kCliente:
        return cheque.cliente;
    case kBanco:
        return cheque.banco;
    case kAgencia:
        return cheque.agencia;
    default:
        return cheque.numero;
    }
}

/// As a dictionary has them, whatever their case and accents.
template <class Sentido>
void ordenarPorTexto(std::vector<Cheque>& cheques, ColunaDaAgenda coluna, Sentido sentido) {
    QCollator ordem(QLocale(QLocale::Portuguese, QLocale::Brazil));
    ordem.setCaseSensitivity(Qt::CaseInsensitive);
    ordem.setNumericMode(true);
    std::vector<std::pair<QCollatorSortKey, std::size_t>> chaves;
    chaves.reserve(cheques.size());
    for (std::size_t i = 0; i < cheques.size(); ++i)
        chaves.emplace_back(ordem.sortKey(textoDe(cheques[i], coluna)), i);
    std::ranges::stable_sort(
        chaves, [&](const auto& a, const auto& b) { return sentido(a.first.compare(b.first), 0); });
    std::vector<Cheque> ordenados;
    ordenados.reserve(cheques.size());
    for (const auto& [chave, i] : chaves)
        ordenados.push_back(std::move(cheques[i]));
    cheques = std::move(ordenados);
}

/// If they aren't so already, as by their due dates they mostly are.
template <class Sentido, class Campo>
void ordenarPeloCampo(std::vector<Cheque>& cheques, Sentido sentido, Campo campo) {
    if (!std::ranges::is_sorted(cheques, sentido, campo))
        std::ranges::stable_sort(cheques, sentido, campo);
}

template <class Sentido>
void ordenarPor(std::vector<Cheque>& cheques, ColunaDaAgenda coluna, Sentido sentido) {
    switch (coluna) {
    case kEmissao:
        ordenarPeloCampo(cheques, sentido, &Cheque::emissao);
        break;
    case kVencimento:
        ordenarPeloCampo(cheques, sentido, &Cheque::vencimento);
        break;
    case kValor:
        ordenarPeloCampo(cheques, sentido, &Cheque::valor);
        break;
    default:
        ordenarPorTexto(cheques, coluna, sentido);
    }
}

} // namespace

std::vector<ListColumn> colunas() {
    // clang-format off
    return {
        {"Nº  Cheque",     1200, Qt::AlignLeft},
        {"Cliente",        2100, Qt::AlignLeft,    "",                     "Ana Maria de Souza"},
        {"Banco",          1400, Qt::AlignLeft,    "",                     "Banco da Serra"},
        {"Agência",         700, Qt::AlignLeft},
        {"Dt. Emissão",    1150, Qt::AlignHCenter},
        {"Vencimento",     1150, Qt::AlignHCenter, "Vencimento do cheque"},
        {"Dia útil",        900, Qt::AlignHCenter, "Dia útil do banco",    "seg 00/00"},
        {"Vence",          1100, Qt::AlignLeft,    "",                     "em 000 dias"},
        {"Valor R$",       1150, Qt::AlignRight,   "",                     "000.000,00"},
        {"Apresentar até", 1350, Qt::AlignHCenter},
        {"Aviso",          1850, Qt::AlignLeft,    "",                     "⚠ Último dia (30)"}
    };
    // clang-format on
}

std::vector<ListColumn> colunasDosDias() {
    // clang-format off
    return {
        {"Vencimento",           1250, Qt::AlignHCenter},
        {"Dia útil",             1100, Qt::AlignHCenter, "Dia útil do vencimento"},
        {"Cheques",              1000, Qt::AlignRight},
        {"Soma R$",              1700, Qt::AlignRight},
        {"Marcados",             1000, Qt::AlignRight},
        {"Soma dos marcados R$", 1700, Qt::AlignRight}
    };
    // clang-format on
}

ListItem linhaDoDia(const QDate& vencimento, const Vencimentos::SomaDoDia& soma) {
    ListItem linha;
    linha.text = vencimento.isValid() ? formatDate(vencimento) : "Nenhum";
    linha.subItems = {Vencimentos::outroDiaUtil(vencimento), QString::number(soma.todos.cheques),
                      formatMoney(soma.todos.valor), QString::number(soma.marcados.cheques),
                      formatMoney(soma.marcados.valor)};
    return linha;
}

ListItem Linhas::de(const Cheque& cheque) {
    Vencimento& vencimento = vencimentos_[cheque.vencimento];
    if (vencimento.data.isEmpty())
        vencimento = {formatDate(cheque.vencimento), Vencimentos::outroDiaUtil(cheque.vencimento),
                      Vencimentos::distancia(cheque.vencimento, hoje_)};
    Emissao& emissao = emissoes_[cheque.emissao];
    if (cheque.emissao.isValid() && emissao.data.isEmpty()) {
        const auto [mesmaPraca, outraPraca] = Apresentacao::prazos(cheque.emissao);
        emissao = {formatDate(cheque.emissao),
                   mesmaPraca.toString("dd/MM") + " ou " + outraPraca.toString("dd/MM")};
    }
    ListItem linha;
    linha.key = QString::number(cheque.lancamento);
    linha.text = cheque.numero;
    linha.subItems = {
        cheque.cliente,
        cheque.banco,
        cheque.agencia,
        emissao.data,
        vencimento.data,
        vencimento.diaUtil,
        vencimento.distancia,
        formatMoney(cheque.valor),
        emissao.prazos,
        Apresentacao::texto(Apresentacao::aviso(cheque.emissao, cheque.vencimento, hoje_)),
    };
    linha.checked = cheque.marcado;
    return linha;
}

std::span<const Ordenacao> ordens() { return kOrdens; }

int ordem(ColunaDaAgenda coluna) {
    return static_cast<int>(std::ranges::find(kOrdens, coluna, &Ordenacao::coluna) - kOrdens);
}

ColunaDaAgenda ordenavel(int coluna) {
    switch (coluna) {
    case kDiaUtil:
    case kDistancia:
    case kAviso:
        return kVencimento;
    case kPrazos:
        return kEmissao;
    default:
        return static_cast<ColunaDaAgenda>(coluna);
    }
}

void ordenar(std::vector<Cheque>& cheques, ColunaDaAgenda coluna, bool aoContrario) {
    aoContrario ? ordenarPor(cheques, coluna, std::ranges::greater())
                : ordenarPor(cheques, coluna, std::ranges::less());
}

} // namespace ListaDaAgenda
