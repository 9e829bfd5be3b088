#include "reports/LayoutDoRelatorio.h"

namespace LayoutDoRelatorio {

namespace {

// Millimetres.
constexpr qreal kLargura = 180;
constexpr qreal kEntreColunas = 4;
constexpr qreal kAlturaDoTexto = 4.8; ///< between the rules

const QColor kFio(0xc8, 0xcf, 0xd1);

// clang-format off
const ReportColumn kColunas[] = {
    {"Cheque",       "numero",                  16, Qt::AlignLeft,    ""},
    {"Nome",         "Cliente_Fornecedor.nome", 50, Qt::AlignLeft,    ""},
    {"Dt. Emissão",  "data",                    21, Qt::AlignHCenter, ""},
    {"Valor Cheque", kValor,                    24, Qt::AlignRight,   "Standard"},
    {"Banco",        "bancos.nome",             31, Qt::AlignLeft,    ""},
    {"Bom Para",     kVencimento,               18, Qt::AlignHCenter, ""},
};
// clang-format on
constexpr int kColunaDoValor = 3;
constexpr qreal kLarguraDoTotal = 48; ///< more than a value has

} // namespace

TextLook aDireita(TextLook aspecto) {
    aspecto.align = Qt::AlignRight;
    return aspecto;
}

ReportBand cabecalho(const std::vector<ReportField>& aEsquerda) {
    const TextLook titulo = {14, true};
    const TextLook direita = aDireita({9});
    ReportBand faixa = {22};
    faixa.frames = {{{0, 0, kLargura, 19}}};
    faixa.lines = {
        {"", {0, 11}, {kLargura, 11}}
    };
    faixa.fields = {
        {FieldKind::title,    "",       {4, 1.5, 120, 8}, titulo,  "", "", ""        },
        {FieldKind::computed, "Pagina", {130, 3, 46, 5},  direita, "", "", "Página:"},
    };
    faixa.fields.insert(faixa.fields.end(), aEsquerda.begin(), aEsquerda.end());
    const ReportField data = {
        FieldKind::computedFirst, "Data", {130, 12.5, 46, 5},
          direita, "Short Date", "", "Data:"
    };
    faixa.fields.push_back(data);
    return faixa;
}

ReportLayout leiaute() {
    constexpr auto umaVez = FieldKind::computedFirst;
    const TextLook texto = {8};
    const TextLook titulo = {8, true};
    const TextLook total = aDireita(titulo);
    const QLineF soma = linhaDoTotal();

    ReportLayout leiaute;
    leiaute.pageHeader = cabecalho({
        {umaVez, "DTInicial", {4, 12.5, 55, 5},  {9}, "Short Date", "", "Referente ao período:"},
        {umaVez, "DTFinal",   {59, 12.5, 40, 5}, {9}, "Short Date", "", "a"                     },
    });
    leiaute.columnHeadings = {7};
    leiaute.columnHeadings.lines = {
        {"", {0, 6.6}, {kLargura, 6.6}, 0.35}
    };
    leiaute.detail = {5.2};
    leiaute.detail.lines = {
        {"", {0, 5.1}, {kLargura, 5.1}, 0.1, kFio}
    };
    addColumns(leiaute, kColunas, kEntreColunas, kAlturaDoTexto, titulo, texto);
    leiaute.footer = {9};
    leiaute.footer.lines = {
        {kLinhaDoTotal, {0, 1}, {kLargura, 1}, 0.35}
    };
    leiaute.footer.fields = {
        {FieldKind::computed,
         "Total", {soma.x1(), 2.5, soma.length(), 5},
         total, "Standard",
         "", "Total:"},
    };
    return leiaute;
}

QStringList colunas() {
    QStringList nomes;
    for (const ReportColumn& coluna : kColunas)
        nomes += coluna.column;
    return nomes;
}

QLineF linhaDoTotal() {
    qreal direita = kColunas[kColunaDoValor].width;
    for (int i = 0; i < kColunaDoValor; ++i)
        direita += kColunas[i].width + kEntreColunas;
    return {direita - kLarguraDoTotal, 1, direita, 1};
}

} // namespace LayoutDoRelatorio
