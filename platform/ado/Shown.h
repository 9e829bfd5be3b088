#pragma once

#include <cstdint>

namespace ado {

/// How a stored row was when it was shown: what the operator has seen of it, and what a change that
/// he then asks for is compared with. Whoever shows a row takes it, keeps it for as long as the row
/// is on show, and gives it back to Edit() or Delete(). Nothing that is read in between renews it.
/// A value of 16 bytes; one made by itself is of no row.
class Shown {
public:
    Shown() = default;
    friend bool operator==(const Shown&, const Shown&) = default;

private:
    friend class Recordset;
    Shown(std::uint64_t version, std::uint64_t changes) : version_(version), changes_(changes) {}
    std::uint64_t version_ = 0; ///< of the whole row, long texts too
    std::uint64_t changes_ = 0; ///< jet::Database::changesByOthers() at that time, 0 if of no row
};

} // namespace ado
