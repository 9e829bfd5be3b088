#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace jet {

/// Told while a file is copied: which table, and how many of its pages are done of how many.
using Progress =
    std::function<void(const std::string& table, std::uint64_t done, std::uint64_t pages)>;

} // namespace jet
