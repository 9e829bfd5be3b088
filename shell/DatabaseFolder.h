#pragma once

#include <QString>

namespace Mirtal {

/// The folder of the database, as init.ini has it. Set once, at the start. Apart from the rest of
/// what all windows share, because the connection is made from it, and the rest works on that.
inline QString DatabaseFolder;

} // namespace Mirtal
