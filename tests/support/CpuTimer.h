#pragma once

#include <ctime>

/// Measures the processor time this program uses. What it tells depends on the machine, on its
/// other work and on the build: compare it only with another of the same run.
class CpuTimer {
public:
    /// Since the making or the last restart().
    [[nodiscard]] double milliseconds() const {
        return static_cast<double>(std::clock() - start_) * 1000 / CLOCKS_PER_SEC;
    }
    void restart() { start_ = std::clock(); }

private:
    std::clock_t start_ = std::clock();
};
