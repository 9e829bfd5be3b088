#pragma once

#include <string>

namespace ado {

/// Where `symbol` is in a library of the system's that the program can do without, "pq" with the
/// version 5 of its binary interface. The library is loaded when it is first asked for, and stays.
/// Null if the system hasn't it, or it hasn't the symbol.
[[nodiscard]] void* symbolIn(const std::string& library, int version, const char* symbol);

} // namespace ado
