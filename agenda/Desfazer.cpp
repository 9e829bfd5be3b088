#include "agenda/Desfazer.h"

#include "controls/window/Repainting.h"
#include "shell/Historico.h"
#include "shell/Mirtal.h"
#include "shell/RegistroEmTexto.h"
#include "shell/Valores.h"
#include "shell/dbconectar.h"

#include <QScopeGuard>

#include <algorithm>
#include <chrono>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <utility>

using namespace std::chrono_literals;

namespace {

/// One undoing, from its first row to its last.
class Volta {
public:
    /// Undoes what the history's row tells, unless what was undone before has brought it along.
    /// @return why not, or "".
    QString linha(const ado::Recordset& historico, bool primeira) {
        const std::string tabela = historico["tabela"].text();
        if (!base_.store().hasTable(tabela))
            return "a tabela \"" + QString::fromStdString(tabela) + "\" não existe mais.";
        const bool deCheques = Historico::eDeCheques(tabela);
        const auto campos = base_.store().shape(tabela).columns();
        const bool havia = !historico["antes"].isNull();
        const bool ficou = !historico["depois"].isNull();
        const auto procurar = [&](const char* como) -> ado::Recordset* {
            return deCheques ? deLancamento(tabela, Valores::texto(historico["lancamento"]))
                             : deChave(tabela, campos, historico[como].text());
        };
        ado::Recordset* rs = procurar(ficou ? "depois" : "antes");
        if (rs == nullptr)
            return "a chave da tabela não diz qual era o registro.";
        if (!ficou && !rs->EOF())
            return deCheques ? "o lançamento foi dado a outro cheque."
                             : "já há outro registro com a mesma chave.";
        if (ficou && !esta(*rs, campos, historico["depois"])) {
            if (havia && !primeira) {
                const ado::Recordset* const antes = procurar("antes");
                if (antes != nullptr && esta(*antes, campos, historico["antes"]))
                    return {};
            }
            rs = procurar("depois");
            return rs->EOF() ? "ele foi excluído ou baixado depois." : "ele foi alterado depois.";
        }
        if (!havia) {
            rs->Delete();
            return {};
        }
        if (!ficou)
            rs->AddNew();
        for (const auto& [campo, valor] : RegistroEmTexto::ler(campos, historico["antes"].text()))
            (*rs)[campos[campo].name] = valor;
        if (deCheques && !estaoCadastrados((*rs)["cliente"], (*rs)["banco"])) {
            if (!cadastrado("cliente_fornecedor", (*rs)["cliente"]))
                return "o cliente não está mais cadastrado.";
            if (!cadastrado("bancos", (*rs)["banco"]))
                return "o banco não está mais cadastrado.";
        }
        rs->Update();
        return {};
    }

private:
    /// The cheques of a table, at the one of that number or at the end.
    ado::Recordset* deLancamento(const std::string& tabela, const QString& lancamento) {
        auto& rs = conjuntos_[tabela];
        if (!rs) {
            rs = std::make_unique<ado::Recordset>();
            rs->Open(tabela, base_);
        }
        Mirtal::localizar(*rs, "lancamento=" + lancamento);
        return rs.get();
    }

    /// The row of any table that has the key of the one that was written down, or none; null if
    /// that can't be asked for.
    ado::Recordset* deChave(const std::string& tabela, std::span<const jet::Column> campos,
                            const std::string& registro) {
        const auto chave = base_.store().keyOf(tabela);
        QString criterio;
        for (const auto& [campo, valor] : RegistroEmTexto::ler(campos, registro)) {
            if (std::ranges::find(chave, campo) == chave.end())
                continue;
            const QString escrito = literal(valor);
            if (escrito.isEmpty())
                return nullptr;
            criterio += criterio.isEmpty() ? "" : " and ";
            criterio += '[' + QString::fromStdString(campos[campo].name) + "]=" + escrito;
        }
        if (criterio.isEmpty())
            return nullptr;
        outra_.Close();
        outra_.Open("select * from [" + QString::fromStdString(tabela) + "] where " + criterio,
                    base_);
        return &outra_;
    }

    /// As a statement has it; "" for what a key hardly is.
    static QString literal(const jet::Value& valor) {
        if (const auto* const numero = std::get_if<std::int64_t>(&valor))
            return QString::number(*numero);
        if (const auto* const texto = std::get_if<std::string>(&valor))
            return "'" + QString::fromStdString(*texto).replace("'", "''") + "'";
        if (const auto* const data = std::get_if<jet::Date>(&valor);
            data && Valores::data(Valores::dia(*data)) == *data)
            return Valores::literal(Valores::dia(*data));
        return {};
    }

    static bool esta(const ado::Recordset& rs, std::span<const jet::Column> campos,
                     const ado::FieldValue& escrito) {
        return !rs.EOF() && comoEsta(rs, campos) == escrito.text();
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
    std::map<std::string, std::unique_ptr<ado::Recordset>> conjuntos_; ///< of cheques
    ado::Recordset outra_;
    std::map<std::pair<std::string, std::int64_t>, bool> cadastrados_;
};

QString recusa(const ado::Recordset& historico, const QString& motivo) {
    const std::string tabela = historico["tabela"].text();
    if (!Historico::eDeCheques(tabela))
        return QString("O registro da tabela \"%1\", que foi com um cheque, não pode voltar: "
                       "%2\n\nNada foi desfeito.")
            .arg(QString::fromStdString(tabela), motivo);
    return QString("O cheque Nº %1, lançamento %2, não pode voltar: %3\n\nNada foi desfeito.")
        .arg(Valores::texto(historico["numero"]), Valores::texto(historico["lancamento"]), motivo);
}

/// The undoing of cheques that are all as the history says, written without looking at each first,
/// which over a server would be some ways to it for each.
class DeUmaVez {
public:
    explicit DeUmaVez(std::int32_t grupo) : grupo_(grupo) {}

    /// @return whether that is done. Otherwise something isn't so, or not of cheques alone, and
    ///         nothing is done.
    bool fazer() {
        if (!base_.store().writesAtOnce() || !historico_.impedimento().isEmpty() ||
            base_.store().hasTable(Historico::kDesligado))
            return false;
        try {
            const Historico::Operacao operacao(historico_, Historico::kDesfazer, novo_);
            ado::Transaction tudo(base_);
            base_.store().claimRows(); // from here on nobody else changes them
            if (!ler() || !base_.store().write(gravar_) || !historico_.impedimento().isEmpty())
                return false;
            tudo.commit();
            return true;
        } catch (const jet::Error& erro) {
            if (erro.code() == jet::Errc::offline)
                throw;
            return false; // one after the other will say what is wrong
        }
    }

private:
    /// What the history says, and whether clients and banks are there.
    bool ler() {
        const std::string tabela = Historico::kTabela;
        ado::Recordset rs;
        rs.Open("select " + tabela + ".*, cliente_fornecedor.codigo, bancos.codigo from (" +
                    tabela + " left join cliente_fornecedor on " + tabela +
                    ".cliente=cliente_fornecedor.codigo) left join bancos on " + tabela +
                    ".banco=bancos.codigo where grupo in (" + std::to_string(grupo_) + "," +
                    std::to_string(novo_) + ") order by id desc",
                base_);
        for (const ado::Recordset& linha = rs; !rs.EOF(); rs.MoveNext())
            if (!tomar(linha))
                return false;
        return !gravar_.empty();
    }

    bool tomar(const ado::Recordset& linha) {
        const std::string tabela = linha["tabela"].text();
        const std::string operacao = linha["operacao"].text();
        if (linha["grupo"].integer() == novo_ || operacao == Historico::kDesfazer ||
            !linha["desfeito_por"].isNull() || !Historico::eDeCheques(tabela) ||
            !base_.store().hasTable(tabela) ||
            !tocados_.insert({tabela, linha["lancamento"].text()}).second)
            return false;
        const bool havia = !linha["antes"].isNull();
        const auto falta = [&](const char* codigo, const char* cadastrado) {
            return havia && !linha[codigo].isNull() && linha[cadastrado].isNull();
        };
        const auto antes = registro(tabela, linha["antes"]);
        const auto depois = registro(tabela, linha["depois"]);
        if (!antes || !depois || falta("cliente", "cliente_fornecedor.codigo") ||
            falta("banco", "bancos.codigo"))
            return false;
        gravar_.push_back({tabela, *depois, *antes});
        const ado::TableShape forma = base_.store().shape(Historico::kTabela);
        jet::Row& desta = registros_.emplace_back();
        desta.reserve(forma.columns().size());
        for (const jet::Column& campo : forma.columns())
            desta.push_back(linha[std::string(Historico::kTabela) + "." + campo.name].value());
        jet::Row& desfeita = registros_.emplace_back(desta);
        desfeita[forma.findColumn("desfeito_por").value()] = std::int64_t{novo_};
        gravar_.push_back({Historico::kTabela, &desta, &desfeita});
        return true;
    }

    /// The whole row that was written down, null for none; nothing if the table has other columns.
    std::optional<const jet::Row*> registro(const std::string& tabela,
                                            const ado::FieldValue& escrito) {
        if (escrito.isNull())
            return nullptr;
        const auto campos = base_.store().shape(tabela).columns();
        const auto valores = RegistroEmTexto::ler(campos, escrito.text());
        if (valores.size() != campos.size())
            return std::nullopt;
        jet::Row& registro = registros_.emplace_back(campos.size());
        for (const auto& [campo, valor] : valores)
            registro[campo] = valor;
        return &registro;
    }

    ado::Connection& base_ = dbconectar::instance().Automacao;
    Historico& historico_ = dbconectar::instance().historico;
    const std::int32_t grupo_;
    const std::int32_t novo_ = Historico::sortear();
    std::deque<jet::Row> registros_; ///< that are looked at by the next
    std::vector<ado::Store::RowWrite> gravar_;
    std::set<std::pair<std::string, std::string>> tocados_;
};

} // namespace

QString Desfazer::desfazer(std::int32_t grupo) {
    if (DeUmaVez(grupo).fazer())
        return {};
    ado::Connection& base = dbconectar::instance().Automacao;
    const Historico::Operacao operacao(dbconectar::instance().historico, Historico::kDesfazer);
    ado::Transaction tudo(base);
    base.store().claimRows(); // from here on nobody else changes them
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
        if (const QString motivo = volta.linha(historico, contagem == 1); !motivo.isEmpty())
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
