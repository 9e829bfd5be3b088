#pragma once

#include "ado/ShopRoles.h"
#include "tools/Arguments.h"

#include <initializer_list>

/// Exit codes of the program.
inline constexpr int kDone = 0;
inline constexpr int kProblems = 1; ///< something failed, or a check found an error
inline constexpr int kWrongUsage = 2;
inline constexpr int kWarnings = 3; ///< a check found something, but no error

/// Everything the program does, in the order of its help.
[[nodiscard]] std::span<const ToolCommand> commands();

// What several of them ask of their line.
[[nodiscard]] jet::Version versionOf(const Arguments& arguments);
[[nodiscard]] ado::ShopRoles rolesOf(const Arguments& arguments);
void requireNone(const Arguments& arguments, std::initializer_list<const char*> options,
                 const std::string& why);

/// What the commands do; each is described where commands() lists it. All of them may throw
/// jet::Error and UsageError.
int runCreate(const Arguments& arguments);
int runMigrate(const Arguments& arguments);
int runSample(const Arguments& arguments);
int runCheck(const Arguments& arguments);
int runDump(const Arguments& arguments);
int runTables(const Arguments& arguments);
int runInfo(const Arguments& arguments);
int runExport(const Arguments& arguments);
int runImport(const Arguments& arguments);
int runCompact(const Arguments& arguments);
int runSalvage(const Arguments& arguments);
int runRestore(const Arguments& arguments);
int runMove(const Arguments& arguments);
int runUpgrade(const Arguments& arguments);
int runHistory(const Arguments& arguments);
