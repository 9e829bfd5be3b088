#include "support/ShopDatabase.h"

#include "tools/ShopSchema.h"

#include <random>
#include <stdexcept>
#include <string>

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

ShopDatabase::ShopDatabase(jet::Version version) : folder_(makeTestFolder()) {
    jet::Database::create(file(), version);
    jet::Database database(file());
    shop::createTables(database);
}

ShopDatabase::~ShopDatabase() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}
