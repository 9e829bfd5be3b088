#pragma once

#include "jet/Check.h"
#include "jet/Database.h"
#include "support/TemporaryFolder.h"
#include "support/Versions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

/// A new file of either format, and the table of cheques that tests make in it.
class DatabaseFile : public testing::TestWithParam<jet::Version> {
protected:
    DatabaseFile() : path(folder / "loja.mdb") { jet::Database::create(path, GetParam()); }

    static jet::TableSpec shopCheques() {
        // clang-format off
        return {
            "Cheques",
            {{"lancamento", jet::ColumnType::longInteger, 0, true},
             {"cliente", jet::ColumnType::longInteger},
             {"numero", jet::ColumnType::text, 20},
             {"bompara ", jet::ColumnType::date},
             {"valor", jet::ColumnType::currency},
             {"renuneração", jet::ColumnType::currency},
             {"obs", jet::ColumnType::memo},
             {"descontar", jet::ColumnType::boolean}},
            {{"PrimaryKey", {{"lancamento"}}, true},
             {"cliente", {{"cliente"}}},
             {"numero", {{"numero", false}}}}
        };
        // clang-format on
    }

    static constexpr std::size_t kLancamentoAt = 0;
    static constexpr std::size_t kClienteAt = 1;
    static constexpr std::size_t kNumeroAt = 2;
    static constexpr std::size_t kDataAt = 3;
    static constexpr std::size_t kValorAt = 4;
    static constexpr std::size_t kObsAt = 6;
    static constexpr std::size_t kDescontarAt = 7;

    static jet::Row cheque(std::int64_t client, const std::string& number) {
        jet::Row row(8);
        row[kClienteAt] = client;
        row[kNumeroAt] = number;
        row[kDataAt] = jet::Date::of({2026, 3, 31});
        row[kValorAt] = jet::Currency{12345600};
        row[kDescontarAt] = true;
        return row;
    }

    static std::vector<std::int64_t> column(jet::Table& table, std::size_t index) {
        std::vector<std::int64_t> values;
        jet::RowCursor row = table.scan();
        for (bool there = row.first(); there; there = row.next())
            values.push_back(row.row().integer(index));
        return values;
    }

    static std::int64_t countEntries(jet::Table& table, std::size_t index) {
        std::int64_t count = 0;
        jet::IndexTree::Cursor entry = table.walk(index);
        for (bool there = entry.first(); there; there = entry.next())
            ++count;
        return count;
    }

    /// The rows to which the entries of an index between two keys lead.
    static std::vector<jet::RowId> rowsBetween(jet::Table& table, std::size_t index,
                                               const jet::KeyRange& range) {
        std::vector<jet::RowId> rows;
        jet::IndexTree::Cursor entry = table.walk(index);
        for (bool there = entry.seek(range.lower);
             there && (!range.upper ||
                       std::lexicographical_compare(entry.key().begin(), entry.key().end(),
                                                    range.upper->begin(), range.upper->end()));
             there = entry.next())
            rows.push_back(entry.row());
        return rows;
    }

    TemporaryFolder folder;
    std::filesystem::path path;
};
