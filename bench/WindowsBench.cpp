// What a clerk waits for in each window over a server of its own, with as many cheques as no file
// holds, and how often the window waits for the server:
//
//     windows_bench [cheques [window]]     (of all windows, or of that one, as "agenda")
#include "support/Cluster.h"
#include "support/WindowOperations.h"

#include <QApplication>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kClients = 20'000;
constexpr int kCheques = 10'000'000;
constexpr int kOfEach = 50; ///< cheques of each client, at least
constexpr int kTries = 5;
constexpr double kWantedMs = 100;

class WindowsMeasured final : public WindowOperations {
public:
    explicit WindowsMeasured(int cheques)
        : WindowOperations(std::min(kClients, cheques / kOfEach), cheques) {}

    /// Of that window alone, if one is named.
    void run(std::string_view window) {
        SetUp();
        std::printf("%-18s %-40s %5s %10s %10s\n", "", "", "waits", "median ms", "most ms");
        for (const Operation& operation : operations())
            if (window.empty() || window == operation.window)
                measure(operation);
        TearDown();
    }

private:
    void TestBody() override {}
    static std::uint64_t waits() { return data().Automacao.store().tally().waits; }

    void measure(const Operation& operation) {
        std::vector<double> took;
        std::uint64_t most = 0;
        for (int attempt = 0; attempt < kTries; ++attempt) {
            operation.prepare();
            QCoreApplication::processEvents();
            for (int i = 0; i < operation.times; ++i) {
                const std::uint64_t before = waits();
                const auto begun = Clock::now();
                operation.work();
                QCoreApplication::processEvents();
                took.push_back(
                    std::chrono::duration<double, std::milli>(Clock::now() - begun).count());
                most = std::max(most, waits() - before);
            }
        }
        std::ranges::sort(took);
        const double median = took[took.size() / 2];
        std::printf("%-18s %-40s %5d %10.1f %10.1f%s\n", operation.window, operation.name,
                    static_cast<int>(most), median, took.back(), median > kWantedMs ? "  *" : "");
        std::fflush(stdout);
    }
};

} // namespace

int main(int argc, char** argv) {
    if (const std::string why = Cluster::absence(); !why.empty())
        return std::puts(why.c_str()), EXIT_FAILURE;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    testing::InitGoogleTest(&argc, argv);
    const QApplication application(argc, argv);
    Cluster::likeAShops();
    WindowsMeasured(argc > 1 ? std::atoi(argv[1]) : kCheques).run(argc > 2 ? argv[2] : "");
    return EXIT_SUCCESS;
}
