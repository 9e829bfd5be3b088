#include "ado/engine/SqlError.h"

#include "jet/Error.h"

#include <sqlite3.h>

#include <string>
#include <string_view>

namespace ado {

using jet::Errc;
using jet::Error;

namespace {

/// How SQLite says that a name is unknown, and how the operator is told.
struct KnownError {
    std::string_view beginning;
    Errc code;
    const char* portuguese;
};
constexpr KnownError kKnownErrors[] = {
    {"no such column: ",        Errc::notFound, "Não existe o campo "      },
    {"no such table: ",         Errc::notFound, "Não existe a tabela "     },
    {"no such function: ",      Errc::notFound, "Não existe a função "   },
    {"ambiguous column name: ", Errc::syntax,
     "Mais de uma tabela tem o campo; escreva a tabela e um ponto antes de "},
};

} // namespace

void throwSqlError(sqlite3* handle, int result) {
    const std::string_view message = sqlite3_errmsg(handle);
    if (result == SQLITE_NOMEM || result == SQLITE_TOOBIG || result == SQLITE_INTERRUPT)
        tooMuch();
    if (result == SQLITE_FULL || result == SQLITE_IOERR || result == SQLITE_CANTOPEN)
        throw Error(Errc::io, "A lista é grande demais para a memória, e não foi possível usar o "
                              "disco para ordená-la. Procure por menos, ou verifique se há espaço "
                              "na pasta temporária do computador.");
    // The second for tables that SQLite would make about itself.
    if (result == SQLITE_AUTH || message == "not authorized")
        throw Error(Errc::notFound,
                    "Foi pedida uma tabela ou função que não existe neste banco de dados.");
    for (const KnownError& known : kKnownErrors) {
        if (message.starts_with(known.beginning))
            throw Error(known.code, known.portuguese + std::string("\"") +
                                        std::string(message.substr(known.beginning.size())) +
                                        "\".");
    }
    // What else SQLite says is in English and of no use at the counter, but for the place.
    constexpr std::string_view kNear = "near ";
    std::string place;
    if (message.starts_with(kNear))
        place = ", perto de " +
                std::string(message.substr(kNear.size(), message.rfind('"') + 1 - kNear.size()));
    throw Error(Errc::syntax, "O pedido não foi entendido pelo banco de dados" + place +
                                  ". Um apóstrofo ou outro sinal no que foi digitado pode ser a "
                                  "causa.");
}

void tooMuch() {
    throw Error(Errc::full, "A consulta pede mais do que o programa pode fazer de uma vez. Procure "
                            "por menos e tente de novo.");
}

} // namespace ado
