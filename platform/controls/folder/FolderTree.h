#pragma once

#include <QTreeWidget>

class FolderReader;

/// The folders of a drive as a tree, one of them the current one: the path. What a folder holds is
/// read when it is opened, and again each time; meanwhile the windows go on. Hidden folders are
/// left out.
///
/// The arrows and the mouse make another folder the current one. A click, or Enter or Space on the
/// current one, is told by folderClicked().
class FolderTree final : public QTreeWidget {
    Q_OBJECT
public:
    explicit FolderTree(QWidget* parent = nullptr);

    /// The current folder, with "/" between folders; "" before there is a drive.
    [[nodiscard]] QString path() const;
    /// Shows the tree of another drive, its beginning being the path.
    void setDrive(const QString& drive);
    /// Opens the tree down to a folder of the drive and makes it the path; a folder outside the
    /// drive is shown as a drive of its own. Whether it is there is not asked.
    void setPath(const QString& folder);

signals:
    /// The path changed, whoever changed it.
    void pathChanged();
    void folderClicked();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void read(QTreeWidgetItem* folder);
    void fill(const QString& folder, const QStringList& names);
    /// The item of a folder; null if the tree hasn't come so far.
    [[nodiscard]] QTreeWidgetItem* itemOf(const QString& folder) const;
    QTreeWidgetItem* child(QTreeWidgetItem& parent, const QString& name);

    FolderReader* reader_;
};
