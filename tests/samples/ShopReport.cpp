#include "samples/ShopReport.h"

#include <array>
#include <utility>

namespace {

const QColor kHairline(0xc8, 0xcf, 0xd1);

const TextLook kText = {8};
constexpr qreal kGap = 4;
constexpr qreal kTextHeight = 4.2;
constexpr qreal kWidth = 180;

TextLook right(TextLook look) {
    look.align = Qt::AlignRight;
    return look;
}

ReportBand header() {
    const TextLook look = {9};
    ReportBand band = {22};
    band.frames = {{{0, 0, kWidth, 19}}};
    band.lines = {
        {"", {0, 11}, {kWidth, 11}}
    };
    band.fields = {
        {FieldKind::title,         "",                       {4, 1.5, 120, 8},  {14, true}                      },
        {FieldKind::text,          "Página:",               {130, 3, 22, 5},   right(look)                     },
        {FieldKind::computed,      "Pagina",                 {153, 3, 23, 5},   right(look)                     },
        {FieldKind::text,          "Referente ao período:", {4, 12.5, 37, 5},  look                            },
        {FieldKind::computedFirst, "DTInicial",              {42, 12.5, 20, 5}, look,                             "Short Date"},
        {FieldKind::text,                        "a",                                  {62, 12.5, 3, 5},                         look       },
        {FieldKind::computedFirst,                        "DTFinal",                         {66, 12.5, 20, 5},          look,"Short Date"},
        {FieldKind::text,            "Data:",                                    {130, 12.5, 22, 5},                                       right(look)                                                           },
        {FieldKind::computedFirst,             "Data",                                     {153, 12.5, 23, 5},right(look)},
    };
    return band;
}

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

    [[nodiscard]] QStringList columns() const override { return shopColumns(); }
    bool next(std::vector<ReportValue>& values) override {
        if (at_ == count_)
            return false;
        ShopRow row = row_(at_++);
        values = {row.number, row.client, row.date, row.amount, row.bank, row.due};
        return true;
    }

private:
    qint64 count_;
    Row row_;
    qint64 at_ = 0;
};

} // namespace

ReportLayout shopLayout() {
    static const std::array<ReportColumn, 6> kColumns = {
        {{"Cheque", "numero", 16},
         {"Nome", "Cliente_Fornecedor.nome", 56},
         {"Dt. Emissão", "data", 21, Qt::AlignHCenter},
         {"Valor Cheque", "valor", 24, Qt::AlignRight, "Standard"},
         {"Banco", "bancos.nome", 25},
         {"Bom Para", "bompara", 18, Qt::AlignHCenter}}
    };
    ReportLayout layout;
    layout.pageHeader = header();
    layout.columnHeadings = {7};
    layout.columnHeadings.lines = {
        {"", {0, 6.6}, {kWidth, 6.6}, 0.35}
    };
    layout.detail = {5.2};
    layout.detail.lines = {
        {"", {0, 5.1}, {kWidth, 5.1}, 0.1, kHairline}
    };
    addColumns(layout, kColumns, kGap, kTextHeight, {8, true}, kText);
    layout.footer = {9};
    layout.footer.lines = {
        {"total", {0, 1}, {kWidth, 1}, 0.35}
    };
    layout.footer.fields = {
        {FieldKind::text, "Total:",         {61, 2.5, 20, 5}, right({8, true})},
        { FieldKind::computed,        "Total", {83, 2.5, 46, 5}, right({8, true}),       "Standard"},
    };
    return layout;
}

QStringList shopColumns() {
    return {"numero", "cliente_fornecedor.nome", "data", "valor", "bancos.nome", "bompara"};
}

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
    report.setLayout(shopLayout());
    report.setTitle("Relatório de Cheques");
    connect(&report, &Relatorio::detail, this, [this](const ReportRow& row) {
        ++details;
        if (const auto* amount = std::get_if<Amount>(&row["valor"]))
            total.tenThousandths += amount->tenThousandths;
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
            report.setLine("total", {81, 1}, {129, 1});
            value = total;
        }
    });
}

bool ShopReport::begin(std::unique_ptr<RowSource> rows) {
    total = {};
    details = 0;
    return report.begin(std::move(rows));
}
