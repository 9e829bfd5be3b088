#pragma once

#include "jet/RuleFile.h"

/// A file with a table of people, a column of each common type.
class People : public RuleFile {
protected:
    enum Place : std::size_t { kId, kNome, kIdade, kValor, kData, kAtivo, kObs, kPeso };

    People() {
        database_->createTable({
            "pessoas",
            {{"id", jet::ColumnType::longInteger, 0, true},
              {"nome", jet::ColumnType::text, 40},
              {"idade", jet::ColumnType::integer},
              {"valor", jet::ColumnType::currency},
              {"data", jet::ColumnType::date},
              {"ativo", jet::ColumnType::boolean},
              {"obs", jet::ColumnType::memo},
              {"peso", jet::ColumnType::real}},
            {{"PrimaryKey", {{"id"}}, true}          }
        });
    }

    [[nodiscard]] jet::Table& table() { return RuleFile::table("pessoas"); }
    void keep(const std::vector<FileRule>& rules) { RuleFile::keep("pessoas", rules); }

    jet::RowId add(const std::vector<jet::Assignment>& given) { return table().insert(given); }
    void change(jet::RowId row, const std::vector<jet::Assignment>& changes) {
        table().update(row, changes);
    }
    [[nodiscard]] jet::Value value(jet::RowId row, std::size_t column) {
        return table().read(row).value()[column];
    }

    /// The Error that `body` throws; the table is left as it was.
    template <class Body>
    jet::Error refusal(Body&& body) {
        const auto before = contents();
        try {
            body();
        } catch (const jet::Error& error) {
            EXPECT_EQ(contents(), before);
            return error;
        }
        ADD_FAILURE() << "nothing was refused";
        return {jet::Errc::misuse, ""};
    }
    [[nodiscard]] std::vector<std::pair<jet::RowId, jet::Row>> contents() {
        std::vector<std::pair<jet::RowId, jet::Row>> rows;
        jet::RowCursor row = table().scan();
        for (bool there = row.first(); there; there = row.next())
            rows.emplace_back(row.id(), row.row().values());
        return rows;
    }
};
