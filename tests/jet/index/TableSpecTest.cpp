// Which tables can be made, and what is said of the others.
#include "jet/RuleFile.h"
#include "jet/Sentences.h"
#include "support/Versions.h"

#include <gmock/gmock.h>

using namespace jet;
using testing::HasSubstr;

namespace {

class NewTables : public RuleFile {
protected:
    /// Makes one with what `change` makes of a sound one.
    template <class Change>
    void make(Change&& change) {
        TableSpec spec{
            "contas",
            {{"id", ColumnType::longInteger}, {"nome", ColumnType::text, 20}},
            {{"nome", {{"nome"}}}                              }
        };
        change(spec);
        database_->createTable(spec);
    }
    template <class Change>
    void expectRefused(Errc code, const char* words, Change&& change) {
        SCOPED_TRACE(words);
        EXPECT_THAT(sentenceOf([&] { make(change); }, code), HasSubstr(words));
        EXPECT_TRUE(database_->tableNames().empty());
    }
};

INSTANTIATE_TEST_SUITE_P(, NewTables, bothVersions(), versionName);

TEST_P(NewTables, HaveNamesThatTheFormatTakes) {
    for (const char* name : {"", " a", "a.b", "a!b", "a[b", "a]b", "a`b", "a\nb"}) {
        expectRefused(Errc::misuse, "não pode ser nome", [&](TableSpec& t) { t.name = name; });
        expectRefused(Errc::misuse, "não pode ser nome",
                      [&](TableSpec& t) { t.columns[0].name = name; });
        expectRefused(Errc::misuse, "não pode ser nome",
                      [&](TableSpec& t) { t.indexes[0].name = name; });
    }
    expectRefused(Errc::misuse, "não pode ser nome",
                  [](TableSpec& t) { t.name = std::string(65, 'n'); });
    make([](TableSpec& t) { t.name = std::string(63, 'n') + "ç"; });
    EXPECT_EQ(database_->tableNames().size(), 1U);
}

TEST_P(NewTables, HaveColumnsOfTypesThatCanBeMade) {
    using enum ColumnType;
    const auto column = [&](Errc code, const char* words, const ColumnSpec& spec) {
        expectRefused(code, words, [&](TableSpec& t) { t.columns[0] = spec; });
    };
    column(Errc::misuse, "de 1 a 255 de largura", {"c", text, 0});
    column(Errc::misuse, "de 1 a 255 de largura", {"c", text, 256});
    column(Errc::misuse, "de 1 a 255 de largura", {"c", binary, 0});
    column(Errc::misuse, "de um tipo", {"c", static_cast<ColumnType>(0x11)});
    column(Errc::misuse, "não pode ser numerado", {"c", integer, 0, true});
    column(Errc::exists, "aparece duas vezes", {"NOME", text, 5});
    if (GetParam() == Version::jet3)
        column(Errc::misuse, "de um tipo", {"c", numeric});
    else
        make([](TableSpec& t) { t.columns.push_back({"c", numeric}); });
    make([](TableSpec& t) {
        t.name = "outra";
        for (const auto type : {boolean, byte, memo, ole, guid})
            t.columns.push_back({"c" + std::to_string(static_cast<int>(type)), type});
        t.columns.push_back({"larga", binary, 255});
        t.columns.push_back({"estreita", text, 1});
    });
    EXPECT_TRUE(database_->hasTable("outra"));
}

TEST_P(NewTables, HaveAtMostTheColumnsAndIndexesOfTheFormat) {
    const auto columns = [](TableSpec& t, std::size_t count) {
        t.columns.clear();
        for (std::size_t i = 0; i < count; ++i)
            t.columns.push_back({"c" + std::to_string(i), ColumnType::byte});
        t.indexes.clear();
    };
    const auto indexes = [](TableSpec& t, std::size_t count) {
        t.indexes.clear();
        for (std::size_t i = 0; i < count; ++i)
            t.indexes.push_back({"i" + std::to_string(i), {{"id"}}});
    };
    const char* const words = "de 1 a 255 campos e no máximo 32 índices";
    expectRefused(Errc::misuse, words, [&](TableSpec& t) { columns(t, 0); });
    expectRefused(Errc::misuse, words, [&](TableSpec& t) { columns(t, 256); });
    expectRefused(Errc::misuse, words, [&](TableSpec& t) { indexes(t, 33); });
    make([&](TableSpec& t) { columns(t, 255); });
    make([&](TableSpec& t) {
        t.name = "outra";
        indexes(t, 32);
    });
    EXPECT_EQ(database_->table("contas").columns().size(), 255U);
    EXPECT_EQ(database_->table("outra").indexes().size(), 32U);
}

TEST_P(NewTables, HaveIndexesOnColumnsOfTheirs) {
    const auto index = [&](Errc code, const char* words, std::size_t keys, const char* column) {
        expectRefused(code, words, [&](TableSpec& t) {
            t.columns.push_back({"foto", ColumnType::ole});
            t.indexes[0].columns.assign(keys, {column});
        });
    };
    index(Errc::misuse, "de 1 a 10 campos", 0, "id");
    index(Errc::misuse, "de 1 a 10 campos", 11, "id");
    index(Errc::notFound, "\"idade\", que não existe", 1, "idade");
    index(Errc::misuse, "\"foto\" não pode ter índice", 1, "foto");
    make([](TableSpec& t) {
        t.indexes[0].columns = {
            {"NOME"},
            { "Id", false}
        };
    });
    const Index& made = database_->table("contas").indexes()[0];
    EXPECT_EQ(made.columns, (std::vector<IndexColumn>{
                                {1, true },
                                {0, false}
    }));
}

} // namespace
