#pragma once

#include "jet/Database.h"
#include "jet/MemoryDisk.h"

#include <random>
#include <string>

/// Where the tests' databases are on their disks in memory.
inline constexpr const char* kPath = "/loja/automacao.mdb";
inline const std::string kJournal = std::string(kPath) + "-journal";

[[nodiscard]] inline jet::Database::Options on(jet::Disk& disk) {
    jet::Database::Options options;
    options.disk = &disk;
    return options;
}

/// What the tables hold, in one number, wherever in the file it is.
[[nodiscard]] std::uint64_t contentOf(jet::Database& file);

/// A shop's database without rows, on a disk of its own.
[[nodiscard]] DiskImage emptyShop(jet::Version version);

/// The disk of a shop whose station died while it wrote the pages of `work`: some hold their new
/// content, the commit pair says "writing", and the journal is there.
[[nodiscard]] DiskImage halfDone(const DiskImage& before,
                                 const std::function<void(jet::Database&)>& work);

/// The shop's work, one transaction a step: cheques come in, are settled, purged; texts grow over
/// pages; a table is made now and then.
class ShopWork {
public:
    explicit ShopWork(std::uint64_t seed) : random_(seed) {}

    /// The table that all of it is done in.
    [[nodiscard]] static jet::TableSpec cheques();

    void step(jet::Database& file, int number);

private:
    std::uint64_t below(std::uint64_t count) { return random_() % count; }
    void add(jet::Table& table, std::size_t memo);
    void eraseSome(jet::Table& table, std::uint64_t oneIn);
    void settle(jet::Table& table);

    std::mt19937_64 random_;
};
