#include "controls/look/Icons.h"

#include <QAbstractButton>
#include <QFile>
#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QPixmapCache>
#include <QSvgRenderer>

#include <utility>

// Outside any namespace: Q_INIT_RESOURCE declares what it calls where it stands.
static void registerAssets() { Q_INIT_RESOURCE(assets); }

namespace {

QColor inkFor(QIcon::Mode mode) {
    const QPalette palette = QGuiApplication::palette();
    switch (mode) {
    case QIcon::Disabled:
        return palette.color(QPalette::Disabled, QPalette::Text);
    case QIcon::Selected:
        return palette.color(QPalette::Active, QPalette::HighlightedText);
    case QIcon::Normal:
    case QIcon::Active:
        break;
    }
    return palette.color(QPalette::Active, QPalette::WindowText);
}

/// Draws one SVG file in the palette's colours. What was drawn is kept for the next row of a list,
/// by size and colour, so that a change of either draws anew.
class InkEngine final : public QIconEngine {
public:
    explicit InkEngine(QString name, QByteArray svg)
        : name_(std::move(name)), svg_(std::move(svg)) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
        const qreal density = painter->device()->devicePixelRatioF();
        painter->drawPixmap(rect, drawn(rect.size() * density, mode));
    }

    /// `size` in pixels of the screen.
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State) override {
        return drawn(size, mode);
    }

    [[nodiscard]] QString key() const override { return "valtrino-ink"; }
    QString iconName() override { return name_; }
    bool isNull() override { return svg_.isEmpty(); }
    [[nodiscard]] QIconEngine* clone() const override { return new InkEngine(*this); }

private:
    [[nodiscard]] QPixmap drawn(const QSize& pixels, QIcon::Mode mode) const {
        const QString ink = inkFor(mode).name();
        const QString key =
            QString("%1 %2 %3x%4").arg(name_, ink).arg(pixels.width()).arg(pixels.height());
        QPixmap picture;
        if (QPixmapCache::find(key, &picture))
            return picture;
        picture = QPixmap(pixels);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        QSvgRenderer renderer(QByteArray(svg_).replace("currentColor", ink.toLatin1()));
        renderer.setAspectRatioMode(Qt::KeepAspectRatio);
        renderer.render(&painter, QRectF(QPointF(), pixels));
        painter.end();
        QPixmapCache::insert(key, picture);
        return picture;
    }

    QString name_;
    QByteArray svg_;
};

} // namespace

QIcon Icons::named(const QString& name) {
    registerAssets();
    QFile file(":/icons/" + name + ".svg");
    const bool found = file.open(QIODevice::ReadOnly);
    Q_ASSERT_X(found, "Icons::named", qUtf8Printable(name));
    return found ? QIcon(new InkEngine(name, file.readAll())) : QIcon();
}

void Icons::applyTo(QWidget& root) {
    for (auto* button : root.findChildren<QAbstractButton*>()) {
        const QString name = button->property("iconName").toString();
        if (!name.isEmpty())
            button->setIcon(named(name));
    }
}
