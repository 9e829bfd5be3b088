#include "shell/Configuracao.h"

#include "jet/Error.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>

#include <algorithm>
#include <iterator>

namespace Configuracao {

namespace {

// A line longer than any path: a file that isn't ours must not fill the memory.
constexpr qint64 kMaxLineBytes = 32'768;

QByteArray firstLine(QFile& arquivo) {
    const QByteArray bytes = arquivo.read(kMaxLineBytes);
    const auto end = std::find_if(bytes.begin(), bytes.end(),
                                  [](char byte) { return byte == '\r' || byte == '\n'; });
    return {bytes.constData(), std::distance(bytes.begin(), end)};
}

QString decode(const QByteArray& line) {
    QStringDecoder utf8(QStringDecoder::Utf8); // drops a byte order mark
    const QString text = utf8(line);
    return utf8.hasError() ? QString::fromLatin1(line) : text;
}

} // namespace

QString pastaDoPrograma() {
    return QDir::toNativeSeparators(QCoreApplication::applicationDirPath());
}

QString caminho(const QString& pastaPrograma) {
    return pastaPrograma + QDir::separator() + "init.ini";
}

QString pastaDosDados(const QString& pastaPrograma) {
    QFile arquivo(caminho(pastaPrograma));
    if (!QFileInfo(arquivo).isFile())
        return pastaPrograma;
    if (!arquivo.open(QIODevice::ReadOnly))
        throw jet::Error(jet::Errc::io, QString("Não foi possível ler o arquivo \"%1\": %2.")
                                            .arg(arquivo.fileName(), arquivo.errorString())
                                            .toStdString());
    return decode(firstLine(arquivo));
}

} // namespace Configuracao
