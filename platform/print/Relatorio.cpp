#include "print/Relatorio.h"

#include "controls/Failure.h"
#include "print/PagePainter.h"

#include <QElapsedTimer>
#include <QPainter>
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

int Relatorio::pageCount() const {
    if (rows().size() == 0)
        return 0;
    const qint64 pages = (rows().size() + shown_.rowsPerPage - 1) / shown_.rowsPerPage;
    const auto onLast = static_cast<int>(rows().size() - (pages - 1) * shown_.rowsPerPage);
    return static_cast<int>(pages) +
           (isComplete() && !shown_.layout.footerFitsBelow(onLast) ? 1 : 0);
}

int Relatorio::pageOf(qint64 row) const { return static_cast<int>(row / shown_.rowsPerPage) + 1; }

Relatorio::Rows Relatorio::rowsOf(int page) const {
    const qint64 first = static_cast<qint64>(page - 1) * shown_.rowsPerPage;
    return {std::min(first, rows().size()), std::min(first + shown_.rowsPerPage, rows().size())};
}

void Relatorio::setLine(const QString& name, QPointF from, QPointF to) {
    for (ReportBand* band : {&shown_.layout.pageHeader, &shown_.layout.columnHeadings,
                             &shown_.layout.detail, &shown_.layout.footer})
        for (ReportLine& line : band->lines)
            if (line.name == name) {
                line.from = from;
                line.to = to;
            }
}

QString Relatorio::textOf(const ReportField& field) const {
    const auto written = [&](const ReportValue& value) {
        return shown(value, formatNamed(field.format).value_or(ValueFormat::general));
    };
    switch (field.kind) {
    case FieldKind::text:
        return field.name;
    case FieldKind::title:
        return written(shown_.title);
    case FieldKind::computedFirst:
        return written(shown_.firstAnswers.value(field.name));
    case FieldKind::computed: {
        ReportValue value;
        if (computed_)
            computed_(field.name, value);
        return written(value);
    }
    case FieldKind::column:
        break; // of a row, see detailText()
    }
    return {};
}

QString Relatorio::detailText(qsizetype field, const std::vector<ReportValue>& row) const {
    const ReportField& shownField = shown_.layout.detail.fields[static_cast<std::size_t>(field)];
    const qsizetype column = columnOf(field);
    if (column < 0)
        return textOf(shownField);
    return shown(row[static_cast<std::size_t>(column)],
                 formatNamed(shownField.format).value_or(ValueFormat::general));
}

void Relatorio::paintPage(QPainter& painter, int page, qreal dotsPerInch) {
    Q_ASSERT(page >= 1 && page <= pageCount());
    currentPage_ = page;
    painter.save();
    painter.scale(dotsPerInch / PagePainter::kDotsPerInch, dotsPerInch / PagePainter::kDotsPerInch);
    qreal y = shown_.layout.body().top();
    paintBand(painter, shown_.layout.pageHeader, y);
    paintBand(painter, shown_.layout.columnHeadings, y);
    paintDetails(painter, page, y);
    const Rows rows = rowsOf(page);
    if (isComplete() && page == pageCount() &&
        shown_.layout.footerFitsBelow(static_cast<int>(rows.end - rows.first)))
        paintBand(painter, shown_.layout.footer, y);
    painter.restore();
}

void Relatorio::paintBand(QPainter& painter, const ReportBand& band, qreal& y) const {
    // All answers first: giving one may move a line of the band.
    PagePainter::Texts texts;
    for (const ReportField& field : band.fields)
        texts.push_back(textOf(field));
    const QPointF corner(shown_.layout.body().left(), y);
    shown_.painter->draw(painter, band, corner * PagePainter::kDotsPerMm, texts);
    y += band.height;
}

void Relatorio::paintDetails(QPainter& painter, int page, qreal& y) const {
    const ReportBand& band = shown_.layout.detail;
    const Rows rows = rowsOf(page);
    PagePainter::Texts texts(band.fields.size());
    shown_.rows.visit(rows.first, rows.end, [&](qint64, const std::vector<ReportValue>& values) {
        for (std::size_t i = 0; i < texts.size(); ++i)
            texts[i] = detailText(static_cast<qsizetype>(i), values);
        const QPointF corner(shown_.layout.body().left(), y);
        shown_.painter->draw(painter, band, corner * PagePainter::kDotsPerMm, texts);
        y += band.height;
        return true;
    });
}

QRectF Relatorio::placeOf(qint64 row, qsizetype field, qsizetype start, qsizetype length) const {
    const int page = pageOf(row);
    const QRectF body = shown_.layout.body();
    const QPointF corner(body.left(), body.top() + shown_.layout.pageHeader.height +
                                          shown_.layout.columnHeadings.height +
                                          shown_.layout.detail.height *
                                              static_cast<qreal>(row - rowsOf(page).first));
    QRectF place;
    rows().visit(row, row + 1, [&](qint64, const std::vector<ReportValue>& values) {
        place =
            shown_.painter->placeOf(shown_.layout.detail.fields[static_cast<std::size_t>(field)],
                                    detailText(field, values), start, length);
        return false;
    });
    return place.translated(corner);
}
