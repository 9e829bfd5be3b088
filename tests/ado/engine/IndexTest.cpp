#include "ado/Shop.h"
#include "ado/engine/AccessPlan.h"
#include "support/Versions.h"

#include <random>

namespace {

using ado::AccessPlan;
using ado::Constraint;
using jet::ColumnType;
using Kind = ado::Constraint::Kind;
using Strings = std::vector<std::string>;

/// An index may only ever make an answer come sooner.
class IndexTest : public Shop {
protected:
    // clang-format off
    IndexTest() {
        connection.database().createTable({"t",
                                           {{"id", ColumnType::longInteger, 0, true},
                                            {"pequeno", ColumnType::byte},
                                            {"curto", ColumnType::integer},
                                            {"longo", ColumnType::longInteger},
                                            {"dinheiro", ColumnType::currency},
                                            {"simples", ColumnType::single},
                                            {"duplo", ColumnType::real},
                                            {"dia", ColumnType::date},
                                            {"nome", ColumnType::text, 20},
                                            {"sim", ColumnType::boolean}},
                                           {{"PrimaryKey", {{"id"}}, true},
                                            {"i1", {{"pequeno"}}},
                                            {"i2", {{"curto", false}}},
                                            {"i3", {{"longo"}, {"nome"}}},
                                            {"i4", {{"dinheiro"}}},
                                            {"i5", {{"simples"}}},
                                            {"i6", {{"duplo", false}}, false, false, true},
                                            {"i7", {{"dia"}, {"curto", false}}},
                                            {"i8", {{"nome"}, {"longo"}}},
                                            {"i9", {{"sim"}, {"dia"}}}}});
        std::mt19937 random(3);
        const auto pick = [&](int most) {
            return static_cast<std::int64_t>(random() % static_cast<unsigned>(most));
        };
        const auto orNull = [&](const jet::Value& value) {
            return pick(8) == 0 ? jet::Value{} : value;
        };
        connection.BeginTrans();
        for (int i = 0; i < 600; ++i)
            add("t", {{"pequeno", orNull(pick(6))},
                      {"curto", orNull(pick(9) - 4)},
                      {"longo", orNull(pick(12) - 5)},
                      {"dinheiro", orNull(jet::Currency{(pick(40) - 20) * 2500})},
                      {"simples", orNull(static_cast<double>(pick(20)) / 10)},
                      {"duplo", orNull(static_cast<double>(pick(20)) / 10)},
                      {"dia", orNull(jet::Date{static_cast<double>(pick(30) - 10) / 2})},
                      {"nome", orNull(std::string(1, static_cast<char>('A' + pick(3))) +
                                      std::string(static_cast<std::size_t>(pick(3)), 'b'))},
                      {"sim", pick(2) == 0}});
        connection.CommitTrans();
    }
    // clang-format on
    Strings ids(const std::string& condition, const std::string& order = "id") {
        return column("select id from t where " + condition + " order by " + order, "id");
    }
};
INSTANTIATE_TEST_SUITE_P(, IndexTest, bothVersions(), keptName);

TEST_P(IndexTest, EveryComparisonAnswersAsWithoutIndex) {
    const char* const columns[] = {"id",      "pequeno", "curto", "longo", "dinheiro",
                                   "simples", "duplo",   "dia",   "sim"};
    const char* const operands[] = {
        "0",    "1",       "-1",         "2.5",   "0.3",          "0.25",   "-0.5",         "-3.75",
        "1.9",  "300",     "1e300",      "-1e9",  "32768",        "-32769", "#12/31/1899#", "true",
        "null", "1.00001", "3000000000", "'abc'", "0.30000000012"};
    for (const char* column : columns) {
        for (const char* sign : {"=", "<", "<=", ">", ">=", "<>"}) {
            for (const char* operand : operands) {
                const std::string rest = std::string(sign) + operand;
                EXPECT_EQ(ids(column + rest), ids("+" + (column + rest))) << column << rest;
            }
        }
        const std::string name = column;
        EXPECT_EQ(ids(name + " between -0.6 and 1.45"), ids("+" + name + " between -0.6 and 1.45"));
        EXPECT_EQ(ids(name + " in (1,2,0.5,null)"), ids("+" + name + " in (1,2,0.5,null)"));
        EXPECT_EQ(ids(name + " is null"), ids("+" + name + " is null"));
    }
    for (const char* rest :
         {"='AB'", "<'ab'", ">='abb'", " between 'a' and 'b'", " in ('A','cB')", ">''", "='a '"})
        EXPECT_EQ(ids(std::string("nome") + rest), ids(std::string("mid$(nome,1,99)") + rest))
            << rest;
    const std::string longer(60'000, 'b'); // than any key
    for (const char* sign : {"=", "<", ">"})
        EXPECT_EQ(ids("nome" + (sign + ("'" + longer + "'"))),
                  ids("mid$(nome,1,99)" + (sign + ("'" + longer + "'"))))
            << sign;
}

TEST_P(IndexTest, ARowsOwnNumberComparesLikeAnyOther) {
    const std::int64_t some = jet::packed([&] {
        auto scan = table("t").scan();
        EXPECT_TRUE(scan.first());
        for (int i = 0; i < 200; ++i)
            EXPECT_TRUE(scan.next());
        return scan.id();
    }());
    const std::string number = std::to_string(some);
    for (const std::string& operand :
         {number, number + ".5", std::string("-5"), std::string("0"), std::string("1e30"),
          std::string("99999999999999"), std::string("'x'"), std::string("null")}) {
        for (const char* sign : {"=", "<", "<=", ">", ">="}) {
            const std::string rest = sign + operand;
            EXPECT_EQ(ids("_rowid_" + rest), ids("+_rowid_" + rest)) << rest;
        }
    }
    for (const char* way : {"", " desc"})
        EXPECT_EQ(ids("_rowid_>" + number, std::string("_rowid_") + way),
                  ids("_rowid_>" + number, std::string("+_rowid_") + way));
}

TEST_P(IndexTest, SeveralColumnsOfAnIndexNarrowTogether) {
    for (const char* condition :
         {"longo=2 and nome='ab'", "longo=2 and nome>'a' and nome<='b'", "longo=2 and nome is null",
          "nome='AB' and longo between 0 and 3", "dia=1.5 and curto>=-1", "dia=1.5 and curto<2.5",
          "sim=true and dia>0", "sim=false and dia between -2 and 1", "longo in (1,2) and nome='a'",
          "dia=1.5 and curto=70000", "nome=5 and longo=1", "duplo>0.5 and duplo<=1.5"}) {
        std::string without = condition;
        for (const char* name : {"longo", "dia", "sim", "curto", "duplo"}) {
            for (std::size_t at = 0; (at = without.find(name, at)) != std::string::npos; at += 6)
                without.insert(at, "+");
        }
        for (std::size_t at = 0; (at = without.find("nome", at)) != std::string::npos; at += 12) {
            if (without.compare(at, 6, "nome i") != 0 && without.compare(at, 6, "nome=5") != 0)
                without.insert(at + 4, " & ''");
        }
        EXPECT_EQ(ids(condition), ids(without)) << condition << " / " << without;
    }
}

TEST_P(IndexTest, EveryOrderIsTheOneThatSortingGives) {
    for (const char* order :
         {"id desc", "curto, id", "curto desc, id", "dia, curto desc, id", "dia desc, curto, id",
          "dia, curto, id", "duplo desc, id", "duplo, id", "longo, nome, id", "sim, dia, id",
          "dinheiro desc, id desc", "simples, id", "pequeno desc, id"}) {
        const std::string text = order;
        std::string sorted;
        for (const char c : text)
            sorted +=
                sorted.empty() || sorted.back() == ' ' ? std::string("+") + c : std::string(1, c);
        for (std::size_t at = 0; (at = sorted.find("+desc", at)) != std::string::npos;)
            sorted.erase(at, 1);
        for (const char* condition : {"id>0", "id between 100 and 140", "id<=20", "id>=590",
                                      "curto>0", "dia=1", "sim=true", "longo=1 and nome='a'"})
            EXPECT_EQ(ids(condition, text), ids(condition, sorted))
                << text << " where " << condition;
    }
}

TEST_P(IndexTest, AKeyOfTwoColumnsOrdersOnlyAsItGoes) {
    connection.database().createTable({
        "pares",
        {{"a", ColumnType::longInteger}, {"b", ColumnType::longInteger}},
        {{"PrimaryKey", {{"a"}, {"b", false}}, true}                             }
    });
    for (const std::int64_t a : {3, 1, 4, 2})
        for (const std::int64_t b : {2, 3, 1})
            add("pares", {
                             {"a", a},
                             {"b", b}
            });
    for (const char* condition : {"a>0", "a between 2 and 3", "a=2", "a=2 and b>1"}) {
        for (const char* a : {"a", "a desc"}) {
            for (const char* b : {"b", "b desc"}) {
                const auto walked = [&](const std::string& plus) {
                    std::string select = "select a*10+b as n from pares where ";
                    for (const std::string& part :
                         {std::string(condition), std::string(" order by "), plus, std::string(a),
                          std::string(", "), plus, std::string(b)})
                        select += part;
                    return column(select, "n");
                };
                EXPECT_EQ(walked(""), walked("+")) << condition << ": " << a << ", " << b;
            }
        }
    }
}

TEST_P(IndexTest, ThePlanIsTheOneThatReadsLeast) {
    const jet::Table& t = table("t");
    const auto at = [&](const char* name) { return t.findColumn(name); };
    const auto indexName = [&](const AccessPlan& plan) {
        return plan.way == AccessPlan::Way::index ? t.indexes()[plan.index].name
                                                  : std::string("none");
    };
    const auto unknown = [](const AccessPlan&) -> std::optional<double> { return std::nullopt; };
    const std::vector<Constraint> key{
        {at("longo"), Kind::equal},
        {at("id"),    Kind::equal}
    };
    AccessPlan plan = ado::choosePlan(t, key, {}, unknown);
    EXPECT_EQ(indexName(plan), "PrimaryKey");
    EXPECT_TRUE(plan.unique);
    EXPECT_EQ(plan.equal, std::vector<std::size_t>{1});

    const std::vector<Constraint> both{
        {at("nome"),  Kind::equal},
        {at("longo"), Kind::equal}
    };
    plan = ado::choosePlan(t, both, {}, unknown);
    EXPECT_EQ(plan.equal.size(), 2U);

    const std::vector<Constraint> row{
        {std::nullopt, Kind::equal},
        {at("longo"),  Kind::equal}
    };
    EXPECT_EQ(ado::choosePlan(t, row, {}, unknown).way, AccessPlan::Way::row);

    EXPECT_EQ(ado::choosePlan(t, {}, {}, unknown).way, AccessPlan::Way::scan);
    const std::vector<ado::OrderTerm> byKey{
        {at("id"), true}
    };
    plan = ado::choosePlan(t, {}, byKey, unknown);
    EXPECT_EQ(indexName(plan), "PrimaryKey");
    EXPECT_TRUE(plan.ordered);
    EXPECT_TRUE(plan.backwards);

    // A range is worth its index as long as it isn't most of the table.
    const std::vector<Constraint> range{
        {at("longo"), Kind::atLeast},
        {at("longo"), Kind::atMost }
    };
    EXPECT_EQ(ado::choosePlan(t, range, {}, [](const AccessPlan&) { return 0.01; }).way,
              AccessPlan::Way::index);
    EXPECT_EQ(ado::choosePlan(t, range, {}, [](const AccessPlan&) { return 0.9; }).way,
              AccessPlan::Way::scan);

    // An index that leaves out nulls can't stand for the table.
    const std::vector<ado::OrderTerm> byReal{
        {at("duplo"), false}
    };
    EXPECT_FALSE(ado::choosePlan(t, {}, byReal, unknown).ordered);
    // The order of texts in an index is coarser than that of texts.
    const std::vector<ado::OrderTerm> byName{
        {at("nome"), false}
    };
    EXPECT_FALSE(ado::choosePlan(t, {}, byName, unknown).ordered);
}

} // namespace
