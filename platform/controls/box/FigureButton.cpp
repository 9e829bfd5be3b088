#include "controls/box/FigureButton.h"

#include <QPainter>
#include <QStyleOptionButton>
#include <QStyleOptionFocusRect>

#include <algorithm>

namespace {

constexpr int kEdge = 10;   // pixels between the edge and the words
constexpr int kBetween = 2; // between the lines
constexpr qreal kRound = 4;
constexpr qreal kFigureStep = 4; // points that the figure is larger by

} // namespace

FigureButton::FigureButton(const QString& caption, QWidget* parent) : QPushButton(caption, parent) {
    setAccessibleName(caption);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void FigureButton::setFigure(const QString& figure, const QString& note) {
    if (figure == figure_ && note == note_)
        return;
    figure_ = figure;
    note_ = note;
    QString name = text();
    for (const QString& part : {note_, figure_})
        if (!part.isEmpty())
            name += (name == text() ? ": " : ", ") + part;
    setAccessibleName(name);
    updateGeometry();
    update();
}

QFont FigureButton::figureFont() const {
    QFont larger = font();
    larger.setPointSizeF(larger.pointSizeF() + kFigureStep);
    return larger;
}

QSize FigureButton::sizeHint() const {
    const QFontMetrics words = fontMetrics();
    const QFontMetrics figure(figureFont());
    const int wide = std::max({words.horizontalAdvance(text()), words.horizontalAdvance(note_),
                               figure.horizontalAdvance(figure_)});
    return {wide + 2 * kEdge, 2 * words.height() + figure.height() + 2 * kBetween + 2 * kEdge};
}

void FigureButton::paintEvent(QPaintEvent* /*event*/) {
    QStyleOptionButton option;
    initStyleOption(&option);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const bool pressed = option.state & QStyle::State_Sunken;
    const bool pointedAt = option.state & QStyle::State_MouseOver;
    painter.setPen(palette().color(pointedAt ? QPalette::Dark : QPalette::Mid));
    painter.setBrush(palette().color(pressed     ? QPalette::Button
                                     : pointedAt ? QPalette::AlternateBase
                                                 : QPalette::Base));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), kRound, kRound);

    painter.setPen(palette().color(QPalette::Text));
    const QRect inside = rect().adjusted(kEdge, kEdge, -kEdge, -kEdge);
    painter.drawText(inside, Qt::AlignLeft | Qt::AlignTop, text());
    painter.drawText(inside, Qt::AlignLeft | Qt::AlignBottom, note_);
    painter.setFont(figureFont());
    painter.drawText(inside, Qt::AlignLeft | Qt::AlignVCenter, figure_);

    if (!hasFocus())
        return;
    QStyleOptionFocusRect ring;
    ring.initFrom(this);
    ring.state |= QStyle::State_KeyboardFocusChange; // by the mouse too
    ring.backgroundColor = palette().color(QPalette::Base);
    ring.rect = rect();
    style()->drawPrimitive(QStyle::PE_FrameFocusRect, &ring, &painter, this);
}

#include "controls/box/moc_FigureButton.cpp"
