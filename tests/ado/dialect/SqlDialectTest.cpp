#include "ado/dialect/SqlDialect.h"

#include "ado/Shop.h"

namespace {

using ado::parseSelect;
using jet::Errc;
using Strings = std::vector<std::string>;

ado::Select parsed(std::string_view text) { return parseSelect(text, asWritten()); }

TEST(SqlDialect, TextsKeepWhatStandsInThem) {
    EXPECT_EQ(ado::quotedText("D'Avila"), "'D''Avila' collate texto");
    EXPECT_EQ(parsed("select 'it''s #1/1/2024# [x] true' from t").text,
              "select 'it''s #1/1/2024# [x] true' collate texto from \"t\"");
    EXPECT_EQ(parsed("select \"a\"\"b'c\" from t").text,
              "select 'a\"b''c' collate texto from \"t\"");
}

TEST(SqlDialect, NamesAreQuotedAndKeywordsAreNot) {
    EXPECT_EQ(parsed("SELECT [order by], Index, pragma FROM [a \"b]").text,
              "select \"order by\" , \"Index\" , \"pragma\" from \"a \"\"b\"");
    EXPECT_EQ(parsed("select t.select from t").text, "select \"t\" . \"select\" from \"t\"");
}

TEST(SqlDialect, OperatorsMeanWhatTheyMeanInTheDialect) {
    EXPECT_EQ(parsed("select a from t where a/2 <> true and b mod 3=1").where,
              "\"a\" * 1.0 / 2 <> -1 and \"b\" % 3 = 1");
    EXPECT_EQ(parsed("select a from t where mid$(a,1,2)='x'").where,
              "\"jet_mid\" ( \"a\" , 1 , 2 ) collate texto = 'x' collate texto");
    EXPECT_EQ(errorOf([] { (void)parsed("select a from t where a || b"); }), Errc::syntax);
    EXPECT_EQ(errorOf([] { (void)parsed("select a from t where sqlite_version()=1"); }),
              Errc::notFound);
}

TEST(SqlDialect, TheTablesOfAJoinAreFound) {
    const auto select =
        parsed("select a.x, [b].*, y as z from (a inner join [b c] as b on (a.x=b.y)) "
               "left join d on d.x in (select e from g) where not (x=1) "
               "order by a.x desc, z");
    ASSERT_TRUE(select.plain);
    Strings tables;
    for (const auto& table : select.tables)
        tables.push_back(table.table + "=" + table.alias);
    EXPECT_EQ(tables, (Strings{"a=a", "b c=b", "d=d"}));
    ASSERT_EQ(select.items.size(), 3U);
    EXPECT_EQ(select.items[1].qualifier, "b");
    EXPECT_EQ(select.items[1].column, "");
    EXPECT_EQ(select.items[2].label, "z");
    EXPECT_EQ(select.where, "not ( \"x\" = 1 )");
    ASSERT_EQ(select.sortTerms.size(), 2U);
    EXPECT_TRUE(select.sortTerms[0].descending);
}

TEST(SqlDialect, GroupedDistinctAndComputedSelectsAreNotPlain) {
    for (const char* text :
         {"select distinct a from t", "select a from t group by a", "select a+1 from t",
          "select count(*) from t", "select a from t union select a from u",
          "select a from (select a from t)", "select a from t having a=1", "select 1"})
        EXPECT_FALSE(parsed(text).plain) << text;
    for (const char* text : {"select * from t", "select all a from t", "select t.a b from t"})
        EXPECT_TRUE(parsed(text).plain) << text;
}

TEST(SqlDialect, ParenthesesGoSixtyDeep) {
    const auto nested = [](std::size_t depth) {
        return "select " + std::string(depth, '(') + "1" + std::string(depth, ')') + " from t";
    };
    EXPECT_NE(parsed(nested(60)).text, "");
    EXPECT_EQ(errorOf([&] { (void)parsed(nested(61)); }), Errc::syntax);
}

TEST(SqlDialect, ConditionsStayConditions) {
    EXPECT_EQ(ado::parseCondition("cod_banco=104 And nome='x'", asWritten()),
              "\"cod_banco\" = 104 and \"nome\" = 'x' collate texto");
    for (const char* text : {"a=1) or (1=1", "a=1; b=2", "", "a=1 order by b", "a=1 union select 1",
                             "select 1", "((a=1)", "a=1 -- ", "a=1 from t"})
        EXPECT_EQ(errorOf([&] { (void)ado::parseCondition(text, asWritten()); }), Errc::syntax)
            << text;
}

TEST(SqlDialect, ASortIsAListOfNames) {
    const auto terms = ado::parseSort("nome, bancos.codigo DESC,[a b] asc", asWritten());
    ASSERT_EQ(terms.size(), 3U);
    EXPECT_EQ(terms[1].qualifier, "bancos");
    EXPECT_TRUE(terms[1].descending);
    EXPECT_EQ(terms[2].column, "a b");
    for (const char* text : {"nome,", ",", "nome desc asc", "nome+1", "1", "*", "a.*",
                             "mid(nome,1)", "nome; x", "nome codigo"})
        EXPECT_NE(errorOf([&] { (void)ado::parseSort(text, asWritten()); }), Errc::unsupported)
            << text;
}

} // namespace
