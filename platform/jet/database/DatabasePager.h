#pragma once

#include "jet/Database.h"

namespace jet {

/// The pages of an open file, for what copies and tests them.
class DatabasePager {
public:
    [[nodiscard]] static Pager& of(Database& database) noexcept { return database.pager(); }
};

} // namespace jet
