#include "controls/look/Picture.h"

#include <QImage>
#include <QPainter>

// Outside any namespace: Q_INIT_RESOURCE declares what it calls where it stands.
static void registerDrawn() { Q_INIT_RESOURCE(drawn); }

// Drawn large when the program was built (assets/CMakeLists.txt), and made smaller here: there is
// nothing that reads SVG.
QPixmap Picture::drawn(const QSize& pixels, const QColor& ink) const {
    registerDrawn();
    QImage large(":/drawn/" + name + ".png");
    large.convertTo(QImage::Format_ARGB32_Premultiplied);
    if (svg.contains("currentColor")) {
        QPainter painter(&large);
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(large.rect(), ink);
    }
    const QImage fitting = large.scaled(pixels, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    QPixmap picture(pixels);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.drawImage((pixels.width() - fitting.width()) / 2,
                      (pixels.height() - fitting.height()) / 2, fitting);
    return picture;
}
