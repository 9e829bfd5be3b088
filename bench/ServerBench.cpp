// What a long way to the server costs the clerk: a cheque saved as its window does it, by a line
// that takes so long there and back.
#include "ado/Connection.h"
#include "ado/Recordset.h"
#include "schema/ShopSchema.h"
#include "support/Cluster.h"
#include "support/Relay.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kDelays[] = {0, 5, 20, 50};
constexpr std::size_t kSaves = 51;

void saveCheque(ado::Connection& station, ado::Recordset& cheques, std::size_t number) {
    ado::Transaction saving(station);
    cheques.AddNew();
    cheques["numero"] = std::to_string(number);
    cheques["valor"] = jet::Currency{1000000};
    cheques.Update();
    cheques.Requery();
    saving.commit();
}

} // namespace

int main() {
    if (const std::string why = Cluster::absence(); !why.empty())
        return std::puts(why.c_str()), 1;
    const auto tables = shop::tables();
    Cluster& server = Cluster::instance(tables);
    Relay relay(server.newShop());
    ado::Connection station;
    station.Open("Data Source=" + relay.address());
    ado::Recordset cheques;
    cheques.Open("cheques", station);
    std::puts("way there and back, ms    cheque saved, ms: median, longest    questions");
    for (const int delay : kDelays) {
        relay.setDelay(std::chrono::milliseconds(delay));
        std::vector<double> took;
        took.reserve(kSaves);
        const std::uint64_t before = relay.questions();
        for (std::size_t i = 0; i < kSaves; ++i) {
            const auto begun = Clock::now();
            saveCheque(station, cheques, i);
            took.push_back(std::chrono::duration<double, std::milli>(Clock::now() - begun).count());
        }
        std::ranges::sort(took);
        const double questions =
            static_cast<double>(relay.questions() - before) / static_cast<double>(kSaves);
        std::printf("%22d    %24.1f %11.1f    %9.1f\n", delay, took[kSaves / 2], took.back(),
                    questions);
    }
}
