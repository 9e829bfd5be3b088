#include "jet/page/PageLog.h"

#include <utility>

namespace jet {

std::optional<std::vector<PageNo>> PageLog::since(Position& position) {
    if (pages_.empty())
        pages_.resize(kKept);
    const bool known = position >= begin_ && end_ - position <= kKept;
    std::vector<PageNo> pages;
    for (Position at = known ? position : end_; at < end_;)
        pages.push_back(pages_[++at % kKept]);
    position = end_;
    return known ? std::optional(std::move(pages)) : std::nullopt;
}

} // namespace jet
