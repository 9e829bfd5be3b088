#include "agenda/Desfazer.h"

#include "controls/window/Repainting.h"
#include "shell/Historico.h"
#include "shell/Mirtal.h"
#include "shell/RegistroEmTexto.h"
#include "shell/Valores.h"
#include "shell/dbconectar.h"

#include <QScopeGuard>

#include <chrono>
#include <map>
#include <memory>
#include <utility>

using namespace std::chrono_literals;

namespace {

/// One undoing, from its first row to its last.
class Volta {
public:
    /// Undoes what the history's row tells. @return why not, or "".
    QString linha(const ado::Recordset& historico) {
        const std::string tabela = historico["tabela"].text();
        if (!base_.store().hasTable(tabela))
            return "a tabela \"" + QString::fromStdString(tabela) + "\" não existe mais.";
        ado::Recordset& rs = conjunto(tabela);
        const auto campos = base_.store().shape(tabela).columns();
        const bool havia = !historico["antes"].isNull();
        const bool ficou = !historico["depois"].isNull();
        const bool existe =
            Mirtal::localizar(rs, "lancamento=" + Valores::texto(historico["lancamento"]));
        if (ficou && !existe)
            return "ele foi excluído ou baixado depois.";
        if (!ficou && existe)
            return "o lançamento foi dado a outro cheque.";
        if (ficou && comoEsta(rs, campos) != historico["depois"].text())
            return "ele foi alterado depois.";
        if (!havia) {
            rs.Delete();
            return {};
        }
        if (!ficou)
            rs.AddNew();
        for (const auto& [campo, valor] : RegistroEmTexto::ler(campos, historico["antes"].text()))
            rs[campos[campo].name] = valor;
        if (!estaoCadastrados(rs["cliente"], rs["banco"])) {
            if (!cadastrado("cliente_fornecedor", rs["cliente"]))
                return "o cliente não está mais cadastrado.";
            if (!cadastrado("bancos", rs["banco"]))
                return "o banco não está mais cadastrado.";
        }
        rs.Update();
        return {};
    }

private:
    ado::Recordset& conjunto(const std::string& tabela) {
        auto& rs = conjuntos_[tabela];
        if (!rs) {
            rs = std::make_unique<ado::Recordset>();
            rs->Open(tabela, base_);
        }
        return *rs;
    }

    static std::string comoEsta(const ado::Recordset& rs, std::span<const jet::Column> campos) {
        jet::Row registro;
        registro.reserve(campos.size());
        for (const jet::Column& campo : campos)
            registro.push_back(rs[campo.name].value());
        return RegistroEmTexto::escrever(campos, registro);
    }

    /// Both at once, where there are both.
    bool estaoCadastrados(const ado::FieldValue& cliente, const ado::FieldValue& banco) {
        if (cliente.isNull() || banco.isNull() ||
            cadastrados_.contains({"cliente_fornecedor", cliente.integer()}) ||
            cadastrados_.contains({"bancos", banco.integer()}))
            return false;
        ado::Recordset rs;
        rs.Open(QString("select cliente_fornecedor.codigo from cliente_fornecedor, bancos where "
                        "cliente_fornecedor.codigo=%1 and bancos.codigo=%2")
                    .arg(cliente.integer())
                    .arg(banco.integer()),
                base_);
        if (rs.EOF())
            return false;
        cadastrados_[{"cliente_fornecedor", cliente.integer()}] = true;
        cadastrados_[{"bancos", banco.integer()}] = true;
        return true;
    }

    /// Of many cheques few have another client or bank than those before.
    bool cadastrado(const char* tabela, const ado::FieldValue& codigo) {
        if (codigo.isNull())
            return true;
        const auto [achado, novo] = cadastrados_.try_emplace({tabela, codigo.integer()}, false);
        if (novo) {
            ado::Recordset rs;
            rs.Open("select codigo from " + std::string(tabela) +
                        " where codigo=" + std::to_string(codigo.integer()),
                    base_);
            achado->second = !rs.EOF();
        }
        return achado->second;
    }

    ado::Connection& base_ = dbconectar::instance().Automacao;
    std::map<std::string, std::unique_ptr<ado::Recordset>> conjuntos_;
    std::map<std::pair<std::string, std::int64_t>, bool> cadastrados_;
};

QString recusa(const ado::Recordset& historico, const QString& motivo) {
    return QString("O cheque Nº %1, lançamento %2, não pode voltar: %3\n\nNada foi desfeito.")
        .arg(Valores::texto(historico["numero"]), Valores::texto(historico["lancamento"]), motivo);
}

} // namespace

QString Desfazer::desfazer(std::int32_t grupo) {
    ado::Connection& base = dbconectar::instance().Automacao;
    const Historico::Operacao operacao(dbconectar::instance().historico, Historico::kDesfazer);
    ado::Transaction tudo(base);
    base.store().claim(); // from here on nobody else changes anything
    ado::Recordset historico;
    historico.Open("select * from " + std::string(Historico::kTabela) +
                       " where grupo=" + std::to_string(grupo) + " order by id desc",
                   base);
    // What is undone adds rows there; those to be undone are no more than there are now.
    const std::int64_t quantos = historico.RecordCount();
    Volta volta;
    Repainting repintura(100ms);
    const auto contado = qScopeGuard([] { Mirtal::mensagem(""); });
    for (std::int64_t contagem = 1; contagem <= quantos; ++contagem) {
        if (contagem > 1)
            historico.MoveNext();
        if (historico["operacao"].text() == Historico::kDesfazer)
            return "Isto já é o que desfez outra operação, e não pode ser desfeito.";
        if (historico["operacao"].text() == Historico::kBordero)
            return "Um borderô não altera nenhum cheque: não há o que desfazer.";
        if (!historico["desfeito_por"].isNull())
            return "Isto já foi desfeito.";
        if (const QString motivo = volta.linha(historico); !motivo.isEmpty())
            return recusa(historico, motivo);
        if (operacao.grupo() == 0)
            return "O histórico desta base de dados não está sendo gravado, e por isso nada é "
                   "desfeito.";
        historico["desfeito_por"] = operacao.grupo();
        historico.Update();
        if (repintura.due()) {
            Mirtal::mensagem("Registros desfeitos..:" + QString::number(contagem));
            repintura.repaint();
        }
    }
    tudo.commit();
    return {};
}
