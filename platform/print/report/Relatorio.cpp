#include "print/Relatorio.h"

#include "controls/window/Failure.h"
#include "print/report/PagePainter.h"

#include <QElapsedTimer>
#include <QScopeGuard>

#include <algorithm>
#include <utility>

namespace {

constexpr qint64 kSliceMs = 8;
constexpr int kRowsPerLook = 64; ///< taken in between looks at the clock

bool& isAtWork() {
    static bool atWork = false;
    return atWork;
}

} // namespace

Relatorio::Run::Run(Relatorio& report) : begun_(!std::exchange(isAtWork(), true)) {
    if (!begun_)
        report.fail(ReportError::alreadyRunning);
}

Relatorio::Run::~Run() {
    if (begun_)
        isAtWork() = false;
}

Relatorio::Relatorio(QObject* parent) : QObject(parent) {
    connect(&slices_, &QTimer::timeout, this, [this] {
        if (!isAtWork())
            guarded([this] { takeSlice(); });
    });
}

Relatorio::~Relatorio() = default;

void Relatorio::fail(ReportError code) { emit error(errorCode(code)); }

Relatorio::Content::Content() = default;
Relatorio::Content::Content(Content&&) noexcept = default;
Relatorio::Content& Relatorio::Content::operator=(Content&&) noexcept = default;
Relatorio::Content::~Content() = default;

Relatorio::Content Relatorio::contentOver(std::unique_ptr<RowSource> source) const {
    Content report;
    report.layout = nextLayout_;
    report.title = nextTitle_;
    report.painter = std::make_unique<PagePainter>(report.layout);
    report.rowsPerPage = report.layout.rowsPerPage();
    report.columns = source->columns();
    for (const ReportField& field : report.layout.detail.fields)
        report.detailColumns +=
            field.kind == FieldKind::column ? columnNamed(report.columns, field.name) : -1;
    for (const ReportBand* band : {&report.layout.pageHeader, &report.layout.columnHeadings,
                                   &report.layout.detail, &report.layout.footer})
        for (const ReportField& field : band->fields)
            if (field.kind == FieldKind::computedFirst && computed_)
                computed_(field.name, report.firstAnswers[field.name]);
    report.rows.clear(report.columns.size());
    report.source = std::move(source);
    report.state = RowsState::coming;
    return report;
}

bool Relatorio::begin(std::unique_ptr<RowSource> source) {
    const Run run(*this);
    if (!run)
        return false;
    if (const auto fault = faultOf(nextLayout_, source->columns())) {
        fail(*fault);
        return false;
    }
    // Beside the one on show, which stays if this fails.
    Content next = contentOver(std::move(source));
    // One more than a page: whether there is a second one is known at once.
    while (next.state == RowsState::coming && next.rows.size() <= next.rowsPerPage)
        takeRow(next);
    if (next.rows.size() == 0) {
        fail(ReportError::nothingToPrint);
        return false;
    }
    slices_.stop();
    shown_ = std::move(next);
    currentPage_ = 1;
    if (state() == RowsState::coming)
        slices_.start();
    emit began();
    return true;
}

void Relatorio::takeRow(Content& report) {
    try {
        takeNext(report);
    } catch (...) {
        report.state = RowsState::failed;
        report.source.reset();
        report.again.reset();
        throw;
    }
    if (report.state == RowsState::complete)
        report.source.reset();
    if (!report.again ||
        (report.state == RowsState::coming && report.again->size() <= report.rows.size()))
        return;
    report.rows = *std::exchange(report.again, std::nullopt);
    if (&report == &shown_)
        emit rowsReplaced();
}

void Relatorio::takeNext(Content& report) {
    row_.assign(static_cast<std::size_t>(report.columns.size()), {});
    switch (report.source->next(row_)) {
    case NextRow::row:
        (report.again ? *report.again : report.rows).add(row_);
        emit detail(ReportRow(report.columns, row_));
        return;
    case NextRow::none:
        report.state = RowsState::complete;
        return;
    case NextRow::anew:
        report.again.emplace().clear(report.columns.size());
        emit startedOver();
        return;
    }
}

void Relatorio::takeSlice() {
    const Run run(*this);
    QElapsedTimer clock;
    clock.start();
    const auto tellAtEnd = qScopeGuard([this] { endSlices(); });
    while (state() == RowsState::coming && clock.elapsed() < kSliceMs)
        for (int i = 0; i < kRowsPerLook && state() == RowsState::coming; ++i)
            takeRow(shown_);
}

/// Also when the source has thrown.
void Relatorio::endSlices() {
    if (state() != RowsState::coming)
        slices_.stop();
    emit rowsTaken();
}

RowsState Relatorio::takeAll(const Run&, const ReportProgress& progress) {
    const auto tellAtEnd = qScopeGuard([this] { endSlices(); });
    while (state() == RowsState::coming) {
        for (int i = 0; i < kRowsPerLook && state() == RowsState::coming; ++i)
            takeRow(shown_);
        if (state() == RowsState::coming && !progress(taken(), 0))
            break;
    }
    return state();
}

#include "print/moc_Relatorio.cpp"
