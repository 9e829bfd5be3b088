#include "ado/server/ServerError.h"

#include "jet/Error.h"

#include <libpq-fe.h>

namespace ado {

using jet::Errc;
using jet::Error;

namespace {

struct Meaning {
    std::string_view state; ///< the first characters of the server's code
    Errc code;
    const char* sentence;
};

// The longer ones before those that they begin with.
// clang-format off
constexpr Meaning kMeanings[] = {
    {"23505", Errc::duplicate,   "Já existe um registro com este valor, que não pode se repetir."},
    {"23503", Errc::related,     "Há registros que dependem deste, ou falta aquele de que este depende."},
    {"23502", Errc::nullValue,   "Falta preencher um campo obrigatório."},
    {"23514", Errc::rule,        "O valor não obedece a uma regra da base de dados."},
    {"22001", Errc::tooLong,     "O texto é longo demais para o campo."},
    {"42P01", Errc::notFound,    "Não existe uma das tabelas do comando."},
    {"42703", Errc::notFound,    "Não existe um dos campos do comando."},
    {"42702", Errc::syntax,      "Um dos campos do comando existe em mais de uma tabela."},
    {"42883", Errc::syntax,      "O comando não foi aceito: compara ou calcula valores de tipos diferentes."},
    {"42501", Errc::readOnly,    "O servidor não deixa este usuário fazer isto."},
    {"25006", Errc::readOnly,    "O servidor está aberto somente para leitura."},
    {"40P01", Errc::locked,      "Outra estação está gravando os mesmos registros. Tente de novo."},
    {"40001", Errc::locked,      "Outra estação está gravando os mesmos registros. Tente de novo."},
    {"55P03", Errc::locked,      "Outra estação está gravando os mesmos registros. Tente de novo."},
    {"57014", Errc::full,        "O comando demorou demais e foi interrompido."},
    {"22",    Errc::outOfRange,  "Um valor não serve para o seu campo."},
    {"53",    Errc::full,        "O servidor não tem mais espaço, memória ou conexões."},
    {"54",    Errc::full,        "O comando é grande demais."},
    {"42",    Errc::syntax,      "O comando não foi aceito."},
    {"08",    Errc::io,          "A conexão com o servidor caiu."},
    {"57",    Errc::io,          "O servidor está sendo desligado."},
};
// clang-format on

constexpr std::string_view kNoSuchField = "42703";

std::string fieldOf(const pg_result* result, int field) {
    const char* const text = PQresultErrorField(result, field);
    return text != nullptr ? text : "";
}

/// Before it lets anybody in a server gives no code, only words: in its own language, and libpq's
/// in ours.
bool says(const std::string& reason, std::string_view english, std::string_view portuguese) {
    return reason.find(english) != std::string::npos ||
           reason.find(portuguese) != std::string::npos;
}

std::string reasonOf(const pg_conn* line) { return PQerrorMessage(line); }

bool isOfProof(const std::string& reason) { return says(reason, "authentication", "autentica"); }

} // namespace

void throwServerError(const pg_result* result, const std::string& place) {
    const std::string state = fieldOf(result, PG_DIAG_SQLSTATE);
    if (state.empty())
        throw Error(Errc::io, "A conexão com o servidor " + place + " caiu.");
    const std::string primary = fieldOf(result, PG_DIAG_MESSAGE_PRIMARY);
    if (const std::size_t name = primary.find('"'); state == kNoSuchField && name < primary.size())
        throw Error(Errc::notFound, "Não existe o campo " +
                                        primary.substr(name, primary.rfind('"') + 1 - name) + ".");
    const std::string said = " (" + primary + ")";
    for (const Meaning& meaning : kMeanings)
        if (state.starts_with(meaning.state))
            throw Error(meaning.code,
                        meaning.code == Errc::locked // which says all there is to know
                            ? meaning.sentence
                            : meaning.sentence + said);
    throw Error(Errc::corrupt, "O servidor não conseguiu fazer o que foi pedido" + said + ".");
}

bool refusesPassword(const pg_conn* line) {
    const std::string reason = reasonOf(line);
    return says(reason, "password", "senha") ||
           (isOfProof(reason) && PQconnectionUsedPassword(line) != 0);
}

void throwNoConnection(const pg_conn* line, const std::string& place) {
    const std::string reason = reasonOf(line);
    const std::string where = "Não foi possível chegar ao servidor em\n" + place + "\n\n";
    if (refusesPassword(line))
        throw Error(Errc::password, where + "Ele não aceitou o usuário ou a senha.");
    if (isOfProof(reason) || says(reason, "pg_hba.conf", "pg_hba.conf"))
        throw Error(Errc::io, where +
                                  "Ele não deixa este usuário entrar a partir desta máquina. Quem "
                                  "cuida do servidor diz quem entra e de onde em pg_hba.conf.\n\n" +
                                  reason);
    if (says(reason, "database \"", "banco de dados \"") &&
        says(reason, "does not exist", "não existe"))
        throw Error(Errc::notFound, where + "Ele não tem essa base de dados.");
    throw Error(Errc::io, where + reason);
}

} // namespace ado
