#include "shell/Documento.h"

#include "controls/window/MessageBox.h"

namespace Documento {

namespace {

// A "9" is a place, all else a sign.
constexpr QStringView kMascaras[] = {u"999.999.999-99", u"99.999.999/9999-99"};
constexpr QChar kLugar = u'9';

QString comSinais(const QString& digitos, QStringView mascara) {
    QString texto;
    qsizetype proximo = 0;
    for (const QChar sinal : mascara)
        texto += sinal == kLugar ? digitos[proximo++] : sinal;
    return texto;
}

} // namespace

QString formatar(const QString& digitos) {
    if (digitos.size() <= 1)
        return {};
    for (const QStringView mascara : kMascaras) {
        if (digitos.size() == mascara.count(kLugar))
            return comSinais(digitos, mascara);
    }
    showMessage("CGC/CPF Inválido !", "Mensagem", MessageIcon::none);
    return {};
}

QString semSinais(const QString& texto) {
    for (const QStringView mascara : kMascaras) {
        if (texto.size() != mascara.size())
            continue;
        QString digitos;
        for (qsizetype i = 0; i < mascara.size(); ++i) {
            if (mascara[i] == kLugar)
                digitos += texto[i];
        }
        return digitos;
    }
    return texto;
}

} // namespace Documento
