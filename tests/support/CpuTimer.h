#pragma once

#include <ctime>

/// Measures the processor time this program uses, which other work on the machine doesn't change.
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
