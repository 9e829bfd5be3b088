#include "support/ShopDatabase.h"

#include "ado/ServerShop.h"
#include "schema/ShopSchema.h"
#include "support/Cluster.h"

#include <random>
#include <stdexcept>
#include <string>
#include <utility>

std::filesystem::path makeTestFolder() {
    std::random_device random;
    for (int attempt = 0; attempt < 100; ++attempt) {
        auto folder =
            std::filesystem::temp_directory_path() / ("valtrino-" + std::to_string(random()));
        if (std::filesystem::create_directory(folder))
            return folder;
    }
    throw std::runtime_error("no folder for the test");
}

ShopDatabase::ShopDatabase(Kept kept) : kept_(kept), folder_(makeTestFolder()) {
    if (kept.isServer()) {
        address_ = Cluster::instance(shop::tables(), shop::serverIndexes()).newShop();
        return;
    }
    jet::Database::create(file(), kept);
    jet::Database database(file());
    shop::createTables(database);
}

ShopDatabase::~ShopDatabase() {
    if (kept_.isServer() && !remade_)
        Cluster::instance(shop::tables(), shop::serverIndexes()).giveBack(address_);
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

std::string ShopDatabase::line() const { return kept_.isServer() ? address_ : folder_.string(); }

void ShopDatabase::remake(std::span<const jet::TableSpec> tables) {
    if (kept_.isServer()) {
        Cluster& cluster = Cluster::instance(shop::tables(), shop::serverIndexes());
        if (!std::exchange(remade_, true))
            cluster.giveBack(address_);
        address_ = cluster.newDatabase();
        return ado::createShopOnServer(address_, tables);
    }
    std::filesystem::remove(file());
    jet::Database::create(file(), kept_);
    jet::Database fresh(file());
    for (const jet::TableSpec& table : tables)
        fresh.createTable(table);
}
