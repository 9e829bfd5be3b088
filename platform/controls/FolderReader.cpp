#include "controls/FolderReader.h"

#include <QDirIterator>

#include <mutex>
#include <thread>
#include <utility>

/// Between a reader and its threads: who comes back late finds that nobody waits any more.
struct FolderReader::Line {
    std::mutex mutex;
    FolderReader* reader; ///< null once it is gone

    [[nodiscard]] bool isCut() {
        const std::lock_guard lock(mutex);
        return reader == nullptr;
    }
    void tell(const QString& folder, const QStringList& names) {
        const std::lock_guard lock(mutex);
        if (!reader)
            return;
        const auto answer = [to = reader, folder, names] { emit to->answered(folder, names); };
        QMetaObject::invokeMethod(reader, answer, Qt::QueuedConnection);
    }
};

FolderReader::FolderReader(QDir::Filters filters, QStringList patterns, QObject* parent)
    : QObject(parent), filters_(filters), patterns_(std::move(patterns)),
      line_(std::make_shared<Line>()) {
    line_->reader = this;
}

FolderReader::~FolderReader() {
    const std::lock_guard lock(line_->mutex);
    line_->reader = nullptr;
}

void FolderReader::read(const QString& folder) {
    std::thread([folder, filters = filters_, patterns = patterns_, line = line_] {
        QStringList names;
        for (QDirIterator entry(folder, patterns, filters); entry.hasNext();) {
            entry.next();
            names << entry.fileName();
            if (line->isCut())
                return;
        }
        line->tell(folder, names);
    }).detach();
}
