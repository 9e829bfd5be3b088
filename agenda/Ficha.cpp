#include "agenda/Ficha.h"

#include "jet/Database.h"
#include "shell/Historico.h"
#include "shell/Valores.h"
#include "shell/dbconectar.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <utility>

namespace Ficha {

namespace {

using Vencimentos::Soma;

constexpr int kMeses = 12; ///< of the past that is told

struct NomesDoPrazo {
    const char* inteiro;
    const char* curto;
};
constexpr NomesDoPrazo kNomes[kPrazos] = {
    {"Atrasados",      "atraso" },
    {"Até 30 dias",   "até 30"},
    {"31 a 60 dias",   "31-60"  },
    {"61 a 90 dias",   "61-90"  },
    {"Mais de 90",     "mais"   },
    {"Sem vencimento", "sem"    },
};

void abrir(ado::Recordset& rs, const QString& comando) {
    rs.Open(comando, dbconectar::instance().Automacao, ado::CursorType::ForwardOnly,
            ado::LockType::ReadOnly);
}

void lerCadastro(Cliente& ficha, const QString& codigo) {
    ado::Recordset rs;
    abrir(rs, "select * from cliente_fornecedor where codigo=" + codigo);
    rs.addOptional("limite_credito");
    if (rs.EOF()) {
        ficha.nome = "(não cadastrado: código " + codigo + ")";
        return;
    }
    ficha.nome = Valores::texto(rs["nome"]);
    ficha.limite = Valores::valor(rs["limite_credito"]);
}

void lerEmMaos(Cliente& ficha, const QString& codigo, const QDate& hoje) {
    ado::Recordset rs;
    abrir(rs, "select * from cheques where cliente=" + codigo);
    rs.addOptional("bompara");
    for (const ado::Recordset& lido = rs; !rs.EOF(); rs.MoveNext()) {
        const QDate vencimento = Valores::dia(lido["bompara"]);
        const Amount valor = Valores::valor(lido["valor"]);
        const Prazo quando = prazo(vencimento, hoje);
        ficha.emMaos.mais(valor);
        ficha.porPrazo[quando].mais(valor);
        if (quando != kAtrasado && quando != kSemVencimento)
            ficha.aVencer[vencimento].mais(valor);
    }
}

void lerSemFundos(Cliente& ficha, const QString& codigo) {
    const ado::Recordset& tabela = dbconectar::instance().rsSemFundos;
    if (tabela.State() == ado::State::Closed) // a file without it
        return;
    ado::Recordset rs;
    abrir(rs, "select * from semfundos where cliente=" + codigo);
    for (const char* campo : {"numero", "data"})
        rs.addOptional(campo);
    for (const ado::Recordset& lido = rs; !rs.EOF(); rs.MoveNext()) {
        ficha.semFundos.push_back({.numero = Valores::texto(lido["numero"]),
                                   .data = Valores::dia(lido["data"]),
                                   .valor = Valores::valor(lido["valor"])});
        ficha.devolvidos.mais(ficha.semFundos.back().valor);
    }
    std::ranges::stable_sort(ficha.semFundos, std::ranges::greater{}, &SemFundos::data);
}

void lerPassado(Cliente& ficha, const QString& codigo, const QDate& hoje) {
    if (!dbconectar::instance().historico.legivel())
        return;
    ficha.passado.emplace();
    Passado& passado = *ficha.passado;
    ado::Recordset rs;
    abrir(rs, QString("select * from %1 where quando>=%2 and cliente=%3")
                  .arg(Historico::kTabela, Valores::literal(hoje.addMonths(-kMeses)), codigo));
    for (const ado::Recordset& lido = rs; !rs.EOF(); rs.MoveNext()) {
        if (!lido["desfeito_por"].isNull())
            continue;
        const std::string operacao = lido["operacao"].text();
        const Amount valor = Valores::valor(lido["valor"]);
        if (operacao == Historico::kExclusao &&
            Valores::texto(lido["tabela"]).compare("semfundos", Qt::CaseInsensitive) == 0)
            passado.devolvidosExcluidos.mais(valor);
        if (operacao != Historico::kBaixa)
            continue;
        passado.baixados.mais(valor);
        passado.atraso.mais(Valores::dia(lido["bompara"]), Valores::dia(lido["quando"]));
    }
}

} // namespace

Prazo prazo(const QDate& vencimento, const QDate& hoje) {
    if (!vencimento.isValid())
        return kSemVencimento;
    const qint64 dias = hoje.daysTo(vencimento);
    if (dias < 0)
        return kAtrasado;
    constexpr std::pair<qint64, Prazo> kAte[] = {
        {30, kAte30},
        {60, kAte60},
        {90, kAte90}
    };
    for (const auto& [ate, quando] : kAte)
        if (dias <= ate)
            return quando;
    return kDepois;
}

QString nome(Prazo prazo) { return kNomes[prazo].inteiro; }
QString nomeCurto(Prazo prazo) { return kNomes[prazo].curto; }

Cliente ler(std::int64_t codigo, const QDate& hoje) {
    return dbconectar::instance().Automacao.store().read([&] {
        const QString numero = QString::number(codigo);
        Cliente ficha;
        lerCadastro(ficha, numero);
        lerEmMaos(ficha, numero, hoje);
        lerSemFundos(ficha, numero);
        lerPassado(ficha, numero, hoje);
        return ficha;
    });
}

Cliente cadastro(std::int64_t codigo) {
    Cliente ficha;
    lerCadastro(ficha, QString::number(codigo));
    return ficha;
}

QString livre(const Cliente& cliente) {
    if (cliente.limite <= Amount{})
        return "sem limite";
    const Amount emMaos = cliente.emMaos.valor;
    if (emMaos.tenThousandths == std::numeric_limits<std::int64_t>::min())
        Valores::grandeDemais("O que o cliente tem livre");
    const Amount livre =
        Valores::soma(cliente.limite, {-emMaos.tenThousandths}, "O que o cliente tem livre");
    return livre < Amount{} ? "nada: passou R$ " + formatMoney({-livre.tenThousandths})
                            : "R$ " + formatMoney(livre);
}

QString baixados(const Cliente& cliente) {
    if (!cliente.passado)
        return "ainda não há histórico";
    const Passado& passado = *cliente.passado;
    const QString atraso = passado.atraso.medio();
    return Vencimentos::texto(passado.baixados) +
           (atraso.isEmpty() ? "" : ", atraso médio " + atraso);
}

QString devolvidos(const Cliente& cliente) {
    QString todos = Vencimentos::texto(cliente.devolvidos);
    if (cliente.passado && cliente.passado->devolvidosExcluidos.cheques > 0)
        todos +=
            "; excluídos em 12 meses: " + Vencimentos::texto(cliente.passado->devolvidosExcluidos);
    return todos;
}

} // namespace Ficha
