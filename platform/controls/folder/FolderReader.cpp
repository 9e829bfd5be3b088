#include "controls/folder/FolderReader.h"

#include <QDirIterator>
#include <QPointer>

#include <mutex>
#include <thread>
#include <utility>
#include <vector>

/// Between a reader and its threads: who comes back late finds that nobody waits any more.
struct FolderReader::Line {
    struct Answer {
        QString folder;
        QStringList names;
    };

    std::mutex mutex;
    FolderReader* reader;        ///< null once it is gone
    std::vector<Answer> answers; ///< not told yet

    [[nodiscard]] bool isCut() {
        const std::lock_guard lock(mutex);
        return reader == nullptr;
    }
    void tell(Answer answer) {
        const std::lock_guard lock(mutex);
        if (!reader)
            return;
        // Handed over under our own mutex, which the thread sanitizer sees, and not Qt's.
        answers.push_back(std::move(answer));
        QMetaObject::invokeMethod(reader, "deliver", Qt::QueuedConnection);
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
        line->tell({folder, std::move(names)});
    }).detach();
}

void FolderReader::deliver() {
    std::vector<Line::Answer> answers;
    {
        const std::lock_guard lock(line_->mutex);
        answers.swap(line_->answers);
    }
    const QPointer<FolderReader> self = this; // whoever hears an answer may do away with us
    for (const Line::Answer& answer : answers)
        if (self)
            emit answered(answer.folder, answer.names);
}

#include "controls/folder/moc_FolderReader.cpp"
