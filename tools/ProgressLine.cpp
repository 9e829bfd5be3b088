#include "tools/ProgressLine.h"

#include "tools/system/Console.h"

#include <iostream>

namespace {

constexpr const char* kClear = "\r\033[K";

} // namespace

ProgressLine::ProgressLine() : shown_(console::isWatched()) {}

void ProgressLine::operator()(const std::string& what, std::uint64_t done, std::uint64_t all) {
    if (!shown_)
        return;
    std::string line = what + ": " + std::to_string(all == 0 ? 100 : done * 100 / all) + "%";
    if (line == last_)
        return;
    std::cerr << kClear << line << std::flush;
    last_ = std::move(line);
}

void ProgressLine::clear() {
    if (!last_.empty())
        std::cerr << kClear << std::flush;
    last_.clear();
}
