#include "print/NewFile.h"

#include <QDir>
#include <QFileInfo>

#include <filesystem>

namespace {

/// Where a link leads, so that the file it leads to is replaced and not the link.
QString pathBehindLinks(const QString& path) {
    const QString real = QFileInfo(path).canonicalFilePath();
    return real.isEmpty() ? path : real;
}

/// What others may do with the file: as with the old one, or as with any new one of this operator.
QFile::Permissions permissionsFor(const QString& target, const QString& beside) {
    const QFileInfo old(target);
    if (old.exists())
        return old.permissions();
    QFile probe(beside + "~");
    if (!probe.open(QIODevice::WriteOnly | QIODevice::NewOnly))
        return QFile::ReadOwner | QFile::WriteOwner;
    const auto permissions = probe.permissions();
    probe.remove();
    return permissions;
}

QString said(QFileDevice::FileError error) {
    switch (error) {
    case QFileDevice::NoError:
        return {};
    case QFileDevice::OpenError:
        return "a pasta não existe ou não aceita arquivos novos. Escolha outra pasta";
    case QFileDevice::PermissionsError:
        return "falta permissão para gravar nessa pasta. Escolha outra pasta";
    default:
        return kDiskFull;
    }
}

} // namespace

NewFile::NewFile(const QString& target)
    : target_(pathBehindLinks(target)), file_(target_ + ".XXXXXX.tmp") {}

bool NewFile::open() {
    if (QFileInfo(target_).isDir()) {
        error_ = "existe uma pasta com esse nome. Escolha outro nome";
        return false;
    }
    return file_.open();
}

bool NewFile::commit() {
    if (!error_.isEmpty() || !file_.flush() || file_.error() != QFileDevice::NoError)
        return false;
    file_.setPermissions(permissionsFor(target_, path()));
    file_.close();
    if (file_.error() != QFileDevice::NoError)
        return false;
    std::error_code failure;
    std::filesystem::rename(path().toStdU16String(), target_.toStdU16String(), failure);
    if (failure) {
        error_ = "o arquivo antigo está em uso ou protegido. Feche-o onde está aberto ou escolha "
                 "outro nome";
        return false;
    }
    file_.setAutoRemove(false);
    return true;
}

QString NewFile::reason() const {
    const QString why = error_.isEmpty() ? said(file_.error()) : error_;
    return QString("Não foi possível gravar \"%1\": %2.")
        .arg(QDir::toNativeSeparators(target_), why);
}
