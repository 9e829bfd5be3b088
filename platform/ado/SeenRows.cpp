#include "ado/SeenRows.h"

namespace ado {

namespace {

/// Beyond that all are forgotten: some megabytes, and more rows than an operator looks at.
constexpr std::size_t kMost = 100'000;

} // namespace

void SeenRows::saw(const jet::Table& table, jet::RowId row, std::uint64_t stamp) {
    if (seen_.size() >= kMost)
        seen_.clear();
    seen_[{&table, jet::packed(row)}] = stamp;
}

void SeenRows::wrote(const jet::Table& table, jet::RowId row, std::optional<std::uint64_t> stamp,
                     bool inTransaction) {
    const Key key{&table, jet::packed(row)};
    const auto known = seen_.find(key);
    if (known == seen_.end())
        return;
    if (inTransaction)
        own_[key] = stamp;
    else if (stamp)
        known->second = *stamp;
    else
        seen_.erase(known);
}

std::optional<std::uint64_t> SeenRows::of(const jet::Table& table, jet::RowId row) const {
    const Key key{&table, jet::packed(row)};
    if (const auto own = own_.find(key); own != own_.end())
        return own->second;
    const auto known = seen_.find(key);
    return known == seen_.end() ? std::nullopt : std::optional(known->second);
}

void SeenRows::commit() {
    for (const auto& [key, stamp] : own_) {
        if (stamp)
            seen_[key] = *stamp;
        else
            seen_.erase(key);
    }
    own_.clear();
}

} // namespace ado
