#include "print/PageView.h"

#include "controls/look/Spoken.h"

#include <QPainter>
#include <QResizeEvent>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace {

constexpr int kGap = 14; ///< around pages, in pixels
constexpr int kLine = 40;
constexpr qreal kMmPerInch = 25.4;

} // namespace

PageView::PageView(Relatorio& report, QWidget* parent)
    : QAbstractScrollArea(parent), report_(report), marks_(report) {
    connect(this, &PageView::pageChanged, this, [this] {
        if (!isHeard())
            return;
        // Said at once, unlike the text, which is read when it is wanted.
        describe(*this, QString("Página %1").arg(page_));
        tellText(*this, spokenPage());
    });
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName("Páginas do relatório");
    viewport()->setBackgroundRole(QPalette::Mid);
    viewport()->setAutoFillBackground(true);
    horizontalScrollBar()->setSingleStep(kLine);
    verticalScrollBar()->setSingleStep(kLine);
    connect(&report_, &Relatorio::began, this, &PageView::reset);
    connect(&report_, &Relatorio::rowsTaken, this, &PageView::rowsCame);
    connect(&report_, &Relatorio::rowsReplaced, this, &PageView::rowsReplaced);
    reset();
}

qreal PageView::dotsPerInch() const { return logicalDpiX() * scale_; }

QSize PageView::pageSize() const {
    return (report_.layout().page / kMmPerInch * dotsPerInch()).toSize();
}

int PageView::pitch() const { return pageSize().height() + kGap; }

int PageView::topOf(int page) const { return (page - 1) * pitch(); }

int PageView::pageAt(int height) const { return std::clamp(height / pitch() + 1, 1, pages_); }

int PageView::percent() const { return qRound(scale_ * 100); }

QString PageView::spokenPage() const {
    if (report_.pageCount() == 0)
        return {};
    QString page;
    qreal line = -1;
    for (const Relatorio::Text& text : report_.textsOf(page_)) {
        // Side by side is one line; a heading's text may stand a little higher than its value.
        const qreal middle = text.place().center().y();
        if (!page.isEmpty())
            page += std::abs(middle - line) < text.place().height() / 2 ? u' ' : u'\n';
        line = middle;
        page += text.text;
    }
    return page;
}

QSize PageView::sizeHint() const { return {860, 640}; }

QRect PageView::pageRect(int page) const {
    const QSize size = pageSize();
    const int room = viewport()->width() - size.width();
    const int left = room > 0 ? room / 2 : kGap - horizontalScrollBar()->value();
    return {QPoint(left, kGap + topOf(page) - verticalScrollBar()->value()), size};
}

std::optional<TextSelection::Point> PageView::pointAt(QPoint point) const {
    if (pages_ == 0)
        return std::nullopt;
    const int page = pageAt(verticalScrollBar()->value() + point.y());
    const QPointF inDots = point - pageRect(page).topLeft();
    return TextSelection::Point{page, inDots / dotsPerInch() * kMmPerInch};
}

void PageView::markAll() {
    marks_.selection().markAll();
    viewport()->update();
}

void PageView::reset() {
    marks_.clear();
    pages_ = report_.pageCount();
    refit();
    updateRanges();
    goToPage(1);
    viewport()->update();
}

void PageView::rowsCame() {
    const int pages = report_.pageCount();
    // The page that was the last has filled up, or gave rows to the one with the footer.
    const bool ended = report_.state() != RowsState::coming;
    if (ended || (pages_ > 0 && pageRect(pages_).intersects(viewport()->rect())))
        viewport()->update();
    if (ended && !selection().isAll())
        selection().clear();
    if (pages != pages_ || ended) {
        pages_ = pages;
        updateRanges();
        emit pageChanged();
    }
}

/// The operator stays on the page, or on the last, if there are fewer now.
void PageView::rowsReplaced() {
    marks_.forgetPlaces();
    pages_ = report_.pageCount();
    updateRanges();
    if (page_ > pages_)
        goToPage(pages_);
    viewport()->update();
}

void PageView::updateRanges() {
    const QSize size = pageSize();
    const QSize room = viewport()->size();
    const QScopedValueRollback going(going_, true);
    verticalScrollBar()->setPageStep(seenAtOnce());
    verticalScrollBar()->setRange(0, std::max(0, kGap + topOf(pages_ + 1) - room.height()));
    horizontalScrollBar()->setPageStep(room.width());
    horizontalScrollBar()->setRange(
        0, size.width() > room.width() ? size.width() + 2 * kGap - room.width() : 0);
}

void PageView::goTo(int page, int height) {
    page_ = page;
    {
        const QScopedValueRollback going(going_, true);
        verticalScrollBar()->setValue(height);
    }
    emit pageChanged();
}

void PageView::goToPage(int page) {
    const int nearest = std::clamp(page, 1, std::max(1, pages_));
    goTo(nearest, topOf(nearest));
}

int PageView::seenAtOnce() const {
    const int whole = (viewport()->height() - kGap) / pitch();
    return whole > 0 ? whole * pitch() : std::max(kLine, viewport()->height() - kLine);
}

void PageView::turn(int times) {
    verticalScrollBar()->setValue(verticalScrollBar()->value() + times * seenAtOnce());
}

/// Where the scroll bar stands when the last page is seen from its top, or as far down as its last
/// text needs.
int PageView::endOfText() const {
    if (pages_ == 0)
        return 0;
    const qreal foot = report_.textsOf(pages_).back().place().bottom() / kMmPerInch * dotsPerInch();
    const int top = topOf(pages_);
    const int needed = top + kGap + qRound(foot) + kLine - viewport()->height();
    return std::min(std::max(top, needed), verticalScrollBar()->maximum());
}

bool PageView::isAtEnd() const { return verticalScrollBar()->value() >= endOfText(); }

void PageView::goToEnd() { goTo(std::max(1, pages_), endOfText()); }

void PageView::scrollContentsBy(int, int) {
    viewport()->update();
    if (going_ || pages_ == 0)
        return;
    const int page = pageAt(verticalScrollBar()->value() + viewport()->height() / 3);
    if (page == page_)
        return;
    page_ = page;
    emit pageChanged();
}

void PageView::setScale(qreal scale) {
    scale = std::clamp(scale, kLeastPercent / 100.0, kMostPercent / 100.0);
    if (qFuzzyCompare(scale, scale_)) {
        updateRanges();
        return;
    }
    // What stands in the upper left corner stays there.
    const qreal at = static_cast<qreal>(verticalScrollBar()->value()) / pitch();
    scale_ = scale;
    updateRanges();
    const QScopedValueRollback going(going_, true);
    verticalScrollBar()->setValue(qRound(at * pitch()));
    viewport()->update();
    emit zoomChanged();
}

void PageView::setZoom(int percent) {
    zoom_ = Zoom::percent;
    setScale(percent / 100.0);
    emit zoomChanged();
}

void PageView::fit(Zoom zoom) {
    zoom_ = zoom;
    refit();
    if (zoom == Zoom::page)
        goToPage(page_);
    emit zoomChanged();
}

void PageView::refit() {
    if (zoom_ == Zoom::percent)
        return updateRanges();
    const QSizeF natural = report_.layout().page / kMmPerInch * logicalDpiX();
    // Half a pixel less than there is, so that rounding brings no scroll bar.
    const qreal wide = (viewport()->width() - 2 * kGap - 0.5) / natural.width();
    const qreal high = (viewport()->height() - 2 * kGap - 0.5) / natural.height();
    setScale(zoom_ == Zoom::page ? std::min(wide, high) : wide);
}

void PageView::resizeEvent(QResizeEvent* event) {
    QAbstractScrollArea::resizeEvent(event);
    refit();
    if (zoom_ == Zoom::page)
        goToPage(page_);
}

void PageView::wheelEvent(QWheelEvent* event) {
    if (!(event->modifiers() & Qt::ControlModifier))
        return QAbstractScrollArea::wheelEvent(event);
    if (event->angleDelta().y() != 0)
        emit zoomAsked(event->angleDelta().y() > 0 ? 1 : -1);
    event->accept();
}

void PageView::mark(const QString& text, const std::optional<ReportHit>& hit) {
    marks_.look(text, hit);
    if (hit)
        showHit(*hit);
    viewport()->update();
}

void PageView::showHit(const ReportHit& hit) {
    const int page = report_.pageOf(hit.row);
    const QRectF place = marks_.placeOf(hit);
    const qreal dots = dotsPerInch() / kMmPerInch;
    const QRect rect = QRectF(place.topLeft() * dots, place.size() * dots)
                           .translated(pageRect(page).topLeft())
                           .toAlignedRect()
                           .adjusted(-kLine, -kLine, kLine, kLine);
    const QScopedValueRollback going(going_, true);
    const QRect seen = viewport()->rect();
    if (rect.top() < seen.top() || rect.bottom() > seen.bottom())
        verticalScrollBar()->setValue(verticalScrollBar()->value() + rect.center().y() -
                                      seen.center().y());
    if (rect.left() < seen.left() || rect.right() > seen.right())
        horizontalScrollBar()->setValue(horizontalScrollBar()->value() + rect.center().x() -
                                        seen.center().x());
    page_ = page;
    emit pageChanged();
}

void PageView::paintEvent(QPaintEvent* event) {
    QPainter painter(viewport());
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    const int top = verticalScrollBar()->value() + event->rect().top();
    for (int page = std::max(1, top / pitch()); page <= pages_; ++page) {
        const QRect rect = pageRect(page);
        if (rect.top() > event->rect().bottom())
            break;
        if (rect.intersects(event->rect()))
            paintOne(painter, page);
    }
}

void PageView::paintOne(QPainter& painter, int page) {
    const QRect rect = pageRect(page);
    painter.fillRect(rect.translated(2, 3), QColor(0, 0, 0, 50));
    painter.fillRect(rect, Qt::white);
    painter.save();
    painter.setClipRect(rect, Qt::IntersectClip);
    painter.translate(rect.topLeft());
    marks_.paint(painter, page, dotsPerInch() / kMmPerInch);
    report_.paintPage(painter, page, dotsPerInch());
    painter.restore();
}

#include "print/moc_PageView.cpp"
