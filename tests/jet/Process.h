#pragma once

#include <memory>
#include <string>
#include <vector>

/// A program that runs beside the test; killed, if need be, when this goes.
class Process {
public:
    /// @throws std::runtime_error if it can't be started.
    explicit Process(const std::vector<std::string>& words);
    Process(Process&& other) noexcept;
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    ~Process();

    /// What it has written next, when there is something; "" at its end.
    std::string read();
    void closeInput();
    /// Its exit code; what it has written so far is in `said`.
    int finish(std::string* said = nullptr);
    /// At once, whatever it does.
    void kill();

private:
    struct Running; ///< as the system knows it
    std::unique_ptr<Running> running_;
};
