#include "samples/ShopReport.h"

#include <utility>

namespace {

const QStringList kNames = {"Padaria e Confeitaria Três Irmãos Ltda.",
                            "Maria Aparecida da Conceição",
                            "João Batista dos Santos",
                            "Comercial de Tecidos e Armarinhos Nossa Senhora da Penha Ltda. ME",
                            "Açougue São José",
                            "Antônio Gonçalves",
                            "Irmãos Magalhães Transportes"};
const QStringList kBanks = {"Banco do Norte", "Banco Comercial do Vale do Paraíba", "Caixa"};

ShopRow invented(qint64 row) {
    const QDate issued = QDate(2026, 1, 1).addDays(row % 365);
    return {QString("%1").arg(100000 + row % 900000, 6, 10, QChar('0')),
            kNames[row % kNames.size()] + (row % 3 == 0 ? QString(" %1").arg(row) : QString()),
            issued,
            inventedAmount(row),
            kBanks[row % kBanks.size()],
            issued.addDays(30)};
}

class Rows final : public RowSource {
public:
    using Row = std::function<ShopRow(qint64)>;
    Rows(qint64 count, Row row) : count_(count), row_(std::move(row)) {}

    [[nodiscard]] QStringList columns() const override { return LayoutDoRelatorio::colunas(); }
    NextRow next(std::vector<ReportValue>& values) override {
        if (at_ == count_)
            return NextRow::none;
        ShopRow row = row_(at_++);
        values = {row.number, row.client, row.date, row.amount, row.bank, row.due};
        return NextRow::row;
    }

private:
    qint64 count_;
    Row row_;
    qint64 at_ = 0;
};

} // namespace

std::unique_ptr<RowSource> inventedRows(qint64 count) {
    return std::make_unique<Rows>(count, invented);
}

Amount inventedAmount(qint64 row) { return {(row * 7919 % 1'500'000 + 1) * 100}; }

std::unique_ptr<RowSource> givenRows(std::vector<ShopRow> rows) {
    const auto count = static_cast<qint64>(rows.size());
    return std::make_unique<Rows>(count, [rows = std::move(rows)](qint64 row) {
        return rows[static_cast<std::size_t>(row)];
    });
}

ShopReport::ShopReport() {
    report.setLayout(LayoutDoRelatorio::leiaute());
    report.setTitle("Relatório de Cheques");
    connect(&report, &Relatorio::detail, this, [this](const ReportRow& row) {
        ++details;
        if (const auto* amount = std::get_if<Amount>(&row["valor"]))
            total = sum(total, *amount).value_or(total);
    });
    connect(&report, &Relatorio::startedOver, this, [this] {
        details = 0;
        total = {};
    });
    report.setComputedField([this](const QString& name, ReportValue& value) {
        if (name == "Pagina") {
            value = qint64{report.currentPage()};
        } else if (name == "Data") {
            value = today;
        } else if (name == "DTInicial") {
            value = first;
        } else if (name == "DTFinal") {
            value = last;
        } else if (name == "Total") {
            const QLineF line = LayoutDoRelatorio::linhaDoTotal();
            report.setLine(LayoutDoRelatorio::kLinhaDoTotal, line.p1(), line.p2());
            value = total;
        }
    });
}

bool ShopReport::begin(std::unique_ptr<RowSource> rows) {
    total = {};
    details = 0;
    return report.begin(std::move(rows));
}
