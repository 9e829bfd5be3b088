// What makes two definitions of a table different for who reads it, and two indexes the ends of one
// relationship.
#include "jet/TableDefinition.h"

#include <gtest/gtest.h>

#include <functional>

using namespace jet;

namespace {

TableDefinition definition() {
    TableDefinition table;
    table.pages = {PageNo{7}, PageNo{9}};
    table.maxColumns = 2;
    table.maxVariables = 1;
    table.ownedMap = {PageNo{3}, 0};
    table.freeMap = {PageNo{3}, 1};
    table.columns.resize(2);
    table.columns[0].name = "codigo";
    table.columns[0].type = ColumnType::longInteger;
    table.columns[0].fixed = true;
    table.columns[1].name = "obs";
    table.columns[1].type = ColumnType::memo;
    table.columns[1].number = 1;
    table.realIndexes.push_back({
        {{0, true}},
        {PageNo{3}, 2},
        PageNo{12        },
        true, false, true
    });
    table.longValues.push_back({
        1, {PageNo{3}, 3},
         RowId{PageNo{3}, 4}
    });
    return table;
}

TEST(Definitions, AreTheSameWhereAllIsThatRowsAndIndexesAreReadBy) {
    EXPECT_TRUE(sameStructure(definition(), definition()));
    using Change = std::function<void(TableDefinition&)>;
    const struct {
        const char* name;
        Change change;
    } cases[] = {
        {"pages",                 [](TableDefinition& t) { t.pages.pop_back(); }                           },
        {"columns ever",          [](TableDefinition& t) { ++t.maxColumns; }                               },
        {"variables ever",        [](TableDefinition& t) { ++t.maxVariables; }                             },
        {"owned map",             [](TableDefinition& t) { ++t.ownedMap.slot; }                            },
        {"free map",              [](TableDefinition& t) { ++t.freeMap.slot; }                             },
        {"a column more",         [](TableDefinition& t) { t.columns.emplace_back(); }                     },
        {"name",                  [](TableDefinition& t) { t.columns[0].name = "código"; }                },
        {"type",                  [](TableDefinition& t) { t.columns[0].type = ColumnType::single; }       },
        {"number",                [](TableDefinition& t) { t.columns[1].number = 2; }                      },
        {"length",                [](TableDefinition& t) { t.columns[1].length = 8; }                      },
        {"place among variables", [](TableDefinition& t) { t.columns[1].variableIndex = 1; }               },
        {"place among fixed",     [](TableDefinition& t) { t.columns[0].fixedOffset = 4; }                 },
        {"fixed",                 [](TableDefinition& t) { t.columns[0].fixed = false; }                   },
        {"autonumber",            [](TableDefinition& t) { t.columns[0].autonumber = true; }               },
        {"scale",                 [](TableDefinition& t) { t.columns[0].scale = 2; }                       },
        {"an index less",         [](TableDefinition& t) { t.realIndexes.clear(); }                        },
        {"root",                  [](TableDefinition& t) { t.realIndexes[0].root = PageNo{13}; }           },
        {"index map",             [](TableDefinition& t) { ++t.realIndexes[0].map.slot; }                  },
        {"unique",                [](TableDefinition& t) { t.realIndexes[0].unique = false; }              },
        {"nulls",                 [](TableDefinition& t) { t.realIndexes[0].ignoreNulls = true; }          },
        {"required",              [](TableDefinition& t) { t.realIndexes[0].required = false; }            },
        {"key",                   [](TableDefinition& t) { t.realIndexes[0].columns[0].ascending = false; }},
        {"long values of",        [](TableDefinition& t) { t.longValues[0].columnNumber = 0; }             },
        {"their map",             [](TableDefinition& t) { ++t.longValues[0].owned.slot; }                 },
        {"their free map",        [](TableDefinition& t) { t.longValues[0].free.reset(); }                 },
    };
    for (const auto& [name, change] : cases) {
        TableDefinition other = definition();
        change(other);
        EXPECT_FALSE(sameStructure(definition(), other)) << name;
        EXPECT_FALSE(sameStructure(other, definition())) << name;
    }
}

TEST(Definitions, OfOtherCountersAndTextsAreReadTheSame) {
    TableDefinition other = definition();
    other.lost = Error(Errc::conflict, "foi apagada");
    other.logicalIndexes.emplace_back();
    EXPECT_TRUE(sameStructure(definition(), other));
}

TEST(LogicalIndexes, OfARelationshipNameEachOther) {
    using Kind = LogicalIndex::Kind;
    using Side = LogicalIndex::Side;
    const TableDefinition parents = definition(); // on page 7
    const LogicalIndex parent{"r", 4, 0, Kind::relationship, Side::parent, 6, PageNo{20}};
    const LogicalIndex child{"r", 6, 0, Kind::relationship, Side::child, 4, PageNo{7}};
    EXPECT_TRUE(arePartners(parents, parent, child));
    const std::function<void(LogicalIndex&, LogicalIndex&)> changes[] = {
        [](LogicalIndex& a, LogicalIndex&) { a.side = Side::child; },
        [](LogicalIndex& a, LogicalIndex&) { a.side = Side::none; },
        [](LogicalIndex&, LogicalIndex& b) { b.side = Side::parent; },
        [](LogicalIndex& a, LogicalIndex&) { a.kind = Kind::plain; },
        [](LogicalIndex&, LogicalIndex& b) { b.kind = Kind::primary; },
        [](LogicalIndex& a, LogicalIndex&) { a.partner = 5; },
        [](LogicalIndex&, LogicalIndex& b) { b.partner = 5; },
        [](LogicalIndex&, LogicalIndex& b) { b.partnerTable = PageNo{8}; },
    };
    for (std::size_t i = 0; i < std::size(changes); ++i) {
        LogicalIndex a = parent;
        LogicalIndex b = child;
        changes[i](a, b);
        EXPECT_FALSE(arePartners(parents, a, b)) << i;
    }
    // The same seen from the children's table.
    TableDefinition children = definition();
    children.pages = {PageNo{20}};
    EXPECT_TRUE(arePartners(children, child, parent));
    EXPECT_FALSE(arePartners(parents, child, parent));
}

} // namespace
