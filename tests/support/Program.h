#pragma once

#include <string>
#include <vector>

/// How a program ended and what it said.
struct ProgramResult {
    int code = 0; ///< 128 and more: ended by a signal
    std::string out;
    std::string err;
};

/// Runs a program, without a terminal, to its end. `environment` is put before it as the shell
/// takes it ("NAME=value"), where there is one. @throws std::runtime_error if it can't be run.
[[nodiscard]] ProgramResult runProgram(const std::vector<std::string>& words,
                                       const std::string& environment = {});

/// Ends this program on the spot, as a power cut would.
[[noreturn]] void endAtOnce();
