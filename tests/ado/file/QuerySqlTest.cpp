#include "ado/file/QuerySql.h"

#include "ado/Shop.h"

namespace {

TEST(QuerySql, KnowsWhetherARowAloneDecidesIfItBelongsAndWhere) {
    const std::pair<const char*, bool> cases[] = {
        {"select * from t where a=1 order by b",         true },
        {"select * from t where dia<#01/31/2024#",       true },
        {"select * from t where dia<date()",             false},
        {"select * from t where dia<Now()",              false},
        {"select * from t order by now()-dia",           false},
        {"select * from t where a in (select b from u)", false},
        {"select * from t where [date]=1 and [now]=2",   true },
    };
    for (const auto& [source, byRow] : cases)
        EXPECT_EQ(ado::QuerySql::ofRows(ado::parseSelect(source, asWritten()), {}).isByRow(), byRow)
            << source;
}

} // namespace
