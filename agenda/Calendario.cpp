#include "agenda/Calendario.h"

#include <QCryptographicHash>
#include <QSaveFile>

namespace Calendario {

namespace {

constexpr qsizetype kLinha = 75; ///< octets, without the end of the line

QString escapado(QString texto) {
    return texto.replace('\\', "\\\\").replace(';', "\\;").replace(',', "\\,").replace('\n', "\\n");
}

/// A content line, folded where it is too long; a character's octets stay together.
void linha(QByteArray& ics, const QString& texto) {
    const QByteArray octetos = texto.toUtf8();
    qsizetype naLinha = 0;
    for (qsizetype i = 0; i < octetos.size();) {
        qsizetype fim = i + 1;
        while (fim < octetos.size() && (octetos[fim] & 0xC0) == 0x80)
            ++fim;
        if (naLinha + fim - i > kLinha) {
            ics += "\r\n ";
            naLinha = 1;
        }
        ics += octetos.sliced(i, fim - i);
        naLinha += fim - i;
        i = fim;
    }
    ics += "\r\n";
}

QString data(const QDate& dia) { return dia.toString("yyyyMMdd"); }

} // namespace

QByteArray ics(const std::map<QDate, Vencimentos::SomaDoDia>& dias, const QString& arquivo,
               const QDateTime& agora) {
    constexpr int kDigitos = 16;
    const QString loja =
        QString::fromLatin1(QCryptographicHash::hash(arquivo.toUtf8(), QCryptographicHash::Sha1)
                                .toHex()
                                .left(kDigitos));
    const QString feito = agora.toUTC().toString("yyyyMMdd'T'HHmmss'Z'");
    QByteArray texto;
    linha(texto, "BEGIN:VCALENDAR");
    linha(texto, "VERSION:2.0");
    linha(texto, "PRODID:-//Valtrino//Agenda de vencimentos//PT");
    for (const auto& [dia, soma] : dias) {
        if (!dia.isValid())
            continue; // on no page of it
        const QString util = Vencimentos::outroDiaUtil(dia);
        linha(texto, "BEGIN:VEVENT");
        linha(texto, "UID:" + data(dia) + '-' + loja + "@valtrino");
        linha(texto, "DTSTAMP:" + feito);
        linha(texto, "DTSTART;VALUE=DATE:" + data(dia));
        linha(texto, "DTEND;VALUE=DATE:" + data(dia.addDays(1)));
        linha(texto, "SUMMARY:" + escapado("Vencem " + Vencimentos::texto(soma.todos)));
        linha(texto, "DESCRIPTION:" +
                         escapado((util.isEmpty() ? "" : "Dia útil do banco: " + util + '\n') +
                                  "Base de dados: " + arquivo));
        linha(texto, "TRANSP:TRANSPARENT");
        linha(texto, "END:VEVENT");
    }
    linha(texto, "END:VCALENDAR");
    return texto;
}

bool gravar(const QString& caminho, const std::map<QDate, Vencimentos::SomaDoDia>& dias,
            const QString& arquivo) {
    const QByteArray texto = ics(dias, arquivo, QDateTime::currentDateTimeUtc());
    QSaveFile novo(caminho);
    return novo.open(QIODevice::WriteOnly) && novo.write(texto) == texto.size() && novo.commit();
}

} // namespace Calendario
