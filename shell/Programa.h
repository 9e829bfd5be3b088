#pragma once

#include <exception>

/// The program from its start to its end: look, failure report, first window, event loop.
/// @return the program's exit status. A failure doesn't return: see relatarFalha().
int executarPrograma(int argc, char** argv);

/// Where every error that no window can do anything about ends: undoes what was being written, says
/// once what failed and what to do, and ends the program with status 1. Nothing runs after it, not
/// even the handler that failed.
[[noreturn]] void relatarFalha(const std::exception_ptr& falha);
