#pragma once

#include "controls/box/DatePicker.h"
#include "controls/box/DropDownList.h"
#include "print/ReportFiles.h"
#include "reports/FrmFiltroRelat.h"
#include "reports/frmRel_ChequesSF.h"
#include "shell/Mirtal.h"
#include "support/Program.h"
#include "support/ShopTest.h"
#include "support/TemporaryFolder.h"

#include <QRegularExpression>

#include <gmock/gmock.h>

/// The filter of the reports, over two clients and two banks.
class ReportFilter : public Everywhere<ShopTest> {
protected:
    void SetUp() override {
        ShopTest::SetUp();
        given("cliente_fornecedor", {
                                        {{"nome", words("Maria")}, {"tipo", yes(true)}},
                                        {{"nome", words("João")}, {"tipo", yes(true)}},
        });
        given("bancos", {
                            {{"nome", words("Banco do Vale")}},
                            {{"nome", words("Caixa")}},
                        });
    }

    static FrmFiltroRelat& openFor(const QString& mode) {
        Mirtal::modo = mode;
        FrmFiltroRelat::mostrar();
        activate(FrmFiltroRelat::instance());
        return FrmFiltroRelat::instance();
    }
    static std::vector<std::string> entries(const QWidget& form, const QString& name) {
        const auto& list = control<DropDownList>(form, name);
        std::vector<std::string> texts;
        texts.reserve(static_cast<std::size_t>(list.count()));
        for (int i = 0; i < list.count(); ++i)
            texts.push_back(list.itemText(i).toStdString());
        return texts;
    }
    static void period(QWidget& form, const char* first, const char* last) {
        type(form, "txtdtinicial", first);
        type(form, "txtdtfinal", last);
    }
    static Relatorio& report() {
        return *frmRel_ChequesSF::instance().findChild<Relatorio*>("Relatorio");
    }
    /// The lines of the report on show, as another program reads them in its PDF; blanks count
    /// once.
    static std::vector<std::string> printed() {
        const TemporaryFolder folder;
        const std::filesystem::path pdf = folder / "relatorio.pdf";
        const SaveResult saved = savePdf(report(), QString::fromStdString(pdf.string()),
                                         [](qint64, qint64) { return true; });
        EXPECT_EQ(saved.outcome, SaveOutcome::saved) << saved.reason.toStdString();
        std::vector<std::string> lines;
        const QString all =
            QString::fromStdString(runProgram({"pdftotext", "-layout", pdf.string(), "-"}).out);
        for (const QString& line : all.split(QRegularExpression("[\n\f]"), Qt::SkipEmptyParts))
            if (!line.trimmed().isEmpty())
                lines.push_back(line.simplified().toStdString());
        return lines;
    }
    /// The rows of the report on show, a line each, all of them taken in.
    static std::vector<std::string> details() {
        Relatorio& shown = report();
        {
            const Relatorio::Run run(shown);
            EXPECT_EQ(shown.takeAll(run, [](qint64, qint64) { return true; }), RowsState::complete);
        }
        std::vector<std::string> lines;
        shown.rows().visit(0, shown.rows().size(),
                           [&](qint64, const std::vector<ReportValue>& row) {
                               QStringList texts;
                               for (qsizetype i = 0; i < shown.columns().size(); ++i)
                                   texts += shown.detailText(i, row);
                               lines.push_back(texts.join("|").toStdString());
                               return true;
                           });
        return lines;
    }
};

/// From the filter to the report: four received cheques, one bounced.
class ReportFromFilter : public ReportFilter {
protected:
    using ReportFilter::ReportFilter;
    void SetUp() override {
        ReportFilter::SetUp();
        given("cheques", {
                             cheque("000001", 1, 1, day(2026, 1, 10), day(2026, 3, 1), 10'000'000),
                             cheque("000002", 2, 1, day(2026, 1, 10), day(2026, 2, 1), 1'234'500),
                             cheque("000003", 1, 2, day(2026, 1, 31), day(2026, 2, 15), 500),
                             cheque("000004", 2, 2, day(2026, 2, 1), day(2026, 2, 10), 990'000),
                         });
        given("semfundos", {
                               {{"numero", words("900001")},
                                {"cliente", number(2)},
                                {"banco", number(1)},
                                {"data", day(2026, 1, 5)},
                                {"valor", jet::Currency{770'000}}},
        });
    }
    static Row cheque(const char* number_, int client, int bank, const jet::Value& issued,
                      const jet::Value& due, std::int64_t value) {
        return {
            {"numero",  words(number_)      },
            {"cliente", number(client)      },
            {"banco",   number(bank)        },
            {"data",    issued              },
            {"bompara", due                 },
            {"valor",   jet::Currency{value}},
        };
    }
    /// Prints January of 2026 with what else is typed.
    static void print(const QString& mode, const QString& client, const QString& bank,
                      const QString& order) {
        auto& form = openFor(mode);
        period(form, "01012026", "31012026");
        if (!client.isEmpty())
            type(form, "txtcliente", client);
        if (!bank.isEmpty())
            type(form, "txtbanco", bank);
        if (!order.isEmpty())
            type(form, "cmbordem", order);
        click(form, "CmdImprimir");
    }
};
