#include "jet/RandomRows.h"

#include "jet/database/DatabasePager.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <set>

using namespace jet;

Value RandomRows::value(const Column& column) {
    if (column.type == ColumnType::boolean)
        return chance(50);
    if (chance(12))
        return {};
    const auto bytes = [&](std::size_t size) {
        Bytes made(size);
        for (std::byte& b : made)
            b = static_cast<std::byte>(1 + below(255));
        return made;
    };
    switch (column.type) {
    case ColumnType::byte:
        return static_cast<std::int64_t>(below(256));
    case ColumnType::integer:
        return static_cast<std::int64_t>(below(65536)) - 32768;
    case ColumnType::longInteger:
        return chance(50) ? static_cast<std::int64_t>(below(300))
                          : static_cast<std::int64_t>(below(4'000'000'000)) - 2'000'000'000;
    case ColumnType::currency:
        return Currency{static_cast<std::int64_t>(engine_() >> below(63)) - 5000};
    case ColumnType::single:
        return static_cast<double>(static_cast<float>(below(100000)) / 8.0F) - 1000;
    case ColumnType::real:
        return static_cast<double>(below(1'000'000'000)) / 64 - 1e6;
    case ColumnType::date:
        return Date::of({static_cast<int>(1950 + below(100)), static_cast<int>(1 + below(12)),
                         static_cast<int>(1 + below(28)), static_cast<int>(below(24)),
                         static_cast<int>(below(60)), static_cast<int>(below(60))});
    case ColumnType::binary:
        return bytes(column.fixed ? column.length : below(std::size_t{column.length} + 1));
    case ColumnType::text: {
        const std::size_t most = column.maxCharacters();
        if (column.fixed)
            return text(most);
        return text(chance(80) ? below(std::min<std::size_t>(most, 12) + 1) : below(most + 1));
    }
    case ColumnType::memo:
        return text(longSize());
    case ColumnType::ole:
        return bytes(longSize());
    case ColumnType::guid: {
        Guid guid;
        const Bytes made = bytes(guid.bytes.size());
        std::copy(made.begin(), made.end(), guid.bytes.begin());
        return guid;
    }
    case ColumnType::numeric: {
        Numeric numeric;
        numeric.words[3] = static_cast<std::uint32_t>(below(column.precision < 5 ? 10 : 10000));
        numeric.negative = numeric.words[3] != 0 && chance(50);
        numeric.scale = column.scale;
        return numeric;
    }
    default:
        return {};
    }
}

Row RandomRows::row(const Table& table) {
    Row row;
    for (const Column& column : table.columns())
        row.push_back(column.autonumber && chance(90) ? Value() : value(column));
    return row;
}

std::string RandomRows::text(std::size_t characters) {
    // Few letters in short texts, so that keys collide; blanks at the end; now and then accents,
    // and characters that Jet 4 can't compress.
    static constexpr const char* kLetters[] = {"a", "A", "b", "B", " ", "c", "1",
                                               "-", "á", "Ç", "õ", "'", "z", "€"};
    const std::size_t kinds = chance(60) ? 7 : std::size(kLetters);
    std::string text;
    for (std::size_t i = 0; i < characters; ++i)
        text += kLetters[below(kinds)];
    return text;
}

std::size_t RandomRows::longSize() {
    const std::size_t kind = below(100);
    return below(kind < 60 ? 120 : kind < 85 ? 3000 : kind < 96 ? 20'000 : 70'000);
}

TableModel::TableModel(Database& database, const Table& table)
    : lastNumber(DatabasePager::of(database)
                     .read(table.definition().page())
                     .view()
                     .load(DatabasePager::of(database).format().definition.lastNumber)),
      indexes_(table.indexes().begin(), table.indexes().end()) {
    for (const Column& column : table.columns())
        types_.push_back(column.type);
    RowCursor row = table.scan();
    for (bool there = row.first(); there; there = row.next())
        rows.emplace(row.id(), row.row().values());
}

namespace {

/// Texts are the same to an index when they differ in case and trailing blanks only.
Value keyValue(const Value& value) {
    const auto* text = std::get_if<std::string>(&value);
    if (text == nullptr)
        return value;
    std::string key;
    for (std::size_t i = 0; i < text->size(); ++i) {
        auto c = static_cast<unsigned char>((*text)[i]);
        // "Ç" and its like, in UTF-8, are 0x20 before their small letters.
        if (i > 0 && static_cast<unsigned char>((*text)[i - 1]) == 0xC3 && c >= 0x80 && c < 0x9F)
            c = static_cast<unsigned char>(c + 0x20);
        key += c < 0x80 ? static_cast<char>(std::tolower(c)) : static_cast<char>(c);
    }
    key.erase(key.find_last_not_of(' ') + 1);
    return key;
}

bool sameKey(const Index& index, const Row& a, const Row& b) {
    return std::all_of(index.columns.begin(), index.columns.end(), [&](const IndexColumn& key) {
        return keyValue(a[key.column]) == keyValue(b[key.column]);
    });
}

} // namespace

std::optional<Errc> TableModel::refusal(const Row& row, std::optional<RowId> self) const {
    const auto isEmpty = [&](const IndexColumn& key) { return isNull(row[key.column]); };
    for (const Index& index : indexes_)
        if ((index.required || index.primary) &&
            std::any_of(index.columns.begin(), index.columns.end(), isEmpty))
            return Errc::nullValue;
    for (const Index& index : indexes_) {
        if (!(index.unique || index.primary) ||
            std::all_of(index.columns.begin(), index.columns.end(), isEmpty))
            continue;
        for (const auto& [id, other] : rows)
            if (id != self && sameKey(index, row, other))
                return Errc::duplicate;
    }
    return std::nullopt;
}

void TableModel::expectEqual(Table& table) const {
    SCOPED_TRACE(table.name());
    EXPECT_EQ(table.rowCount(), static_cast<std::int64_t>(rows.size()));
    auto expected = rows.begin();
    RowCursor row = table.scan();
    for (bool there = row.first(); there; there = row.next(), ++expected) {
        ASSERT_NE(expected, rows.end());
        ASSERT_EQ(row.id(), expected->first);
        const Row values = row.row().values();
        for (std::size_t i = 0; i < values.size(); ++i)
            ASSERT_TRUE(values[i] == expected->second[i])
                << "row " << packed(row.id()) << ", column " << table.columns()[i].name;
    }
    ASSERT_EQ(expected, rows.end());
    for (std::size_t i = 0; i < indexes_.size(); ++i) {
        std::set<RowId> met;
        IndexTree::Cursor entry = table.walk(i);
        while (entry.next())
            EXPECT_TRUE(rows.contains(entry.row()) && met.insert(entry.row()).second)
                << indexes_[i].name;
        if (!indexes_[i].ignoreNulls) {
            EXPECT_EQ(met.size(), rows.size()) << indexes_[i].name;
        }
    }
}
