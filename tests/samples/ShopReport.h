#pragma once

#include "print/Relatorio.h"
#include "reports/LayoutDoRelatorio.h"

#include <memory>

/// The shop's report of cheques as its window lays it out, over rows that are invented or given.

/// A row of its columns, null where not given.
struct ShopRow {
    ReportValue number = {};
    ReportValue client = {};
    ReportValue date = {};
    ReportValue amount = {};
    ReportValue bank = {};
    ReportValue due = {};
};

/// `count` invented rows, always the same.
[[nodiscard]] std::unique_ptr<RowSource> inventedRows(qint64 count);
/// The amount of an invented row.
[[nodiscard]] Amount inventedAmount(qint64 row);
[[nodiscard]] std::unique_ptr<RowSource> givenRows(std::vector<ShopRow> rows);

/// What the report's window does: keeps the running total, answers the computed fields.
class ShopReport final : public QObject {
public:
    ShopReport();

    /// Begins it with the title "Relatório de Cheques"; the total starts from nothing.
    bool begin(std::unique_ptr<RowSource> rows);

    Relatorio report;
    QDate first{2026, 1, 1};
    QDate last{2026, 12, 31};
    QDate today{2026, 11, 20};
    Amount total;
    qint64 details = 0; ///< how many detail events came of these rows
};
