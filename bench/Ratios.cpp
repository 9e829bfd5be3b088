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
        const auto with = [at, &ourName = name](const char* middle) {
            return std::string(ourName).replace(at, 6, middle);
        };
        const auto theirs = seconds_.find(with("/sqlite/"));
        if (theirs == seconds_.end())
            continue;
        const auto limit = wanted.find(name.substr(0, at));
        std::printf("%-34s %12.3f %12.3f %7.2fx", with(" ").c_str(), ours * 1e3,
                    theirs->second * 1e3, ours / theirs->second);
        if (limit != wanted.end())
            std::printf(" %7.2fx", limit->second);
        std::printf("\n");
    }
}
