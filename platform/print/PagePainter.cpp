#include "print/PagePainter.h"

#include <QGuiApplication>
#include <QPainter>

#include <algorithm>
#include <string_view>

namespace {

constexpr qreal kPointsPerInch = 72;
constexpr qreal kLeastScale = 0.4;     ///< smaller than that nobody reads it
constexpr qsizetype kMostKnown = 4096; ///< texts whose widths are kept
constexpr std::u16string_view kFigures = u"0123456789/.,-";

QFont fontOf(int dots, bool bold) {
    QFont font;
    // The family the program has on the screens it is made for, which has all digits equally wide;
    // where it is missing, the program's own.
    font.setFamilies({"DejaVu Sans", QGuiApplication::font().family()});
    font.setPixelSize(dots);
    font.setBold(bold);
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

QRectF inDots(const QRectF& place) {
    return {place.topLeft() * PagePainter::kDotsPerMm, place.size() * PagePainter::kDotsPerMm};
}

bool standsOnComma(const ReportField& field) {
    return field.look.align == Qt::AlignRight && formatNamed(field.format) == ValueFormat::standard;
}

QPen penOf(const QColor& ink, qreal mm) {
    return {ink, mm * PagePainter::kDotsPerMm, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin};
}

} // namespace

PagePainter::Face::Face(int dots, bool bold)
    : font(fontOf(dots, bold)), metrics(font), afterComma(metrics.horizontalAdvance(",00")) {
    for (const char16_t figure : kFigures)
        figures_[figure] = metrics.horizontalAdvance(QChar(figure));
}

qreal PagePainter::Face::widthOf(const QString& text) const {
    qreal sum = 0;
    const bool onlyFigures = std::ranges::all_of(text, [&](QChar c) {
        const auto figure = figures_.find(c);
        sum += figure == figures_.end() ? 0 : *figure;
        return figure != figures_.end();
    });
    if (onlyFigures)
        return sum;
    if (const auto known = known_.find(text); known != known_.end())
        return *known;
    if (known_.size() >= kMostKnown)
        known_.clear();
    return known_[text] = metrics.horizontalAdvance(text);
}

PagePainter::PagePainter(const ReportLayout& layout) {
    for (const ReportBand* band :
         {&layout.pageHeader, &layout.columnHeadings, &layout.detail, &layout.footer})
        for (const ReportField& field : band->fields)
            if (standsOnComma(field))
                afterComma_ = std::max(afterComma_, face(field.look).afterComma);
}

const PagePainter::Face& PagePainter::face(const TextLook& look) {
    const int dots = std::max(1, qRound(look.points / kPointsPerInch * kDotsPerInch));
    const auto found = faces_.find({dots, look.bold});
    if (found != faces_.end())
        return found->second;
    return faces_.emplace(std::pair(dots, look.bold), Face(dots, look.bold)).first->second;
}

PagePainter::Line PagePainter::laid(const ReportField& field, const Face& face,
                                    const QString& text) const {
    const qreal room = field.place.width() * kDotsPerMm;
    QString line = text;
    qreal width = face.widthOf(line);
    if (standsOnComma(field) && width * kLeastScale < room) {
        // A figure that is cut could be taken for another: it is drawn smaller.
        if (width > room)
            return {line, 0, room / width};
        const qreal kept = text.contains(',') ? afterComma_ - face.afterComma : 0;
        return {line, std::max(0.0, room - kept - width)};
    }
    if (width > room) {
        line = face.metrics.elidedText(text, Qt::ElideRight, room);
        width = face.widthOf(line);
    }
    switch (field.look.align) {
    case Qt::AlignRight:
        return {line, room - width};
    case Qt::AlignHCenter:
        return {line, (room - width) / 2};
    default:
        return {line, 0};
    }
}

void PagePainter::draw(QPainter& painter, const ReportBand& band, QPointF corner,
                       const Texts& texts) {
    for (const ReportFrame& frame : band.frames) {
        painter.setPen(penOf(frame.ink, frame.width));
        painter.setBrush(frame.ground);
        painter.drawRect(inDots(frame.place).translated(corner));
    }
    for (const ReportLine& line : band.lines) {
        painter.setPen(penOf(line.ink, line.width));
        painter.drawLine(corner + line.from * kDotsPerMm, corner + line.to * kDotsPerMm);
    }
    for (std::size_t i = 0; i < texts.size(); ++i)
        if (!texts[i].isEmpty())
            drawText(painter, band.fields[i], corner, texts[i]);
}

void PagePainter::drawText(QPainter& painter, const ReportField& field, QPointF corner,
                           const QString& text) {
    const Face& used = face(field.look);
    const Line line = laid(field, used, text);
    const QRectF place = inDots(field.place).translated(corner);
    if (painter.font() != used.font)
        painter.setFont(used.font);
    if (painter.pen().color() != field.look.ink)
        painter.setPen(field.look.ink);
    // Capitals stand in the middle of the place: so the texts of a row share their base line.
    const QPointF baseLine(place.left() + line.left,
                           place.center().y() + used.metrics.capHeight() * line.scale / 2);
    if (line.scale == 1)
        return painter.drawText(baseLine, line.text);
    painter.save();
    painter.translate(baseLine);
    painter.scale(line.scale, line.scale);
    painter.drawText(QPointF(), line.text);
    painter.restore();
}

QRectF PagePainter::placeOf(const ReportField& field, const QString& text, qsizetype start,
                            qsizetype length) {
    const Face& used = face(field.look);
    const Line line = laid(field, used, text);
    if (line.text.first(std::min(start + length, line.text.size())) !=
        text.first(std::min(start + length, text.size())))
        return field.place;
    const auto at = [&](qsizetype character) {
        return line.left + used.metrics.horizontalAdvance(line.text.first(character)) * line.scale;
    };
    const qreal left = at(start);
    const qreal right = at(start + length);
    return {field.place.left() + left / kDotsPerMm, field.place.top(), (right - left) / kDotsPerMm,
            field.place.height()};
}
