#pragma once

#include "jet/Report.h"

#include <map>

namespace jet {

/// Collects what a check finds. Findings are of one kind when their `what` is the same; of each
/// kind so many are kept, and the rest only counted.
class Findings {
public:
    static constexpr std::size_t kShown = 50;

    /// `where` names the table or structure (may be empty); `what` is wrong with it; `detail` says
    /// numbers and names.
    void error(PageNo page, const std::string& where, const std::string& what,
               const std::string& detail = {}) {
        add(Finding::Severity::error, page, where, what, detail);
    }
    void warning(PageNo page, const std::string& where, const std::string& what,
                 const std::string& detail = {}) {
        add(Finding::Severity::warning, page, where, what, detail);
    }

    void rule(PageNo page, const std::string& where, const std::string& what,
              const std::string& detail = {}) {
        add(Finding::Severity::rule, page, where, what, detail);
    }

    /// All of them, those only counted as a finding of their own.
    [[nodiscard]] std::vector<Finding> take();

private:
    struct Kind {
        Finding::Severity severity;
        PageNo page; ///< of the first one that wasn't kept
        std::size_t count = 0;
    };
    void add(Finding::Severity severity, PageNo page, const std::string& where,
             const std::string& what, const std::string& detail);

    std::vector<Finding> findings_;
    std::map<std::string, Kind> kinds_;
};

} // namespace jet
