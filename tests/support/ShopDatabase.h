#pragma once

#include "jet/Database.h"
#include "support/Kept.h"

#include <filesystem>
#include <span>
#include <string>

/// A shop's empty database, automacao.mdb, in a folder of its own that goes when this goes; or one
/// on a server, beside such a folder.
class ShopDatabase {
public:
    explicit ShopDatabase(Kept kept = jet::Version::jet4);
    ShopDatabase(const ShopDatabase&) = delete;
    ShopDatabase& operator=(const ShopDatabase&) = delete;
    ~ShopDatabase();

    [[nodiscard]] const std::filesystem::path& folder() const noexcept { return folder_; }
    /// Of one that is a file.
    [[nodiscard]] std::filesystem::path file() const { return folder_ / "automacao.mdb"; }
    /// What the folder line says: the folder, or the server's address.
    [[nodiscard]] std::string line() const;
    /// Empty again, with other tables.
    void remake(std::span<const jet::TableSpec> tables);

private:
    Kept kept_;
    std::filesystem::path folder_;
    std::string address_; ///< of one on a server
    bool remade_ = false; ///< with tables that nobody else wants
};

/// A new folder for the files of one test, among the temporary ones.
[[nodiscard]] std::filesystem::path makeTestFolder();
