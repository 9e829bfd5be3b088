#pragma once

#include "jet/RuleFile.h"
#include "support/Versions.h"

#include <gmock/gmock.h>

#include <map>
#include <string>
#include <vector>

/// Tables of clients, their cheques and their states, for relationships between them.
class Relationships : public RuleFile {
protected:
    using Flags = FileRelationship;

    Relationships() {
        // Children with an index on their parent's key, and without one.
        for (const bool indexed : {true, false}) {
            // clang-format off
            jet::TableSpec child{
                indexed ? "cheques" : "avulsos",
                {{"numero", jet::ColumnType::longInteger},
                 {"cliente", jet::ColumnType::longInteger},
                 {"uf", jet::ColumnType::text, 2}},
                {{"PrimaryKey", {{"numero"}}, true}}
            };
            // clang-format on
            if (indexed)
                child.indexes.push_back({"cliente", {{"cliente"}}});
            database_->createTable(child);
        }
        // clang-format off
        database_->createTable({
            "clientes",
            {{"codigo", jet::ColumnType::longInteger},
             {"uf", jet::ColumnType::text, 2},
             {"pai", jet::ColumnType::longInteger}},
            {{"PrimaryKey", {{"codigo"}}, true}, {"uf", {{"uf"}}}, {"pai", {{"pai"}}}}
        });
        // clang-format on
        database_->createTable(
            {"estados", {{"uf", jet::ColumnType::text, 2}}, {{"PrimaryKey", {{"uf"}}, true}}});
    }

    std::vector<jet::Cascaded> change(const std::string& name, jet::RowId row,
                                      const std::vector<jet::Assignment>& changes) {
        return table(name).update(row, changes);
    }
    void relate(const std::string& child, const std::string& column, const std::string& parent,
                const std::string& key, std::int64_t flags = 0) {
        addRelationship(*database_, {child + parent, child, {column}, parent, {key}, flags});
    }

    /// The accounts of banks and their leaves, whose keys are of two columns.
    void relateAccounts(const std::vector<jet::IndexSpec>& indexesOfLeaves) {
        // clang-format off
        database_->createTable({
            "contas",
            {{"agencia", jet::ColumnType::text, 10}, {"banco", jet::ColumnType::longInteger}},
            {{"PrimaryKey", {{"banco"}, {"agencia"}}, true}}
        });
        database_->createTable({
            "folhas",
            {{"banco", jet::ColumnType::longInteger}, {"agencia", jet::ColumnType::text, 10}},
            indexesOfLeaves
        });
        addRelationship(*database_,
                        {"contasfolhas", "folhas", {"agencia", "banco"},
                         "contas", {"agencia", "banco"}, Flags::kCascadeUpdate});
        // clang-format on
    }

    /// For a test of broken ones: the check of the file, in the end, would rightly tell of them.
    void forgetRelationships() {
        jet::Table& declared = table("MSysRelationships");
        for (jet::RowCursor row = declared.scan(); row.first();)
            declared.erase(row.id());
    }

    using Contents = std::map<std::string, std::vector<jet::Row>>;
    [[nodiscard]] Contents contents() {
        Contents all;
        for (const std::string& name : database_->tableNames()) {
            jet::RowCursor row = table(name).scan();
            for (bool there = row.first(); there; there = row.next())
                all[name].push_back(row.row().values());
        }
        return all;
    }
    /// The message of the Error{related} that `body` throws; nothing has changed.
    template <class Body>
    std::string refusal(Body&& body) {
        const Contents before = contents();
        try {
            body();
            ADD_FAILURE() << "nothing was refused";
        } catch (const jet::Error& error) {
            EXPECT_EQ(error.code(), jet::Errc::related) << error.what();
            EXPECT_EQ(contents(), before);
            return error.what();
        }
        return {};
    }
    [[nodiscard]] std::vector<jet::Value> column(const std::string& name, std::size_t place) {
        std::vector<jet::Value> values;
        const Contents all = contents();
        for (const jet::Row& row : all.at(name))
            values.push_back(row[place]);
        return values;
    }
};
