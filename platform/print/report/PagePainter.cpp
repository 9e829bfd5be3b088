#include "print/report/PagePainter.h"

#include <QGlyphRun>
#include <QPainter>
#include <QTextBoundaryFinder>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr qreal kPointsPerInch = 72;
constexpr qreal kLeastScale = 0.5;     ///< smaller than that nobody reads a name
constexpr qsizetype kMostDrawn = 1000; ///< characters that two lines can have at most

QRectF inDots(const QRectF& place) {
    return {place.topLeft() * PagePainter::kDotsPerMm, place.size() * PagePainter::kDotsPerMm};
}

bool standsOnComma(const ReportField& field) {
    return field.look.align == Qt::AlignRight && formatNamed(field.format) == ValueFormat::standard;
}

/// What is never cut: cut, it could be taken for another.
bool isNumber(const QString& text) {
    return std::ranges::none_of(text, [](QChar c) { return c.isLetter() || c.isSurrogate(); });
}

/// Where the second of two lines begins: behind the blank nearest to the middle, or else in it.
qsizetype middleOf(const QString& text) {
    const qsizetype middle = text.size() / 2;
    const qsizetype before = text.lastIndexOf(' ', middle) + 1;
    const qsizetype after = text.indexOf(' ', middle) + 1;
    const bool late = after > 0 && (before <= 1 || after - middle < middle - before);
    if (const qsizetype blank = late ? after : before; blank > 1 && blank < text.size())
        return blank;
    QTextBoundaryFinder letters(QTextBoundaryFinder::Grapheme, text);
    letters.setPosition(middle);
    return letters.isAtBoundary() ? middle : std::max<qsizetype>(0, letters.toPreviousBoundary());
}

QString withoutEnd(const QString& text, qsizetype end) {
    const QString line = text.first(end);
    return line.endsWith(' ') ? line.chopped(1) : line;
}

QPen penOf(const QColor& ink, qreal mm) {
    return {ink, mm * PagePainter::kDotsPerMm, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin};
}

} // namespace

PagePainter::PagePainter(const ReportLayout& layout) {
    for (const ReportBand* band :
         {&layout.pageHeader, &layout.columnHeadings, &layout.detail, &layout.footer})
        for (const ReportField& field : band->fields)
            if (standsOnComma(field))
                afterComma_ = std::max(afterComma_, face(field.look).afterComma);
}

const PrintFace& PagePainter::face(const TextLook& look) {
    const int dots = std::max(1, qRound(look.points / kPointsPerInch * kDotsPerInch));
    const auto found = faces_.find({dots, look.bold});
    if (found != faces_.end())
        return found->second;
    return faces_.emplace(std::pair(dots, look.bold), PrintFace(dots, look.bold)).first->second;
}

PagePainter::Laid PagePainter::laid(const ReportField& field, const PrintFace& face,
                                    const QString& text) const {
    const qreal room = field.place.width() * kDotsPerMm;
    const qreal width = face.widthOf(text);
    if (width <= room)
        return placed(field, face, {.lines = {{.text = text}}});
    const qreal onOne = room / width;
    if (standsOnComma(field))
        return placed(field, face, {.lines = {{.text = text}}, .scale = onOne});

    const qreal high = field.place.height() * kDotsPerMm / (2 * face.metrics.height());
    const qsizetype middle = middleOf(text);
    const QString first = withoutEnd(text, middle);
    const QString second = text.sliced(middle);
    const qreal onTwo =
        std::min({1.0, high, room / std::max(face.widthOf(first), face.widthOf(second))});
    if (std::max(onOne, onTwo) >= kLeastScale || isNumber(text)) {
        if (onOne >= onTwo)
            return placed(field, face, {.lines = {{.text = text}}, .scale = onOne});
        return placed(
            field, face,
            {
                .lines = {{.text = first}, {.text = second, .start = middle}},
                  .scale = onTwo
        });
    }

    // What nobody could read: as much of it as can be.
    const QString drawn = text.first(std::min(text.size(), kMostDrawn));
    const qreal most = room / kLeastScale;
    const auto shortened = [&](const QString& line) {
        return face.metrics.elidedText(line, Qt::ElideRight, most);
    };
    const QString whole = shortened(drawn);
    const qsizetype blank = whole.lastIndexOf(' ');
    if (high < kLeastScale || blank <= 0)
        return placed(field, face, {.lines = {{.text = whole}}, .scale = kLeastScale});
    return placed(field, face,
                  {
                      .lines = {{.text = drawn.first(blank)},
                                {.text = shortened(drawn.sliced(blank + 1)), .start = blank + 1}},
                      .scale = kLeastScale
    });
}

/// Each line where its alignment wants it, one below the other around the middle.
PagePainter::Laid PagePainter::placed(const ReportField& field, const PrintFace& face,
                                      Laid laid) const {
    const qreal room = field.place.width() * kDotsPerMm;
    const qreal pitch = face.metrics.height() * laid.scale;
    // Capitals stand in the middle of the place: so the texts of a row share their base line.
    qreal below = face.metrics.capHeight() * laid.scale / 2 -
                  pitch * static_cast<qreal>(laid.lines.size() - 1) / 2;
    for (Laid::Line& line : laid.lines) {
        const qreal free = std::max(0.0, room - face.widthOf(line.text) * laid.scale);
        if (standsOnComma(field)) {
            const qreal kept =
                laid.scale < 1 || !line.text.contains(',') ? 0 : afterComma_ - face.afterComma;
            line.left = std::max(0.0, free - kept);
        } else if (field.look.align == Qt::AlignRight) {
            line.left = free;
        } else if (field.look.align == Qt::AlignHCenter) {
            line.left = free / 2;
        }
        line.below = below;
        below += pitch;
    }
    return laid;
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
            addText(band.fields[i], corner, texts[i]);
}

void PagePainter::addText(const ReportField& field, QPointF corner, const QString& text) {
    const PrintFace& used = face(field.look);
    const Laid laidText = laid(field, used, text);
    const QRectF place = inDots(field.place).translated(corner);
    for (const Laid::Line& line : laidText.lines)
        addLine(used, field.look.ink, {place.left() + line.left, place.center().y() + line.below},
                line.text, laidText.scale);
}

void PagePainter::addLine(const PrintFace& face, const QColor& ink, QPointF baseLine,
                          const QString& text, qreal scale) {
    const bool plain = face.isPlain(text);
    if (!plain || scale != 1) {
        waiting_.push_back({&face, ink, baseLine, scale});
        if (plain)
            waiting_.back().append({}, text);
        else
            waiting_.back().shaped = text;
        return;
    }
    // All of one look that follow each other are drawn as one.
    const auto goesOn = [&](const Run& run) {
        return run.face == &face && run.ink == ink && run.scale == 1 && run.shaped.isEmpty();
    };
    if (waiting_.empty() || !goesOn(waiting_.back()))
        waiting_.push_back({&face, ink});
    waiting_.back().append(baseLine, text);
}

/// On whole dots, as letters are wide.
void PagePainter::Run::append(QPointF baseLine, const QString& text) {
    QPointF place(std::round(baseLine.x()), std::round(baseLine.y()));
    for (const QChar c : text) {
        const PrintFace::Letter& letter = *face->letter(c);
        glyphs.append(letter.glyph);
        places.append(place);
        place.rx() += letter.advance;
    }
}

void PagePainter::Run::draw(QPainter& painter) const {
    const QTransform whole = painter.transform();
    painter.translate(corner);
    painter.scale(scale, scale);
    painter.setPen(ink);
    if (shaped.isEmpty()) {
        QGlyphRun letters;
        letters.setRawFont(face->raw);
        letters.setRawData(glyphs.constData(), places.constData(), static_cast<int>(glyphs.size()));
        painter.drawGlyphRun({}, letters);
    } else {
        painter.setFont(face->font);
        painter.drawText(QPointF(), shaped);
    }
    painter.setTransform(whole);
}

void PagePainter::finish(QPainter& painter) {
    for (const Run& run : std::exchange(waiting_, {}))
        run.draw(painter);
}

QRectF PagePainter::placeOf(const ReportField& field, const QString& text, qsizetype start,
                            qsizetype length) {
    const PrintFace& used = face(field.look);
    const Laid laidText = laid(field, used, text);
    const auto isIn = [&](const Laid::Line& line) {
        const qsizetype from = start - line.start;
        return from >= 0 && from + length <= line.text.size() &&
               QStringView(line.text).sliced(from, length) ==
                   QStringView(text).sliced(start, length);
    };
    const auto* const line = std::ranges::find_if(laidText.lines, isIn);
    if (line == laidText.lines.end())
        return field.place;
    const auto at = [&](qsizetype character) {
        return (line->left + used.widthOf(line->text, character) * laidText.scale) / kDotsPerMm;
    };
    const qreal left = at(start - line->start);
    const qreal right = at(start - line->start + length);
    const qreal height = laidText.lines.size() == 1
                             ? field.place.height()
                             : used.metrics.height() * laidText.scale / kDotsPerMm;
    const qreal middle = field.place.center().y() +
                         (line->below - used.metrics.capHeight() * laidText.scale / 2) / kDotsPerMm;
    return {field.place.left() + left, middle - height / 2, right - left, height};
}

qsizetype PagePainter::characterAt(const ReportField& field, const QString& text, QPointF point) {
    const PrintFace& used = face(field.look);
    const Laid laidText = laid(field, used, text);
    const bool below = laidText.lines.size() > 1 && point.y() > field.place.center().y();
    const Laid::Line& line = laidText.lines[below ? 1 : 0];
    const qreal x = ((point.x() - field.place.left()) * kDotsPerMm - line.left) / laidText.scale;
    qsizetype before = 0; // characters whose middle is before the point
    qsizetype behind = line.text.size();
    while (before < behind) {
        const qsizetype middle = (before + behind) / 2;
        const qreal left = used.widthOf(line.text, middle);
        const qreal right = used.widthOf(line.text, middle + 1);
        if (x > (left + right) / 2)
            before = middle + 1;
        else
            behind = middle;
    }
    // Behind the last that is drawn stands, too, what is cut off.
    const bool last = &line == &laidText.lines.back() && before == line.text.size();
    return last ? text.size() : std::min(line.start + before, text.size());
}
