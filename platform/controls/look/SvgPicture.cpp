#include "controls/look/Picture.h"

#include <QPainter>
#include <QSvgRenderer>

QPixmap Picture::drawn(const QSize& pixels, const QColor& ink) const {
    QPixmap picture(pixels);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    QSvgRenderer renderer(QByteArray(svg).replace("currentColor", ink.name().toLatin1()));
    renderer.setAspectRatioMode(Qt::KeepAspectRatio);
    renderer.render(&painter, QRectF(QPointF(), pixels));
    return picture;
}
