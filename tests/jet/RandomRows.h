#pragma once

#include "jet/Database.h"

#include <map>
#include <random>

/// Random values for the columns of any table: short and long texts, texts that differ in case
/// only, memos up to 70,000 bytes, nulls. Numbers come from the generator itself, not from the
/// standard's distributions, so that a seed means the same everywhere.
class RandomRows {
public:
    explicit RandomRows(std::uint64_t seed) : engine_(seed) {}

    std::size_t below(std::size_t count) { return static_cast<std::size_t>(engine_() % count); }
    bool chance(unsigned percent) { return below(100) < percent; }

    /// A value that the column takes; null now and then.
    jet::Value value(const jet::Column& column);
    /// One for every column; numbered ones are mostly left to the file.
    jet::Row row(const jet::Table& table);

private:
    std::string text(std::size_t characters);
    std::size_t longSize();

    std::mt19937_64 engine_;
};

/// What a table must hold, kept apart from the engine: rows by their id, and the rules of its
/// unique and required indexes in the simplest form.
class TableModel {
public:
    /// Takes over the rows that the table holds.
    TableModel(jet::Database& database, const jet::Table& table);

    /// The error that the engine must give for a row (that of `self` changed to it), if any.
    [[nodiscard]] std::optional<jet::Errc> refusal(const jet::Row& row,
                                                   std::optional<jet::RowId> self) const;

    std::map<jet::RowId, jet::Row> rows;
    std::int64_t lastNumber; ///< given out to a numbered column

    /// The table's rows are those of the model, by scan and through each index.
    void expectEqual(jet::Table& table) const;

private:
    std::vector<jet::Index> indexes_;
    std::vector<jet::ColumnType> types_;
};
