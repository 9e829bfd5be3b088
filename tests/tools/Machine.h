#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

// What the tests of the tool ask of the operating system.

/// What a program is ended by, before its time.
enum class Blow : std::uint8_t {
    key,     ///< Ctrl+C, or what a test can strike in its place
    machine, ///< which goes down
    kill     ///< without a word
};

[[nodiscard]] inline bool isPart(const std::string& name) {
    return name.find(".parcial-") != std::string::npos;
}

/// Runs the tool and gives it that blow as soon as it is at work on a part of a file of that
/// folder: whether it ended by it.
[[nodiscard]] bool fellBy(Blow blow, std::vector<std::string> words,
                          const std::filesystem::path& folder);

/// A line that the tool is run by, for somebody to whom things can be forbidden.
[[nodiscard]] std::vector<std::string> asOrdinaryUser(std::vector<std::string> words);

/// What the machine is called.
[[nodiscard]] std::string machineName();
