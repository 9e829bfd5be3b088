#include "controls/box/BarChart.h"

#include "controls/look/Spoken.h"
#include "controls/typing/Typing.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QStyleOptionFocusRect>
#include <QToolTip>

#include <algorithm>
#include <utility>

namespace {

constexpr int kAir = 4;           // pixels around the bars and above the labels
constexpr int kLeastColumn = 6;   // pixels
constexpr int kLeastHeight = 48;  // pixels of the highest bar
constexpr double kBarShare = 0.7; // of its column

class SpokenBars final : public SpokenText {
public:
    explicit SpokenBars(BarChart& chart) : SpokenText(&chart, QAccessible::Chart), chart_(chart) {}

protected:
    [[nodiscard]] QString shown() const override {
        const int bar = chart_.currentBar();
        return bar < 0 ? QString() : chart_.bars()[static_cast<std::size_t>(bar)].words;
    }

private:
    BarChart& chart_;
};

} // namespace

BarChart::BarChart(QWidget* parent) : QWidget(parent) {
    installAccount<SpokenBars, BarChart>();
    setFocusPolicy(Qt::StrongFocus);
}

void BarChart::setBars(std::vector<Bar> bars) {
    bars_ = std::move(bars);
    pressed_ = -1;
    updateGeometry(); // as wide as its bars
    setCurrentBar(std::clamp(current_, bars_.empty() ? -1 : 0, static_cast<int>(bars_.size()) - 1));
}

void BarChart::setCurrentBar(int bar) {
    current_ = bar;
    if (bar >= 0)
        tellText(*this, bars_[static_cast<std::size_t>(bar)].words);
    update();
    emit currentBarChanged(bar);
}

QRect BarChart::columnRect(int bar) const {
    const int count = std::max<int>(1, static_cast<int>(bars_.size()));
    const int inside = width() - 2 * kAir;
    const int left = kAir + inside * bar / count;
    return {left, 0, kAir + inside * (bar + 1) / count - left, height()};
}

int BarChart::barAt(QPoint point) const {
    for (int bar = 0; bar < static_cast<int>(bars_.size()); ++bar)
        if (columnRect(bar).contains(point))
            return bar;
    return -1;
}

int BarChart::labelStep() const {
    int widest = 1;
    for (const Bar& bar : bars_)
        widest = std::max(widest, fontMetrics().horizontalAdvance(bar.label) + 2 * kAir);
    const int column = std::max(1, columnRect(0).width());
    return (widest + column - 1) / column;
}

QSize BarChart::minimumSizeHint() const {
    return {2 * kAir + kLeastColumn * static_cast<int>(bars_.size()),
            kLeastHeight + fontMetrics().height() + 3 * kAir};
}

QSize BarChart::sizeHint() const { return minimumSizeHint() * 2; }

void BarChart::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    const int floor = height() - fontMetrics().height() - 2 * kAir;
    double highest = 0;
    for (const Bar& bar : bars_)
        highest = std::max(highest, bar.height);
    const int step = labelStep();
    for (int i = 0; const Bar& bar : bars_) {
        const QRect column = columnRect(i);
        // What is not nothing is seen, however little it is beside the highest.
        const int tall = bar.height <= 0
                             ? 0
                             : std::max(2, static_cast<int>((floor - kAir) * bar.height / highest));
        const int wide = std::max(2, static_cast<int>(column.width() * kBarShare));
        painter.fillRect(QRect(column.center().x() - wide / 2, floor - tall, wide, tall),
                         palette().color(isEnabled() ? QPalette::Highlight : QPalette::Mid));
        if (i % step == 0) {
            // A label may be wider than its column: the next ones are left out.
            QRect below(0, floor + kAir, column.width() * step, fontMetrics().height());
            below.moveCenter({column.center().x(), below.center().y()});
            below.moveLeft(std::clamp(below.left(), 0, std::max(0, width() - below.width())));
            painter.setPen(palette().color(QPalette::WindowText));
            painter.drawText(below, Qt::AlignHCenter | Qt::AlignTop, bar.label);
        }
        ++i;
    }
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawLine(kAir, floor, width() - kAir - 1, floor);
    if (!hasFocus())
        return;
    QStyleOptionFocusRect ring;
    ring.initFrom(this);
    ring.state |= QStyle::State_KeyboardFocusChange; // by the mouse too
    ring.backgroundColor = palette().color(QPalette::Window);
    ring.rect = current_ < 0 ? rect() : columnRect(current_);
    style()->drawPrimitive(QStyle::PE_FrameFocusRect, &ring, &painter, this);
}

bool BarChart::event(QEvent* event) {
    if (event->type() != QEvent::ToolTip)
        return QWidget::event(event);
    const auto& help = *static_cast<QHelpEvent*>(event);
    const int bar = barAt(help.pos());
    if (bar < 0)
        QToolTip::hideText();
    else
        QToolTip::showText(help.globalPos(), bars_[static_cast<std::size_t>(bar)].words, this,
                           columnRect(bar));
    return true;
}

void BarChart::focusInEvent(QFocusEvent* event) {
    update();
    QWidget::focusInEvent(event);
}

void BarChart::focusOutEvent(QFocusEvent* event) {
    update();
    QWidget::focusOutEvent(event);
}

void BarChart::keyPressEvent(QKeyEvent* event) {
    const int last = static_cast<int>(bars_.size()) - 1;
    if (last < 0)
        return QWidget::keyPressEvent(event);
    if (isEnter(*event) || event->key() == Qt::Key_Space) {
        if (!event->isAutoRepeat())
            emit barClicked(current_);
        return;
    }
    switch (event->key()) {
    case Qt::Key_Left:
        return setCurrentBar(std::max(0, current_ - 1));
    case Qt::Key_Right:
        return setCurrentBar(std::min(last, current_ + 1));
    case Qt::Key_Home:
        return setCurrentBar(0);
    case Qt::Key_End:
        return setCurrentBar(last);
    default:
        QWidget::keyPressEvent(event);
    }
}

void BarChart::mousePressEvent(QMouseEvent* event) {
    pressed_ = event->button() == Qt::LeftButton ? barAt(event->pos()) : -1;
    if (pressed_ >= 0)
        setCurrentBar(pressed_);
}

void BarChart::mouseReleaseEvent(QMouseEvent* event) {
    const int bar = std::exchange(pressed_, -1);
    if (bar >= 0 && event->button() == Qt::LeftButton && barAt(event->pos()) == bar)
        emit barClicked(bar);
}

#include "controls/box/moc_BarChart.cpp"
