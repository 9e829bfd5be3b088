#pragma once

#include "jet/Database.h"
#include "jet/Progress.h"

#include <cstdint>

/// How many rows of each kind to invent.
struct SampleSize {
    std::int64_t clients = 200; ///< one in twenty of them a supplier
    std::int64_t banks = 12;
    std::int64_t cheques = 1000;
    std::int64_t bounced = 50;
};

/// Fills the shop's empty tables with invented rows; cheques need at least one client and one bank.
/// The rows follow from `size`, `seed` and `today` alone. Cheques were issued in the year before
/// `today` and fall due up to half a year after their issue; a few have no due date. Some fields
/// are null, as in a file that people have typed.
/// @throws jet::Error.
void fillWithSamples(jet::Database& database, const SampleSize& size, std::uint64_t seed,
                     jet::Date today, const jet::Progress& progress = {});
