#include "shell/Estrutura.h"

#include "ado/Recordset.h"
#include "controls/window/MessageBox.h"

#include <QWidget>

namespace Estrutura {

void exigir(const ado::Recordset& rs, std::initializer_list<const char*> campos) {
    for (const char* campo : campos)
        if (const auto falta = rs.missing(campo))
            throw jet::Error(jet::Errc::notFound, "Esta janela não pode ser usada. " + *falta +
                                                      " As outras janelas continuam funcionando.");
}

void dispensar(const ado::Recordset& rs, std::span<const Dispensavel> campos) {
    QString faltas;
    for (const auto& [campo, controle] : campos) {
        const auto falta = rs.missing(campo);
        if (!falta)
            continue;
        faltas += QString::fromStdString(*falta) + '\n';
        if (controle)
            controle->setEnabled(false);
    }
    if (!faltas.isEmpty())
        showMessage(faltas + "O que falta não é mostrado nem gravado; o resto da janela funciona.",
                    "Advertência", MessageIcon::exclamation);
}

void acrescentar(ado::Recordset& rs, const char* chave) {
    if (!rs[chave].isNumbered())
        throw jet::Error(jet::Errc::nullValue,
                         std::string("O registro novo não foi gravado: a base de dados não numera "
                                     "o campo \"") +
                             chave +
                             "\", e sem número ninguém o encontraria. Peça a quem cuida dela que "
                             "faça desse campo uma numeração automática.");
    rs.AddNew();
}

} // namespace Estrutura
