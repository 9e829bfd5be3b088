#include "jet/Database.h"
#include "jet/FileSteps.h"
#include "tools/Commands.h"
#include "tools/SampleData.h"
#include "tools/ShopSchema.h"

#include <ctime>
#include <functional>
#include <iostream>

namespace {

jet::Version versionOf(const Arguments& arguments) {
    if (arguments.has("--jet3") && arguments.has("--jet4"))
        throw UsageError("Só um dos formatos pode ser pedido: --jet3 ou --jet4.");
    return arguments.has("--jet3") ? jet::Version::jet3 : jet::Version::jet4;
}

/// Makes the file and lets `fill` work on it, under another name until it is whole.
void createFile(const std::filesystem::path& path, jet::Version version,
                const std::function<void(jet::Database&)>& fill) {
    jet::Disk& disk = jet::Disk::system();
    jet::requireAbsent(path, disk);
    jet::UnnamedFile part(path, disk);
    jet::Database::create(part.path(), version);
    {
        jet::Database database(part.path());
        shop::createTables(database);
        fill(database);
        database.flush();
    }
    jet::requireAbsent(path, disk);
    part.takeName();
}

jet::CivilTime today() {
    const std::time_t now = std::time(nullptr);
    const std::tm local = *std::localtime(&now);
    return {.year = local.tm_year + 1900, .month = local.tm_mon + 1, .day = local.tm_mday};
}

constexpr std::int64_t kMostRows = 100'000'000;

} // namespace

int runCreate(const Arguments& arguments) {
    createFile(arguments.path(), versionOf(arguments), [](jet::Database&) {});
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
    createFile(arguments.path(), versionOf(arguments), [&](jet::Database& database) {
        fillWithSamples(database, size, seed, jet::Date::of(day));
    });
    return kDone;
}
