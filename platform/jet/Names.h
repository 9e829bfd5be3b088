#pragma once

#include <string>
#include <string_view>

namespace jet {

/// The form in which two names of tables or columns are the same: lower case, accented Latin
/// letters included, and without trailing blanks.
[[nodiscard]] std::string foldedName(std::string_view utf8);

} // namespace jet
