#pragma once

#include <QListWidget>

class FolderReader;

/// The files of one folder whose names match a pattern, letter case not regarded, by name. The list
/// is empty until the folder has been read; meanwhile the windows go on.
///
/// A click on a file, or Enter or Space on the current one, is told by fileClicked().
class FileList final : public QListWidget {
    Q_OBJECT
    Q_PROPERTY(QString pattern READ pattern WRITE setPattern)
public:
    explicit FileList(QWidget* parent = nullptr);

    [[nodiscard]] QString pattern() const { return pattern_; }
    /// "*.mdb"; "*", all files, at first. For the folders set from then on.
    void setPattern(const QString& pattern);

    /// The folder whose files are listed, as it was set.
    [[nodiscard]] QString path() const { return path_; }
    void setPath(const QString& folder);

signals:
    void fileClicked();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void fill(const QString& folder, QStringList names);

    QString pattern_ = "*";
    QString path_;
    FolderReader* reader_ = nullptr;
};
