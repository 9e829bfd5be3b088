#include "shell/Historico.h"

#include "ado/Connection.h"
#include "jet/Error.h"
#include "jet/Names.h"
#include "shell/RegistroEmTexto.h"

#include <QSysInfo>

#include <algorithm>
#include <limits>
#include <optional>
#include <random>
#include <utility>

namespace {

using jet::Errc;

constexpr char kRecebidos[] = "cheques";
constexpr char kDevolvidos[] = "semfundos";

/// What is copied out of the row, where the table has it.
constexpr const char* kCopiados[] = {"lancamento", "cliente", "banco",  "numero",
                                     "valor",      "data",    "bompara"};

const std::string& estacao() {
    static const std::string nome = QSysInfo::machineHostName().left(64).toStdString();
    return nome;
}

bool temEstrutura(const ado::TableShape& tabela) {
    return std::ranges::all_of(shop::history().columns, [&](const jet::ColumnSpec& campo) {
        const auto onde = tabela.findColumn(campo.name);
        return onde && tabela.columns()[*onde].type == campo.type;
    });
}

/// Whether the shop's work can go on where that keeps its history from being kept. What the disk or
/// another station refuse, they will refuse the work as well; see semParar() for `full`.
bool soDoHistorico(Errc causa) {
    switch (causa) {
    case Errc::io:
    case Errc::full:
    case Errc::locked:
    case Errc::conflict:
    case Errc::gone:
    case Errc::offline:
        return false;
    default:
        return true;
    }
}

} // namespace

Historico::Operacao::Operacao(Historico& historico, const char* nome, std::int32_t grupo)
    : historico_(historico) {
    historico.operacao_ = nome;
    historico.grupo_ = grupo;
}

Historico::Operacao::~Operacao() {
    historico_.operacao_ = nullptr;
    historico_.grupo_ = 0;
}

void Historico::aoAvisar(std::function<void(const QString&)> avisar) {
    avisar_ = std::move(avisar);
}

bool Historico::legivel() const {
    ado::Store& base = base_.store();
    return base.hasTable(kTabela) && temEstrutura(base.shape(kTabela));
}

// ---- what keeps it from being kept

/// Does what is the history's alone. @return false if that can't be done, which is told then.
template <class Trabalho>
bool Historico::semParar(Trabalho&& trabalho) {
    try {
        trabalho();
        return true;
    } catch (const jet::Error& erro) {
        // Before anything is written a file has no room only when it is as large as its format
        // allows. Deleting old cheques is the way out of that, and they need none.
        const bool cheio = erro.code() == Errc::full && base_.store().file();
        if ((!cheio && !soDoHistorico(erro.code())) || base_.store().readOnlyReason())
            throw;
        impedimento_ = QString("O histórico não está sendo gravado: %1").arg(erro.what());
        if (avisar_)
            avisar_(impedimento_);
        return false;
    }
}

bool Historico::eDeCheques(std::string_view tabela) {
    const std::string nome = jet::foldedName(tabela);
    return nome == kRecebidos || nome == kDevolvidos;
}

bool Historico::desfazendo() const noexcept {
    return operacao_ != nullptr && std::string_view(operacao_) == kDesfazer;
}

bool Historico::keeps(const ado::TableShape& table, bool isNew) {
    const std::string nome = jet::foldedName(table.name());
    // A received cheque that comes in is none of it; one that comes back is, and whatever else.
    const bool guardada = nome == kDevolvidos || (nome == kRecebidos && (!isNew || operacao_)) ||
                          (desfazendo() && nome != jet::foldedName(kTabela));
    if (!guardada || !impedimento_.isEmpty() || base_.store().hasTable(kDesligado))
        return false;
    return pronto();
}

/// Whether there is a table to record in. That the disk doesn't take a new one is no hindrance of
/// the history's alone.
bool Historico::pronto() {
    std::optional<ado::Transaction> propria;
    if (!base_.store().hasTable(kTabela) && !base_.inTransaction())
        propria.emplace(base_);
    if (!semParar([this] { preparar(); }))
        return false;
    if (propria)
        propria->commit();
    return true;
}

void Historico::comecar() {
    ado::Store& base = base_.store();
    if (impedimento_.isEmpty() && !base.hasTable(kDesligado) && !base.readOnlyReason())
        pronto();
}

/// The table, and the recordset on it. Another station may have made it meanwhile, and a
/// transaction that was undone may have taken it along.
void Historico::preparar() {
    ado::Store& base = base_.store();
    if (!base.hasTable(kTabela)) {
        base.claim();
        if (!base.hasTable(kTabela))
            base.createTable(shop::history());
    }
    const ado::TableShape tabela = base.shape(kTabela);
    if (tabela_ != tabela.identity() || rs_.State() == ado::State::Closed) {
        rs_.Close();
        if (!temEstrutura(tabela))
            throw jet::Error(
                Errc::misuse,
                QString("a tabela \"%1\" é de outro programa.").arg(kTabela).toStdString());
        if (const auto motivo = base.readOnlyReason(kTabela))
            throw jet::Error(Errc::readOnly, *motivo);
        rs_.Open(kTabela, base_);
        campos_.clear();
        for (const jet::ColumnSpec& campo : shop::history().columns)
            campos_.emplace(campo.name, rs_[campo.name]);
        tabela_ = tabela.identity();
    }
}

// ---- what is recorded

void Historico::changed(std::span<const Change> rows) {
    const auto mudou = [](const Change& row) {
        return !row.before || !row.after || *row.before != *row.after;
    };
    if (std::ranges::none_of(rows, mudou))
        return;
    const bool feito = semParar([&] {
        const std::int32_t grupo = grupo_ != 0 ? grupo_ : novoGrupo();
        for (const Change& row : rows) {
            if (!mudou(row))
                continue;
            // What has only followed is called by what happened to it.
            const bool nomeada = operacao_ && (&row == &rows.back() || desfazendo());
            gravar(grupo,
                   nomeada                   ? operacao_
                   : row.before && row.after ? kAlteracao
                   : row.before              ? kExclusao
                                             : kSemFundos,
                   row);
        }
        if (operacao_)
            grupo_ = grupo;
    });
    if (!feito && rs_.State() == ado::State::Open)
        rs_.CancelUpdate();
}

void Historico::abrirRegistro(std::int32_t grupo, const char* operacao) {
    rs_.CancelUpdate(); // of one that has failed
    rs_.AddNew();
    campos_.at("grupo") = grupo;
    campos_.at("quando") = jet::Date::now();
    campos_.at("estacao") = estacao();
    campos_.at("operacao") = operacao;
}

void Historico::anotarBordero(const QString& numero, ado::Currency soma,
                              const std::optional<std::int64_t>& banco) {
    ado::Store& base = base_.store();
    if (!impedimento_.isEmpty() || base.hasTable(kDesligado) || base.readOnlyReason())
        return;
    ado::Transaction nota(base_);
    const bool feito = semParar([&] {
        preparar();
        abrirRegistro(novoGrupo(), kBordero);
        campos_.at("numero") = ado::Text(numero);
        campos_.at("valor") = soma;
        if (banco)
            campos_.at("banco") = *banco;
        rs_.Update();
    });
    if (feito)
        nota.commit();
    else if (rs_.State() == ado::State::Open)
        rs_.CancelUpdate();
}

void Historico::gravar(std::int32_t grupo, const char* operacao, const Change& row) {
    const auto& [table, before, after] = row;
    const jet::Row& registro = before ? *before : *after;
    const auto campo = [this](const char* nome) -> ado::Field& { return campos_.at(nome); };
    abrirRegistro(grupo, operacao);
    campo("tabela") = table.name();
    if (eDeCheques(table.name())) // others have no cheque to be found by
        for (const char* nome : kCopiados)
            if (const auto onde = table.findColumn(nome))
                campo(nome) = registro[*onde];
    if (before)
        campo("antes") = RegistroEmTexto::escrever(table.columns(), *before);
    if (after)
        campo("depois") = RegistroEmTexto::escrever(table.columns(), *after);
    rs_.Update();
}

std::int32_t Historico::sortear() {
    static std::mt19937 sorteio{std::random_device{}()};
    std::uniform_int_distribution<std::int32_t> numeros(1,
                                                        std::numeric_limits<std::int32_t>::max());
    return numeros(sorteio);
}

/// A number that no other operation has, also none whose rows another station is about to write.
std::int32_t Historico::novoGrupo() {
    for (;;) {
        const std::int32_t grupo = sortear();
        ado::Recordset iguais;
        iguais.Open("select id from " + std::string(kTabela) +
                        " where grupo=" + std::to_string(grupo),
                    base_);
        if (iguais.EOF())
            return grupo;
    }
}
