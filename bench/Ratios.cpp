#include "bench/Ratios.h"

#include <cstdio>

void RatioReporter::ReportRuns(const std::vector<Run>& runs) {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs)
        if (run.run_type == Run::RT_Aggregate ? run.aggregate_name == "median"
                                              : run.repetitions == 1)
            seconds_[run.run_name.function_name] =
                run.real_accumulated_time / static_cast<double>(run.iterations);
}

void RatioReporter::printRatios(const std::map<std::string, double>& wanted) const {
    std::printf("\n%-34s %12s %12s %8s %8s\n", "", "ours (ms)", "SQLite (ms)", "ratio", "wanted");
    for (const auto& [name, ours] : seconds_) {
        const std::size_t at = name.find("/ours/");
        if (at == std::string::npos)
            continue;
        const std::string what = name.substr(0, at);
        const std::string size = name.substr(at + 6);
        const auto theirs = seconds_.find(what + "/sqlite/" + size);
        if (theirs == seconds_.end())
            continue;
        const auto limit = wanted.find(what);
        std::printf("%-34s %12.3f %12.3f %7.2fx", (what + " " + size).c_str(), ours * 1e3,
                    theirs->second * 1e3, ours / theirs->second);
        if (limit != wanted.end())
            std::printf(" %7.2fx", limit->second);
        std::printf("\n");
    }
}
