#pragma once

#include "print/ReportLayout.h"

#include <QLineF>
#include <QStringList>

#include <vector>

/// How the reports of cheques stand on paper, both of them: A4 upright, a header with title, page,
/// date and period, six columns, the total below the values.
namespace LayoutDoRelatorio {

/// Its computed fields are "Pagina", "Data", "DTInicial", "DTFinal" and "Total".
[[nodiscard]] ReportLayout leiaute();

/// The source's columns that it shows, from left to right.
[[nodiscard]] QStringList colunas();
inline constexpr char kValor[] = "valor";        ///< an amount, however the file keeps it
inline constexpr char kVencimento[] = "bompara"; ///< the one that bounced cheques don't have

/// The line that is drawn with the total: its name, and where it stands then, as wide as the total.
inline constexpr char kLinhaDoTotal[] = "total";
[[nodiscard]] QLineF linhaDoTotal();

/// The header that all of the shop's reports have: the title, the page ("Pagina"), and below them
/// the fields of the second line, on the left what it is about and on the right the date ("Data").
[[nodiscard]] ReportBand cabecalho(const std::vector<ReportField>& aEsquerda);
[[nodiscard]] TextLook aDireita(TextLook aspecto);

} // namespace LayoutDoRelatorio
