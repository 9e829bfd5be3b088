#include "controls/folder/FolderTree.h"

#include "controls/folder/FolderReader.h"
#include "controls/look/Icons.h"
#include "controls/system/Drives.h"
#include "controls/typing/KeyHabits.h"
#include "controls/typing/Typing.h"

#include <QHeaderView>
#include <QSet>

#include <memory>

namespace {

constexpr int kPath = Qt::UserRole;

QString pathOf(const QTreeWidgetItem& item) { return item.data(0, kPath).toString(); }

std::unique_ptr<QTreeWidgetItem> newItem(const QString& text, const QString& path) {
    auto item = std::make_unique<QTreeWidgetItem>(QStringList(text));
    item->setData(0, kPath, path);
    item->setIcon(0, Icons::named("folder"));
    // Until it has been opened nobody knows whether there is something in it.
    item->setChildIndicatorPolicy(QTreeWidgetItem::ShowIndicator);
    return item;
}

QString inFolder(const QString& folder, const QString& name) {
    return folder.endsWith('/') ? folder + name : folder + '/' + name;
}

QTreeWidgetItem* childNamed(const QTreeWidgetItem& parent, const QString& name) {
    const QString sought = asCompared(name);
    for (int i = 0; i < parent.childCount(); ++i) {
        if (asCompared(parent.child(i)->text(0)) == sought)
            return parent.child(i);
    }
    return nullptr;
}

} // namespace

FolderTree::FolderTree(QWidget* parent)
    : QTreeWidget(parent), reader_(new FolderReader(QDir::Dirs | QDir::NoDotAndDotDot, {}, this)) {
    setHeaderHidden(true);
    setHeaderLabel("Pasta");                // heard all the same
    header()->setStretchLastSection(false); // a deep folder is scrolled to, not cut
    header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    setUniformRowHeights(true);
    connect(this, &QTreeWidget::itemExpanded, this, &FolderTree::read);
    connect(this, &QTreeWidget::itemClicked, this, &FolderTree::folderClicked);
    connect(this, &QTreeWidget::currentItemChanged, this, &FolderTree::pathChanged);
    connect(reader_, &FolderReader::answered, this, &FolderTree::fill);
}

QString FolderTree::path() const { return currentItem() ? pathOf(*currentItem()) : QString(); }

void FolderTree::setDrive(const QString& drive) {
    const QString path = tidyPath(drive);
    {
        const QSignalBlocker quiet(this); // the old folders go: that is no change of path yet
        clear();
        setCurrentItem(nullptr);
    }
    auto root = newItem(QDir::toNativeSeparators(path), path);
    QTreeWidgetItem* item = root.get();
    addTopLevelItem(root.release());
    item->setExpanded(true);
    setCurrentItem(item);
}

void FolderTree::setPath(const QString& folder) {
    const QString path = tidyPath(folder);
    QTreeWidgetItem* item = topLevelItem(0);
    if (!item || !liesIn(path, pathOf(*item)))
        return setDrive(path);
    const QString below = path.sliced(pathOf(*item).size());
    for (const QString& name : below.split('/', Qt::SkipEmptyParts)) {
        item->setExpanded(true);
        item = child(*item, name);
    }
    setCurrentItem(item);
    scrollToItem(item);
}

QTreeWidgetItem* FolderTree::child(QTreeWidgetItem& parent, const QString& name) {
    if (QTreeWidgetItem* known = childNamed(parent, name))
        return known;
    auto item = newItem(name, inFolder(pathOf(parent), name));
    QTreeWidgetItem* added = item.get();
    parent.addChild(item.release());
    return added;
}

QTreeWidgetItem* FolderTree::itemOf(const QString& folder) const {
    QTreeWidgetItem* item = topLevelItem(0);
    if (!item || !liesIn(folder, pathOf(*item)))
        return nullptr;
    for (const QString& name : folder.sliced(pathOf(*item).size()).split('/', Qt::SkipEmptyParts)) {
        item = childNamed(*item, name);
        if (!item)
            return nullptr;
    }
    return item;
}

void FolderTree::read(QTreeWidgetItem* folder) { reader_->read(pathOf(*folder)); }

// Only adds: what is on show may be the way to the current folder.
void FolderTree::fill(const QString& folder, const QStringList& names) {
    QTreeWidgetItem* item = itemOf(folder);
    if (!item)
        return; // of another drive by now
    QSet<QString> known;
    for (int i = 0; i < item->childCount(); ++i)
        known.insert(asCompared(item->child(i)->text(0)));
    QList<QTreeWidgetItem*> added;
    for (const QString& name : names) {
        if (!known.contains(asCompared(name)))
            added << newItem(name, inFolder(folder, name)).release();
    }
    item->addChildren(added);
    item->sortChildren(0, Qt::AscendingOrder);
    if (item->childCount() == 0)
        item->setChildIndicatorPolicy(QTreeWidgetItem::DontShowIndicator);
    if (currentItem() != item && liesIn(path(), folder))
        scrollToItem(currentItem()); // on the way to it: the new ones have pushed it aside
}

// A row is marked across the whole width.
void FolderTree::resizeEvent(QResizeEvent* event) {
    QTreeWidget::resizeEvent(event);
    header()->setMinimumSectionSize(viewport()->width());
}

void FolderTree::keyPressEvent(QKeyEvent* event) {
    if (!isEnter(*event) && event->key() != Qt::Key_Space)
        return QTreeWidget::keyPressEvent(event);
    if (currentItem() && !KeyHabits::isHeld())
        emit folderClicked();
}

#include "controls/folder/moc_FolderTree.cpp"
