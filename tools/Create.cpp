#include "ado/ConnectionString.h"
#include "ado/ServerShop.h"
#include "jet/Database.h"
#include "schema/ShopSchema.h"
#include "tools/Commands.h"
#include "tools/ProgressLine.h"
#include "tools/SampleData.h"

#include <ctime>
#include <functional>
#include <iostream>

jet::Version versionOf(const Arguments& arguments) {
    if (arguments.has("--jet3") && arguments.has("--jet4"))
        throw UsageError("Só um dos formatos pode ser pedido: --jet3 ou --jet4.");
    return arguments.has("--jet3") ? jet::Version::jet3 : jet::Version::jet4;
}

ado::ShopRoles rolesOf(const Arguments& arguments) {
    ado::ShopRoles roles;
    roles.owner = arguments.text("--owner", roles.owner);
    roles.clerks = arguments.text("--clerks", roles.clerks);
    if (roles.owner == roles.clerks)
        throw UsageError("O dono e os atendentes são dois papéis.");
    return roles;
}

void requireNone(const Arguments& arguments, std::initializer_list<const char*> options,
                 const std::string& why) {
    for (const char* const option : options)
        if (arguments.has(option))
            throw UsageError(why + ": deixe fora " + option + ".");
}

namespace {

jet::CivilTime today() {
    const std::time_t now = std::time(nullptr);
    const std::tm local = *std::localtime(&now);
    return {.year = local.tm_year + 1900, .month = local.tm_mon + 1, .day = local.tm_mday};
}

constexpr std::int64_t kMostRows = 100'000'000;

} // namespace

int runCreate(const Arguments& arguments) {
    if (const auto server = arguments.server()) {
        requireNone(arguments, {"--jet3", "--jet4"},
                    "Uma base de dados num servidor não tem formato de arquivo");
        std::vector<jet::TableSpec> tables(shop::tables().begin(), shop::tables().end());
        tables.push_back(shop::history());
        const ado::ShopRoles roles = rolesOf(arguments);
        ado::createShopOnServer(*server, tables, roles, shop::serverIndexes());
        std::cout << "Criado: " << ado::shownSource("Data Source=" + ado::quotedValue(*server))
                  << ", com " << tables.size() << " tabelas vazias.\n"
                  << "Quem vai trabalhar: grant " << roles.clerks << " to usuario;\n";
        return kDone;
    }
    requireNone(arguments, {"--owner", "--clerks"}, "Um arquivo não tem papéis");
    shop::createFile(arguments.newFile(), versionOf(arguments));
    std::cout << "Criado: " << arguments.operand(0) << ", com " << shop::tables().size()
              << " tabelas vazias.\n";
    return kDone;
}

int runSample(const Arguments& arguments) {
    SampleSize size;
    size.clients = arguments.number("--clients", size.clients, kMostRows);
    size.banks = arguments.number("--banks", size.banks, kMostRows);
    size.cheques = arguments.number("--cheques", size.cheques, kMostRows);
    size.bounced = arguments.number("--bounced", size.bounced, kMostRows);
    if (size.cheques + size.bounced > 0 && (size.clients == 0 || size.banks == 0))
        throw UsageError("Cheques pedem ao menos um cliente e um banco.");
    const auto seed = static_cast<std::uint64_t>(arguments.number("--seed", 1, INT64_MAX));
    const jet::CivilTime day = arguments.day("--today").value_or(today());
    ProgressLine progress;
    shop::createFile(arguments.newFile(), versionOf(arguments), [&](jet::Database& database) {
        fillWithSamples(database, size, seed, jet::Date::of(day), std::ref(progress));
    });
    progress.clear();
    std::cout << "Criado: " << arguments.operand(0)
              << ", com registros inventados: " << size.clients << " clientes, " << size.banks
              << " bancos, " << size.cheques << " cheques, " << size.bounced
              << " cheques sem fundos.\n";
    return kDone;
}
