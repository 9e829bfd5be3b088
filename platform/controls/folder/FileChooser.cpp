#include "controls/folder/FileChooser.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QStandardPaths>

#include <ostream>
#include <utility>

namespace {

/// Where the operator looks for files; not where the program happens to have been started from.
QDir ownFolder() {
    const QDir documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return documents.exists() ? documents : QDir::home();
}

QString askOperator(FileRequest request) {
    request.path = ownFolder().absoluteFilePath(request.path);
    QWidget* owner = QApplication::activeWindow();
    switch (request.choice) {
    case FileChoice::existingFile:
        return QFileDialog::getOpenFileName(owner, request.title, request.path, request.filter);
    case FileChoice::newFile:
        return QFileDialog::getSaveFileName(owner, request.title, request.path, request.filter);
    case FileChoice::folder:
        return QFileDialog::getExistingDirectory(owner, request.title, request.path);
    }
    return {};
}

FileFunction& fileFunction() {
    static FileFunction function;
    return function;
}

} // namespace

std::ostream& operator<<(std::ostream& out, const FileRequest& request) {
    return out << '"' << request.title.toStdString() << "\": " << request.path.toStdString() << " ["
               << request.filter.toStdString() << ']';
}

std::optional<QString> chooseFile(const FileRequest& request) {
    if (fileFunction())
        return fileFunction()(request);
    const QString path = askOperator(request);
    return path.isEmpty() ? std::nullopt : std::optional(path);
}

FileFunction setFileFunction(FileFunction function) {
    return std::exchange(fileFunction(), std::move(function));
}
