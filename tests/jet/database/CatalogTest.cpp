// The catalog's own rows: what a new table gets there.
#include "jet/database/ChequeFile.h"

#include <gmock/gmock.h>

using namespace jet;

namespace {

class NewTable : public DatabaseFile {};
INSTANTIATE_TEST_SUITE_P(, NewTable, bothVersions(), versionName);

/// Of a file with accounts that have read rights each, as another program makes them: the first is
/// the one that all users belong to.
TEST_P(NewTable, BelongsToTheFirstAccountThatMayRead) {
    constexpr std::int64_t kOldTable = 2; ///< the definition page of MSysObjects
    Database file(path);
    Table& rights = file.table("MSysACEs");
    const std::size_t object = rights.findColumn("ObjectId").value();
    const std::size_t account = rights.findColumn("SID").value();
    const auto accountsOf = [&](std::int64_t id) {
        std::vector<Value> accounts;
        RowCursor row = rights.scan();
        for (bool there = row.first(); there; there = row.next())
            if (row.row().integer(object) == id)
                accounts.push_back(row.row().value(account));
        return accounts;
    };
    const std::vector<Value> owners = accountsOf(kOldTable);
    ASSERT_EQ(owners.size(), 2U);
    Row later;
    RowCursor row = rights.scan();
    for (bool there = row.first(); there; there = row.next())
        if (row.row().integer(object) == kOldTable && row.row().value(account) == owners[1])
            later = row.row().values();
    later[account] = Bytes(2, std::byte{9});
    rights.insert(later);
    const Table& made = file.createTable(shopCheques());
    EXPECT_THAT(accountsOf(number(made.definition().page())),
                testing::UnorderedElementsAreArray(owners));
}

} // namespace
