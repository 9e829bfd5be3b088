#include "controls/look/Icons.h"

#include "controls/look/Picture.h"

#include <QAbstractButton>
#include <QFile>
#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QPixmapCache>

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
    explicit InkEngine(Picture picture) : picture_(std::move(picture)) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
        const qreal density = painter->device()->devicePixelRatioF();
        painter->drawPixmap(rect, drawn(rect.size() * density, mode));
    }

    /// `size` in pixels of the screen.
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State) override {
        return drawn(size, mode);
    }

    [[nodiscard]] QString key() const override { return "valtrino-ink"; }
    QString iconName() override { return picture_.name; }
    bool isNull() override { return picture_.svg.isEmpty(); }
    [[nodiscard]] QIconEngine* clone() const override { return new InkEngine(*this); }

private:
    [[nodiscard]] QPixmap drawn(const QSize& pixels, QIcon::Mode mode) const {
        const QColor ink = inkFor(mode);
        const QString key = QString("%1 %2 %3x%4")
                                .arg(picture_.name, ink.name())
                                .arg(pixels.width())
                                .arg(pixels.height());
        QPixmap drawn;
        if (!QPixmapCache::find(key, &drawn)) {
            drawn = picture_.drawn(pixels, ink);
            QPixmapCache::insert(key, drawn);
        }
        return drawn;
    }

    Picture picture_;
};

} // namespace

QIcon Icons::named(const QString& name) {
    registerAssets();
    QFile file(":/icons/" + name + ".svg");
    const bool found = file.open(QIODevice::ReadOnly);
    Q_ASSERT_X(found, "Icons::named", qUtf8Printable(name));
    return found ? QIcon(new InkEngine({name, file.readAll()})) : QIcon();
}

void Icons::applyTo(QWidget& root) {
    for (auto* button : root.findChildren<QAbstractButton*>()) {
        const QString name = button->property("iconName").toString();
        if (!name.isEmpty())
            button->setIcon(named(name));
    }
}
