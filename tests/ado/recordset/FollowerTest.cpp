#include "ado/Follower.h"

#include "ado/Shop.h"
#include "support/Versions.h"

#include <map>
#include <numeric>

namespace {

using namespace std::chrono_literals;
using jet::Errc;

class FollowedTable : public Shop {
protected:
    FollowedTable() {
        addSomeOfEach();
        connection.database().flush();
    }
    ado::Follower follow(const char* table, const std::vector<ado::Text>& columns) {
        return {connection, table, columns,
                [this](std::uint32_t block, ado::Follower::Rows& rows) { take(block, rows); }};
    }
    void take(std::uint32_t block, ado::Follower::Rows& rows) {
        std::int64_t sum = 0;
        while (rows.next()) {
            sum += rows.currency(0).tenThousandths;
            const ado::Date due = rows.isNull(1) ? ado::Date{} : rows.date(1);
            told_[rows.integer(2)] = {rows.currency(0), due};
        }
        sums_[block] = sum;
    }
    [[nodiscard]] ado::Currency sum() const {
        return {
            std::accumulate(sums_.begin(), sums_.end(), std::int64_t{0},
                            [](std::int64_t all, const auto& one) { return all + one.second; })};
    }
    ado::Currency stored() {
        ado::Recordset rows;
        rows.Open("select valor from cheques", connection);
        std::int64_t all = 0;
        for (const ado::Recordset& row = rows; !rows.EOF(); rows.MoveNext())
            all += row["valor"].currency().tenThousandths;
        return {all};
    }
    static void toTheEnd(ado::Follower& follower) {
        while (follower.follow(1ms))
            ;
    }

    std::map<std::uint32_t, std::int64_t> sums_;
    std::map<std::int64_t, std::pair<ado::Currency, ado::Date>> told_; ///< by their number
};

INSTANTIATE_TEST_SUITE_P(, FollowedTable, bothVersions(), keptName);

const std::vector<ado::Text> kColumns = {"Valor", "bompara", "lancamento"};

TEST_P(FollowedTable, GivesValuesAsARecordsetDoes) {
    ado::Follower follower = follow("CHEQUES", kColumns);
    EXPECT_FALSE(follower.isComplete());
    toTheEnd(follower);
    EXPECT_TRUE(follower.isComplete());
    EXPECT_EQ(follower.progress(), 1);
    EXPECT_EQ(follower.damage(), std::nullopt);
    ado::Recordset rows;
    rows.Open("cheques", connection);
    EXPECT_EQ(told_.size(), 6U);
    for (const ado::Recordset& row = rows; !rows.EOF(); rows.MoveNext()) {
        const auto& [value, due] = told_.at(row["lancamento"].integer());
        EXPECT_EQ(value, row["valor"].currency());
        EXPECT_EQ(due.days, row["bompara"].date().days);
    }
}

TEST_P(FollowedTable, FollowsChangesOfBothStations) {
    ado::Follower follower = follow("cheques", kColumns);
    toTheEnd(follower);
    EXPECT_EQ(sum(), stored());
    ado::Recordset cheques;
    cheques.Open("cheques", connection);
    cheques["valor"] = ado::Currency{12'3400};
    cheques.Update();
    connection.flush();
    toTheEnd(follower);
    EXPECT_EQ(sum(), stored());
    {
        ado::Connection other;
        other.Open(connectionString());
        ado::Recordset theirs;
        theirs.Open("cheques", other);
        theirs.MoveLast();
        theirs.Delete();
    }
    toTheEnd(follower);
    EXPECT_EQ(sum(), stored());
}

TEST_P(FollowedTable, RefusesWhatItCannotFollow) {
    EXPECT_EQ(errorOf([&] { follow("nada", {}); }), Errc::notFound);
    EXPECT_EQ(errorOf([&] { follow("cheques", {"nada"}); }), Errc::notFound);
    EXPECT_EQ(errorOf([&] { follow("cliente_fornecedor", {"observacao"}); }), Errc::unsupported);
    connection.Close();
    EXPECT_EQ(errorOf([&] { follow("cheques", {}); }), Errc::misuse);
    connection.Open();
}

TEST_P(FollowedTable, EndsWithItsConnection) {
    ado::Follower follower = follow("cheques", kColumns);
    toTheEnd(follower);
    connection.Close();
    connection.Open(); // another of the same file
    EXPECT_EQ(errorOf([&] { follower.follow(1ms); }), Errc::misuse);
    EXPECT_FALSE(follower.isComplete());
    EXPECT_EQ(follower.progress(), 0);
}

TEST_P(FollowedTable, OfAValueOfAnotherTypeTells) {
    ado::Follower follower = follow("cheques", {"numero", "bompara", "lancamento"});
    toTheEnd(follower);
    ASSERT_NE(follower.damage(), std::nullopt);
    EXPECT_EQ(follower.damage()->code(), Errc::outOfRange);
    EXPECT_EQ(sum(), ado::Currency{});
}

} // namespace
