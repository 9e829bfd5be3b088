#pragma once

#include <exception>

/// The program from its start to its end: look, failure report, first window, event loop.
/// @return the program's exit status. See atenderFalha() for failures.
int executarPrograma(int argc, char** argv);

/// Where every error that no window can do anything about goes. What another station, a full disk
/// or a rule of the file has refused is undone and told, and the program goes on; anything else
/// ends it: see relatarFalha().
void atenderFalha(const std::exception_ptr& falha);

/// The end of the program for an error that can't be tried again: undoes what was being written,
/// says once what failed and what to do, and ends the program with status 1. Nothing runs after it,
/// not even the handler that failed.
[[noreturn]] void relatarFalha(const std::exception_ptr& falha);
