#include "agenda/Impressos.h"

#include "reports/LayoutDoRelatorio.h"

#include <span>

namespace Impressos {

namespace {

using Vencimentos::Cheque;

// Millimetres.
constexpr qreal kLargura = 180;
constexpr qreal kEntreColunas = 2;
constexpr qreal kAlturaDoTexto = 4.8;

const QColor kFio(0xc8, 0xcf, 0xd1);

// clang-format off
const ReportColumn kVencimentos[] = {
    {"Cheque",     "numero",     16, Qt::AlignLeft,    ""},
    {"Cliente",    "cliente",    30, Qt::AlignLeft,    ""},
    {"Banco",      "banco",      20, Qt::AlignLeft,    ""},
    {"Agência",    "agencia",    12, Qt::AlignLeft,    ""},
    {"Emissão",    "data",       17, Qt::AlignHCenter, ""},
    {"Vencimento", "bompara",    18, Qt::AlignHCenter, ""},
    {"Dia útil",   "util",       14, Qt::AlignHCenter, ""},
    {"Vence",      "distancia",  17, Qt::AlignLeft,    ""},
    {"Valor",      "valor",      20, Qt::AlignRight,   "Standard"},
};
const ReportColumn kBordero[] = {
    {"Item",       "item",        9, Qt::AlignRight,   ""},
    {"Cheque",     "numero",     20, Qt::AlignLeft,    ""},
    {"Banco",      "banco",      34, Qt::AlignLeft,    ""},
    {"Agência",    "agencia",    15, Qt::AlignLeft,    ""},
    {"Cliente",    "cliente",    48, Qt::AlignLeft,    ""},
    {"Vencimento", "bompara",    18, Qt::AlignHCenter, ""},
    {"Valor",      "valor",      24, Qt::AlignRight,   "Standard"},
};
const ReportColumn kFicha[] = {
    {"Assunto",    "assunto",    45, Qt::AlignLeft,    ""},
    {"Quando",     "quando",     35, Qt::AlignLeft,    ""},
    {"Cheque",     "numero",     30, Qt::AlignLeft,    ""},
    {"Cheques",    "cheques",    20, Qt::AlignRight,   ""},
    {"Valor",      "valor",      30, Qt::AlignRight,   "Standard"},
};
// clang-format on

// So many days and bounced cheques go on a page with all the rest.
constexpr qint64 kDiasNaFicha = 20;
constexpr qint64 kDevolvidosNaFicha = 12;

/// The header, these columns, and below them how many they are and what they come to.
ReportLayout leiaute(std::span<const ReportColumn> colunas, qreal alturaDoRodape) {
    const TextLook texto = {8};
    const TextLook titulo = {8, true};
    constexpr auto umaVez = FieldKind::computedFirst;
    ReportLayout feito;
    feito.pageHeader = LayoutDoRelatorio::cabecalho({
        {umaVez, "Escolha", {4, 12.5, 122, 5}, {9}, "", "", ""}
    });
    feito.columnHeadings = {7};
    feito.columnHeadings.lines.push_back({
        "", {0,        6.6},
         {kLargura, 6.6},
         0.35
    });
    feito.detail = {5.2};
    feito.detail.lines.push_back({
        "", {0,        5.1},
         {kLargura, 5.1},
         0.1, kFio
    });
    addColumns(feito, colunas, kEntreColunas, kAlturaDoTexto, titulo, texto);
    qreal direita = -kEntreColunas;
    for (const ReportColumn& coluna : colunas)
        direita += coluna.width + kEntreColunas;
    constexpr qreal kTotal = 48;
    feito.footer = {alturaDoRodape};
    feito.footer.lines.push_back({
        "", {direita - kTotal, 1},
         {direita,          1},
         0.35
    });
    feito.footer.fields = {
        {umaVez, "Quantos", {0, 2.5, 40, 5},                    titulo, "", "", "Cheques:"},
        {umaVez,
         "Total",           {direita - kTotal, 2.5, kTotal, 5},
         LayoutDoRelatorio::aDireita(titulo),
         "Standard",                                                        "",
         "Total:"                                                                         },
    };
    return feito;
}

Impresso impresso(std::span<const ReportColumn> colunas, qreal alturaDoRodape) {
    Impresso feito;
    feito.leiaute = leiaute(colunas, alturaDoRodape);
    for (const ReportColumn& coluna : colunas)
        feito.colunas += coluna.column;
    return feito;
}

} // namespace

Impresso vencimentos(const std::vector<Cheque>& cheques, const QString& escolha,
                     const Vencimentos::SomaDoDia& total, bool porDia) {
    const QDate hoje = QDate::currentDate();
    Impresso feito = impresso(kVencimentos, 15);
    feito.titulo = "Cheques por vencimento";
    feito.leiaute.footer.fields.push_back({
        FieldKind::computedFirst, "Marcados", {0,         8.5, kLargura, 5},
          {8},
          "", "", "Marcados:"
    });
    feito.campos = {
        {"Escolha",  escolha                           },
        {"Data",     hoje                              },
        {"Quantos",  total.todos.cheques               },
        {"Total",    total.todos.valor                 },
        {"Marcados", Vencimentos::texto(total.marcados)},
    };
    feito.linhas.reserve(cheques.size());
    Vencimentos::Soma doDia;
    for (std::size_t i = 0; i < cheques.size(); ++i) {
        const Cheque& cheque = cheques[i];
        feito.linhas.push_back({cheque.numero, cheque.cliente, cheque.banco, cheque.agencia,
                                cheque.emissao, cheque.vencimento,
                                Vencimentos::outroDiaUtil(cheque.vencimento),
                                Vencimentos::distancia(cheque.vencimento, hoje), cheque.valor});
        if (!porDia || cheques.front().vencimento == cheques.back().vencimento)
            continue;
        doDia.mais(cheque.valor);
        if (i + 1 < cheques.size() && cheques[i + 1].vencimento == cheque.vencimento)
            continue;
        feito.linhas.push_back({QString(), "Soma: " + Vencimentos::quantos(doDia), QString(),
                                QString(), QString(), cheque.vencimento, QString(), QString(),
                                doDia.valor});
        doDia = {};
    }
    return feito;
}

Impresso ficha(const Ficha::Cliente& cliente) {
    using Vencimentos::Soma;
    Impresso feito = impresso(kFicha, 15);
    feito.titulo = "Ficha do cliente";
    feito.campos = {
        {"Escolha", cliente.nome + "     Limite: R$ " + formatMoney(cliente.limite) +
                        "     Livre: " + Ficha::livre(cliente)},
        {"Data",    QDate::currentDate()                                         },
        {"Quantos", cliente.emMaos.cheques                                       },
        {"Total",   cliente.emMaos.valor                                         },
    };
    const auto linha = [&](const char* assunto, const QString& quando, const Soma& soma,
                           const QString& numero = {}) {
        feito.linhas.push_back({QString(assunto), quando, numero, soma.cheques, soma.valor});
    };
    for (int i = 0; i < Ficha::kPrazos; ++i) {
        const auto prazo = static_cast<Ficha::Prazo>(i);
        if (cliente.porPrazo[prazo].cheques > 0)
            linha("Em mãos", Ficha::nome(prazo), cliente.porPrazo[prazo]);
    }
    Soma depois;
    for (qint64 dias = 0; const auto& [vencimento, soma] : cliente.aVencer)
        if (++dias <= kDiasNaFicha)
            linha("A vencer", formatDate(vencimento), soma);
        else
            depois.mais(soma);
    if (depois.cheques > 0)
        linha("A vencer", "depois", depois);
    Soma antigos;
    for (qint64 quantos = 0; const Ficha::SemFundos& cheque : cliente.semFundos)
        if (++quantos <= kDevolvidosNaFicha)
            linha("Devolvido sem fundos", formatDate(cheque.data), {1, cheque.valor},
                  cheque.numero);
        else
            antigos.mais(cheque.valor);
    if (antigos.cheques > 0)
        linha("Devolvidos sem fundos", "antes", antigos);
    if (cliente.passado && cliente.passado->baixados.cheques > 0) {
        const QString atraso = cliente.passado->atraso.medio();
        linha("Baixados em 12 meses", atraso.isEmpty() ? "" : "atraso " + atraso,
              cliente.passado->baixados);
    }
    return feito;
}

QString numero(const Deposito& deposito) { return deposito.momento.toString("yyMMdd-HHmmss"); }

Impresso bordero(const Deposito& deposito) {
    constexpr qreal kAssinatura = 25; ///< where it is signed, below the sum
    constexpr int kVias = 2;
    Impresso feito = impresso(kBordero, kAssinatura + 8);
    feito.titulo = "Borderô de depósito";
    feito.leiaute.copies = kVias;
    for (const auto& [texto, esquerda] :
         {std::pair("Local e data", 0.0), std::pair("Assinatura", 95.0)}) {
        constexpr qreal kComprimento = 80;
        feito.leiaute.footer.lines.push_back({
            "", {esquerda,                kAssinatura},
             {esquerda + kComprimento, kAssinatura}
        });
        feito.leiaute.footer.fields.push_back({
            FieldKind::text, texto, {esquerda,      kAssinatura + 1, kComprimento, 5},
              {8},
              "", "", ""
        });
    }
    Vencimentos::Soma soma;
    for (const Cheque& cheque : deposito.cheques) {
        soma.mais(cheque.valor);
        feito.linhas.push_back({soma.cheques, cheque.numero, cheque.banco, cheque.agencia,
                                cheque.cliente, cheque.vencimento, cheque.valor});
    }
    QString escolha = "Nº " + numero(deposito) + "     Depositado em: " + deposito.banco;
    if (!deposito.conta.isEmpty())
        escolha += "     Conta: " + deposito.conta;
    feito.campos = {
        {"Escolha", escolha                },
        {"Data",    deposito.momento.date()},
        {"Quantos", soma.cheques           },
        {"Total",   soma.valor             },
    };
    return feito;
}

} // namespace Impressos
