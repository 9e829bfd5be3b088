#include "print/Relatorio.h"

#include "controls/Failure.h"
#include "print/PagePainter.h"

#include <QElapsedTimer>
#include <QPainter>

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

bool Relatorio::begin(std::unique_ptr<RowSource> source) {
    const Run run(*this);
    if (!run)
        return false;
    const QStringList columns = source->columns();
    if (const auto fault = faultOf(nextLayout_, columns)) {
        fail(*fault);
        return false;
    }
    std::vector<ReportValue> first(static_cast<std::size_t>(columns.size()));
    if (!source->next(first)) {
        fail(ReportError::nothingToPrint);
        return false;
    }

    slices_.stop();
    layout_ = nextLayout_;
    title_ = nextTitle_;
    painter_ = std::make_unique<PagePainter>(layout_);
    rowsPerPage_ = layout_.rowsPerPage();
    columns_ = columns;
    detailColumns_.clear();
    for (const ReportField& field : layout_.detail.fields)
        detailColumns_ += field.kind == FieldKind::column ? columnNamed(columns, field.name) : -1;
    rows_.clear(columns.size());
    row_ = std::move(first);
    source_ = std::move(source);
    complete_ = false;
    currentPage_ = 1;
    askFirst();
    takeIn();
    // One more than a page: whether there is a second one is known at once.
    while (rows_.size() <= rowsPerPage_ && takeRow()) {
    }
    if (source_)
        slices_.start();
    emit began();
    return true;
}

void Relatorio::askFirst() {
    firstAnswers_.clear();
    for (const ReportBand* band :
         {&layout_.pageHeader, &layout_.columnHeadings, &layout_.detail, &layout_.footer})
        for (const ReportField& field : band->fields)
            if (field.kind == FieldKind::computedFirst && computed_)
                computed_(field.name, firstAnswers_[field.name]);
}

bool Relatorio::takeRow() {
    // While it is read it isn't ours: if it throws, there is nothing more to take.
    auto source = std::move(source_);
    if (!source)
        return false;
    row_.assign(static_cast<std::size_t>(columns_.size()), {});
    if (!source->next(row_)) {
        complete_ = true;
        return false;
    }
    source_ = std::move(source);
    takeIn();
    return true;
}

void Relatorio::takeIn() {
    rows_.add(row_);
    emit detail(ReportRow(columns_, row_));
}

void Relatorio::takeSlice() {
    const Run run(*this);
    QElapsedTimer clock;
    clock.start();
    bool more = true;
    while (more && clock.elapsed() < kSliceMs)
        for (int i = 0; i < kRowsPerLook && more; ++i)
            more = takeRow();
    if (!more)
        slices_.stop();
    emit rowsTaken();
}

bool Relatorio::takeAll(const Run&, const ReportProgress& progress) {
    slices_.stop();
    while (source_) {
        for (int i = 0; i < kRowsPerLook && takeRow(); ++i) {
        }
        if (source_ && !progress(rows_.size(), 0)) {
            slices_.start();
            break;
        }
    }
    emit rowsTaken();
    return complete_;
}

int Relatorio::pageCount() const {
    if (rows_.size() == 0)
        return 0;
    const qint64 pages = (rows_.size() + rowsPerPage_ - 1) / rowsPerPage_;
    const auto onLast = static_cast<int>(rows_.size() - (pages - 1) * rowsPerPage_);
    return static_cast<int>(pages) + (complete_ && !layout_.footerFitsBelow(onLast) ? 1 : 0);
}

int Relatorio::pageOf(qint64 row) const { return static_cast<int>(row / rowsPerPage_) + 1; }

Relatorio::Rows Relatorio::rowsOf(int page) const {
    const qint64 first = static_cast<qint64>(page - 1) * rowsPerPage_;
    return {std::min(first, rows_.size()), std::min(first + rowsPerPage_, rows_.size())};
}

void Relatorio::setLine(const QString& name, QPointF from, QPointF to) {
    for (ReportBand* band :
         {&layout_.pageHeader, &layout_.columnHeadings, &layout_.detail, &layout_.footer})
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
        return written(title_);
    case FieldKind::computedFirst:
        return written(firstAnswers_.value(field.name));
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
    const ReportField& shownField = layout_.detail.fields[static_cast<std::size_t>(field)];
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
    qreal y = layout_.body().top();
    paintBand(painter, layout_.pageHeader, y);
    paintBand(painter, layout_.columnHeadings, y);
    paintDetails(painter, page, y);
    const Rows rows = rowsOf(page);
    if (complete_ && page == pageCount() &&
        layout_.footerFitsBelow(static_cast<int>(rows.end - rows.first)))
        paintBand(painter, layout_.footer, y);
    painter.restore();
}

void Relatorio::paintBand(QPainter& painter, const ReportBand& band, qreal& y) const {
    // All answers first: giving one may move a line of the band.
    PagePainter::Texts texts;
    for (const ReportField& field : band.fields)
        texts.push_back(textOf(field));
    const QPointF corner(layout_.body().left(), y);
    painter_->draw(painter, band, corner * PagePainter::kDotsPerMm, texts);
    y += band.height;
}

void Relatorio::paintDetails(QPainter& painter, int page, qreal& y) const {
    const ReportBand& band = layout_.detail;
    const Rows rows = rowsOf(page);
    PagePainter::Texts texts(band.fields.size());
    rows_.visit(rows.first, rows.end, [&](qint64, const std::vector<ReportValue>& values) {
        for (std::size_t i = 0; i < texts.size(); ++i)
            texts[i] = detailText(static_cast<qsizetype>(i), values);
        const QPointF corner(layout_.body().left(), y);
        painter_->draw(painter, band, corner * PagePainter::kDotsPerMm, texts);
        y += band.height;
        return true;
    });
}

QRectF Relatorio::placeOf(qint64 row, qsizetype field, qsizetype start, qsizetype length) const {
    const int page = pageOf(row);
    const QRectF body = layout_.body();
    const QPointF corner(body.left(),
                         body.top() + layout_.pageHeader.height + layout_.columnHeadings.height +
                             layout_.detail.height * static_cast<qreal>(row - rowsOf(page).first));
    QRectF place;
    rows_.visit(row, row + 1, [&](qint64, const std::vector<ReportValue>& values) {
        place = painter_->placeOf(layout_.detail.fields[static_cast<std::size_t>(field)],
                                  detailText(field, values), start, length);
        return false;
    });
    return place.translated(corner);
}
