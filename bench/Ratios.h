#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <span>
#include <string>
#include <vector>

/// What of a measure counts: the processor's time, which other work on the machine hardly changes,
/// or, where it is the disk that is waited for, the time that passes.
enum class Clock { processor, wall };

/// A measure that there is of ours and of SQLite's, and how many times as long ours may take.
struct Wanted {
    const char* name;
    Clock clock;
    double ratio;
};

/// Prints a table: for every measure its two benchmarks, "<name>/ours" and then "<name>/sqlite",
/// the ratio and what is wanted, as soon as both have run.
class RatioReporter final : public benchmark::BenchmarkReporter {
public:
    explicit RatioReporter(std::span<const Wanted> wanted) : wanted_(wanted) {}

    bool ReportContext(const Context& context) override;
    void ReportRuns(const std::vector<Run>& runs) override;

private:
    /// For one iteration, the median of the repetitions.
    struct Seconds {
        double processor;
        double wall;
    };
    static void print(const Wanted& row, const Seconds& ours, const Seconds& theirs);

    std::span<const Wanted> wanted_;
    std::map<std::string, Seconds> seconds_; ///< by the benchmark's name
};
