#pragma once

#include "ado/Migration.h"
#include "ado/Shop.h"
#include "ado/server/ServerWire.h"
#include "jet/Check.h"
#include "jet/Database.h"
#include "jet/Extras.h"
#include "jet/Rules.h"
#include "support/Cluster.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <algorithm>

inline jet::Database::Options onlyRead() {
    jet::Database::Options options;
    options.readOnly = true;
    return options;
}

inline std::vector<jet::Row> rowsOf(jet::Database& database, const std::string& table) {
    std::vector<jet::Row> rows;
    jet::RowCursor row = database.table(table).scan();
    for (bool there = row.first(); there; there = row.next())
        rows.push_back(row.row().values());
    return rows;
}

/// A file, and an empty database of a server.
class Migration : public testing::TestWithParam<jet::Version> {
protected:
    void SetUp() override {
        if (const std::string why = Cluster::absence(); !why.empty())
            GTEST_SKIP() << why;
        address_ = Cluster::instance(shopTables()).newDatabase();
    }
    /// A new file that `fill` has worked on.
    std::filesystem::path file(const std::function<void(jet::Database&)>& fill) {
        std::filesystem::path path = folder_ / "loja.mdb";
        jet::Database::create(path, GetParam());
        jet::Database database(path);
        fill(database);
        database.flush();
        return path;
    }
    ado::Migration there(const std::filesystem::path& path, const jet::Progress& progress = {}) {
        return ado::migrateToServer(path, address_, {}, {}, {}, progress);
    }
    std::filesystem::path back(std::vector<std::string>* notes = nullptr) {
        std::filesystem::path path = folder_ / "volta.mdb";
        std::filesystem::remove(path);
        const ado::Migration done = ado::migrateToFile(address_, path, GetParam(), {});
        if (notes != nullptr)
            *notes = done.notes;
        return path;
    }
    /// What a file has beside its tables, in an order of its own.
    static jet::Extras extrasOf(jet::Database& database) {
        jet::Extras extras = jet::extrasOf(database);
        std::ranges::sort(extras.objects, {}, [](const jet::ExtraObject& one) {
            return std::pair(one.type, one.name);
        });
        std::erase_if(extras.relationships, [](const jet::RelationshipSpec& bond) {
            return bond.child.starts_with("MSys");
        });
        std::ranges::sort(extras.relationships, {}, &jet::RelationshipSpec::name);
        return extras;
    }
    /// What is said of a migration that is refused, and leaves nothing behind.
    std::string refusal(const std::filesystem::path& path, jet::Errc code,
                        const jet::Progress& progress = {}) {
        std::string said;
        try {
            static_cast<void>(there(path, progress));
            ADD_FAILURE() << "was migrated";
        } catch (const jet::Error& error) {
            EXPECT_EQ(error.code(), code) << error.what();
            said = error.what();
        }
        EXPECT_EQ(answer("select count(*) from pg_namespace where nspname = 'valtrino'"), "0");
        return said;
    }
    std::string answer(const std::string& sql) {
        ado::ServerWire wire(address_);
        return wire.run(sql).field(0, 0).value_or("null");
    }
    /// Its keys in words, by name.
    static std::vector<std::string> indexesOf(const jet::Table& table) {
        std::vector<std::string> words;
        for (const jet::Index& index : table.indexes()) {
            std::string word = index.name + (index.primary ? " primary" : "") +
                               (index.unique ? " unique" : "") +
                               (index.required ? " required" : "") +
                               (index.ignoreNulls ? " without nulls" : "") + ":";
            for (const jet::IndexColumn& key : index.columns)
                word += " " + table.columns()[key.column].name + (key.ascending ? "" : " down");
            words.push_back(std::move(word));
        }
        std::ranges::sort(words);
        return words;
    }
    /// Each table of one file as the other has it, row by row.
    static void expectSame(const std::filesystem::path& before,
                           const std::filesystem::path& after) {
        EXPECT_TRUE(jet::check(after).clean());
        jet::Database was(before, onlyRead());
        jet::Database is(after, onlyRead());
        ASSERT_EQ(was.tableNames(), is.tableNames());
        for (const std::string& name : was.tableNames()) {
            SCOPED_TRACE(name);
            const auto columns = was.table(name).columns();
            const auto copied = is.table(name).columns();
            ASSERT_EQ(columns.size(), copied.size());
            for (std::size_t i = 0; i < columns.size(); ++i) {
                EXPECT_EQ(columns[i].name, copied[i].name);
                EXPECT_EQ(columns[i].type, copied[i].type) << columns[i].name;
                EXPECT_EQ(columns[i].autonumber, copied[i].autonumber) << columns[i].name;
            }
            EXPECT_EQ(was.table(name).lastNumber(), is.table(name).lastNumber());
            EXPECT_EQ(indexesOf(was.table(name)), indexesOf(is.table(name)));
            EXPECT_TRUE(rowsOf(was, name) == rowsOf(is, name));
        }
        const jet::Extras had = extrasOf(was);
        const jet::Extras has = extrasOf(is);
        EXPECT_TRUE(had.objects == has.objects);
        EXPECT_TRUE(had.relationships == has.relationships);
    }
    TemporaryFolder folder_;
    std::string address_;
};
