#include "agenda/Nomes.h"

#include "shell/Valores.h"
#include "shell/dbconectar.h"

Nomes::Nomes(const char* cadastro, const char* campo, const QString& linhas) : campo_(campo) {
    ado::Recordset rs;
    rs.Open(QString("select codigo,nome from %1 where codigo in (select %2 from %3)")
                .arg(cadastro, campo, linhas),
            dbconectar::instance().Automacao, ado::CursorType::ForwardOnly,
            ado::LockType::ReadOnly);
    for (const ado::Recordset& lido = rs; !rs.EOF(); rs.MoveNext())
        porCodigo_.insert(lido["codigo"].integer(), Valores::texto(lido["nome"]));
}

QString Nomes::de(const ado::Recordset& linha) const {
    const ado::FieldValue codigo = linha[campo_];
    if (codigo.isNull())
        return "";
    const auto nome = porCodigo_.constFind(codigo.integer());
    return nome != porCodigo_.cend() ? *nome
                                     : "(não cadastrado: código " + Valores::texto(codigo) + ")";
}
