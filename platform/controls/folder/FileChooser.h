#pragma once

#include <QString>

#include <functional>
#include <iosfwd>
#include <optional>

/// The file dialogs of the program, all through one function that tests replace.

enum class FileChoice : unsigned char { existingFile, newFile, folder };

struct FileRequest {
    FileChoice choice = FileChoice::existingFile;
    QString title;
    /// Where the dialog opens: a folder, or for a new file its proposed path. A bare name is
    /// proposed among the operator's documents.
    QString path;
    /// As Qt writes filters: "Planilha (*.xlsx)". Unused for a folder.
    QString filter;

    friend bool operator==(const FileRequest&, const FileRequest&) = default;
};

/// For the messages of failed tests.
std::ostream& operator<<(std::ostream& out, const FileRequest& request);

/// Asks the operator for a file or a folder, modal to the whole program. A new file that exists
/// already is asked about by the dialog.
/// @return its path with "/" between folders; nothing if the operator gave up.
[[nodiscard]] std::optional<QString> chooseFile(const FileRequest& request);

/// What is asked in place of the operator.
using FileFunction = std::function<std::optional<QString>(const FileRequest&)>;

/// Replaces what chooseFile() does, in tests; an empty function restores it.
/// @return the function replaced.
FileFunction setFileFunction(FileFunction function);
