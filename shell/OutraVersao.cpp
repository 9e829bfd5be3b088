#include "shell/OutraVersao.h"

#include "controls/box/EntryValues.h"
#include "controls/window/Form.h"
#include "controls/window/MessageBox.h"

#include <QApplication>

#include <exception>
#include <optional>

namespace {

constexpr std::size_t kCampos = 12; ///< that fit on a small screen
constexpr qsizetype kLetras = 200;  ///< of a long remark

QString trecho(const QString& texto) {
    if (texto.isEmpty())
        return "(vazio)";
    return texto.size() > kLetras ? texto.first(kLetras) + "…" : texto;
}

QString comparacao(const EntryValues& digitado, const EntryValues& gravado) {
    const auto diferencas = digitado.differencesTo(gravado);
    if (diferencas.empty())
        return "Os campos desta janela são iguais aos gravados.\n";
    QString texto;
    for (std::size_t i = 0; i < std::min(diferencas.size(), kCampos); ++i)
        texto +=
            QString("%1\n    gravado: %2\n    na tela: %3\n")
                .arg(diferencas[i].name, trecho(diferencas[i].there), trecho(diferencas[i].here));
    if (diferencas.size() > kCampos)
        texto += QString("e mais %1 campos\n").arg(diferencas.size() - kCampos);
    return texto;
}

/// What the window in front would show of the record as it is stored; it is left as it was. Nothing
/// if there is no other version, or it can't be read now: then what has happened is told alone.
std::optional<EntryValues> gravadoNa(Form& janela, const EntryValues& digitado) {
    try {
        if (!janela.mostrarGravado())
            return std::nullopt;
        const EntryValues gravado(janela);
        digitado.restore();
        return gravado;
    } catch (const std::exception&) {
        digitado.restore();
        return std::nullopt;
    }
}

} // namespace

bool mostrarOutraVersao(const QString& motivo) {
    auto* const janela = qobject_cast<Form*>(QApplication::activeWindow());
    if (!janela)
        return false;
    const EntryValues digitado(*janela);
    const auto gravado = gravadoNa(*janela, digitado);
    if (!gravado)
        return false;
    const Message mensagem{motivo + "\n\n" + comparacao(digitado, *gravado) +
                               "\nSe o que está na tela deve valer, repita a operação.",
                           "Mensagem", MessageIcon::exclamation, MessageButtons::backOrStored};
    if (showMessage(mensagem) == MessageAnswer::stored)
        gravado->restore();
    return true;
}
