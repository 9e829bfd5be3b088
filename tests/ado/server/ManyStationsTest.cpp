// Many stations at one server: nothing is lost, read by halves, or told to a clerk that isn't his
// to mend. How long each has to wait when there are many more is told by bench/StationsBench.cpp.
#include "ado/Shop.h"
#include "support/StationsAtWork.h"

namespace {

constexpr int kClerks = 8;
constexpr int kRounds = 40;

class ManyStations : public Shop {
protected:
    static std::int64_t total(const std::vector<std::int64_t>& values) {
        std::int64_t sum = 0;
        for (const std::int64_t value : values)
            sum += value;
        return sum;
    }
    std::int64_t sumOf(const std::string& statement) {
        ado::Recordset rows;
        rows.Open(statement, connection);
        return rows.field(0).currency().tenThousandths;
    }
};
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(ManyStations);
INSTANTIATE_TEST_SUITE_P(, ManyStations, onServers(), keptName);

TEST_P(ManyStations, NothingIsLostReadByHalvesOrToldToAClerkThatIsntHisToMend) {
    StationsAtWork::addRows(connection);
    constexpr int kSteady = StationsAtWork::kSteadyCheques;
    const std::string sumOfSteady =
        "select sum(valor) from cheques where lancamento<=" + std::to_string(kSteady);
    const std::int64_t steady = sumOf(sumOfSteady);

    StationsAtWork stations(connectionString(), folder.path());
    stations.work(kClerks, kRounds, 0);

    EXPECT_EQ(stations.errors(), std::vector<std::string>());
    EXPECT_EQ(rowsIn("cheques"),
              kSteady + total(stations.told("made")) - total(stations.told("settled")));
    EXPECT_EQ(sumOf("select sum(limite_credito) from cliente_fornecedor where codigo<=" +
                    std::to_string(StationsAtWork::kRaised)),
              total(stations.told("raised")) * 10'000);
    for (const char* const kind : {"inserts", "updates", "settlements", "transfers", "purges"})
        EXPECT_EQ(stations.told(std::string(kind) + ".try").size(), stations.told(kind).size())
            << kind << ": who reckons from what he reads has nobody before him";
    EXPECT_EQ(sumOf("select sum(limite_credito) from cliente_fornecedor"),
              (total(stations.told("raised")) + total(stations.told("apart"))) * 10'000);
    EXPECT_FALSE(stations.told("sum").empty());
    for (const std::int64_t sum : stations.told("sum"))
        EXPECT_EQ(sum, steady);
    EXPECT_EQ(sumOf(sumOfSteady), steady);
    EXPECT_FALSE(stations.told("news").empty());
}

} // namespace
