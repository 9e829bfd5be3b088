#include "controls/system/Drives.h"

#include <QDir>

QString tidyPath(const QString& path) { return QDir::cleanPath(QString(path).replace('\\', '/')); }

bool liesIn(const QString& path, const QString& folder) {
    const QString inside = asCompared(path);
    const QString around = asCompared(folder);
    return inside == around || inside.startsWith(around.endsWith('/') ? around : around + '/');
}
