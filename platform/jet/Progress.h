#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace jet {

/// Told while a file is copied or checked: what of it, a table as a rule, and how much of that is
/// done of how much, in pages or rows.
using Progress =
    std::function<void(const std::string& what, std::uint64_t done, std::uint64_t all)>;

} // namespace jet
