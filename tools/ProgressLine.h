#pragma once

#include <cstdint>
#include <string>

/// How far a long command has come, on a terminal, each step over the last; silent elsewhere. Gone
/// before anything else is said: by clear(), or with this object.
class ProgressLine {
public:
    ProgressLine();
    ~ProgressLine() { clear(); }
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    /// Of `all` so many are done: of pages, of bytes.
    void operator()(const std::string& what, std::uint64_t done, std::uint64_t all);
    void clear();

private:
    bool shown_;
    std::string last_;
};
