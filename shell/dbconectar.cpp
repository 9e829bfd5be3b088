#include "shell/dbconectar.h"

#include "ado/ConnectionString.h"
#include "controls/window/MessageBox.h"
#include "jet/Error.h"
#include "schema/ShopUpgrade.h"
#include "shell/Configuracao.h"
#include "shell/DatabaseFolder.h"

#include <iterator>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace {

constexpr char kProvedor[] =
    "Provider=Microsoft.Jet.OLEDB.3.51;Persist Security Info=False;Data Source=";
constexpr char kArquivo[] = "\\automacao.mdb";

// Of an installed program: there the folder of the program is no place for data.
constexpr const char* kPrimeiraVez =
    "\n\nPara escolher a pasta, ou começar um banco de dados vazio, há no menu de programas "
    "\"Valtrino (novo banco de dados)\".";

struct Conjunto {
    ado::Recordset dbconectar::*rs;
    const char* origem;
    /// What the windows can do without; see Estrutura.h.
    std::vector<const char*> dispensaveis;
};

// clang-format off
const Conjunto kConjuntos[] = {
    {&dbconectar::rsBancos, "bancos", {}},
    {&dbconectar::rsCliente,
     "select * from cliente_fornecedor where tipo=true",
     {"endereco", "bairro", "cidade", "cep", "estado", "cgc_cpf", "inscricao_rg", "fone", "fax",
      "ultima_compra_venda", "dt_nascimento", "renuneração_mensal", "limite_credito",
      "bancos_trabalha01", "bancos_trabalha02", "pessoa_autorizada01", "pessoa_autorizada02", "pai",
      "mae", "ocupacao", "empresa", "fone_empresa", "emailcli", "observacao"}},
    {&dbconectar::rsCheques,
     "Cheques",
     {"agencia", "data", "bompara", "observacao", "autorizou", "descontar"}},
    {&dbconectar::rsSemFundos, "semfundos", {"agencia", "data", "empresa", "observacao"}},
};
// clang-format on

std::unique_ptr<dbconectar>& unico() {
    static std::unique_ptr<dbconectar> objeto;
    return objeto;
}

// What a file of an earlier version lacks, table by table.
QStringList faltasDe(jet::Database& arquivo) {
    QStringList faltas;
    for (const auto& [mais, tabela] : shop::missingIn(arquivo)) {
        QStringList campos;
        for (const jet::ColumnSpec& campo : mais.columns)
            campos += '"' + QString::fromStdString(campo.name) + '"';
        const QString nome = " tabela \"" + QString::fromStdString(mais.name) + '"';
        if (tabela)
            faltas += 'a' + nome;
        else if (!campos.isEmpty()) // indexes save time, and nobody misses them
            faltas +=
                (campos.size() == 1 ? "o campo " : "os campos ") + campos.join(", ") + " da" + nome;
    }
    return faltas;
}

// The only help there is when the shop's file isn't where the program looks for it: no window opens
// then, the folder chooser neither. The path is said once, as the system writes it.
jet::Error falhaAoAbrir(const jet::Error& causa, const std::string& conexao) {
    const QString arquivo = QString::fromStdString(ado::shownSource(conexao));
    const QString programa = Configuracao::pastaDoPrograma();
    QString motivo = causa.what();
    if (!motivo.contains(arquivo))
        motivo.prepend("Não foi possível abrir a base de dados em\n" + arquivo + "\n\n");
    return {causa.code(),
            QString("%1\n\nA pasta da base é a primeira linha do arquivo\n%2\n"
                    "(sem esse arquivo, é a pasta do programa). Coloque a base nessa pasta ou "
                    "corrija o arquivo, e abra o programa de novo.%3")
                .arg(motivo, Configuracao::arquivoParaLer(programa),
                     Configuracao::soDeLeitura(programa) ? kPrimeiraVez : "")
                .toStdString()};
}

} // namespace

dbconectar& dbconectar::instance() {
    if (!unico())
        unico().reset(new dbconectar);
    return *unico();
}

void dbconectar::descartar() { unico().reset(); }

// Deliberate: nothing is put between folder and file name and nothing taken away, so a folder that
// ends in a backslash gives two. Only one that would break the string is put in quotes.
dbconectar::dbconectar() {
    const std::string origem = ado::sourceIn(Mirtal::DatabaseFolder.toStdString(), kArquivo);
    Automacao.setConnectionString(kProvedor + ado::quotedValue(origem));
    Automacao.setRecorder(&historico);
}

void dbconectar::setSenha(const QString& senha) {
    const std::string endereco =
        ado::withPassword(Mirtal::DatabaseFolder.toStdString(), senha.toStdString());
    Automacao.setConnectionString(kProvedor + ado::quotedValue(endereco));
    if (Automacao.State() == ado::State::Open)
        Automacao.store().setPassword(senha.toStdString());
}

dbconectar::~dbconectar() { setBeforeMessages({}); }

void dbconectar::abrir() {
    setBeforeMessages([this] { gravarPendentes(); });
    std::optional<jet::Error> primeira;
    for (const auto& [conjunto, origem, dispensaveis] : kConjuntos) {
        ado::Recordset& rs = this->*conjunto;
        try {
            rs.Open(origem, Automacao);
            for (const char* campo : dispensaveis)
                rs.addOptional(campo);
        } catch (const jet::Error& causa) {
            if (Automacao.State() == ado::State::Closed || causa.code() != jet::Errc::notFound)
                throw falhaAoAbrir(causa, Automacao.ConnectionString());
            if (!primeira)
                primeira = causa;
            faltas_.append(causa.what());
        }
    }
    if (primeira && faltas_.size() == std::ssize(kConjuntos))
        throw falhaAoAbrir(*primeira, Automacao.ConnectionString()); // that isn't the shop's file
    if (jet::Database* const arquivo = Automacao.store().file())
        faltas_ = faltasDe(*arquivo);
    if (rsBancos.State() == ado::State::Open && !rsBancos.missing("nome"))
        rsBancos.addAlias("banco", "nome"); // as the purge asks for a bank by its name
    aberto_ = true;
}

bool dbconectar::aberto() const { return aberto_; }

bool dbconectar::desfazer() {
    bool gravava = false;
    for (ado::Recordset* rs : {&rsCheques, &rsCliente, &rsBancos, &rsSemFundos}) {
        if (rs->State() == ado::State::Closed)
            continue;
        gravava = gravava || rs->EditMode() != ado::EditMode::None;
        rs->CancelUpdate();
    }
    if (Automacao.inTransaction())
        Automacao.RollbackTrans();
    return Automacao.hasUndone() || gravava;
}

bool dbconectar::gravarPendentes() noexcept {
    try {
        if (Automacao.State() == ado::State::Open)
            Automacao.flush();
        return true;
    } catch (const jet::Error& erro) {
        if (erro.code() == jet::Errc::conflict)
            perdido_ = erro.what();
        return false;
    } catch (const std::exception&) {
        return false;
    }
}

QString dbconectar::perdido() { return std::exchange(perdido_, QString()); }

void dbconectar::fechar() {
    aberto_ = false;
    for (ado::Recordset* rs : {&rsCheques, &rsCliente, &rsBancos, &rsSemFundos})
        rs->Close();
    Automacao.Close();
}
