#include "controls/system/Drives.h"

#include <QDir>

QStringList volumes() {
    QStringList folders;
    for (const QFileInfo& drive : QDir::drives())
        folders << drive.absoluteFilePath();
    return folders;
}

QString asCompared(const QString& name) { return name.toLower(); }
