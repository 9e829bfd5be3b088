#pragma once

#include "jet/Check.h"
#include "jet/Database.h"
#include "jet/ShopWork.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

/// A file with a counter and accounts, for stations that change them.
class CounterFile {
protected:
    static constexpr int kAccounts = 40;

    static jet::Row rowOf(std::int64_t value) { return {jet::Value{}, jet::Value{value}}; }

    static void set(jet::Table& table, jet::RowId id, std::int64_t value,
                    std::optional<std::uint64_t> expected = std::nullopt) {
        const jet::Assignment change[] = {
            {1, value}
        };
        table.update(id, change, expected);
    }

    static jet::RowId firstRow(jet::Table& table) {
        jet::RowCursor row = table.scan();
        EXPECT_TRUE(row.first());
        return row.id();
    }

    static std::int64_t valueOf(jet::Table& table, jet::RowId id) {
        return std::get<std::int64_t>((*table.read(id))[1]);
    }

    static jet::TableSpec numbers(const std::string& name) {
        return {
            name,
            {{"codigo", jet::ColumnType::longInteger, 0, true},
              {"valor", jet::ColumnType::longInteger}                                  },
            {{"PrimaryKey", {{"codigo"}}, true},                {"valor", {{"valor"}}}}
        };
    }

    static void makeShop(const std::filesystem::path& path, jet::Version version,
                         jet::Disk& disk = jet::Disk::system()) {
        jet::Database::create(path, version, disk);
        jet::Database file(path, on(disk));
        file.createTable(numbers("contador")).insert(rowOf(0));
        file.createTable(numbers("numerados"));
        jet::Table& accounts = file.createTable(numbers("contas"));
        for (int i = 0; i < kAccounts; ++i)
            accounts.insert(rowOf(0));
    }

    static void expectSound(const std::filesystem::path& path) {
        for (const jet::Finding& finding : jet::check(path).findings)
            ADD_FAILURE() << finding.sentence;
    }
};
