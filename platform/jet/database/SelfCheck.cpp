#include "jet/SelfCheck.h"

#include "jet/database/DatabasePager.h"

#include <algorithm>

namespace jet {

namespace {

/// A table with more rows than this is sampled.
constexpr std::int64_t kAllRows = 3000;
constexpr int kSampledPages = 48;
constexpr int kSampledRows = 12;
constexpr int kSampledEntries = 200;

std::string refusal(const Table& table, const std::string& reason) {
    return "A tabela \"" + table.name() + "\" pode ser consultada mas não alterada: " + reason +
           ".";
}

std::optional<std::string> unknownOrder(const Table& table) {
    for (const Index& index : table.indexes())
        for (const IndexColumn& key : index.columns) {
            const Column& column = table.columns()[key.column];
            if (isText(column.type) && !column.collation)
                return "o campo \"" + column.name + "\" usa a ordem de texto " +
                       std::to_string(column.order.lcid) + ", que este programa não sabe manter";
        }
    return std::nullopt;
}

std::string disagreement(const Index& index, RowId id) {
    return "o índice \"" + index.name + "\" não confere com a linha " + std::to_string(id.slot) +
           " da página " + std::to_string(number(id.page));
}

/// The rows' keys are in the indexes.
std::optional<std::string> missingEntry(const Table& table, RowId id) {
    for (std::size_t i = 0; i < table.indexes().size(); ++i)
        if (const auto key = table.keyOf(i, id); key && !table.tree(i).contains(*key, id))
            return disagreement(table.indexes()[i], id);
    return std::nullopt;
}

/// The entries of an index, up to `limit` from one end, are those of their rows.
std::optional<std::string> wrongEntry(const Table& table, std::size_t index, std::int64_t limit,
                                      bool forward, std::int64_t& entries) {
    IndexTree::Cursor entry = table.walk(index);
    for (bool there = forward ? entry.first() : entry.last(); there && entries < limit;
         there = forward ? entry.next() : entry.previous()) {
        const auto key = table.keyOf(index, entry.row());
        if (!key || !std::equal(key->begin(), key->end(), entry.key().begin(), entry.key().end()))
            return disagreement(table.indexes()[index], entry.row());
        ++entries;
    }
    return std::nullopt;
}

std::optional<std::string> compareAll(const Table& table) {
    std::int64_t rows = 0;
    std::vector<std::int64_t> indexed(table.indexes().size());
    RowCursor row = table.scan();
    for (bool there = row.first(); there; there = row.next(), ++rows)
        for (std::size_t i = 0; i < indexed.size(); ++i)
            if (const auto key = table.keyOf(i, row.id())) {
                if (!table.tree(i).contains(*key, row.id()))
                    return disagreement(table.indexes()[i], row.id());
                ++indexed[i];
            }
    for (std::size_t i = 0; i < indexed.size(); ++i) {
        std::int64_t entries = 0;
        if (auto wrong = wrongEntry(table, i, indexed[i] + 1, true, entries))
            return wrong;
        if (entries != indexed[i])
            return "o índice \"" + table.indexes()[i].name + "\" tem entradas demais";
    }
    return std::nullopt;
}

std::optional<std::string> compareSample(const Table& table, Pager& pager) {
    const UsageMap owned(pager, table.definition().ownedMap);
    const std::uint32_t stride = std::max<std::uint32_t>(1, pager.pageCount() / kSampledPages);
    RowCursor row = table.scan();
    for (std::uint32_t from = 0; from < pager.pageCount(); from += stride) {
        const auto page = owned.next(from);
        if (!page)
            break;
        from = std::max(from, number(*page));
        int rows = 0;
        for (bool there = row.seek({*page, 0}); there && rows < kSampledRows;
             there = row.next(), ++rows)
            if (auto missing = missingEntry(table, row.id()))
                return missing;
    }
    for (std::size_t i = 0; i < table.indexes().size(); ++i)
        for (const bool forward : {true, false}) {
            std::int64_t entries = 0;
            if (auto wrong = wrongEntry(table, i, kSampledEntries, forward, entries))
                return wrong;
        }
    return std::nullopt;
}

} // namespace

std::optional<Hindrance> selfCheck(const Table& table, Database& database) {
    using enum Hindrance::Why;
    try {
        if (const auto unknown = unknownOrder(table))
            return Hindrance{textOrder, refusal(table, *unknown)};
        const auto wrong = table.rowCount() <= kAllRows
                               ? compareAll(table)
                               : compareSample(table, DatabasePager::of(database));
        if (wrong)
            return Hindrance{damage, refusal(table, *wrong)};
    } catch (const Error& error) {
        if (error.code() != Errc::corrupt && error.code() != Errc::unsupported)
            throw;
        return Hindrance{error.code() == Errc::corrupt ? damage : unknownForm,
                         "A tabela \"" + table.name() +
                             "\" pode ser consultada mas não alterada. " + error.what()};
    }
    return std::nullopt;
}

} // namespace jet
