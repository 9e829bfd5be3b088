#include "shell/Configuracao.h"

#include "jet/Error.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
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

jet::Error falha(const char* acao, const QFileDevice& arquivo) {
    return {jet::Errc::io, QString("Não foi possível %1 o arquivo \"%2\": %3.")
                               .arg(acao, arquivo.fileName(), arquivo.errorString())
                               .toStdString()};
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
        throw falha("ler", arquivo);
    return decode(firstLine(arquivo));
}

void gravarPasta(const QString& pastaPrograma, const QString& pasta) {
    QString linha = pasta;
    linha.remove('\r').remove('\n');
    QSaveFile arquivo(caminho(pastaPrograma)); // beside the old one, then in its place
    // Unbuffered: what a full disk refuses only on closing, commit() doesn't hear of.
    if (!arquivo.open(QIODevice::WriteOnly | QIODevice::Text | QIODevice::Unbuffered))
        throw falha("gravar", arquivo);
    arquivo.write((linha + '\n').toUtf8()); // commit() tells if it failed
    if (!arquivo.commit())
        throw falha("gravar", arquivo);
}

} // namespace Configuracao
