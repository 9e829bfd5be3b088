#include "print/preview/PageMarks.h"

#include <QPainter>

namespace {

const QColor kHit(0xff, 0xe0, 0x66);
const QColor kCurrentHit(0xff, 0xa8, 0x3d);
const QColor kCurrentFrame(0x8a, 0x3c, 0x00);
const QColor kMarked(0xb4, 0xd5, 0xfe);

} // namespace

void PageMarks::look(const QString& text, const std::optional<ReportHit>& hit) {
    text_ = text;
    hit_ = hit;
}

void PageMarks::forgetPlaces() {
    hit_.reset();
    selection_.clear();
}

void PageMarks::clear() {
    text_.clear();
    forgetPlaces();
}

QRectF PageMarks::placeOf(const ReportHit& hit) const {
    return report_.placeOf(hit.row, hit.field, hit.start, hit.length);
}

void PageMarks::paint(QPainter& painter, int page, qreal dotsPerMm) const {
    const auto inDots = [dotsPerMm](const QRectF& place) {
        return QRectF(place.topLeft() * dotsPerMm, place.size() * dotsPerMm);
    };
    for (const QRectF& place : selection_.placesOn(page))
        painter.fillRect(inDots(place), kMarked);
    for (const ReportHit& hit : hitsOnPage(report_, text_, page)) {
        const bool isCurrent = hit_ && hit_->row == hit.row && hit_->field == hit.field;
        // Not by its colour alone: the current one has a frame.
        painter.setPen(isCurrent ? QPen(kCurrentFrame, 1.5) : QPen(Qt::NoPen));
        painter.setBrush(isCurrent ? kCurrentHit : kHit);
        painter.drawRect(inDots(placeOf(hit)));
    }
    painter.setBrush(Qt::NoBrush);
}
