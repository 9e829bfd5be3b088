#pragma once

#include "jet/Database.h"

namespace jet {

/// The pages of an open file, for what copies and tests them, and its other parts.
class DatabasePager {
public:
    [[nodiscard]] static Pager& of(Database& database) noexcept { return database.pager(); }
    [[nodiscard]] static auto& parts(Database& database) noexcept { return *database.parts_; }
};

} // namespace jet
