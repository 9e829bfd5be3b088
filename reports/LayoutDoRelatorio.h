#pragma once

#include "print/ReportLayout.h"

#include <QLineF>
#include <QStringList>

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

} // namespace LayoutDoRelatorio
