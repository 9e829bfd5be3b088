#pragma once

#include "jet/Types.h"

#include <cstdint>
#include <string>
#include <vector>

namespace jet {

/// One thing that a check has found.
struct Finding {
    enum class Severity : std::uint8_t {
        rule,    ///< a row that breaks a rule which the file keeps: see checkRules()
        warning, ///< harmless: space that nobody can use, a counter nobody relies on
        error,
    };
    Severity severity{};
    PageNo page{};        ///< where
    std::string sentence; ///< what, in Portuguese, table and structure named
};

/// The outcome of a check.
struct Report {
    std::vector<Finding> findings; ///< in the order found; of one kind at most 50 are told
    std::uint32_t pages = 0;
    std::uint32_t freePages = 0;
    std::uint64_t tables = 0;
    std::uint64_t rows = 0; ///< of all tables, the system's own included
    std::uint64_t indexEntries = 0;

    [[nodiscard]] bool clean() const noexcept { return findings.empty(); }
    /// No errors; there may be warnings.
    [[nodiscard]] bool sound() const noexcept;
};

} // namespace jet
