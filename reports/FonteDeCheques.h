#pragma once

#include "ado/Connection.h"
#include "ado/Recordset.h"
#include "print/ReportRows.h"
#include "print/RowSource.h"
#include "reports/Relatorios.h"

/// The rows that a report's statement selects, in its columns, all of one state of the file,
/// however long the report takes to ask for them.
///
/// They are read in short parts, between which other stations save. When somebody has, this program
/// too, the rows begin anew. If that goes on, all of them are read in one part at last, in which
/// nobody can save.
class FonteDeCheques final : public RowSource {
public:
    /// How often the rows are asked for before they are read in one part.
    static constexpr int kVezes = 3;

    /// Opens the statement. @throws jet::Error.
    FonteDeCheques(const Relatorios::Escolha& escolha, ado::Connection& conexao);

    [[nodiscard]] QStringList columns() const override;
    /// There are no more rows, too, once the program has closed its data.
    NextRow next(std::vector<ReportValue>& values) override;

private:
    [[nodiscard]] bool ler();
    void recomecar();
    void lerParte();
    void lerLinha(std::vector<ReportValue>& linha) const;

    ado::Connection& conexao_;
    ado::Recordset rs_;
    std::vector<std::optional<ado::FieldValue>> campos_; ///< by column; none: it stays empty
    std::size_t valor_;                                  ///< the column of amounts
    std::uint64_t estado_ = 0; ///< of the file, by its generation, when the rows were asked for
    int vezes_ = 1;            ///< that they were
    bool primeira_ = true;     ///< no row has been read
    bool fim_ = false;         ///< the last one has
    bool inteira_ = true;      ///< the part was read to its end

    ReportRows parte_;
    qint64 proxima_ = 0;                            ///< of the part's rows
    std::vector<std::vector<ReportValue>> abertas_; ///< some of them, that one among them
};
