#pragma once

#include "ado/Recordset.h"
#include "print/RowSource.h"
#include "reports/Relatorios.h"

/// The rows that a report's statement selects, in its columns.
class FonteDeCheques final : public RowSource {
public:
    /// Opens the statement. @throws jet::Error.
    FonteDeCheques(const Relatorios::Escolha& escolha, ado::Connection& conexao);

    [[nodiscard]] QStringList columns() const override;
    /// There are no more rows, too, once the program has closed its data.
    NextRow next(std::vector<ReportValue>& values) override;

private:
    ado::Recordset rs_;
    std::vector<std::optional<ado::FieldValue>> campos_; ///< by column; none: it stays empty
    bool primeira_ = true;
};
