#pragma once

#include "tools/Arguments.h"

/// What the program says of itself: everywhere the same texts, those of commands().
inline constexpr const char* kProgram = "valtrino-mdb";

void printVersion();
/// What `--help` shows: of the program, of one command.
void printHelp();
void printHelp(const ToolCommand& command);
/// The page for `man`.
void printManual();
/// What a shell (bash) offers for a word that is begun: the commands, their options.
void printCompletion();
