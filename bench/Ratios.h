#pragma once

#include <benchmark/benchmark.h>

#include <map>

/// The ordinary report, and behind it, for every pair "<name>/ours/<size>" and
/// "<name>/sqlite/<size>", how many times as long ours took, and what was wanted.
class RatioReporter final : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override;
    void printRatios(const std::map<std::string, double>& wanted) const;

private:
    std::map<std::string, double> seconds_; ///< for one iteration, the median of the repetitions
};
