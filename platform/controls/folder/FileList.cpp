#include "controls/folder/FileList.h"

#include "controls/folder/FolderReader.h"
#include "controls/look/Icons.h"
#include "controls/typing/KeyHabits.h"
#include "controls/typing/Typing.h"

#include <QStyle>

FileList::FileList(QWidget* parent) : QListWidget(parent) {
    setUniformItemSizes(true);
    const int small = style()->pixelMetric(QStyle::PM_SmallIconSize);
    setIconSize({small, small});
    setPattern(pattern_);
    connect(this, &QListWidget::itemClicked, this, &FileList::fileClicked);
}

void FileList::setPattern(const QString& pattern) {
    pattern_ = pattern;
    delete reader_;
    reader_ = new FolderReader(QDir::Files, {pattern}, this);
    connect(reader_, &FolderReader::answered, this, &FileList::fill);
}

void FileList::setPath(const QString& folder) {
    clear();
    path_ = folder;
    if (!folder.isEmpty())
        reader_->read(folder);
}

void FileList::fill(const QString& folder, QStringList names) {
    if (folder != path_)
        return; // of a folder left meanwhile
    names.sort(Qt::CaseInsensitive);
    clear();
    const QIcon icon = Icons::named("database");
    for (const QString& name : names)
        addItem(new QListWidgetItem(icon, name));
}

void FileList::keyPressEvent(QKeyEvent* event) {
    if (!isEnter(*event) && event->key() != Qt::Key_Space)
        return QListWidget::keyPressEvent(event);
    if (currentItem() && !KeyHabits::isHeld())
        emit fileClicked();
}

#include "controls/folder/moc_FileList.cpp"
