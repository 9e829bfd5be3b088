#pragma once

#include "jet/SalvageReport.h"

namespace jet {

/// Where whoever copies a file tells what can't be copied. Of a sound file nothing may be missing:
/// there the first loss ends the work.
class Losses {
public:
    enum class Source : std::uint8_t { sound, damaged };
    explicit Losses(Source source) : source_(source) {}

    [[nodiscard]] bool mayLose() const noexcept { return source_ == Source::damaged; }
    /// @throws Error{corrupt} if nothing may be lost.
    void tell(Loss loss);
    [[nodiscard]] SalvageReport& report() noexcept { return report_; }

private:
    Source source_;
    SalvageReport report_;
};

} // namespace jet
