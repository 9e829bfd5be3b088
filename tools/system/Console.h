#pragma once

#include <string>
#include <vector>

/// What the technician's program asks of the operating system. One source a system.
namespace console {

/// The words behind the program's name, in UTF-8.
[[nodiscard]] std::vector<std::string> words(int count, char** words);

/// What is printed stands on a screen as it was meant, and comes byte for byte into a file or
/// another program.
void prepareOutput();
/// Whether somebody watches what is said on the side, and sees a line give way to the next.
[[nodiscard]] bool isWatched();

/// Whatever ends the program from outside, Ctrl+C or the machine going down, has that called first.
void beforeEarlyEnd(void (*tidy)() noexcept);

} // namespace console
