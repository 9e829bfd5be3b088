#pragma once

#include "jet/Database.h"

#include <filesystem>

/// A shop's empty database, automacao.mdb, in a folder of its own that goes when this goes.
class ShopDatabase {
public:
    explicit ShopDatabase(jet::Version version = jet::Version::jet4);
    ShopDatabase(const ShopDatabase&) = delete;
    ShopDatabase& operator=(const ShopDatabase&) = delete;
    ~ShopDatabase();

    [[nodiscard]] const std::filesystem::path& folder() const noexcept { return folder_; }
    [[nodiscard]] std::filesystem::path file() const { return folder_ / "automacao.mdb"; }

private:
    std::filesystem::path folder_;
};

/// A new folder for the files of one test, among the temporary ones.
[[nodiscard]] std::filesystem::path makeTestFolder();
