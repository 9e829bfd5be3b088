// libpq's functions, handed on to the library of the machine, which is loaded when a server is
// first spoken to: most shops have none, and start without it and all that it would bring along.
#include "ado/system/SharedLibrary.h"
#include "jet/Error.h"

#include <libpq-fe.h>

namespace {

template <class Function>
Function found(const char* name) {
    void* const there = ado::symbolIn("pq", 5, name);
    if (there == nullptr) // unreached: where there is a server to test with libpq is as well
        throw jet::Error(jet::Errc::unsupported,
                         "Para usar um servidor de banco de dados falta neste computador a "
                         "biblioteca libpq. Peça a quem cuida dele que a instale: no Debian é o "
                         "pacote libpq5.");
    return reinterpret_cast<Function>(there);
}

} // namespace

#define THEIRS(function)                                                                           \
    ([] {                                                                                          \
        static const auto there = found<decltype(&(function))>(#function);                         \
        return there;                                                                              \
    }())

// One line each, in the order of their names.
// clang-format off
int PQbackendPID(const PGconn* line) { return THEIRS(PQbackendPID)(line); }
void PQclear(PGresult* result) { THEIRS(PQclear)(result); }
char* PQcmdTuples(PGresult* result) { return THEIRS(PQcmdTuples)(result); }
PGconn* PQconnectdbParams(const char* const* keywords, const char* const* values, int expand) { return THEIRS(PQconnectdbParams)(keywords, values, expand); }
int PQconnectionUsedPassword(const PGconn* line) { return THEIRS(PQconnectionUsedPassword)(line); }
void PQconninfoFree(PQconninfoOption* options) { THEIRS(PQconninfoFree)(options); }
PQconninfoOption* PQconninfoParse(const char* address, char** reason) { return THEIRS(PQconninfoParse)(address, reason); }
int PQconsumeInput(PGconn* line) { return THEIRS(PQconsumeInput)(line); }
int PQenterPipelineMode(PGconn* line) { return THEIRS(PQenterPipelineMode)(line); }
char* PQerrorMessage(const PGconn* line) { return THEIRS(PQerrorMessage)(line); }
int PQexitPipelineMode(PGconn* line) { return THEIRS(PQexitPipelineMode)(line); }
void PQfinish(PGconn* line) { THEIRS(PQfinish)(line); }
int PQflush(PGconn* line) { return THEIRS(PQflush)(line); }
int PQfmod(const PGresult* result, int field) { return THEIRS(PQfmod)(result, field); }
char* PQfname(const PGresult* result, int field) { return THEIRS(PQfname)(result, field); }
void PQfreemem(void* memory) { THEIRS(PQfreemem)(memory); }
Oid PQftable(const PGresult* result, int field) { return THEIRS(PQftable)(result, field); }
Oid PQftype(const PGresult* result, int field) { return THEIRS(PQftype)(result, field); }
int PQgetCopyData(PGconn* line, char** bytes, int async) { return THEIRS(PQgetCopyData)(line, bytes, async); }
int PQgetisnull(const PGresult* result, int row, int field) { return THEIRS(PQgetisnull)(result, row, field); }
int PQgetlength(const PGresult* result, int row, int field) { return THEIRS(PQgetlength)(result, row, field); }
PGresult* PQgetResult(PGconn* line) { return THEIRS(PQgetResult)(line); }
char* PQgetvalue(const PGresult* result, int row, int field) { return THEIRS(PQgetvalue)(result, row, field); }
char* PQhost(const PGconn* line) { return THEIRS(PQhost)(line); }
char* PQhostaddr(const PGconn* line) { return THEIRS(PQhostaddr)(line); }
int PQisBusy(PGconn* line) { return THEIRS(PQisBusy)(line); }
int PQnfields(const PGresult* result) { return THEIRS(PQnfields)(result); }
PGnotify* PQnotifies(PGconn* line) { return THEIRS(PQnotifies)(line); }
int PQntuples(const PGresult* result) { return THEIRS(PQntuples)(result); }
const char* PQparameterStatus(const PGconn* line, const char* name) { return THEIRS(PQparameterStatus)(line, name); }
PGPing PQpingParams(const char* const* keywords, const char* const* values, int expand) { return THEIRS(PQpingParams)(keywords, values, expand); }
int PQpipelineSync(PGconn* line) { return THEIRS(PQpipelineSync)(line); }
char* PQport(const PGconn* line) { return THEIRS(PQport)(line); }
int PQputCopyData(PGconn* line, const char* bytes, int count) { return THEIRS(PQputCopyData)(line, bytes, count); }
int PQputCopyEnd(PGconn* line, const char* reason) { return THEIRS(PQputCopyEnd)(line, reason); }
char* PQresultErrorField(const PGresult* result, int field) { return THEIRS(PQresultErrorField)(result, field); }
ExecStatusType PQresultStatus(const PGresult* result) { return THEIRS(PQresultStatus)(result); }
int PQsendQuery(PGconn* line, const char* statement) { return THEIRS(PQsendQuery)(line, statement); }
int PQsendQueryParams(PGconn* line, const char* statement, int count, const Oid* types, const char* const* values, const int* lengths, const int* formats, int resultFormat) { return THEIRS(PQsendQueryParams)(line, statement, count, types, values, lengths, formats, resultFormat); }
PQnoticeProcessor PQsetNoticeProcessor(PGconn* line, PQnoticeProcessor process, void* of) { return THEIRS(PQsetNoticeProcessor)(line, process, of); }
int PQsetnonblocking(PGconn* line, int on) { return THEIRS(PQsetnonblocking)(line, on); }
int PQsocket(const PGconn* line) { return THEIRS(PQsocket)(line); }
ConnStatusType PQstatus(const PGconn* line) { return THEIRS(PQstatus)(line); }
PGTransactionStatusType PQtransactionStatus(const PGconn* line) { return THEIRS(PQtransactionStatus)(line); }
// clang-format on
