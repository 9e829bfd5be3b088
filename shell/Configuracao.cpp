#include "shell/Configuracao.h"

#include "ado/ConnectionString.h"
#include "controls/system/WritableFolder.h"
#include "jet/Error.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>
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

jet::Error falha(jet::Errc codigo, const char* acao, const QFileDevice& arquivo) {
    const QString motivo = codigo == jet::Errc::full
                               ? "o disco está cheio; libere espaço nele e tente de novo"
                               : arquivo.errorString();
    return {codigo, QString("Não foi possível %1 o arquivo \"%2\": %3.")
                        .arg(acao, arquivo.fileName(), motivo)
                        .toStdString()};
}

jet::Error falhaAoGravar(const QFileDevice& arquivo) {
    const bool cheio = arquivo.error() == QFileDevice::ResourceError;
    return falha(cheio ? jet::Errc::full : jet::Errc::readOnly, "gravar", arquivo);
}

QString decode(const QByteArray& line) {
    QStringDecoder utf8(QStringDecoder::Utf8); // drops a byte order mark
    const QString text = utf8(line);
    return utf8.hasError() ? QString::fromLatin1(line) : text;
}

constexpr const char* kNasConfiguracoes = "/valtrino/init.ini";

} // namespace

QString pastaDoPrograma() {
    return QDir::toNativeSeparators(QCoreApplication::applicationDirPath());
}

QString caminho(const QString& pastaPrograma) {
    return pastaPrograma + QDir::separator() + "init.ini";
}

bool soDeLeitura(const QString& pasta) { return QFileInfo(pasta).isDir() && !mayWriteIn(pasta); }

QString arquivoParaGravar(const QString& pastaPrograma) {
    if (!soDeLeitura(pastaPrograma))
        return caminho(pastaPrograma);
    return QDir::toNativeSeparators(
        QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
        kNasConfiguracoes);
}

QString arquivoParaLer(const QString& pastaPrograma) {
    QStringList lugares{arquivoParaGravar(pastaPrograma), caminho(pastaPrograma)};
    if (soDeLeitura(pastaPrograma))
        for (const QString& pasta :
             QStandardPaths::standardLocations(QStandardPaths::GenericConfigLocation))
            lugares.append(QDir::toNativeSeparators(pasta + kNasConfiguracoes));
    const auto primeiro = std::find_if(lugares.cbegin(), lugares.cend(), [](const QString& lugar) {
        return QFileInfo(lugar).isFile();
    });
    return primeiro == lugares.cend() ? lugares.first() : *primeiro;
}

QString semSenha(const QString& linha) {
    return QString::fromStdString(ado::withoutPassword(linha.toStdString()));
}

QString pastaDosDados(const QString& pastaPrograma) {
    QFile arquivo(arquivoParaLer(pastaPrograma));
    if (!QFileInfo(arquivo).isFile())
        return pastaPrograma;
    if (!arquivo.open(QIODevice::ReadOnly))
        throw falha(jet::Errc::io, "ler", arquivo);
    return semSenha(decode(firstLine(arquivo)));
}

void gravarPasta(const QString& pastaPrograma, const QString& pasta) {
    QString linha = pasta;
    linha = semSenha(linha.remove('\r').remove('\n'));
    const QString lugar = arquivoParaGravar(pastaPrograma);
    if (soDeLeitura(pastaPrograma))
        QDir().mkpath(QFileInfo(lugar).path());
    QSaveFile arquivo(lugar); // beside the old one, then in its place
    // Unbuffered: what a full disk refuses only on closing, commit() doesn't hear of.
    if (!arquivo.open(QIODevice::WriteOnly | QIODevice::Text | QIODevice::Unbuffered))
        throw falhaAoGravar(arquivo);
    const QByteArray bytes = (linha + '\n').toUtf8();
    // Only the write itself knows that the disk is full, not the commit.
    if (arquivo.write(bytes) != bytes.size() || !arquivo.commit())
        throw falhaAoGravar(arquivo);
}

} // namespace Configuracao
