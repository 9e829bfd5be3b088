#include "agenda/Nomes.h"

#include "ado/Recordset.h"
#include "shell/Valores.h"
#include "shell/dbconectar.h"

#include <QStringList>

#include <algorithm>

namespace {

// Of more the whole register is read: that takes no longer, and is asked for at once.
constexpr qsizetype kPorInstrucao = 500;

} // namespace

Nomes::Codigo Nomes::codigo(const ado::FieldValue& campo) {
    return campo.isNull() ? std::nullopt : Codigo(campo.integer());
}

bool Nomes::bastamPara(const std::set<Codigo>& codigos) const {
    return std::ranges::includes(lidos_, codigos);
}

Nomes::Nomes(const char* cadastro, const std::set<Codigo>& codigos) : lidos_(codigos) {
    QStringList numeros;
    for (const Codigo& codigo : codigos)
        if (codigo)
            numeros += QString::number(*codigo);
    if (numeros.empty())
        return;
    QString comando = QString("select codigo,nome from %1").arg(cadastro);
    if (numeros.size() <= kPorInstrucao)
        comando += " where codigo in (" + numeros.join(',') + ")";
    ado::Recordset rs;
    rs.Open(comando, dbconectar::instance().Automacao, ado::CursorType::ForwardOnly,
            ado::LockType::ReadOnly);
    const ado::Recordset& lido = rs;
    const auto codigo = lido["codigo"], nome = lido["nome"];
    for (; !rs.EOF(); rs.MoveNext())
        porCodigo_.insert(codigo.integer(), Valores::texto(nome));
}

QString Nomes::de(const Codigo& codigo) const {
    if (!codigo)
        return "";
    const auto nome = porCodigo_.constFind(*codigo);
    return nome != porCodigo_.cend() ? *nome
                                     : "(não cadastrado: código " + QString::number(*codigo) + ")";
}
