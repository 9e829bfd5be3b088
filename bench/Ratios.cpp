#include "bench/Ratios.h"

#include <cstdio>

bool RatioReporter::ReportContext(const Context& /*context*/) {
    std::printf("%-36s %-10s %10s %10s %7s %7s\n", "", "", "ours ms", "SQLite ms", "ratio",
                "wanted");
    std::fflush(stdout);
    return true;
}

void RatioReporter::ReportRuns(const std::vector<Run>& runs) {
    for (const Run& run : runs) {
        if (run.run_type != Run::RT_Aggregate || run.aggregate_name != "median")
            continue;
        const auto times = static_cast<double>(run.iterations);
        seconds_[run.run_name.function_name] = {run.cpu_accumulated_time / times,
                                                run.real_accumulated_time / times};
        for (const Wanted& row : wanted_)
            if (run.run_name.function_name == row.name + std::string("/sqlite"))
                print(row, seconds_[row.name + std::string("/ours")],
                      seconds_[run.run_name.function_name]);
    }
}

void RatioReporter::print(const Wanted& row, const Seconds& ours, const Seconds& theirs) {
    const auto line = [&row](Clock clock, const char* clockName, double mine, double its) {
        std::printf("%-36s %-10s %10.3f %10.3f %6.2fx", clock == row.clock ? row.name : "",
                    clockName, mine * 1e3, its * 1e3, mine / its);
        if (clock == row.clock)
            std::printf(" %6.2fx", row.ratio);
        std::printf("\n");
    };
    if (row.clock == Clock::wall)
        line(Clock::wall, "passed", ours.wall, theirs.wall);
    line(Clock::processor, "processor", ours.processor, theirs.processor);
    std::fflush(stdout);
}
