#pragma once

#include <QDir>
#include <QObject>
#include <QStringList>

#include <memory>

/// Lists folders beside the program's work: a folder of thousands of files, or one of a machine
/// that doesn't answer, holds up no window, nor the closing of one.
///
/// Each reading has a thread of its own, which nobody waits for: one that never comes back costs
/// its memory until the program ends. The answers come in any order.
class FolderReader final : public QObject {
    Q_OBJECT
public:
    /// @param filters what is listed.
    /// @param patterns of the files listed, letter case not regarded; none for all.
    FolderReader(QDir::Filters filters, QStringList patterns, QObject* parent);
    ~FolderReader() override;

    /// Begins to list; answered() tells the rest, also for a folder that can't be listed.
    void read(const QString& folder);

signals:
    /// @param names as they come, in no order.
    void answered(const QString& folder, const QStringList& names);

private:
    struct Line;

    /// Tells what the threads have found by now.
    Q_INVOKABLE void deliver();

    QDir::Filters filters_;
    QStringList patterns_;
    std::shared_ptr<Line> line_; ///< shared with the threads, which may outlive the reader
};
