#include "jet/check/CheckTable.h"
#include "jet/index/IndexTree.h"
#include "jet/index/RowKey.h"
#include "jet/row/LongValues.h"
#include "jet/value/Checksum.h"

#include <algorithm>

namespace jet {

namespace {

/// Expected entries held in memory at a time; indexes beyond that cost another pass over the rows.
constexpr std::size_t kEntriesAtOnce = std::size_t{6} << 20;

std::uint64_t sumOf(std::span<const std::byte> key, std::uint64_t least) noexcept {
    return std::max(checksum(key), least);
}

} // namespace

bool TableCheck::claimsRoot(std::size_t index) const {
    return context_.ledger.has(indexOwners_[index], definition_.realIndexes[index].root);
}

std::uint64_t TableCheck::expectedEntry(std::size_t index, RowId id) {
    const RealIndex& real = definition_.realIndexes[index];
    const RowKey found =
        rowKey(definition_, real, parts_, [&](const Column&, std::span<const std::byte> stored) {
            return readLongValue(context_.pager, stored, id.page);
        });
    if (real.required && found.anyNull)
        error(id.page, "um campo que deve ser preenchido está vazio",
              "linha " + std::to_string(id.slot) + ", índice \"" + indexName(index) + "\"");
    if (real.ignoreNulls && found.allNull)
        return kNoEntry;
    return found.key ? sumOf(*found.key, kLeastSum) : std::uint64_t{kAnyKey};
}

void TableCheck::computeEntries(std::size_t first, std::size_t count,
                                std::vector<std::vector<std::uint64_t>>& expected) {
    for (std::size_t i = first; i < first + count; ++i)
        expected[i].assign(rows_.size(), kUnknown);
    PageRef page;
    PageRef other;
    const std::string indexes = where_ + ", índices";
    for (std::size_t at = 0; at < rows_.size(); ++at) {
        const RowId id = row(at);
        if (std::binary_search(damaged_.begin(), damaged_.end(), rows_[at]))
            continue;
        context_.goOn(indexes, at, rows_.size());
        if (!page || page.page() != id.page)
            page = context_.pager.read(id.page);
        const Slot slot = DataPage(context_.pager.format(), page.bytes(), id.page).slot(id.slot);
        const auto bytes =
            slot.kind == SlotKind::pointer ? target(slot.bytes, other) : std::optional(slot.bytes);
        if (!bytes) // unreached: it was there a moment ago
            continue;
        parts_.cut(*bytes);
        for (std::size_t i = first; i < first + count; ++i)
            expected[i][at] = expectedEntry(i, id);
    }
}

std::uint64_t TableCheck::checkIndexes() {
    const std::size_t indexes = definition_.realIndexes.size();
    const std::size_t atOnce =
        std::max<std::size_t>(1, kEntriesAtOnce / std::max<std::size_t>(1, rows_.size()));
    std::vector<std::vector<std::uint64_t>> expected(indexes);
    std::uint64_t entries = 0;
    std::sort(damaged_.begin(), damaged_.end());
    for (std::size_t first = 0; first < indexes; first += atOnce) {
        const std::size_t count = std::min(atOnce, indexes - first);
        computeEntries(first, count, expected);
        for (std::size_t i = first; i < first + count; ++i) {
            entries += checkIndex(i, expected[i]);
            expected[i] = {};
        }
    }
    return entries;
}

std::uint64_t TableCheck::checkIndex(std::size_t index,
                                     const std::vector<std::uint64_t>& expected) {
    const RealIndex& real = definition_.realIndexes[index];
    const std::string& where = context_.ledger.name(indexOwners_[index]);
    Findings& findings = context_.findings;
    if (!claimsRoot(index)) {
        findings.error(real.root, where, "a raiz do índice não está no seu mapa");
        return 0;
    }
    if (columnOfUnknownOrder(definition_, real) != nullptr)
        findings.warning(real.root, where,
                         "a ordem de texto não é conhecida e as chaves não foram conferidas");

    std::uint64_t entries = 0;
    std::vector<bool> met(rows_.size());
    Bytes last;
    const auto entry = [&](std::span<const std::byte> key, RowId id) {
        context_.goOn(where, entries++, rows_.size());
        if (real.unique && entries > 1 && !isAllNull(key, real.columns.size()) &&
            std::ranges::equal(key, last))
            findings.error(id.page, where, "uma chave aparece duas vezes num índice único",
                           placeOf(id));
        last.assign(key.begin(), key.end());
        const auto packedRow = static_cast<PackedRow>(packed(id));
        const auto found = std::lower_bound(rows_.begin(), rows_.end(), packedRow);
        if (found == rows_.end() || *found != packedRow) {
            findings.error(id.page, where, "o índice contém uma linha que não existe", placeOf(id));
            return;
        }
        const auto at = static_cast<std::size_t>(found - rows_.begin());
        if (met[at])
            findings.error(id.page, where, "o índice contém duas vezes a mesma linha", placeOf(id));
        met[at] = true;
        if (expected[at] == kNoEntry ||
            (expected[at] >= kLeastSum && expected[at] != sumOf(key, kLeastSum)))
            findings.error(id.page, where, "a chave do índice não é a da linha", placeOf(id));
    };
    const auto problem = [&](PageNo page, const std::string& reason) {
        findings.error(page, where, reason);
    };
    const IndexTree tree(context_.pager, definition_.page(), real.root, real.map);
    tree.verify({problem, entry});
    for (std::size_t at = 0; at < rows_.size(); ++at)
        if (!met[at] && expected[at] != kNoEntry && expected[at] != kUnknown)
            findings.error(row(at).page, where, "falta uma linha no índice", placeOf(row(at)));
    return entries;
}

} // namespace jet
