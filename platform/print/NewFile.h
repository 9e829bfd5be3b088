#pragma once

#include <QFile>
#include <QString>
#include <QTemporaryFile>

/// Why a file couldn't be written, where nothing more is known, and what to do.
constexpr const char* kDiskFull = "o disco está cheio ou não aceita mais dados. "
                                  "Libere espaço ou escolha outra pasta";

/// A file in the making: written beside its target under another name, it takes the target's place
/// as a whole when it is complete. Until then, and if that never comes, an old target stays as it
/// was, and what was written is gone with this object.
class NewFile {
public:
    /// Nothing is written yet; open() does.
    explicit NewFile(const QString& target);

    /// Makes the file beside the target. False if that can't be; reason() says why.
    bool open();
    /// Where it is being written: the open device, or its path for who writes by path.
    [[nodiscard]] QFile& device() { return file_; }
    [[nodiscard]] QString path() const { return file_.fileName(); }

    /// Puts it in the target's place. False if that or any writing to the device failed; reason()
    /// says why, and an old target is as it was.
    bool commit();

    /// For who writes by path and failed: commit() then fails. `why` ends the operator's sentence,
    /// after "Não foi possível gravar ...:".
    void setFailed(const QString& why) { error_ = why; }
    /// Why it failed: a sentence for the operator.
    [[nodiscard]] QString reason() const;

private:
    QString target_;
    QTemporaryFile file_;
    QString error_;
};
