#include "ado/server/ServerRoles.h"

#include "ado/dialect/Spelling.h"
#include "ado/server/ServerValue.h"

namespace ado {

namespace {

/// Roles are the whole server's: another shop on it may have made them.
void createRole(ServerWire& wire, const std::string& role) {
    if (wire.run("select 1 from pg_catalog.pg_roles where rolname = " + serverText(role)).rows() ==
        0)
        static_cast<void>(wire.run("create role " + quotedName(role) + " nologin"));
}

void runAll(ServerWire& wire, std::initializer_list<std::string> steps) {
    for (const std::string& step : steps)
        static_cast<void>(wire.run(step));
}

/// To the rows of all that is made there from now on.
void letIn(ServerWire& wire, const std::string& schema, const std::string& clerks) {
    const std::string later = "alter default privileges in schema " + schema + " grant ";
    runAll(wire, {"grant usage on schema " + schema + " to " + clerks,
                  later + "select, insert, update, delete on tables to " + clerks,
                  later + "usage, select on sequences to " + clerks});
}

} // namespace

void createRolesAndSchema(ServerWire& wire, const ShopRoles& roles) {
    createRole(wire, roles.owner);
    createRole(wire, roles.clerks);
    const std::string owner = quotedName(roles.owner);
    const std::string clerks = quotedName(roles.clerks);
    const ServerRows about = wire.run("select current_database(), pg_has_role(" +
                                      serverText(roles.owner) + ", 'member')");
    if (about.field(0, 1) != "t")
        static_cast<void>(wire.run("grant " + owner + " to current_user"));
    const std::string base = quotedName(about.field(0, 0).value_or(""));
    // Of whoever comes by another program too: none holds a row for longer. What the program keeps
    // for itself isn't among the shop's tables.
    runAll(wire, {"revoke all on database " + base + " from public",
                  "grant connect on database " + base + " to " + owner + ", " + clerks,
                  "alter database " + base + " set statement_timeout = '10min'",
                  "alter database " + base + " set idle_in_transaction_session_timeout = '10min'",
                  "create schema if not exists valtrino_estacoes authorization " + owner,
                  "create schema if not exists valtrino_arquivo authorization " + owner,
                  "create schema valtrino authorization " + owner});
    becomeOwner(wire);
    letIn(wire, "valtrino", clerks);
    letIn(wire, "valtrino_estacoes", clerks);
}

void becomeOwner(ServerWire& wire) {
    static_cast<void>(wire.run("select set_config('role', pg_get_userbyid(nspowner), true) "
                               "from pg_catalog.pg_namespace where nspname = 'valtrino'"));
}

void leaveOwner(ServerWire& wire) { static_cast<void>(wire.run("reset role")); }

} // namespace ado
