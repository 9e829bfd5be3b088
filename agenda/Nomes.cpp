#include "agenda/Nomes.h"

#include "ado/Recordset.h"
#include "shell/Valores.h"
#include "shell/dbconectar.h"

#include <QStringList>

#include <algorithm>
#include <span>
#include <utility>

namespace {

// Of more the whole register is read: that takes no longer, and is asked for at once.
constexpr std::size_t kPorInstrucao = 500;

} // namespace

Nomes::Codigo Nomes::codigo(const ado::FieldValue& campo) {
    return campo.isNull() ? std::nullopt : Codigo(campo.integer());
}

bool Nomes::bastamPara(const std::vector<Codigo>& codigos) const {
    return std::ranges::all_of(
        codigos, [&](const Codigo& codigo) { return std::ranges::binary_search(lidos_, codigo); });
}

Nomes::Nomes(const char* cadastro, std::vector<Codigo> codigos) : lidos_(std::move(codigos)) {
    std::ranges::sort(lidos_);
    lidos_.erase(std::unique(lidos_.begin(), lidos_.end()), lidos_.end());
    const bool temSemCodigo = !lidos_.empty() && !lidos_.front();
    const std::span<const Codigo> numerados = std::span(lidos_).subspan(temSemCodigo ? 1 : 0);
    if (numerados.empty())
        return;
    QString comando = QString("select codigo,nome from %1").arg(cadastro);
    if (numerados.size() <= kPorInstrucao) {
        QStringList numeros;
        for (const Codigo& codigo : numerados)
            numeros += QString::number(*codigo);
        comando += " where codigo in (" + numeros.join(',') + ")";
    }
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
