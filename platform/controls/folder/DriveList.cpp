#include "controls/folder/DriveList.h"

#include "controls/system/Drives.h"

#include <QDir>

#include <algorithm>

DriveList::DriveList(QWidget* parent) : QComboBox(parent) {
    const QString home = tidyPath(QDir::homePath());
    addItem("Pasta pessoal (" + QDir::toNativeSeparators(home) + ")", home);
    for (const QString& volume : volumes())
        addItem(QDir::toNativeSeparators(volume), volume);
    setCurrentIndex(-1);
}

QString DriveList::drive() const { return currentData().toString(); }

void DriveList::setDriveOf(const QString& folder) {
    const QString path = tidyPath(folder);
    int nearest = std::min(1, count() - 1);
    qsizetype length = 0;
    for (int i = 0; i < count(); ++i) {
        const QString drive = itemData(i).toString();
        if (liesIn(path, drive) && drive.size() > length) {
            nearest = i;
            length = drive.size();
        }
    }
    setCurrentIndex(nearest);
}

#include "controls/folder/moc_DriveList.cpp"
